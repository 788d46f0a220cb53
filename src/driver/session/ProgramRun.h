// The run of a program under the debugger, from its start until it ends: hands the debugger its target,
// polls it, tells a stop once, and leaves the target without breakpoints. It knows no terminal; the face of
// the session passes the requests' server and calls pass() until the run is over.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

class HMonitor;
class Loader;
class SymbolicDebuggerInterface;
class TargetIOServer;

class ProgramRun : public QObject {
    Q_OBJECT
public:
    // Told of a stop, once each: the program stands, and its frames are known.
    class StopListener {
    public:
        virtual void onBreakpoint() = 0;

    protected:
        ~StopListener() = default;
    };
    // What a run sets up in the debugger, for exactly as long as it lasts.
    class Scope {
    public:
        // The server is not owned. With `debugging` the program is under commands: it goes on while events
        // are handled, and at the end the debugger is cleared, which leaves the target without breakpoints.
        Scope(ProgramRun& run, TargetIOServer& server, bool debugging);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        ProgramRun& m_run;
    };

    explicit ProgramRun(Loader& loader);

    // Not owned; set before the first Scope.
    void setDebugger(SymbolicDebuggerInterface* debugger) { m_debugger = debugger; }
    SymbolicDebuggerInterface& debugger() const; // throws HException when there is none
    Loader& loader() const { return m_loader; }
    void setStopListener(StopListener* listener) { m_listener = listener; }

    // Loads the symbols of all executables of the session.
    void loadSymbols();
    // Runs the program from an entry point, as SymbolicDebuggerInterface::start takes it.
    void start(const QString& entry, bool stop);
    // Handles what has happened: events, requests, a stop. Waits for a moment when there is nothing to do.
    void pass();
    // Until the program stands, or for so many milliseconds. Returns whether it stands. Throws Interrupted.
    bool waitForStop(unsigned milliseconds);

    // The program has stopped, and the listener was told.
    bool stopped() const { return m_stopped; }
    // To be called before the program goes on, so that its next stop is told.
    void setRunning();
    // Stops the program; what a target that does not answer any more fails with is not told.
    void abandon();

    // Ends the run, with the program's exit status or the given one.
    void quit() { m_quit = true; }
    void quit(int status);
    bool quitting() const { return m_quit; }
    std::optional<int> exitStatus() const { return m_exitStatus; }

    // Looks at the program now, instead of waiting for the next time that the event loop does.
    void poll();

private:
    void timedPoll();
    bool idle() const;

    Loader& m_loader;
    SymbolicDebuggerInterface* m_debugger = nullptr;
    TargetIOServer* m_server = nullptr; // within a Scope
    HMonitor* m_monitor = nullptr;      // likewise
    StopListener* m_listener = nullptr;
    QTimer m_timer;
    bool m_stopped = false;
    bool m_quit = false;
    std::optional<int> m_exitStatus;
    bool m_debugging = false;
    bool m_pollAtOnce = false; // the program was sent on, and may stand already
    int m_idlePolls = 0;
};
