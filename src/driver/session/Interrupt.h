// Ctrl-C. A SIGINT, SIGTERM or SIGHUP is noted and told to whoever waits for it in the event loop; a second
// one before forget() ends the process at once, for a host that hangs in the system, after what beforeEnd()
// was given. A hang-up that the caller has chosen to ignore stays ignored. SIGPIPE is ignored: a closed pipe
// shows as a failed write.
#pragma once

#include <QObject>

class QSocketNotifier;

// Thrown where a long operation notices the interrupt; not an HException, since nothing failed.
struct Interrupted {};

class Interrupt : public QObject {
    Q_OBJECT
public:
    // Installs the handlers; one for each process. Needs the application object.
    Interrupt();
    ~Interrupt() override;

    // What is done, in the signal handler, before a second signal ends the process; null for nothing.
    static void beforeEnd(void (*act)());

    static bool requested();
    // The last request was Ctrl-C, and not a wish of the system that the process end.
    static bool byKey();
    // The session goes on as if nothing had been requested.
    static void forget();
    // Throws Interrupted when an interrupt was requested.
    static void check();
    // Exit status of a session that was interrupted.
    static constexpr int ExitStatus = 130;

Q_SIGNALS:
    // From the event loop, once for each request.
    void interrupted();

private:
    QSocketNotifier* m_notifier = nullptr;
};
