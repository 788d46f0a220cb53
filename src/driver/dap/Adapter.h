// The debug adapter: takes the requests of an editor, one message after the other, and tells it what happens.
// The requests are rows of one table (AdapterRequests.cpp); what they do is in the views below, starting and
// ending a program in AdapterProgram.cpp.
//
// Invariants: m_console and m_scope are there exactly while a program is being debugged; m_state tells
// which requests are allowed.
#pragma once

#include "debug/run/HitListener.h"
#include "driver/dap/BreakpointTable.h"
#include "driver/dap/DapContext.h"
#include "driver/dap/EditorConsole.h"
#include "driver/dap/Launch.h"
#include "driver/dap/MemoryView.h"
#include "driver/dap/Messages.h"
#include "driver/dap/Progress.h"
#include "driver/dap/StackView.h"
#include "driver/dap/ValueView.h"
#include "driver/session/ProgramRun.h"
#include "driver/session/SessionFace.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

class FaceSwitch;
class Loader;
class Options;
class SessionSteps;

class Adapter : public SessionFace, private ProgramRun::StopListener, private HitListener {
public:
    // The session that the adapter is a face of. Nothing is owned.
    struct Session {
        Loader& loader;
        Options& options; // of the command line; the arguments of a launch take their place
        SessionSteps& steps;
        ProgramRun& run;
        FaceSwitch& face;
        // Called when the target is known, for the script console.
        std::function<void()> targetSelected;
        // Runs a line of script; throws HException.
        std::function<void(const QString&)> script;
    };
    Adapter(const Session& session, MessageSink& sink);
    ~Adapter() override;

    // Carries out one message, or tells what is wrong with it.
    void handle(const QByteArray& json);
    void handleFault(const char* text);
    // The editor is gone: the program ends or goes on as at a disconnect request.
    void hangUp();
    // A program is being debugged, and goes on with ProgramRun::pass().
    bool debugging() const { return m_scope && m_state != Ended; }
    // The session is over, and what had to be told is.
    bool done() const { return m_done; }

    // Called between two pieces of a long work; it looks at what has come meanwhile, by lookAhead().
    void setWaiting(std::function<void()> look) { m_look = std::move(look); }
    enum class Ahead { Leave, Taken };
    // A message that waits: cancels the running work when it asks for that. Taken when it is answered.
    Ahead lookAhead(const QByteArray& json);
    void cancel() { m_cancelled = true; }

    // SessionFace.
    void progress(int done, int total, const char* label, const char* unit) override;
    void message(const QString& text) override;
    void warning(const QString& text) override;
    void output(std::string_view text) override;
    void showLines(const QStringList& lines) override;

private:
    enum State : unsigned {
        Fresh = 1,       // before the initialize request
        Ready = 2,       // before a launch or attach
        Configuring = 4, // the program stands at its beginning, and the editor sets breakpoints
        Stopped = 8,
        Running = 16,
        Ended = 32,
    };
    enum class Intent { Go, Step };
    struct Row {
        const char* command;
        unsigned states; // in which it is allowed
        QJsonObject (*handler)(Adapter& adapter, const RequestArguments& arguments);
        const char* capability; // of the adapter, that the request stands for; null for what all have
    };
    static std::span<const Row> requests();

    void carryOut(const Request& request, const Row& row);
    QString refusal(const Row& row) const;

    QJsonObject initialize(const RequestArguments& arguments);
    QJsonObject launch(const RequestArguments& arguments);
    QJsonObject attach(const RequestArguments& arguments);
    QJsonObject configurationDone(const RequestArguments& arguments);
    QJsonObject restart(const RequestArguments& arguments);
    QJsonObject disconnect(const RequestArguments& arguments);
    QJsonObject terminate(const RequestArguments& arguments);
    QJsonObject cancelRequest(const RequestArguments& arguments);
    QJsonObject setExceptions(const RequestArguments& arguments);
    QJsonObject exceptionInfo(const RequestArguments& arguments);
    QJsonObject go(const RequestArguments& arguments);
    QJsonObject step(const RequestArguments& arguments, bool over);
    QJsonObject stepOut(const RequestArguments& arguments);
    QJsonObject pause(const RequestArguments& arguments);
    QJsonObject jump(const RequestArguments& arguments);
    QJsonObject threads(const RequestArguments& arguments);
    QJsonObject evaluate(const RequestArguments& arguments);

    void begin(bool attach, const RequestArguments& arguments);
    void startProgram();
    void standAtEntry();
    void endProgram(bool terminate, bool suspend);
    void programExited(int status);
    void onBreakpoint() override;
    bool stopsAt(DebuggerBreakpoint* breakpoint) override;
    void noteResume();
    void runScript(const QString& text);
    void tellStop(const char* reason, const QString& text = QString());
    template <class Act> void resume(Intent intent, Act act);
    QJsonArray exceptionFilters() const;
    uint32_t pc();

    Session m_session;
    SymbolicDebuggerInterface& m_debugger;
    Messages m_messages;
    DapContext m_context;
    Progress m_progress;
    BreakpointTable m_breakpoints;
    StackView m_stack;
    ValueView m_values;
    MemoryView m_memory;
    std::function<void()> m_look;
    std::unique_ptr<EditorConsole> m_console;
    std::unique_ptr<ProgramRun::Scope> m_scope;
    std::optional<Launch> m_launch;
    State m_state = Fresh;
    Intent m_intent = Intent::Go;
    bool m_pauseAsked = false;
    bool m_entryPending = false; // the next stop is that at the symbol the launch names
    bool m_stoppedInScript = false;
    bool m_done = false;
    bool m_cancelled = false;
    int m_current = 0; // number of the request that is carried out
    std::vector<std::function<void()>> m_afterResponse;
};
