// The target I/O server against a memory and a console of arrays: every operation of the table, the
// format engine, and a target that asks for nonsense.
#include "support/HException.h"
#include "support/TempDir.h"
#include "target/FakeTarget.h"
#include "target/io/TargetIOServer.h"

#include <cmath>
#include <csignal>
#include <fstream>

namespace {

constexpr uint32_t Comm = 0x10;
constexpr uint32_t Block = 0x100;
constexpr uint32_t Texts = 0x1000;

struct Console : TargetIOServerTerminalInterface, TargetIOServerHelperFunctions {
    void addOutput(const QString& text) override { output += text.toLatin1().toStdString(); }
    QString getInputLine() override { return lines.isEmpty() ? QString() : lines.takeFirst(); }
    int inputLines() const override { return int(lines.size()); }
    QChar getInputChar() override
    {
        if (lines.isEmpty())
            return {};
        if (lines[0].isEmpty()) {
            lines.removeFirst();
            return QLatin1Char('\n');
        }
        QChar c = lines[0][0];
        lines[0].remove(0, 1);
        return c;
    }
    bool inputCharAvailable() const override { return !lines.isEmpty(); }
    void errorOccurred(const char* text) override { events += std::string("error:") + text + " "; }
    void debugBreakOccurred() override { events += "break "; }
    void inputRequested() override { events += "input "; }
    void outputUpdated() override { events += "output "; }
    void exitOccurred(int status) override { events += "exit:" + std::to_string(status) + " "; }
    void loadSymbols(const char* name, unsigned address) override
    {
        events += std::string("symbols:") + name + "@" + std::to_string(address) + " ";
    }
    std::string output;
    std::string events;
    QStringList lines;
};

struct IOServer : ::testing::Test {
    TempDir dir;
    FakeMemory data{false, 0x20000};
    FakeMemory code{false, 0x1000};
    Console console;
    TargetIOServer server{&console, &console};
    uint32_t nextText = Texts;

    void SetUp() override { data.addressRanges().add(0, 0x1FFFF, false); }

    uint32_t text(const std::string& value, FakeMemory* memory = nullptr)
    {
        uint32_t at = memory ? 0x80 : nextText;
        FakeMemory& where = memory ? *memory : data;
        memcpy(where.bytes.data() + at, value.c_str(), value.size() + 1);
        if (!memory)
            nextText += uint32_t(value.size()) + 1;
        return at;
    }
    // Up to a zero byte or the end of memory.
    std::string at(uint32_t address)
    {
        const char* text = reinterpret_cast<const char*>(data.bytes.data() + address);
        return std::string(text, strnlen(text, data.bytes.size() - address));
    }
    int word(uint32_t address) { return int(data.peekUint32(address)); }
    // The communication word is the argument.
    int direct(unsigned operation, uint32_t argument)
    {
        data.pokeUint32(Comm, argument);
        server.handleOperation(&data, &code, operation, Comm);
        return word(Comm);
    }
    // The argument block: words, with doubles and long longs as raw halves.
    int block(unsigned operation, std::initializer_list<uint32_t> words)
    {
        uint32_t to = Block;
        for (uint32_t w : words) {
            data.pokeUint32(to, w);
            to += 4;
        }
        return direct(operation, Block);
    }
    static uint32_t half(double value, int which)
    {
        uint64_t bits;
        memcpy(&bits, &value, 8);
        return uint32_t(which ? bits >> 32 : bits);
    }
    static uint32_t single(float value)
    {
        uint32_t bits;
        memcpy(&bits, &value, 4);
        return bits;
    }
    // What printf writes with these argument words.
    std::string printed(const std::string& format, std::initializer_list<uint32_t> arguments)
    {
        std::vector<uint32_t> words{text(format)};
        words.insert(words.end(), arguments);
        for (size_t i = 0; i < words.size(); ++i)
            data.pokeUint32(Block + uint32_t(i) * 4, words[i]);
        console.output.clear();
        int count = direct(10, Block);
        EXPECT_EQ(count, int(console.output.size())) << format;
        return console.output;
    }
};

} // namespace

