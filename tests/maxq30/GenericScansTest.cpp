// The generic scans of the JTAG driver, pin by pin.
#include "maxq30/jtag/maxqd.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

namespace {

// Pins that note each pulse as a letter: TMS low and TDI low "a", TDI high "b", TMS high with TDI low "C",
// TDI high "D". A look at TDO is "?", answered from a row of levels, low when they run out.
struct Pins {
    Pins()
    {
        current = this;
        MAXQD_init(&maxqd);
        maxqd.setTMS = [](_maxqd_t*, int level) { current->tms = level; };
        maxqd.setTDI = [](_maxqd_t*, int level) { current->tdi = level; };
        maxqd.cycleTCK = [](_maxqd_t*) { current->trace += (current->tms ? "CD" : "ab")[current->tdi != 0]; };
        maxqd.getTDO = [](_maxqd_t*) {
            current->trace += '?';
            if (current->tdo.empty())
                return 0;
            int level = current->tdo.front() == '1';
            current->tdo.erase(0, 1);
            return level;
        };
    }
    std::string take() { return std::exchange(trace, {}); }
    size_t pulses() const { return trace.size() - size_t(std::count(trace.begin(), trace.end(), '?')); }

    _maxqd_t maxqd;
    int tms = 0, tdi = 0;
    std::string tdo;
    std::string trace;
    static Pins* current;
};
Pins* Pins::current;

// Data bits of a scan, in at TMS low but for the last.
std::string bits(unsigned char byte)
{
    std::string text;
    for (int bit = 0; bit < 7; ++bit)
        text += byte >> bit & 1 ? 'b' : 'a';
    return text + (byte & 0x80 ? "DDb" : "CCa");
}

} // namespace

TEST(GenericScans, ResetAndShortRegisters)
{
    Pins pins;
    pins.maxqd.trst(&pins.maxqd);
    EXPECT_EQ(pins.take(), "CCCCCa");
    pins.maxqd.shiftInIR(&pins.maxqd, 6); // 0, 1, then 1 with TMS high
    EXPECT_EQ(pins.take(), "CCaa"
                           "ab"
                           "DD"
                           "b");
    pins.tdi = 0;
    pins.maxqd.setSystemProgrammingBits(&pins.maxqd, 1);
    EXPECT_EQ(pins.take(), "CCaa"
                           "aa"
                           "DD"
                           "b"
                           "Dbb"
                           "ba"
                           "CC"
                           "a");
}

TEST(GenericScans, DataScanMovesStatusBeforeData)
{
    Pins pins;
    pins.tdo = "01"
               "10100101"; // status 2, data 0xA5
    unsigned char status = 0xFF;
    EXPECT_EQ(pins.maxqd.shiftInOutDR(&pins.maxqd, 0x3C, &status), 0xA5);
    EXPECT_EQ(status, 2);
    std::string withStatus = pins.take();
    EXPECT_EQ(withStatus, "Caa"
                          "?a?a"
                          "?a?a?b?b?b?b?a?CCa");

    // Without a place for the status the same pulses go out, and TDO is looked at for the data alone.
    pins.tdo = "10100101";
    EXPECT_EQ(pins.maxqd.shiftInOutDR(&pins.maxqd, 0x3C, nullptr), 0xA5);
    EXPECT_EQ(pins.take(), "Caa"
                           "aa"
                           "?a?a?b?b?b?b?a?CCa");
}

TEST(GenericScans, SeveralBytesPassThroughIdle)
{
    Pins pins;
    unsigned char buffer[2] = {0xFF, 0xFF};
    pins.tdo = "11000000"
               "00000001";
    pins.tdi = 1; // not driven
    pins.maxqd.multiShiftOutDR8(&pins.maxqd, buffer, 2);
    EXPECT_EQ(buffer[0], 0x03);
    EXPECT_EQ(buffer[1], 0x80);
    EXPECT_EQ(pins.take(), "Dbbbb?b?b?b?b?b?b?b?DDb"
                           "Dbbbb?b?b?b?b?b?b?b?DDb");

    pins.tdi = 1;
    const unsigned char bytes[] = {0x01, 0xFE};
    pins.maxqd.multiShiftInDR8(&pins.maxqd, bytes, 2);
    EXPECT_EQ(pins.take(), "Dbbaa" + bits(0x01) + "Caaaa" + bits(0xFE));
    pins.tdi = 0;
    MAXQD_shiftInDR8(&pins.maxqd, 0x80);
    EXPECT_EQ(pins.take(), "Caaaa" + bits(0x80));
}

TEST(GenericScans, LoaderWriteFollowsTheFirstStatusBit)
{
    // Each scan looks at TDO once; the previous scan may leave TDI high for the first three pulses.
    auto scan = [](unsigned char byte, bool high = false) {
        return (high ? std::string("Dbb") : std::string("Caa")) + "?aa" + bits(byte);
    };
    Pins pins;
    const unsigned char bytes[] = {0x11, 0x22, 0x33};
    pins.tdo = "1111";
    EXPECT_EQ(pins.maxqd.loaderWrite(&pins.maxqd, bytes, 3), 1);
    EXPECT_EQ(pins.take(), scan(0x11) + scan(0x22) + scan(0x33) + scan(0));

    // Low: the byte goes again. After a low first status the first byte goes twice.
    pins.tdo = "010111";
    EXPECT_EQ(pins.maxqd.loaderWrite(&pins.maxqd, bytes, 3), 1);
    EXPECT_EQ(pins.take(), scan(0x11) + scan(0x11) + scan(0x11) + scan(0x22) + scan(0x33) + scan(0));

    // Ten refusals in a row end it, nine do not.
    pins.tdo = "";
    EXPECT_EQ(pins.maxqd.loaderWrite(&pins.maxqd, bytes, 3), 0);
    std::string ten;
    for (int i = 0; i < 10; ++i)
        ten += scan(0x11);
    EXPECT_EQ(pins.take(), ten);
    pins.tdo = "1"
               "000000000"
               "111";
    EXPECT_EQ(pins.maxqd.loaderWrite(&pins.maxqd, bytes, 3), 1);
}
