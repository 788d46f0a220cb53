// The JTAG driver: a table of operations and the open link behind them. The layers above scan through
// the table alone, so they do not know which adapter carries a byte.
//
// A scan starts and ends with the TAP in Run-Test/Idle. The instruction register has 3 bits. A data scan
// moves 10 bits, 2 status bits and then 8 data bits, least significant bit first; a transport that scans
// by itself produces the same bits on the pins as the generic functions of maxqd_jtag.h.
//
// A record is used by one thread, and closed before it is initialised again. Faults of the link are thrown
// as HException by the transport; the generic functions report nothing.
#pragma once

#include <cstddef>
#include <cstdint>

class HDataLink;

struct _maxqd_t {
    // Opens the link and brings the adapter into its scan mode. The device is the transport's own: a port
    // name, or a USBDevice. 1 when open, 0 when it failed; a throw leaves no link behind.
    int (*open)(_maxqd_t*, void* device, unsigned int flags, void* reserved);
    int (*close)(_maxqd_t*); // deletes the link; 1, also when there is none
    void (*setState)(_maxqd_t*, unsigned int state);

    // Single pins, for transports that offer them. Any level but 0 is high.
    void (*setTDI)(_maxqd_t*, int level);
    void (*setTMS)(_maxqd_t*, int level);
    void (*setTCK)(_maxqd_t*, int level);
    void (*cycleTCK)(_maxqd_t*); // one full pulse
    void (*multiCycleTCK)(_maxqd_t*, unsigned long count);
    int (*getTDO)(_maxqd_t*);
    void (*setNRST)(_maxqd_t*, int level); // the target's reset line: 0 asserts reset

    void (*trst)(_maxqd_t*); // to Run-Test/Idle through Test-Logic-Reset
    void (*shiftInIR)(_maxqd_t*, unsigned char instruction);
    // One data scan; the two status bits go to `status` unless it is null.
    unsigned char (*shiftInOutDR)(_maxqd_t*, unsigned char in, unsigned char* status);
    // A scan for each byte; the count is at least 1.
    int (*multiShiftOutDR8)(_maxqd_t*, unsigned char* buffer, unsigned long count);
    int (*multiShiftInDR8)(_maxqd_t*, const unsigned char* buffer, unsigned long count);

    // Bytes to and from the bootloader, at least 1, with its flow control. A write ends with a further zero
    // byte; 0 when the bootloader refused it.
    int (*loaderWrite)(_maxqd_t*, const unsigned char* buffer, unsigned long count);
    int (*loaderRead)(_maxqd_t*, unsigned char* buffer, unsigned long count);

    // Loads the 3-bit system programming register. Its instruction stays selected.
    void (*setSystemProgrammingBits)(_maxqd_t*, unsigned char bits);

    // The read time-out of the link in milliseconds; returns the earlier one. 0, and nothing changed, where
    // the transport has none to set.
    unsigned long (*setTimeout)(_maxqd_t*, unsigned long milliseconds);

    uint32_t reserved = 0;
    HDataLink* link = nullptr; // owned; null while closed
};

// Every slot of the record but loaderRead, which is each transport's own: SLOT(name) for each, in order.
#define MAXQD_GENERIC_SLOTS(SLOT)                                                                            \
    SLOT(open)                                                                                               \
    SLOT(close)                                                                                              \
    SLOT(setState)                                                                                           \
    SLOT(setTDI)                                                                                             \
    SLOT(setTMS)                                                                                             \
    SLOT(setTCK)                                                                                             \
    SLOT(cycleTCK)                                                                                           \
    SLOT(multiCycleTCK)                                                                                      \
    SLOT(getTDO)                                                                                             \
    SLOT(setNRST)                                                                                            \
    SLOT(trst)                                                                                               \
    SLOT(shiftInIR)                                                                                          \
    SLOT(shiftInOutDR)                                                                                       \
    SLOT(multiShiftOutDR8)                                                                                   \
    SLOT(multiShiftInDR8)                                                                                    \
    SLOT(loaderWrite)                                                                                        \
    SLOT(setSystemProgrammingBits)                                                                           \
    SLOT(setTimeout)

#define MAXQD_COUNT_SLOT(name) +1
static_assert(offsetof(_maxqd_t, reserved) ==
                  (MAXQD_GENERIC_SLOTS(MAXQD_COUNT_SLOT) + 1) * sizeof(void (*)()),
              "the list of slots leaves one out");
#undef MAXQD_COUNT_SLOT

namespace maxqd {

// Instructions of the TAP.
constexpr unsigned char ChannelInstruction = 2; // the debug and bootloader channel
constexpr unsigned char SystemProgrammingInstruction = 4;
constexpr unsigned char BypassInstruction = 7;

// Values of the system programming register: what the target starts at the next release of its reset.
constexpr unsigned char StartProgram = 0;
constexpr unsigned char StartBootloader = 1;

} // namespace maxqd

// Binds every slot to its default. The link pointer is left alone; a transport's init function calls
// this, clears it, and binds its own functions over the defaults.
void MAXQD_init(_maxqd_t* maxqd);

// Single bytes through multiShiftOutDR8 and multiShiftInDR8.
unsigned char MAXQD_shiftOutDR8(_maxqd_t* maxqd);
void MAXQD_shiftInDR8(_maxqd_t* maxqd, unsigned char byte);

// Deletes the link: the `close` of a transport.
int MAXQD_closeLink(_maxqd_t* maxqd);
