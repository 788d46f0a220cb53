#include "driver/terminal/RawTerminal.h"

#include "driver/session/Interrupt.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <unistd.h>

namespace {

// What the signal handlers see; set before they are installed.
int g_terminal = -1;
termios g_before;
termios g_raw;
volatile sig_atomic_t g_entered = 0;

constexpr int HandledSignals[] = {SIGTSTP, SIGCONT, SIGQUIT};
struct sigaction g_earlierActions[std::size(HandledSignals)];

bool inForeground()
{
    return tcgetpgrp(g_terminal) == getpgrp();
}

void enter()
{
    if (inForeground() && tcsetattr(g_terminal, TCSADRAIN, &g_raw) == 0)
        g_entered = 1;
}

void onSignal(int number);

void install(int number)
{
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

// The signal does what it does by default, here and now, with the terminal in its earlier mode.
void takeDefault(int number)
{
    RawTerminal::restore();
    signal(number, SIG_DFL);
    raise(number);
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, number);
    sigprocmask(SIG_UNBLOCK, &one, nullptr);
}

void onSignal(int number)
{
    int error = errno;
    if (number != SIGCONT)
        takeDefault(number);
    if (number == SIGTSTP) // continued
        install(number);
    enter();
    errno = error;
}

} // namespace

RawTerminal::RawTerminal(int terminal)
{
    if (tcgetattr(terminal, &g_before) != 0)
        g_before = {};
    std::copy(std::begin(g_before.c_cc), std::end(g_before.c_cc), m_keys);
    g_raw = g_before;
    g_raw.c_lflag &= ~tcflag_t(ICANON | ECHO | ECHONL | IEXTEN);
    g_raw.c_iflag &= ~tcflag_t(IXON | ISTRIP | INLCR | IGNCR);
    g_raw.c_iflag |= ICRNL;
    g_raw.c_cc[VMIN] = 1;
    g_raw.c_cc[VTIME] = 0;
    g_terminal = terminal;
    for (size_t i = 0; i < std::size(HandledSignals); ++i) {
        sigaction(HandledSignals[i], nullptr, &g_earlierActions[i]);
        if (g_earlierActions[i].sa_handler != SIG_IGN)
            install(HandledSignals[i]);
    }
    Interrupt::beforeEnd(restore);
    enter();
}

RawTerminal::~RawTerminal()
{
    Interrupt::beforeEnd(nullptr);
    for (size_t i = 0; i < std::size(HandledSignals); ++i)
        sigaction(HandledSignals[i], &g_earlierActions[i], nullptr);
    restore();
    g_terminal = -1;
}

bool RawTerminal::ready()
{
    if (!inForeground())
        return false;
    if (!g_entered)
        enter();
    return true;
}

void RawTerminal::restore()
{
    if (!g_entered)
        return;
    g_entered = 0;
    if (inForeground())
        tcsetattr(g_terminal, TCSANOW, &g_before);
}
