// A terminal that hands over each key as it is typed: no line editing and no echo of its own, while signal
// keys and output stay as they are. The earlier mode comes back with the destructor, before the process
// stops at Ctrl-Z, and when a signal ends it; after a stop the raw mode returns with the foreground.
// One at a time in a process.
#pragma once

#include <termios.h>

class RawTerminal {
public:
    // Takes a descriptor that is a terminal. In the background nothing is changed yet.
    explicit RawTerminal(int terminal);
    ~RawTerminal();
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;

    // Whether keys may be read now: a read in the background would stop the process. Enters the raw mode
    // when the foreground was won meanwhile.
    bool ready();
    // The keys that the user has set for these, as characters.
    unsigned char eraseKey() const { return m_keys[VERASE]; }
    unsigned char killKey() const { return m_keys[VKILL]; }
    unsigned char endOfFileKey() const { return m_keys[VEOF]; }

    // Puts the earlier mode back, from anywhere, also from a signal handler.
    static void restore();

private:
    cc_t m_keys[NCCS];
};