TEST_F(IOServer, IntegerConversionsAsInC)
{
    EXPECT_EQ(printed("%d %i %u|%5d|%-5d|%05d", {uint32_t(-7), 7, uint32_t(-1), 42, 42, uint32_t(-42)}),
              "-7 7 4294967295|   42|42   |-0042");
    EXPECT_EQ(printed("%x %X %#x %#X %o %#o %#x", {255, 255, 255, 255, 8, 8, 0}), "ff FF 0xff 0XFF 10 010 0");
    EXPECT_EQ(printed("%+d % d %.3d|%8.3d|%.0d|%05.2d|", {5, 5, 5, 5, 0, 7}), "+5  5 005|     005||   07|");
    EXPECT_EQ(printed("%hd %hhd %hu %hhx", {0x18000, 0x1FF, 0x1FFFF, 0x1AB}), "-32768 -1 65535 ab");
    EXPECT_EQ(printed("%lld %llx %ld", {0xFFFFFFFF, 0x7FFFFFFF, 1, 0xF0000000, uint32_t(-3)}),
              "9223372036854775807 f000000000000001 -3");
    EXPECT_EQ(printed("%lld", {0, 0x80000000}), "-9223372036854775808");
    EXPECT_EQ(printed("%*d|%-*d|%.*d|%*d", {5, 1, 5, 2, 3, 3, uint32_t(-4), 4}), "    1|2    |003|4   ");
    EXPECT_EQ(printed("%'d %'u %'d", {1234567, 999, uint32_t(-1000)}), "1,234,567 999 -1,000");
    EXPECT_EQ(printed("%c%c%5c|%p|%%|%y", {'a', 'b', 'c', 0x1234}), "ab    c|0x1234|%|%y");
    EXPECT_EQ(printed("%s|%10s|%-6s|%.2s", {text("one"), text("two"), text("three"), text("four")}),
              "one|       two|three |fo");
    EXPECT_EQ(printed("abc%nde%hhn", {0x800, 0x804}), "abcde");
    EXPECT_EQ(word(0x800), 3);
    EXPECT_EQ(data.bytes[0x804], 5);
    EXPECT_EQ(data.bytes[0x805], 0xFF);
}

TEST_F(IOServer, FloatingConversionsAsInC)
{
    const char* formats[] = {"%f",   "%.0f",  "%#.0f", "%10.3f", "%-10.2f|", "%+.1f", "% f",  "%010.2f",
                             "%e",   "%.0e",  "%#.0e", "%E",     "%12.4e",   "%g",    "%G",   "%#g",
                             "%.3g", "%.10g", "%.0g",  "%#.3g",  "%.30f",    "%.20g", "%.12e"};
    const double values[] = {0.0, -0.0,  1.0,    -1.5,  0.1,     123456.789, 1e-5,      9.9999e-5, 1e6,
                             2.5, 1e100, 1e-300, 0.005, 99999.5, INFINITY,   -INFINITY, NAN};
    for (const char* format : formats)
        for (double value : values) {
            char expected[512];
            snprintf(expected, sizeof expected, format, value);
            EXPECT_EQ(printed(format, {half(value, 0), half(value, 1)}), expected) << format << " " << value;
        }
    // Operation 12: 4-byte floats.
    EXPECT_EQ(block(12, {text("%g %d"), single(2.5f), 7}), 5);
    EXPECT_EQ(console.output.substr(console.output.size() - 5), "2.5 7");
    EXPECT_EQ(printed("%'f", {half(1234567.25, 0), half(1234567.25, 1)}), "1,234,567.250000");
}

