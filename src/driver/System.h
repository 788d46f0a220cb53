// The tool as a whole: decides what the options ask for, and walks one session from the first option to the
// exit status.
#pragma once

#include "driver/console/CommandCompletion.h"
#include "driver/console/ConsoleScriptSystem.h"
#include "driver/console/DebugCommands.h"
#include "driver/console/ShortCommands.h"
#include "driver/session/FaceSwitch.h"
#include "driver/session/Loader.h"
#include "driver/session/Options.h"
#include "driver/session/ProgramRun.h"
#include "driver/session/SessionSteps.h"
#include "driver/session/StopNotice.h"
#include "driver/terminal/TerminalFace.h"
#include "driver/terminal/TextTargetIOServerTerminal.h"
#include "support/Path.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <functional>

class HException;
class ProjectElement;

class System : public QObject, private TextTargetIOServerTerminal::Observer {
    Q_OBJECT
public:
    // Made on first use, after the globals that it reads: report, the project and build systems.
    static System* instance();
    // Destroys it: the target goes, and closes its link.
    static void destroy();

    void setProgramName(const QString& name) { m_programName = name; }
    const QString& programName() const { return m_programName; }

    // Runs the session once; returns the exit status or throws what stopped it.
    int exec(int argc, char** argv);

    Loader& loader() { return m_loader; }
    void execScript(const QString& text);
    // Throws HException `cannot open script file "FILE"`, or what the script failed with.
    void execScriptFile(const Path& file);
    // The selected project and configuration; null and empty without a solution.
    ProjectElement* activeProject() const { return m_steps.activeProject(); }
    const QString& buildConfiguration() const { return m_options.configuration; }
    // Runs the program from an entry point ("0x" and digits, or a symbol) until it ends: serves it, and under
    // -debug carries out commands. The exit status is then the program's. Throws Interrupted after Ctrl-C,
    // with the program stopped; at the prompt only a second one within a second ends the run.
    void run(const QString& entry);

private:
    System();
    ~System() override;

    void programExited() override;
    void outputFailed() override;

    void setupPackages();
    bool goesOnAllTheSame() const;
    void printUsage() const;
    void listProperties();
    int execUnderstood();
    int runSession();
    void addHint(HException& failure) const;
    int runAdapter();
    void endInterrupted();
    void startProgram();
    void onInterrupt();
    void startDebugging(const QString& entry);
    void repeatExceptions();
    void debug();
    void command(const QString& line);
    void guarded(const std::function<void()>& action);
    bool interruptsCommand() const;
    bool interruptCommand();
    bool connectionLost() const;

    // The later ones stand on the earlier ones.
    TerminalFace m_terminalFace;
    FaceSwitch m_face{m_terminalFace};
    Options m_options;
    Console m_console{m_face};
    WScript m_wscript{m_face};
    Loader m_loader{m_face};
    SessionSteps m_steps{m_loader, m_options};
    ProgramRun m_run{m_loader};
    StopNotice m_stopNotice{m_run};
    DebugCommands m_debugCommands{m_run};
    ConsoleScriptSystem m_scriptSystem; // its objects are those above
    ShortCommands m_shortCommands{[this](const QString& name) { return m_scriptSystem.defines(name); }};
    CommandCompletion m_completion{m_run, m_scriptSystem.context()};
    TextTargetIOServerTerminal* m_terminal = nullptr; // while a program runs
    QElapsedTimer m_lastInterrupt;
    QString m_programName;
    int m_exitStatus = 0;
};
