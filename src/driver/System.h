// The tool as a whole: reads the options, decides what is to be loaded, and walks one session from the
// first option to the exit status.
#pragma once

#include "driver/console/ConsoleScriptSystem.h"
#include "driver/session/ArgParse.h"
#include "driver/session/Loader.h"

#include "support/Path.h"

#include <QObject>
#include <QString>
#include <QStringList>

class TextTargetIOServerTerminal;

class System : public QObject, public ArgParse {
    Q_OBJECT
public:
    // Made on first use, after the project and build systems, and never destroyed.
    static System* instance();

    void setProgramName(const QString& name) { m_programName = name; }
    const QString& programName() const { return m_programName; }

    // Runs the session once; answers the exit status or throws what stopped it.
    int exec(int argc, char** argv);

    Loader& loader() { return m_loader; }
    void execScript(const QString& text);
    // Throws HException `cannot open script file "FILE"`, or what the script failed with.
    void execScriptFile(const Path& file);
    // The selected project and configuration; null and empty without a solution.
    ProjectElement* activeProject() const { return m_activeProject; }
    const QString& buildConfiguration() const { return m_configuration; }
    // Runs the program from an entry point ("0x" and digits, or a symbol) and serves it until it ends; the
    // exit status is then the program's. Throws Interrupted after Ctrl-C, with the program stopped.
    void run(const QString& entry);

    // A word joins the target program's arguments once -serve has been read, the load files before.
    void onArgument(const char* word) override;

public Q_SLOTS:
    // Looks at the running program.
    void poll();

private:
    System();
    struct OptionRow;
    class RunScope;
    static const OptionRow g_options[];

    void targetOption(const char*, const char* value);
    void listTargetsOption(const char*, const char*);
    void targetPropertyOption(const char*, const char* value);
    void listTargetPropertiesOption(const char*, const char*);
    void noDownloadOption(const char*, const char*);
    void noVerifyOption(const char*, const char*);
    void noDifferentialOption(const char*, const char*);
    void noDisconnectOption(const char*, const char*);
    void serveOption(const char*, const char*);
    void debugOption(const char*, const char*);
    void scriptOption(const char*, const char* value);
    void breakOption(const char*, const char* value);
    void entryOption(const char*, const char* value);
    void quietOption(const char*, const char*);
    void verboseOption(const char*, const char*);
    void helpOption(const char*, const char*);
    void solutionOption(const char*, const char* value);
    void projectOption(const char*, const char* value);
    void configOption(const char*, const char* value);
    void fileTypeOption(const char*, const char* value);
    void loadAddressOption(const char*, const char* value);
    void listFileTypesOption(const char*, const char*);
    void onBenchDirOption(const char*, const char* value);
    void onPackagesDirOption(const char*, const char* value);
    void onProjectTemplatesFileOption(const char*, const char* value);

    void printUsage() const;
    void applyPropertySetting(const QString& setting);
    void listProperties();
    void selectFileType();
    void selectProject();
    void collectLoadFiles();
    int runSession();
    void endInterrupted();
    void startProgram();
    QString entryPoint() const;
    void abandonRun();

    Console m_console;
    WScript m_wscript;
    Loader m_loader;
    ConsoleScriptSystem m_scriptSystem;
    QString m_scriptFile;
    bool m_listProperties = false;
    QStringList m_propertySettings;
    QString m_fileType;
    bool m_quiet = false;
    bool m_verbose = false;
    bool m_download = true;
    bool m_verify = true;
    bool m_help = false;
    bool m_disconnect = true;
    bool m_serve = false;
    bool m_debug = false;
    QString m_breakSymbol;
    QString m_entry;                                  // "0x" and digits, or a symbol
    TextTargetIOServerTerminal* m_terminal = nullptr; // while a program runs
    QStringList m_targetArguments{QString()};         // the first stands at the place of argv[0]
    QStringList m_loadFileNames;
    QString m_targetName;
    QString m_solutionFile;
    QString m_projectName;
    ProjectElement* m_activeProject = nullptr;
    QString m_programName;
    QString m_configuration;
    int m_exitStatus = 0;
    QString m_benchDirectory;
    QString m_packagesDirectory;
};
