// Building blocks of test programs: the words of one instruction from its source and destination
// numbers, and a core with a record of what it called back.
#pragma once

#include "sim/Core.h"
#include "sim/Machine.h"
#include "sim/maxqsim.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace maxq30 {

using Words = std::vector<uint16_t>;

namespace dest {
constexpr unsigned push = 0x0D, call = 0x3D, djnz0 = 0x4D, djnz1 = 0x5D, nul = 0x28, cmp = 0x78;
constexpr unsigned acc = 0x0A, and_ = 0x1A, or_ = 0x2A, xor_ = 0x3A, add = 0x4A, sub = 0x5A, addc = 0x6A,
                   subb = 0x7A, bic = 0x8A, clz = 0x9A, mlb1 = 0xAA, mlw1 = 0xEA;
enum Condition { Always, Z, C, E, S, NZ, NC, NE };
constexpr unsigned jump(Condition c)
{
    return registerNumber(12, c);
}
} // namespace dest
namespace src {
constexpr unsigned pop = 0x0D, popi = 0x8D;
}
constexpr unsigned frame(unsigned index)
{
    return registerNumber(14, index);
}
constexpr unsigned pointer(unsigned index)
{
    return registerNumber(15, index);
}

// Immediate, with as many prefix words as the value needs, at least `prefixes`.
inline Words imm(unsigned destination, uint32_t value, unsigned prefixes = 0)
{
    while (prefixes < 3 && value >> (8 * (prefixes + 1)))
        ++prefixes;
    if (destination >= 0x80 && !prefixes)
        prefixes = 1;
    Words words;
    for (unsigned i = prefixes; i > 0; --i)
        words.push_back(
            uint16_t(0x0B00 | (value >> (8 * i) & 0xFF) | (i == 1 ? (destination & 0x180) << 6 : 0)));
    words.push_back(uint16_t((destination & 0x7F) << 8 | (value & 0xFF)));
    return words;
}

inline Words move(unsigned destination, unsigned source)
{
    Words words;
    if (destination >= 0x80 || source >= 0x100)
        words.push_back(uint16_t(0x0B00 | (destination & 0x180) << 6 | (source & 0x100) << 4));
    words.push_back(uint16_t(0x8000 | (destination & 0x7F) << 8 | (source & 0xFF)));
    return words;
}

inline Words operator+(Words a, const Words& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct Recorder : MAXQSIMExtendedCallBacks {
    void onDataAccess(bool read, unsigned address, unsigned value, unsigned byteAccess) override
    {
        add(std::string(read ? "read" : "write") + (byteAccess ? ".B" : ".W"), address, value);
    }
    void onDataError(bool read, unsigned address) override { add(read ? "bad read" : "bad write", address); }
    void onDataAlignmentError(bool read, unsigned address) override
    {
        add(read ? "odd read" : "odd write", address);
    }
    void onCodeError(unsigned address) override { add("fetch", address); }
    void onInvalidInstruction(unsigned address) override { add("invalid", address); }
    void onMiscError(const char* text, unsigned) override { log.push_back(text); }
    void onLongDataAccess(bool read, unsigned address, unsigned value) override
    {
        add(read ? "read.L" : "write.L", address, value);
    }
    unsigned onPeripheralLoad(unsigned number, unsigned size) override
    {
        add("load", number, size);
        return loaded;
    }
    void onPeripheralStore(unsigned number, unsigned, unsigned value) override
    {
        add("store", number, value);
    }
    unsigned onPollForInterrupts(unsigned) override
    {
        ++polls;
        return requests;
    }

    void add(const std::string& what, unsigned address)
    {
        char text[40];
        std::snprintf(text, sizeof text, " %x", address);
        log.push_back(what + text);
    }
    void add(const std::string& what, unsigned address, unsigned value)
    {
        char text[40];
        std::snprintf(text, sizeof text, " %x=%x", address, value);
        log.push_back(what + text);
    }
    std::vector<std::string> take() { return std::exchange(log, {}); }

    std::vector<std::string> log;
    unsigned loaded = 0;
    unsigned requests = 0;
    unsigned polls = 0;
};

using Log = std::vector<std::string>;

class CoreTest : public ::testing::Test {
protected:
    CoreTest() { core.setCallBacks(&events); }

    void put(const Words& words, uint32_t word = 0)
    {
        std::vector<unsigned char> bytes;
        for (uint16_t w : words) {
            bytes.push_back(uint8_t(w));
            bytes.push_back(uint8_t(w >> 8));
        }
        ASSERT_TRUE(core.writeCode(word * 2, uint32_t(bytes.size()), bytes.data()));
    }
    // Executes one instruction, which is put at a fresh place; answers its cycles.
    unsigned execute(const Words& words)
    {
        put(words, place);
        core.writeRegister(reg::IP, place);
        place += uint32_t(words.size());
        return core.step();
    }
    uint32_t get(unsigned number) { return core.readRegister(number); }
    void set(unsigned number, uint32_t value) { core.writeRegister(number, value); }
    bool carry() { return get(reg::PSF) & FlagC; }
    void setCarry(bool on) { set(reg::PSF, on ? FlagC : 0); }
    uint32_t data(uint32_t address, unsigned bytes = 4)
    {
        unsigned char b[4] = {};
        EXPECT_TRUE(core.readData(address, bytes, b));
        return Machine::fetch<4>(b);
    }
    void setData(uint32_t address, uint32_t value)
    {
        unsigned char b[4];
        Machine::put<4>(b, value);
        ASSERT_TRUE(core.writeData(address, 4, b));
    }

    Core core{0x4000, 0x1000};
    Recorder events;
    uint32_t place = 0x100;
};

} // namespace maxq30
