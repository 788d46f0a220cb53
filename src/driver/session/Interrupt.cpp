#include "driver/session/Interrupt.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

volatile sig_atomic_t g_requested = 0;
int g_pipe[2] = {-1, -1};
void (*g_lastAct)() = nullptr;

constexpr int HandledSignals[] = {SIGINT, SIGTERM, SIGHUP};
unsigned g_installed = 0; // bits by number

// Only what is safe in a signal handler: a flag and one byte down a pipe that the event loop watches.
void onSignal(int number)
{
    if (g_requested) {
        if (g_lastAct)
            g_lastAct();
        signal(number, SIG_DFL);
        raise(number);
        return;
    }
    g_requested = number;
    char byte = 0;
    [[maybe_unused]] ssize_t written = write(g_pipe[1], &byte, 1);
}

void install(int number)
{
    struct sigaction action = {}, earlier = {};
    sigaction(number, nullptr, &earlier);
    if (number == SIGHUP && earlier.sa_handler == SIG_IGN)
        return;
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    g_installed |= 1u << number;
    sigaction(number, &action, nullptr); // without SA_RESTART: a waiting read comes back
}

} // namespace

Interrupt::Interrupt()
{
    signal(SIGPIPE, SIG_IGN);
    if (pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
    QObject::connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char bytes[16];
        while (read(g_pipe[0], bytes, sizeof bytes) > 0) {
        }
        Q_EMIT interrupted();
    });
    for (int number : HandledSignals)
        install(number);
}

Interrupt::~Interrupt()
{
    for (int number : HandledSignals)
        if (g_installed & 1u << number)
            signal(number, SIG_DFL);
    g_installed = 0;
    delete m_notifier;
    for (int& end : g_pipe)
        if (end >= 0) {
            close(end);
            end = -1;
        }
}

void Interrupt::beforeEnd(void (*act)())
{
    g_lastAct = act;
}

bool Interrupt::requested()
{
    return g_requested != 0;
}

bool Interrupt::byKey()
{
    return g_requested == SIGINT;
}

void Interrupt::forget()
{
    g_requested = 0;
}

void Interrupt::check()
{
    if (requested())
        throw Interrupted();
}