TEST_F(IOServer, WidthsOfABillionAreCountedNotStored)
{
    uint32_t format = text("%1000000000d%1999999999d%2147483647d");
    EXPECT_EQ(block(10, {format, 1, 2, 3}), INT32_MAX);
    EXPECT_EQ(console.output, std::string(1023, ' '));
    console.output.clear();
    EXPECT_EQ(block(10, {text("%.999999999f"), half(0.5, 0), half(0.5, 1)}), 1000000001);
    EXPECT_EQ(console.output.substr(0, 5), "0.500");
    EXPECT_EQ(console.output.size(), 1023u);
    // A string without an end is cut; the count is that of what was read.
    memset(data.bytes.data() + 0x8000, 'x', 0x4000);
    console.output.clear();
    EXPECT_EQ(block(10, {text("%s%s"), 0x8000, 0x8000}), 2046);
    EXPECT_EQ(console.output, std::string(1023, 'x'));
}

TEST_F(IOServer, FormatsFromCodeMemoryAndLists)
{
    uint32_t format = text("[%d]", &code);
    EXPECT_EQ(block(50, {format, 5}), 3);
    EXPECT_EQ(block(52, {format, 6}), 3);
    data.pokeUint32(0x300, 7);
    EXPECT_EQ(block(58, {text("<%d>"), 0x300}), 3);
    EXPECT_EQ(block(62, {format, 0x300}), 3);
    EXPECT_EQ(block(9, {2, text("(%d)"), 8}), 3); // fprintf to handle 2
    EXPECT_EQ(console.output, "[5][6]<7>[7](8)");
    EXPECT_EQ(block(57, {9, text("x"), 0x300}), -1); // no such file
}

TEST_F(IOServer, ScanfReadsOneLine)
{
    EXPECT_EQ(block(14, {text("%d"), 0x400}), -2);
    EXPECT_EQ(console.events, "input ");
    auto scan = [&](const char* line, const char* format, std::initializer_list<uint32_t> to) {
        console.lines = {QString::fromLatin1(line)};
        std::vector<uint32_t> words{text(format)};
        words.insert(words.end(), to);
        for (size_t i = 0; i < words.size(); ++i)
            data.pokeUint32(Block + uint32_t(i) * 4, words[i]);
        return direct(14, Block);
    };
    EXPECT_EQ(scan("  12 -34 0x1F 017 9", "%d %d %x %o %i", {0x400, 0x404, 0x408, 0x40C, 0x410}), 5);
    EXPECT_EQ(word(0x400), 12);
    EXPECT_EQ(word(0x404), -34);
    EXPECT_EQ(word(0x408), 0x1F);
    EXPECT_EQ(word(0x40C), 017);
    EXPECT_EQ(scan("0x10 010 10", "%i%i%i", {0x400, 0x404, 0x408}), 3);
    EXPECT_EQ(word(0x400) + word(0x404) + word(0x408), 16 + 8 + 10);
    EXPECT_EQ(scan("12345678", "%3d%2d%hhd", {0x400, 0x404, 0x408}), 3);
    EXPECT_EQ(word(0x400), 123);
    EXPECT_EQ(word(0x404), 45);
    EXPECT_EQ(scan("1.5e2 -2.25 x", "%f %lf", {0x400, 0x408}), 2);
    EXPECT_EQ(uint32_t(word(0x400)), single(150.0f));
    EXPECT_EQ(data.peekNumber(0x408, 8), uint64_t(half(-2.25, 1)) << 32 | half(-2.25, 0));
    data.pokeUint32(0x400, 0);
    EXPECT_EQ(scan("7.5", "%Lf", {0x400}), 1); // nothing is stored
    EXPECT_EQ(word(0x400), 0);
    EXPECT_EQ(scan("word another", "%s %2c%n", {0x400, 0x420, 0x440}), 2);
    EXPECT_EQ(at(0x400), "word");
    EXPECT_EQ(at(0x420).substr(0, 2), "an");
    EXPECT_EQ(word(0x440), 7);
    EXPECT_EQ(scan("5,x", "%d,%d", {0x400, 0x404}), 1);
    EXPECT_EQ(scan("5%6", "%d%%%*d", {0x400}), 1);
    EXPECT_EQ(scan("", "%d", {0x400}), -1);
    EXPECT_EQ(scan("x", "%d", {0x400}), 0);
    EXPECT_EQ(scan("-", "%d", {0x400}), 0);
    EXPECT_EQ(scan("18446744073709551615", "%llu", {0x400}), 1);
    EXPECT_EQ(data.peekNumber(0x400, 8), ~uint64_t(0));
    EXPECT_EQ(scan("1.5e999 -1.5e9999 1e-999", "%lf%lf%lf", {0x400, 0x408, 0x410}), 3);
    EXPECT_EQ(data.peekNumber(0x400, 8), uint64_t(half(INFINITY, 1)) << 32);
    EXPECT_EQ(data.peekNumber(0x408, 8), uint64_t(half(-INFINITY, 1)) << 32);
    EXPECT_EQ(data.peekNumber(0x410, 8), 0u);
    EXPECT_EQ(scan("beef", "%p", {0x400}), 1);
    EXPECT_EQ(word(0x400), 0xbeef);
}

