#include "maxq30/jtag/maxqd_jtag.h"

#include "maxq30/jtag/maxqd.h"

namespace {

constexpr unsigned ResetPulses = 5; // with TMS high, from any state to Test-Logic-Reset
constexpr unsigned StatusBits = 2;
constexpr unsigned char LastBit = 0x80;
constexpr int LoaderRetries = 10;

void pulse(_maxqd_t* maxqd, unsigned count = 1)
{
    while (count-- > 0)
        maxqd->cycleTCK(maxqd);
}

// From Run-Test/Idle to Shift-DR.
void enterShiftDR(_maxqd_t* maxqd)
{
    maxqd->setTMS(maxqd, 1);
    pulse(maxqd);
    maxqd->setTMS(maxqd, 0);
    pulse(maxqd, 2);
}

// With TMS high the last bit of a shift goes in on the way out, through Update to Run-Test/Idle.
void leaveShift(_maxqd_t* maxqd)
{
    pulse(maxqd, 2);
    maxqd->setTMS(maxqd, 0);
    pulse(maxqd);
}

// The 8 data bits of a byte that goes in, and out of the data register.
void shiftByteIn(_maxqd_t* maxqd, unsigned char byte)
{
    for (unsigned bit = 1; bit != LastBit; bit <<= 1) {
        maxqd->setTDI(maxqd, byte & bit);
        pulse(maxqd);
    }
    maxqd->setTMS(maxqd, 1);
    maxqd->setTDI(maxqd, byte & LastBit);
    leaveShift(maxqd);
}

// The 3 bits of a short register.
void shiftThreeBits(_maxqd_t* maxqd, unsigned char bits)
{
    maxqd->setTDI(maxqd, bits & 1);
    pulse(maxqd);
    maxqd->setTDI(maxqd, bits & 2);
    pulse(maxqd);
    maxqd->setTMS(maxqd, 1);
    maxqd->setTDI(maxqd, bits & 4);
    leaveShift(maxqd);
}

} // namespace

int MAXQD_open(_maxqd_t*, void*, unsigned int, void*)
{
    return 0;
}

int MAXQD_close(_maxqd_t*)
{
    return 0;
}

void MAXQD_setState(_maxqd_t*, unsigned int) {}
void MAXQD_setTDI(_maxqd_t*, int) {}
void MAXQD_setTMS(_maxqd_t*, int) {}
void MAXQD_setTCK(_maxqd_t*, int) {}
void MAXQD_cycleTCK(_maxqd_t*) {}
void MAXQD_multiCycleTCK(_maxqd_t*, unsigned long) {}

int MAXQD_getTDO(_maxqd_t*)
{
    return 0;
}

void MAXQD_setNRST(_maxqd_t*, int) {}

unsigned long MAXQD_setTimeout(_maxqd_t*, unsigned long)
{
    return 0;
}

void MAXQD_trst(_maxqd_t* maxqd)
{
    maxqd->setTMS(maxqd, 1);
    pulse(maxqd, ResetPulses);
    maxqd->setTMS(maxqd, 0);
    pulse(maxqd);
}

void MAXQD_shiftInIR(_maxqd_t* maxqd, unsigned char instruction)
{
    maxqd->setTMS(maxqd, 1);
    pulse(maxqd, 2); // Select-DR, Select-IR
    maxqd->setTMS(maxqd, 0);
    pulse(maxqd, 2); // Capture-IR, Shift-IR
    shiftThreeBits(maxqd, instruction);
}

unsigned char MAXQD_shiftInOutDR(_maxqd_t* maxqd, unsigned char in, unsigned char* status)
{
    if (status)
        *status = 0;
    enterShiftDR(maxqd);
    for (unsigned bit = 0; bit < StatusBits; ++bit) {
        if (status && maxqd->getTDO(maxqd))
            *status |= 1 << bit;
        pulse(maxqd);
    }
    unsigned char out = 0;
    for (unsigned bit = 1; bit <= LastBit; bit <<= 1) {
        if (maxqd->getTDO(maxqd))
            out |= bit;
        if (bit == LastBit)
            maxqd->setTMS(maxqd, 1);
        maxqd->setTDI(maxqd, in & bit);
        if (bit != LastBit)
            pulse(maxqd);
    }
    leaveShift(maxqd);
    return out;
}

int MAXQD_multiShiftOutDR8(_maxqd_t* maxqd, unsigned char* buffer, unsigned long count)
{
    do {
        *buffer = 0;
        enterShiftDR(maxqd);
        pulse(maxqd, StatusBits);
        for (unsigned bit = 1; bit <= LastBit; bit <<= 1) {
            if (maxqd->getTDO(maxqd))
                *buffer |= bit;
            if (bit != LastBit)
                pulse(maxqd);
        }
        maxqd->setTMS(maxqd, 1);
        leaveShift(maxqd);
        ++buffer;
    } while (--count > 0);
    return 1;
}

int MAXQD_multiShiftInDR8(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    do {
        enterShiftDR(maxqd);
        maxqd->setTDI(maxqd, 0);
        pulse(maxqd, StatusBits);
        shiftByteIn(maxqd, *buffer++);
    } while (--count > 0);
    return 1;
}

int MAXQD_loaderWrite(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    const unsigned char* next = buffer;
    unsigned char current = *buffer; // goes out even while nothing is ready yet
    int retries = LoaderRetries;
    bool accepted = false;
    bool refused = false;
    while (!accepted && !refused) {
        enterShiftDR(maxqd);
        maxqd->setTDI(maxqd, 0);
        // The first status bit tells whether the target took the scan before this one.
        if (maxqd->getTDO(maxqd)) {
            retries = LoaderRetries;
            accepted = count == 0;
            current = 0;
            if (count > 0) {
                current = *next++;
                --count;
            }
        } else {
            refused = --retries == 0;
        }
        pulse(maxqd, StatusBits);
        shiftByteIn(maxqd, current);
    }
    return accepted;
}

void MAXQD_setSystemProgrammingBits(_maxqd_t* maxqd, unsigned char bits)
{
    maxqd->shiftInIR(maxqd, maxqd::SystemProgrammingInstruction);
    enterShiftDR(maxqd);
    shiftThreeBits(maxqd, bits);
}
