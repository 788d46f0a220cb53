// The adapters byte by byte, and the faults of the cable in front of them.
#include "Probe.h"

#include "board/Adapter.h"
#include "board/Device.h"
#include "board/Faults.h"
#include "board/Journal.h"
#include "board/Link.h"
#include "board/SerialAdapter.h"
#include "board/UsbAdapter.h"

#include <algorithm>
#include <random>

namespace board {

namespace {

template <typename Adapter> class OnAdapter : public BoardTest {
protected:
    void connect(Faults faults = {})
    {
        powerUp();
        adapter = std::make_unique<Adapter>(*device, journal);
        link = std::make_unique<Link>(*device, *adapter, journal, std::move(faults));
    }
    // Sends, and fetches all that can be seen at once.
    Bytes talk(const Bytes& bytes)
    {
        link->fromHost(bytes, now);
        return fetch();
    }
    Bytes talk(std::string_view text) { return talk(Bytes(text.begin(), text.end())); }
    Bytes fetch()
    {
        Bytes answer = link->ready(now, SIZE_MAX);
        link->drop(answer.size());
        return answer;
    }

    std::unique_ptr<Adapter> adapter;
    std::unique_ptr<Link> link;
    int64_t now = 1000;
};

// Every second byte, from `first` on.
Bytes every2nd(const Bytes& bytes, size_t first)
{
    Bytes result;
    for (size_t i = first; i < bytes.size(); i += 2)
        result.push_back(bytes[i]);
    return result;
}

class BoardAdapter : public BoardTest {};

class BoardSerialAdapter : public OnAdapter<SerialAdapter> {
protected:
    void goBinary()
    {
        connect();
        talk("Z\r");
    }
    Bytes frame(const Bytes& data) { return talk(Bytes{uint8_t(data.size())} + data); }
    Bytes command(uint8_t c) { return talk(Bytes{0x00, c}); }
    void selectInstruction(uint8_t instruction)
    {
        command(1);
        command(3);
        frame({instruction});
        command(2);
        command(8);
    }
    void startBootloader()
    {
        command(5);
        selectInstruction(4);
        command(3);
        frame({1});
        command(8);
        selectInstruction(2);
        command(4);
        while (frame({0})[0] == 0)
            ;
    }
};

class BoardUsbAdapter : public OnAdapter<UsbAdapter> {
protected:
    void open(Faults faults = {})
    {
        connect(std::move(faults));
        talk(start);
    }
    Bytes counted(uint8_t command, uint32_t count)
    {
        return {command, uint8_t(count), uint8_t(count >> 8), uint8_t(count >> 16), uint8_t(count >> 24)};
    }
    void startBootloader()
    {
        talk({0x83, 0, 0x82, 0x8A, 1, 0x84, 2, 0x83, 1});
        while (talk({0x85, 0})[0] == 0)
            ;
    }
    const Bytes start = {0xF8, 0xF8, 0xF9, 0xF9, 0xF9, 0xFA, 0x80};
};

// Whatever comes over the wire, neither adapter nor device does more than complain.
template <typename Adapter>
void feedNoise(Device& device, Journal& journal, std::initializer_list<uint8_t> start)
{
    Adapter adapter(device, journal);
    Bytes answer;
    for (uint8_t byte : start)
        adapter.receive(byte, answer);
    // Many short runs of likely bytes: commands, small counts, and now and then anything.
    std::mt19937 random(1);
    for (int i = 0; i < 200'000; ++i) {
        unsigned r = random();
        unsigned choice = r >> 8 & 7;
        uint8_t byte = uint8_t(choice < 3 ? r & 0x0F : choice < 5 ? 0x80 | (r & 0x0F) : choice < 6 ? 0 : r);
        adapter.receive(byte, answer);
        answer.clear();
        if (i % 64 == 0)
            device.run(100);
    }
}

} // namespace

TEST_F(BoardSerialAdapter, TextModeAndTheWayIntoTheBinaryMode)
{
    connect();
    EXPECT_EQ(talk("\r"), (Bytes{'\r', '\n', '>'}));
    EXPECT_EQ(talk("\r\r"), (Bytes{'\r', '\n', '>', '\r', '\n', '>'}));
    EXPECT_TRUE(journal.complaints().empty());
    talk("help\r");
    EXPECT_EQ(journal.complaints().size(), 1u);
    // What a host sends in one piece has an answer of five bytes.
    Bytes answer = talk({'Z', '\r', 0x00, 0x05, 0x00, 0x04});
    ASSERT_EQ(answer.size(), 5u);
    EXPECT_EQ(answer[3], 5);
    EXPECT_EQ(answer[4], 4);
    // A host that takes it for a text mode still gets no prompt, until the adapter wakes up anew.
    Bytes noise;
    for (int i = 0; i < 4; ++i)
        noise = noise + talk("\r");
    EXPECT_EQ(std::count(noise.begin(), noise.end(), '>'), 0);
    link->restart();
    EXPECT_EQ(talk("\r"), (Bytes{'\r', '\n', '>'}));
}

TEST_F(BoardSerialAdapter, CommandsMoveThePins)
{
    goBinary();
    for (uint8_t c : {1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12})
        EXPECT_EQ(command(c), Bytes{c});
    EXPECT_TRUE(command(13).empty());
    EXPECT_EQ(journal.complaints().size(), 1u);
    command(4);
    // The way through Test-Logic-Reset and a scan of the bypass register, pin by pin.
    command(9);
    for (int i = 0; i < 5; ++i)
        command(6);
    command(10);
    command(6);
    command(9);
    command(6);
    command(10);
    command(6);
    command(6);
    EXPECT_EQ(command(7), Bytes{0});
    command(11);
    command(6);
    EXPECT_EQ(command(7), Bytes{1});
    command(12);
    command(6);
    EXPECT_EQ(command(7), Bytes{0});
}

TEST_F(BoardSerialAdapter, FramesAnswerStatusAndDataForEachByte)
{
    goBinary();
    command(5);
    selectInstruction(7);
    EXPECT_EQ(every2nd(frame({0x5A, 0x42, 0x00, 0x7F}), 1), (Bytes{0xB4, 0x84, 0x00, 0xFE}));
    selectInstruction(2);
    frame({0x1F});
    command(4);
    frame({0x20});
    EXPECT_EQ(frame({0x00}), (Bytes{1, 0}));
    // The longest frame, in pieces.
    Bytes answer = talk(Bytes{255} + Bytes(100, 0));
    EXPECT_EQ(answer.size(), 200u);
    EXPECT_EQ(talk(Bytes(155, 0)).size(), 310u);
    EXPECT_EQ(command(8), Bytes{8});
}

// The host sends bytes for the bootloader as any others; the adapter waits for the target.
TEST_F(BoardSerialAdapter, PacesTheBootloaderAndNothingElse)
{
    settings.loadScans = 8;
    goBinary();
    startBootloader();
    Bytes load = {0x10, 2, 0, 0x20, 0, 0, 0x12, 0x34};
    EXPECT_EQ(every2nd(frame(load), 0), (Bytes{3, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(frame({0}), (Bytes{3, '>'}));
    EXPECT_EQ(code(0x20, 2), (Bytes{0x12, 0x34}));
    frame({0x09});
    frame({0});
    EXPECT_EQ(every2nd(frame({0, 0}), 1), (Bytes{0, 1}));
    // With the program running a single step must be sent once, not ten times.
    put({0x0CFF});
    command(5);
    selectInstruction(4);
    command(3);
    frame({0});
    command(8);
    selectInstruction(2);
    frame({0x1F});
    command(4);
    uint32_t ip = device->core().ip();
    frame({0x27});
    frame({0x26});
    EXPECT_EQ(journal.complaints().size(), 1u);
    EXPECT_EQ(device->core().ip(), ip);
}

TEST_F(BoardSerialAdapter, GivesUpOnATargetThatTakesNothing)
{
    settings.loadScans = 15;
    goBinary();
    startBootloader();
    frame({0x10, 1, 0, 0, 0, 0, 0x55});
    // Ten scans for the first byte; the second, which would be taken, is not sent.
    EXPECT_EQ(frame({0x06, 0x09, 0x09}), Bytes(6, 0));
    EXPECT_EQ(frame({0}), (Bytes{3, '>'}));
}

TEST_F(BoardUsbAdapter, SessionsBeginWithTheStartBytes)
{
    open();
    EXPECT_EQ(talk({0x84, 7, 0x85, 0x5A}), (Bytes{0, 0xB4}));
    // Another host, after one that vanished in the middle of a stream.
    talk(counted(0x86, 100) + Bytes(10, 0));
    link->restart();
    EXPECT_TRUE(journal.complaints().empty());
    EXPECT_TRUE(talk({0x85, 0x5A}).empty());
    EXPECT_EQ(journal.complaints().size(), 2u);
    talk(start);
    EXPECT_EQ(talk({0x84, 7, 0x85, 0x42}), (Bytes{0, 0x84}));
    EXPECT_TRUE(talk({0x81}).empty());
    EXPECT_TRUE(talk(counted(0x87, 0)).empty());
    EXPECT_TRUE(talk(counted(0x88, 0xFFFFFFFF)).empty());
    EXPECT_EQ(journal.complaints().size(), 5u);
}

TEST_F(BoardUsbAdapter, StreamsOfScansAndLoaderBytes)
{
    open();
    talk({0x83, 0, 0x82, 0x8A, 0, 0x84, 2, 0x86, 3, 0, 0, 0, 0x11, 0x80, 0x1F, 0x83, 1});
    talk(counted(0x86, 2) + Bytes{0x21, 0x20});
    Bytes map = talk(counted(0x87, 754));
    ASSERT_EQ(map.size(), 754u);
    EXPECT_EQ(little(map, 2 + 0x2D4, 4), settings.dataBytes);
    startBootloader();
    Bytes load = {0x10, 2, 0, 0x20, 0, 0, 0x12, 0x34};
    EXPECT_TRUE(talk(counted(0x89, 8) + Bytes(load.begin(), load.begin() + 5)).empty());
    EXPECT_EQ(talk(Bytes(load.begin() + 5, load.end())), Bytes{1});
    EXPECT_EQ(code(0x20, 2), (Bytes{0x12, 0x34}));
    EXPECT_EQ(talk(counted(0x89, 1) + Bytes{0x09}), Bytes{1});
    EXPECT_EQ(talk(counted(0x88, 2)), (Bytes{0, 1}));
    EXPECT_TRUE(journal.complaints().empty());
}

TEST_F(BoardUsbAdapter, LoaderWriteTellsThatTheTargetRefused)
{
    settings.loadScans = 12;
    open();
    startBootloader();
    EXPECT_EQ(talk(counted(0x89, 7) + Bytes{0x10, 1, 0, 0, 0, 0, 0x55}), Bytes{0});
    EXPECT_EQ(talk(counted(0x89, 1) + Bytes{0x09}), Bytes{1}); // by then it is ready again
}

TEST_F(BoardUsbAdapter, FaultsHitTheirPositions)
{
    struct Case {
        const char* fault;
        Bytes answer;
    };
    // Bypass scans: 7 start bytes, 2 to select it, then 0x85 and a byte each from 9, 11 and 13 on.
    const Bytes scans = {0x84, 7, 0x85, 0x5A, 0x85, 0x42, 0x85, 0x7F};
    const Case cases[] = {
        {"drop=3", {0, 0xB4, 0, 0, 0xFE}},
        {"drop=in:11", {0, 0xB4, 0, 0xFE}}, // 0x42 is then no command
        {"change=1", {0, 0x4B, 0, 0x84, 0, 0xFE}},
        {"change=1:0x77", {0, 0x77, 0, 0x84, 0, 0xFE}},
        {"change=in:10:3", {0, 6, 0, 0x84, 0, 0xFE}},
        {"cut=12", {0, 0xB4}},
        {"cut=out:3", {0, 0xB4, 0}},
        {"drop=100", {0, 0xB4, 0, 0x84, 0, 0xFE}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fault);
        open({Fault::parse(c.fault).value()});
        EXPECT_EQ(talk(scans), c.answer);
        EXPECT_EQ(link->isCut(), std::string_view(c.fault).starts_with("cut"));
        if (link->isCut()) {
            EXPECT_TRUE(talk({0x85, 0x5A}).empty());
        }
    }
    for (const char* text :
         {"", "cut", "cut=", "cut=x", "cut=-1", "cut=1:2", "late=3", "late=3:", "change=1:256", "drop=1:1",
          "drop=1 ", "melt=3", "drop=99999999999999999999", "drop=both:1"})
        EXPECT_FALSE(Fault::parse(text)) << text;
}

TEST_F(BoardUsbAdapter, LateAnswersComeInOrderAndErasesTakeTheirTime)
{
    settings.eraseMilliseconds = 300;
    open({Fault::parse("late=3:500").value(), Fault::parse("late=in:12:200").value()});
    EXPECT_EQ(talk({0x84, 7, 0x85, 0x5A, 0x85}), (Bytes{0, 0xB4}));
    EXPECT_TRUE(talk({0x42}).empty()); // late itself, and so is the end of its answer
    EXPECT_EQ(link->nextTime(now), 1200);
    now = 1200;
    EXPECT_EQ(fetch(), Bytes{0});
    EXPECT_EQ(link->nextTime(now), 1700);
    now = 1699;
    EXPECT_TRUE(talk({0x85, 0x7F}).empty());
    now = 1700;
    EXPECT_EQ(fetch(), (Bytes{0x84, 0, 0xFE}));
    EXPECT_FALSE(link->nextTime(now));
    startBootloader();
    EXPECT_TRUE(talk(counted(0x89, 2) + Bytes{0x02, 0x00}).empty());
    EXPECT_EQ(link->nextTime(now), 2000);
    now = 2000;
    EXPECT_EQ(fetch(), Bytes{1});
}

TEST_F(BoardAdapter, NoiseOnTheWireIsSurvived)
{
    settings.codeBytes = settings.dataBytes = 0x1000;
    powerUp();
    feedNoise<SerialAdapter>(*device, journal, {'Z', '\r'});
    feedNoise<UsbAdapter>(*device, journal, {0xF8, 0xF8, 0xF9, 0xF9, 0xF9, 0xFA, 0x80});
    std::mt19937 random(2);
    for (int i = 0; i < 20'000; ++i) {
        if (i % 500 == 0)
            probe->restart(random() & 1, {0x1F});
        probe->shiftDR(random() & (random() & 1 ? 0x3F : 0xFF));
        device->run(20);
    }
    EXPECT_FALSE(journal.complaints().empty());
    startLoader();
    EXPECT_EQ(command({0x09}, 2), (Bytes{settings.romMinor, settings.romMajor}));
}

} // namespace board