TEST_F(IOServer, ConsoleCharactersAndLines)
{
    EXPECT_EQ(direct(21, 99), -2);
    EXPECT_EQ(direct(44, 99), -2);
    EXPECT_EQ(direct(17, 0), -2); // fgetc of handle 0
    EXPECT_EQ(direct(22, 0x400), -2);
    EXPECT_EQ(console.events, "input input input input ");
    EXPECT_EQ(direct(43, 0), 0);
    console.lines = {QString::fromLatin1("a\xE9"), QString(), "hello"};
    EXPECT_EQ(direct(43, 0), 1);
    EXPECT_EQ(direct(21, 0), 'a');
    EXPECT_EQ(direct(44, 0), int8_t(0xE9)); // a signed byte
    EXPECT_EQ(direct(17, 0), '\n');
    console.lines = {QString(QChar(0x20AC)), "hello", "hello", "longer than that"};
    EXPECT_EQ(direct(44, 0), 0); // no byte
    console.lines.removeFirst();
    data.bytes[0x406] = 0x7E;
    EXPECT_EQ(direct(22, 0x400), 0);
    EXPECT_EQ(at(0x400), "hello");
    EXPECT_EQ(data.bytes[0x406], 0x7E); // five characters write six bytes
    EXPECT_EQ(block(18, {0x400, 4, 0}), 0);
    EXPECT_EQ(at(0x400), "hel");
    EXPECT_EQ(block(33, {0x500, 2, 3, 0}), 3);
    EXPECT_EQ(at(0x500).substr(0, 6), "longer");

    console.events.clear();
    EXPECT_EQ(direct(23, 0x141), 0);
    EXPECT_EQ(direct(23, 0x100), 0);
    EXPECT_EQ(direct(24, text("line")), 0);
    EXPECT_EQ(block(19, {'!', 1}), '!');
    EXPECT_EQ(block(20, {text("err"), 2}), 1);
    EXPECT_EQ(block(34, {text("abcdef"), 2, 3, 1}), 3);
    EXPECT_EQ(console.output, "Aline\n!errabcdef");
    EXPECT_EQ(console.events, "output output output output output ");
}

TEST_F(IOServer, NumbersFromLines)
{
    console.lines = {"-5", "0x20", "-1", "7", "1.5", "2.5", "-9000000000", "12"};
    for (unsigned operation = 25; operation <= 32; ++operation)
        EXPECT_EQ(direct(operation, 0x400 + (operation - 25) * 8), 0);
    EXPECT_EQ(word(0x400), -5);
    EXPECT_EQ(word(0x408), 0x20);
    EXPECT_EQ(word(0x410), -1);
    EXPECT_EQ(uint32_t(word(0x420)), single(1.5f));
    EXPECT_EQ(data.peekNumber(0x428, 8), uint64_t(half(2.5, 1)) << 32 | half(2.5, 0));
    EXPECT_EQ(int64_t(data.peekNumber(0x430, 8)), -9000000000);
    EXPECT_EQ(direct(25, 0x400), -2);
}

