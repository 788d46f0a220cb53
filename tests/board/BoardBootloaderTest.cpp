// The bootloader from the pins: its commands, loads of both families, flow control.
#include "Probe.h"

#include <numeric>

namespace board {

namespace {

class BoardBootloader : public BoardTest {
protected:
    Bytes variable(uint32_t address, const Bytes& data)
    {
        return Bytes{0x10,
                     uint8_t(data.size()),
                     uint8_t(data.size() >> 8),
                     uint8_t(address),
                     uint8_t(address >> 8),
                     uint8_t(address >> 16)} +
               data;
    }
    Bytes fixed(uint32_t word, unsigned count, const Bytes& data)
    {
        return Bytes{0x90, uint8_t(count), 0, uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16)} + data;
    }
    bool isPrompting()
    {
        uint8_t byte = probe->shiftDR(0);
        return probe->status == 3 && byte == '>';
    }
};

Bytes counting(size_t count)
{
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), uint8_t(1));
    return bytes;
}

} // namespace

TEST_F(BoardBootloader, StartsOnlyWithTheSystemProgrammingValueAndNotAtOnce)
{
    powerUp();
    probe->restart(1);
    for (unsigned i = 0; i < settings.bootScans; ++i) {
        probe->shiftDR(0);
        EXPECT_EQ(probe->status, 0);
    }
    // The prompt stays, and a zero byte starts nothing.
    EXPECT_TRUE(isPrompting());
    EXPECT_TRUE(isPrompting());
    EXPECT_FALSE(device->isExecuting());
    probe->restart(0);
    EXPECT_TRUE(device->isExecuting());
    EXPECT_FALSE(isPrompting());
}

TEST_F(BoardBootloader, TellsWhatItIs)
{
    settings.fixedCodeWords = 48;
    settings.fixedDataWords = 16;
    settings.romMajor = 2;
    settings.romMinor = 7;
    settings.deviceId = "MAXQ30 test";
    settings.codeBytes = 0x10000;
    settings.dataBytes = 0x40000; // 16 bits do not tell it
    struct Families {
        bool variable, fixed;
        uint16_t bitmap;
    };
    for (Families f : {Families{true, false, 0x003}, {false, true, 0x201}, {true, true, 0x203}}) {
        settings.variableLoad = f.variable;
        settings.fixedLoad = f.fixed;
        powerUp();
        startLoader();
        EXPECT_EQ(command({0x05}, 4), (Bytes{uint8_t(f.bitmap), uint8_t(f.bitmap >> 8), 48, 16}));
        EXPECT_TRUE(isPrompting());
    }
    EXPECT_EQ(command({0x06}, 2), (Bytes{0xFF, 0x7F}));
    EXPECT_EQ(command({0x07}, 2), (Bytes{0, 0}));
    EXPECT_EQ(command({0x09}, 2), (Bytes{7, 2}));
    std::string id;
    command({0x0D}, 0);
    for (uint8_t byte; (byte = probe->shiftDR(0)) && id.size() < 100;)
        id += char(byte);
    EXPECT_EQ(id, "MAXQ30 test");
    // A command may come before the answer to the last one was fetched.
    command({0x0D}, 3);
    EXPECT_EQ(command({0x09}, 2), (Bytes{7, 2}));
    EXPECT_EQ(lastError(), 0);
}

TEST_F(BoardBootloader, LoadsOfBothFamiliesOnlyClearBitsUntilAnErase)
{
    powerUp();
    startLoader();
    Bytes page = counting(240);
    probe->loaderWrite(variable(0x1010, page));
    EXPECT_EQ(code(0x1010, 240), page);
    EXPECT_EQ(code(0x100F, 1), Bytes{0xFF});
    EXPECT_EQ(code(0x1100, 1), Bytes{0xFF});
    Bytes words = counting(64);
    probe->loaderWrite(fixed(0x0200, 32, words)); // word addresses
    EXPECT_EQ(code(0x0400, 64), words);
    EXPECT_EQ(lastError(), 0);
    EXPECT_EQ(command({0x04}, 2)[0], 1);
    probe->loaderWrite(variable(0x0400, {0xF0, 0x03, 0x0C}));
    EXPECT_EQ(code(0x0400, 4), (Bytes{0x00, 0x02, 0x00, 0x04}));
    probe->loaderWrite({0x02, 0x00});
    while (!isPrompting())
        ;
    EXPECT_EQ(code(0, settings.codeBytes), Bytes(settings.codeBytes, 0xFF));
}

