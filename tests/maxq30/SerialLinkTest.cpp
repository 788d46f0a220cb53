// The serial adapter, on a scripted pseudo-terminal: finding the prompt, the binary protocol, time-outs,
// and the state in which the port is left.
#include "maxq30/FakeDevice.h"
#include "maxq30/ScriptedPort.h"
#include "maxq30/jtag/HSerialLink.h"
#include "maxq30/jtag/MAXQ30Serial2JTAGTargetInterface.h"
#include "maxq30/jtag/maxq_serial2jtag.h"
#include "maxq30/jtag/maxqd.h"
#include "project/PropertyValue.h"
#include "support/Failure.h"
#include "support/HException.h"
#include "support/TempDir.h"
#include "target/FakeTarget.h"

#include <chrono>
#include <sys/file.h>
#include <termios.h>

namespace {

using Step = ScriptedPort::Step;
using Steps = std::vector<Step>;

Steps opening()
{
    return {{"\r", ">"}, {"\r", "\r\n>"}, {"Z\r\0\5\0\4"s, "Z\r\n\5\4"}, {"\0\2"s, "\2"}, {"\0\10"s, "\10"}};
}

Steps operator+(Steps first, const Steps& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

struct SerialAdapter : ::testing::Test {
    SerialAdapter()
    {
        MAXQD_initSerial2JTAGDriver(&maxqd);
        MAXQD_promptTimeout = 700;
    }
    ~SerialAdapter() override
    {
        maxqd.close(&maxqd);
        MAXQD_promptTimeout = 100;
    }

    std::string open(Steps steps)
    {
        port.play(std::move(steps));
        return failureOf(
            [&] { EXPECT_EQ(maxqd.open(&maxqd, const_cast<char*>(port.name()), 0, nullptr), 1); });
    }
    HSerialLink* link() { return static_cast<HSerialLink*>(maxqd.link); }
    // One exchange on the open link, and what it failed with.
    std::string exchange(const std::string& expected, const std::string& answer,
                         const std::function<void()>& body)
    {
        port.play({{expected, answer}});
        std::string failure = failureOf(body);
        port.finish();
        return failure;
    }

    ScriptedPort port;
    _maxqd_t maxqd;
};

} // namespace

TEST_F(SerialAdapter, OpensThroughTextModeAndPutsThePortBack)
{
    int slave = ::open(port.name(), O_RDWR | O_NOCTTY);
    termios before, during, after;
    tcgetattr(slave, &before);
    ASSERT_EQ(open(opening()), "no failure");
    EXPECT_EQ(link()->timeout(), 1000u);
    tcgetattr(slave, &during);
    EXPECT_EQ(during.c_lflag & (ICANON | ECHO | ISIG), 0u);
    EXPECT_EQ(during.c_oflag & OPOST, 0u);
    EXPECT_EQ(cfgetospeed(&during), speed_t(B115200));
    EXPECT_EQ(failureOf([&] {
                  HSerialLink second(port.name(), 9600, 8, HSerialLink::NoParity, HSerialLink::OneStopBit);
              }),
              "open error Device or resource busy(16)");

    EXPECT_EQ(maxqd.setTimeout(&maxqd, 2000), 1000u);
    EXPECT_EQ(maxqd.setTimeout(&maxqd, 1000), 2000u);
    link()->setBaudrate(9600);
    tcgetattr(slave, &during);
    EXPECT_EQ(cfgetispeed(&during), speed_t(B9600));
    EXPECT_EQ(failureOf([&] { link()->setBaudrate(12345); }), "tcsetattr error Invalid argument(22)");

    EXPECT_EQ(maxqd.close(&maxqd), 1);
    EXPECT_EQ(maxqd.link, nullptr);
    EXPECT_EQ(maxqd.close(&maxqd), 1);
    tcgetattr(slave, &after);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_EQ(after.c_oflag, before.c_oflag);
    EXPECT_EQ(cfgetospeed(&after), cfgetospeed(&before));
    EXPECT_EQ(flock(slave, LOCK_EX | LOCK_NB), 0) << "still locked";
    ::close(slave);
}

TEST_F(SerialAdapter, EveryWayNotToFindThePromptHasItsMessage)
{
    const std::string noEcho = "Can't establish communications with the JTAG adapter (no echo response #";
    struct {
        const char* name;
        Steps steps;
        std::string failure;
    } cases[] = {
        {"silence: one carriage return, four reads", {{"\r", ""}}, noEcho + "1)"},
        {"stray characters are answered with another", {{"\r", "x"}, {"\r", "y"}, {"\r", ""}}, noEcho + "1)"},
        {"no second prompt", {{"\r", ">"}, {"\r", "abc"}}, noEcho + "2)"},
        {"no binary mode",
         {{"\r", ">"}, {"\r", ">"}, {"Z\r\0\5\0\4"s, "Z\r\n\5"}},
         "Cannot switch to binary mode"},
        {"binary mode without an answer",
         {{"\r", ">"}, {"\r", ">"}, {"Z\r\0\5\0\4"s, "Z\r\n\5\4"}, {"\0\2"s, ""}},
         "Binary mode transaction failed"},
    };
    for (auto& test : cases) {
        ScriptedPort other;
        other.play(test.steps);
        EXPECT_EQ(failureOf([&] { maxqd.open(&maxqd, const_cast<char*>(other.name()), 0, nullptr); }),
                  test.failure)
            << test.name;
        EXPECT_EQ(maxqd.link, nullptr) << test.name;
    }
    // A pulled cable shows in the next write, or, if that was under way already, in the missing echo.
    ScriptedPort pulled;
    pulled.play({{"\r", ">", true}});
    std::string failure =
        failureOf([&] { maxqd.open(&maxqd, const_cast<char*>(pulled.name()), 0, nullptr); });
    EXPECT_TRUE(failure == "Unable to write to serial port" || failure.starts_with(noEcho)) << failure;
    EXPECT_EQ(maxqd.link, nullptr);
    Steps afterJunk = opening();
    afterJunk[0] = {"\r\r\r\r", ">"};
    EXPECT_EQ(open(Steps{{"\r", "junk"}} + afterJunk), "no failure")
        << "stray characters are no failed reads";
}

TEST_F(SerialAdapter, ABabblingAdapterEndsTheSearch)
{
    EXPECT_EQ(open({{"\r", std::string(1000, 'x')}, {std::string(1000, '\r'), ""}}),
              "Can't establish communications with the JTAG adapter (no echo response #1)");
    ScriptedPort other;
    other.play({{"\r", ">"}, {"\r", std::string(1000, 'x')}});
    EXPECT_EQ(failureOf([&] { maxqd.open(&maxqd, const_cast<char*>(other.name()), 0, nullptr); }),
              "Can't establish communications with the JTAG adapter (no echo response #2)");
}

TEST_F(SerialAdapter, ScansAreFramesOfTheBinaryMode)
{
    ASSERT_EQ(open(opening()), "no failure");
    link()->setTimeout(5000);
    unsigned char bytes[3] = {}, status = 0;
    EXPECT_EQ(
        exchange("\3\0\0\0"s, "\1\x11\2\x22\3\x33", [&] { EXPECT_EQ(binaryDataRead(link(), bytes, 3), 3); }),
        "no failure");
    EXPECT_EQ(bytes[0], 0x11);
    EXPECT_EQ(bytes[2], 0x33);
    EXPECT_EQ(
        exchange("\3\x11\x22\x33", "\1a\2b\7c", [&] { EXPECT_EQ(binaryDataWrite(link(), bytes, 3), 7); }),
        "no failure");
    EXPECT_EQ(
        exchange("\1\x5A"s, "\3\xB4", [&] { EXPECT_EQ(maxqd.shiftInOutDR(&maxqd, 0x5A, &status), 0xB4); }),
        "no failure");
    EXPECT_EQ(status, 3);

    port.play({{"\0\1"s, "\1"}, {"\0\3"s, "\3"}, {"\1\2", "xy"}, {"\0\2"s, "\2"}, {"\0\10"s, "\10"}});
    maxqd.shiftInIR(&maxqd, 2);
    port.play({{"\0\1"s, "\1"},
               {"\0\3"s, "\3"},
               {"\1\4", "xy"},
               {"\0\2"s, "\2"},
               {"\0\10"s, "\10"},
               {"\0\3"s, "\3"},
               {"\1\1", "xy"},
               {"\0\10"s, "\10"}});
    maxqd.setSystemProgrammingBits(&maxqd, 1);
    // The TAP is reset in single pins, each echoed.
    Steps trst{{"\0\11"s, "\11"}};
    for (int i = 0; i < 5; ++i)
        trst.push_back({"\0\6"s, "\6"});
    port.play(trst + Steps{{"\0\12"s, "\12"}, {"\0\6"s, "\6"}});
    maxqd.trst(&maxqd);

    port.play({{"\2\x02\0"s, "abcd"}, {"\1\0"s, "ab"}});
    EXPECT_EQ(maxqd.loaderWrite(&maxqd, (const unsigned char*)"\2\0", 2), 1);
    // What is longer than a frame goes in several, with one zero byte at the end.
    std::string raw(600, 'r');
    auto frame = [](size_t count) {
        return Step{char(count) + std::string(count, 'r'), std::string(2 * count, '.')};
    };
    port.play({frame(255), frame(255), frame(90), {"\1\0"s, "ab"}});
    EXPECT_EQ(maxqd.loaderWrite(&maxqd, reinterpret_cast<const unsigned char*>(raw.data()), raw.size()), 1);
    port.finish();
}

TEST_F(SerialAdapter, WrongAndMissingAnswersHaveTheirMessages)
{
    ASSERT_EQ(open(opening()), "no failure");
    link()->setTimeout(1000);
    unsigned char bytes[3] = {};
    EXPECT_EQ(exchange("\0\11"s, "\0"s, [&] { maxqd.setTMS(&maxqd, 1); }), "Cannot set TMS");
    EXPECT_EQ(exchange("\0\14"s, "\13", [&] { maxqd.setTDI(&maxqd, 0); }), "Cannot set TDI");
    EXPECT_EQ(exchange("\0\6"s, "\7", [&] { maxqd.multiCycleTCK(&maxqd, 2); }), "Cannot cycle TCK");
    EXPECT_EQ(exchange("\0\4"s, "\5", [&] { maxqd.setNRST(&maxqd, 1); }), "Cannot set NRST");
    EXPECT_EQ(exchange("\0\7"s, "", [&] { maxqd.getTDO(&maxqd); }), "Binary mode transaction failed");
    EXPECT_EQ(exchange("\1\0"s, "\1", [&] { maxqd.shiftInOutDR(&maxqd, 0, nullptr); }),
              "MAXQD_shiftInOutDR read failed");
    EXPECT_EQ(exchange("\3\0\0\0"s, "abcde", [&] { maxqd.loaderRead(&maxqd, bytes, 3); }),
              "Binary mode data read failed (need 6, got 5)");

    // A pulled cable ends a wait at once, with the bytes that came.
    link()->setTimeout(60000);
    port.play({{"\3\0\0\0"s, "ab", true}});
    auto begin = std::chrono::steady_clock::now();
    std::string failure = failureOf([&] { maxqd.multiShiftOutDR8(&maxqd, bytes, 3); });
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    EXPECT_EQ(failure, "Binary mode data read failed (need 6, got 2)");
    port.finish();
    EXPECT_EQ(failureOf([&] { maxqd.multiShiftOutDR8(&maxqd, bytes, 3); }), "Binary mode data write failed");
    EXPECT_EQ(failureOf([&] { maxqd.shiftInOutDR(&maxqd, 0, nullptr); }), "MAXQD_shiftInOutDR write failed");
    EXPECT_EQ(failureOf([&] { maxqd.setNRST(&maxqd, 1); }), "Binary mode transaction failed");
}

TEST_F(SerialAdapter, AReaderThatIsGoneDoesNotHoldUpAWrite)
{
    HSerialLink stuck(port.name(), 115200, 8, HSerialLink::NoParity, HSerialLink::OneStopBit);
    std::vector<unsigned char> much(1 << 20);
    int written = stuck.write(much.data(), int(much.size()));
    EXPECT_GT(written, 0);
    EXPECT_LT(written, int(much.size()));
    stuck.setDTR(true); // no modem lines here
}

TEST(SerialTarget, PortsThatCannotBeOpenedTellTheReason)
{
    TempDir folder;
    struct {
        std::string port;
        const char* failure;
    } cases[] = {
        {folder / "nothing", "open error No such file or directory(2)"},
        {folder.path(), "open error Is a directory(21)"},
        {folder.write("file", "text"), "tcgetattr error Inappropriate ioctl for device(25)"},
        {"/dev/null", "tcgetattr error Inappropriate ioctl for device(25)"},
    };
    FakeHelpers helpers;
    MAXQ30Serial2JTAGTargetInterface target(&helpers);
    PropertyValueList list(false);
    target.getProperties(list);
    ASSERT_EQ(list.first()->propertyClass()->saveName(), "portName");
    EXPECT_EQ(list.first()->toString(), "COM1");
    for (const auto& test : cases) {
        list.first()->setValue(QString::fromStdString(test.port));
        try {
            target.connect(true);
            ADD_FAILURE() << test.port << " was opened";
        } catch (const HException& failure) {
            EXPECT_EQ(failure.message(), test.failure) << test.port;
            EXPECT_NE(failure.hint().find(test.port), std::string::npos);
        }
        EXPECT_FALSE(target.isConnected());
    }
}