TEST_F(IOServer, FilesFromOpenToRemove)
{
    uint32_t name = text(dir / "a.txt"), other = text(dir / "b.txt");
    int f = block(6, {name, text("w+")});
    ASSERT_EQ(f, 3);
    EXPECT_EQ(block(9, {3, text("n=%d %s\n"), 5, text("ok")}), 7);
    EXPECT_GE(block(20, {text("second\n"), 3}), 0);
    EXPECT_EQ(block(19, {'X', 3}), 'X');
    EXPECT_EQ(block(34, {text("raw!"), 1, 4, 3}), 4);
    EXPECT_EQ(direct(7, 3), 0);
    EXPECT_EQ(direct(38, 3), 19);
    EXPECT_EQ(block(36, {3, 0x600}), 0);
    EXPECT_EQ(word(0x600), 0); // the length leaves the file at its start
    EXPECT_EQ(block(13, {3, text("n=%d %s"), 0x600, 0x610}), 2);
    EXPECT_EQ(word(0x600), 5);
    EXPECT_EQ(at(0x610), "ok");
    EXPECT_EQ(direct(17, 3), '\n');
    memset(data.bytes.data() + 0x620, 0x7E, 16);
    EXPECT_EQ(block(18, {0x620, 16, 3}), 0);
    EXPECT_EQ(at(0x620), "second\n");
    EXPECT_EQ(data.bytes[0x62F], 0); // all sixteen bytes are written
    EXPECT_EQ(block(73, {'Z', 3}), 'Z');
    EXPECT_EQ(direct(17, 3), 'Z');
    EXPECT_EQ(block(33, {0x640, 1, 100, 3}), 5);
    EXPECT_EQ(direct(40, 3), 1);
    EXPECT_EQ(direct(41, 3), 0);
    EXPECT_EQ(direct(39, 3), 0);
    EXPECT_EQ(direct(40, 3), 0);
    EXPECT_EQ(block(35, {3, uint32_t(-4), 2}), 0);
    EXPECT_EQ(block(74, {3, 0x600}), 0);
    EXPECT_EQ(word(0x600), 15);
    data.pokeUint32(0x600, 2);
    EXPECT_EQ(block(75, {3, 0x600}), 0);
    EXPECT_EQ(direct(17, 3), '5');
    EXPECT_EQ(direct(37, 3), 0);
    EXPECT_EQ(block(18, {0x620, 3, 3}), 0);
    EXPECT_EQ(block(76, {other, text("w"), 3}), 3);
    EXPECT_EQ(direct(8, 3), 0);
    EXPECT_EQ(direct(8, 3), -1);
    EXPECT_EQ(block(78, {other}), 0);
    EXPECT_EQ(block(79, {name, other}), 0);
    EXPECT_EQ(block(78, {other}), 0);
    EXPECT_EQ(block(78, {other}), -1);
    console.output.clear();
    EXPECT_EQ(block(77, {text("why")}), 0);
    EXPECT_EQ(console.output, "why: No such file or directory\n");
    EXPECT_EQ(block(6, {text("/none/x"), text("r")}), -1);
    EXPECT_EQ(block(6, {name, text("nonsense")}), -1);
}

TEST_F(IOServer, TheFileTableFillsAndEmpties)
{
    uint32_t name = text(dir / "f"), mode = text("w");
    for (int handle = 3; handle < TargetIOServer::MaxFiles; ++handle)
        ASSERT_EQ(block(6, {name, mode}), handle);
    std::ofstream(dir / "kept") << "precious";
    EXPECT_EQ(block(6, {text(dir / "kept"), mode}), -1);
    EXPECT_EQ(std::filesystem::file_size(dir / "kept"), 8u); // what could not be opened was not emptied
    EXPECT_EQ(direct(80, 0), -1);
    EXPECT_EQ(direct(8, 77), 0);
    EXPECT_EQ(direct(80, 0), 77);
    server.init({});
    EXPECT_EQ(block(6, {name, mode}), 3);
}