TEST_F(BoardBootloader, FlowControlHoldsBytesBack)
{
    settings.loadScans = 9;
    powerUp();
    startLoader();
    Bytes first = counting(10);
    EXPECT_EQ(probe->loaderWrite(variable(0, first)), 16u + 9 + 1); // nine refusals before the zero byte
    EXPECT_EQ(probe->loaderWrite(variable(0x20, first)), 16u + 9 + 1);
    EXPECT_EQ(code(0x20, 10), first);
    settings.loadScans = 40;
    powerUp();
    startLoader();
    EXPECT_EQ(probe->loaderWrite(variable(0, first)), 0u);
    EXPECT_EQ(probe->loaderWrite(variable(0x20, first)), 0u);
    EXPECT_EQ(code(0, 10), first);
    EXPECT_EQ(code(0x20, 10), Bytes(10, 0xFF));
}

TEST_F(BoardBootloader, ErrorsNameTheReasonAndSwallowTheData)
{
    settings.variableLoad = false;
    settings.codeBytes = 0x1000;
    powerUp();
    startLoader();
    // Data bytes that would erase the device if they were taken for commands.
    Bytes dangerous = {0x02, 0x00, 0x02, 0x00};
    device->core().writeCode(0, 1, dangerous.data());
    struct Case {
        Bytes frame;
        uint8_t error;
    };
    const Case cases[] = {
        {variable(0x10, dangerous), 1},                  // family not supported
        {{0x21}, 1},                                     //
        {{0x0F}, 2},                                     // invalid command
        {{0x91}, 2},                                     //
        {fixed(0, 2, dangerous), 4},                     // bad parameter: not 32 words
        {fixed(0x7F0, 32, Bytes(64, 0)), 4},             // across the end
        {fixed(0xFFFFFF, 32, Bytes(64, 0)), 4},          //
        {Bytes{0x90, 32, 1, 0, 0, 0} + Bytes(64, 0), 4}, // word mode byte
        {{0x02, 0x01}, 4},                               //
        {fixed(0x10, 32, counting(64)), 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.frame));
        probe->loaderWrite(c.frame);
        EXPECT_EQ(lastError(), c.error);
        EXPECT_EQ(lastError(), c.error); // asking changes nothing
        EXPECT_EQ(code(0, 1), Bytes{0x02});
    }
    EXPECT_EQ(code(0xFE0, 32), Bytes(32, 0xFF));
    EXPECT_TRUE(journal.complaints().empty());
}

TEST_F(BoardBootloader, BrokenBoards)
{
    settings.bootloaderStarts = false;
    powerUp();
    probe->restart(1);
    for (int i = 0; i < 1000; ++i) {
        probe->shiftDR(0);
        ASSERT_EQ(probe->status, 0);
    }
    settings.bootloaderStarts = true;
    settings.deadCells = {{3, 4}, {9, 9}};
    powerUp();
    startLoader();
    probe->loaderWrite(variable(0, Bytes(12, 0x21)));
    EXPECT_EQ(code(0, 12), (Bytes{0x21, 0x21, 0x21, 0xFF, 0xFF, 0x21, 0x21, 0x21, 0x21, 0xFF, 0x21, 0x21}));
    for (bool level : {false, true}) {
        settings.stuckTDO = level;
        powerUp();
        probe->shiftIR(7);
        EXPECT_EQ(probe->shiftDR(0x5A), level ? 0xFF : 0x00);
        probe->restart(1);
        EXPECT_FALSE(device->isExecuting());
    }
}

} // namespace board