TEST_F(IOServer, FilesThatFailShrinkOrNeverEnd)
{
    auto reason = [&] {
        console.output.clear();
        block(77, {text("")});
        return console.output;
    };
    // A full disk is not asked again for each blank of a width.
    EXPECT_EQ(block(6, {text("/dev/full"), text("w")}), 3);
    EXPECT_EQ(block(9, {3, text("%2000000000d"), 1}), 2000000000);
    EXPECT_EQ(reason(), ": No space left on device\n");
    EXPECT_EQ(direct(41, 3), 1);
    EXPECT_EQ(block(13, {3, text("%d"), 0x400}), -1); // written only
    EXPECT_EQ(reason(), ": Bad file descriptor\n");

    // A file that another handle cuts off while it is being read, with modes that only this host knows.
    std::string name = dir / "long";
    std::ofstream(name) << std::string(100000, 'x');
    for (const char* mode : {"rm", "r+bm", "r,ccs=UTF-8"}) {
        int f = block(6, {text(name), text(mode)});
        ASSERT_GT(f, 0) << mode;
        EXPECT_EQ(direct(17, uint32_t(f)), 'x') << mode;
        std::filesystem::resize_file(name, 1);
        EXPECT_LT(block(33, {0x4000, 1, 50000, uint32_t(f)}), 50000) << mode;
        std::ofstream(name) << std::string(100000, 'x');
    }

    int zero = block(6, {text("/dev/zero"), text("r")});
    EXPECT_EQ(block(13, {uint32_t(zero), text("%*s%n%*s"), 0x400}), 0);
    EXPECT_LT(uint32_t(word(0x400)), 1u << 28);

    // What is pushed back takes memory, so there is an end to it, but not to pushing back what was read.
    for (int i = 0; i < 10000; ++i) {
        EXPECT_EQ(direct(17, uint32_t(zero)), 0);
        ASSERT_EQ(block(73, {0, uint32_t(zero)}), 0);
    }
    int pushed = 0;
    while (pushed < 10000 && block(73, {'y', uint32_t(zero)}) == 'y')
        ++pushed;
    EXPECT_LT(pushed, 10000);
    EXPECT_EQ(block(13, {uint32_t(zero), text("%2c"), 0x400}), 1);
    EXPECT_EQ(at(0x400).substr(0, 2), "yy");
    EXPECT_EQ(block(73, {'z', uint32_t(zero)}), 'z');
}

TEST_F(IOServer, CommandsAndSignals)
{
    static volatile sig_atomic_t interrupted = 0;
    auto earlier = signal(SIGINT, [](int) { interrupted = 1; });
    EXPECT_EQ(block(83, {text("exit 2")}), 2 << 8);
    EXPECT_EQ(interrupted, 0);
    EXPECT_EQ(block(83, {text("kill -INT $$")}), SIGINT); // Ctrl-C during a command ends the run, too
    EXPECT_EQ(interrupted, 1);
    signal(SIGINT, earlier);

    earlier = signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(block(83, {text("kill -PIPE $$")}), SIGPIPE); // a command does not inherit that
    EXPECT_EQ(signal(SIGPIPE, earlier), SIG_IGN);
}

TEST_F(IOServer, BadHandlesAndBuffersAreErrors)
{
    const unsigned directs[] = {7, 8, 17, 37, 38, 39, 40, 41};
    for (unsigned operation : directs)
        for (uint32_t handle : {1u, 2u, 3u, 199u, 200u, 0x80000000u, 0xFFFFFFFFu})
            EXPECT_EQ(direct(operation, handle), -1) << operation << " " << handle;
    console.output.clear();
    block(77, {text("x")});
    EXPECT_EQ(console.output, "x: Bad file descriptor\n");
    ASSERT_EQ(block(6, {text(dir / "f"), text("w+")}), 3);
    EXPECT_EQ(block(33, {0x1FFF0, 1, 100, 3}), -1); // beyond memory
    EXPECT_EQ(block(33, {0, 0xFFFFFFFF, 0xFFFFFFFF, 3}), -1);
    EXPECT_EQ(block(34, {0, 0x10000, 0x10000, 1}), -1);
    EXPECT_EQ(block(34, {0xFFFFFFF0, 1, 100, 1}), -1);
    EXPECT_THROW(block(34, {0x1FFF0, 1, 100, 1}), HException);
    // Constants can be read where no data range is.
    data.bytes.resize(0x20100);
    console.output.clear();
    EXPECT_EQ(block(34, {0x20000, 1, 0x100, 1}), 0x100);
    EXPECT_EQ(console.output.size(), 0x100u);
    data.bytes.resize(0x20000);
    EXPECT_EQ(block(18, {0, 0xFFFFFFFF, 3}), -1);
    EXPECT_EQ(block(18, {0, 0, 3}), -1);
    EXPECT_EQ(block(33, {0, 0, 5, 3}), 0);
    EXPECT_THROW(block(10, {0x7FFFFFFF}), HException); // the memory's own failure
    EXPECT_THROW(direct(5, 0xFFFFFFF0), HException);
}

TEST_F(IOServer, EnvironmentArgumentsAndTheRest)
{
    setenv("QBURN_TEST", "value", 1);
    EXPECT_EQ(block(82, {text("QBURN_TEST"), 0x400, 6}), 0);
    EXPECT_EQ(at(0x400), "value");
    EXPECT_EQ(block(82, {text("QBURN_TEST"), 0x400, 5}), -1);
    EXPECT_EQ(block(82, {text("QBURN_NONE"), 0x400, 50}), -1);

    server.init({"", "one", "two"});
    EXPECT_EQ(block(84, {0x400, 200}), 3);
    EXPECT_EQ(at(uint32_t(word(0x400))) + "," + at(uint32_t(word(0x404))) + "," + at(uint32_t(word(0x408))),
              ",one,two");
    EXPECT_EQ(word(0x400), 0x410);
    EXPECT_EQ(word(0x40C), 0);
    EXPECT_EQ(block(84, {0x400, 4 + 5 + 8}), 2);
    EXPECT_EQ(block(84, {0x400, 4}), 0);
    EXPECT_EQ(word(0x400), 0);
    EXPECT_EQ(block(84, {0x400, 0}), 0);

    data.pokeNumber(0x700, 8, uint64_t(-7));
    data.pokeNumber(0x708, 8, 2);
    EXPECT_EQ(direct(48, 0x700), 0);
    EXPECT_EQ(int64_t(data.peekNumber(0x710, 8)), -3);
    for (uint64_t divisor : {uint64_t(0), uint64_t(-1)}) {
        data.pokeNumber(0x700, 8, uint64_t(INT64_MIN));
        data.pokeNumber(0x708, 8, divisor);
        EXPECT_EQ(direct(48, 0x700), 0);
        EXPECT_EQ(data.peekNumber(0x710, 8), 0u);
    }
    EXPECT_EQ(block(81, {0x400, 100}), 0);
    EXPECT_FALSE(std::filesystem::exists(at(0x400)));
    EXPECT_EQ(block(81, {0x400, 3}), -1);
    EXPECT_EQ(block(83, {text("exit 3")}), 3 << 8);
    EXPECT_EQ(direct(47, 0x400), 0);
    EXPECT_GT(uint32_t(word(0x400)), 1700000000u);

    console.events.clear();
    for (unsigned operation : {1u, 2u, 3u, 4u, 42u})
        EXPECT_EQ(direct(operation, 0x55), 0x55); // the word stays
    direct(5, text("own words"));
    direct(46, uint32_t(-3));
    block(120, {text("lib.kvx"), 64});
    EXPECT_EQ(console.events, "error:divide by zero error:stack overflow error:stack underflow "
                              "error:assert() failed break error:own words exit:-3 symbols:lib.kvx@64 ");
    console.events.clear();
    for (unsigned operation : {0u, 11u + 34u, 85u, 119u, 121u, 65535u})
        EXPECT_EQ(direct(operation, 0x55), 0x55);
    EXPECT_EQ(console.events, "");
}
