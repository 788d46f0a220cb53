// The text formats: one table of cases for each, every case a file and what must come of it, written
// as "ADDRESS:BYTES ..." with "=ENTRY" at the end when there is an entry point, or the error's text.
#include "loadfile/HexLoadFile.h"
#include "loadfile/IntelHexLoadFile.h"
#include "loadfile/SRecordLoadFile.h"
#include "loadfile/TIHexLoadFile.h"
#include "support/HException.h"

#include "support/TempDir.h"
#include "support/Failure.h"

#include <random>

namespace {

template <class File> std::string outcome(const std::string& text)
{
    try {
        File file(std::span<const char>(text.data(), text.size()));
        std::string result;
        for (const auto& section : file.loadFileSections().sections()) {
            char part[32];
            snprintf(part, sizeof part, "%s%x:", result.empty() ? "" : " ", section->address());
            result += part;
            for (uint32_t i = 0; i < section->length(); ++i) {
                snprintf(part, sizeof part, "%02x", section->data(false)[i]);
                result += part;
            }
        }
        if (file.hasEntryPoint()) {
            char part[32];
            snprintf(part, sizeof part, "=%lx", file.entryPoint());
            result += part;
        }
        return result;
    } catch (const HException& e) {
        return e.message();
    }
}

// An Intel Hex or S-record with its checksum put right; `body` is all that the checksum covers.
std::string record(const char* mark, const std::string& body, unsigned complement)
{
    unsigned sum = 0;
    for (size_t i = 0; i < body.size(); i += 2)
        sum += unsigned(std::stoul(body.substr(i, 2), nullptr, 16));
    char checksum[8];
    snprintf(checksum, sizeof checksum, "%02X\n", (complement - sum) & 0xFF);
    return mark + body + checksum;
}
std::string ihex(const std::string& body)
{
    return record(":", body, 0x100);
}
std::string srec(char type, const std::string& body)
{
    char mark[] = {'S', type, 0};
    return record(mark, body, 0xFF);
}

const std::string End = ":00000001FF\n";

struct Case {
    std::string text;
    std::string expected;
};

template <class File> void check(std::initializer_list<Case> cases)
{
    for (const Case& c : cases)
        EXPECT_EQ(outcome<File>(c.text), c.expected) << c.text;
}

} // namespace

TEST(IntelHex, Records)
{
    check<IntelHexLoadFile>({
        {":0300300002337A1E\n" + End, "30:02337a"},
        {":0300300002337a1e\r\n:00000001ff", "30:02337a"}, // lower case, CR LF, no last newline
        {ihex("020000000102") + ihex("020002000304") + ihex("010005000a") + End, "0:01020304 5:0a"},
        {ihex("010010000a") + ihex("01000F000b") + ihex("010010000c") + End, "10:0a f:0b0c"}, // file order
        {ihex("020000040001") + ihex("0100000011") + End, "10000:11"},
        {ihex("020000021000") + ihex("0100020011") + End, "10002:11"},
        {ihex("020000040001") + ihex("020000021000") + ihex("0100000011") + End,
         "20000:11"}, // both are added
        {ihex("0400000300010002") + End, "=10002"},
        {ihex("0400000512345678") + End, "=12345678"},
        {ihex("00000006") + ihex("000000ff") + End, ""}, // types above 5 are passed over
        {ihex("00001000") + End, "10:"},                 // an empty record opens a section
        {End + "\nrubbish", ""},                         // nothing behind the end record is read
        {ihex("02000004ffff") + ihex("01ffff00aa") + End, "ffffffff:aa"},
    });
}

TEST(IntelHex, Failures)
{
    check<IntelHexLoadFile>({
        {"", "invalid end of file in hex file : line 1"},
        {":0300300002337A1E\n", "invalid end of file in hex file : line 2"},
        {":0300300002337A1E\n\n" + End, "missing record mark in hex file : line 2"},
        {"rubbish\n", "missing record mark in hex file : line 1"},
        {":0300300002337A1F\n" + End, "invalid checksum : line 1"},
        {":03003000023G7A1E\n" + End, "invalid ASCII encoded byte : line 1"},
        {":03003000 2337A1E\n" + End, "invalid ASCII encoded byte : line 1"}, // a blank is no digit
        {":03003000+2337A1E\n" + End, "invalid ASCII encoded byte : line 1"}, // nor is a sign
        {":FF003000023", "invalid ASCII encoded byte : line 1"},              // a count that lies
        {":", "invalid ASCII encoded byte : line 1"},
        {":00000001", "invalid ASCII encoded byte : line 1"},
        {ihex("02000004ffff") + ihex("02ffff00aabb") + End,
         "data beyond the end of the address space : line 2"},
        // What ends at the last address is not continued at the first.
        {ihex("02000004ffff") + ihex("01ffff00aa") + ihex("020000040000") + ihex("01000000bb") + End,
         "ffffffff:aa 0:bb"},
        {":" + std::string(600, '0') + "\n",
         "missing record mark in hex file : line 2"}, // reads as two lines
    });
}

TEST(SRecord, Records)
{
    check<SRecordLoadFile>({
        {"", ""},
        {srec('0', "0500004142") + srec('1', "050010aabb"), "10:aabb"},
        {srec('2', "06123456aabb"), "123456:aabb"},
        {srec('3', "0712345678aabb"), "12345678:aabb"},
        {srec('1', "040010aa") + srec('1', "040011bb") + srec('1', "040013cc"), "10:aabb 13:cc"},
        {srec('1', "040010aa") + srec('5', "030001"), "10:aa"},
        {srec('7', "0512345678"), "=12345678"},
        {srec('8', "04123456"), "=123456"},
        {srec('9', "031234") + srec('1', "040010aa") + srec('9', "035678"),
         "10:aa=5678"}, // goes on behind S9
        {srec('1', "030010"), "10:"},
        {"S4005A", "invalid checksum : line 1"}, // nothing is read of other types but a checksum
        {"S400FF", ""},
    });
}

TEST(SRecord, Failures)
{
    check<SRecordLoadFile>({
        {"\n", "no leading 'S' character : line 1"},
        {srec('1', "040010aa") + "X", "no leading 'S' character : line 2"},
        {"S104001 0AA41\n", "invalid ASCII encoded byte : line 1"},
        {"S1040010AA42\n", "invalid checksum : line 1"},
        {srec('1', "040010aa") + srec('5', "030002"), "incorrect data record count : line 2"},
        {"S1FF0010AA", "invalid ASCII encoded byte : line 1"},
        {srec('1', "020010"), "invalid record length : line 1"}, // no room for its own checksum
        {srec('3', "08FFFFFFFEaabbcc"), "data beyond the end of the address space : line 1"},
        {"S", "invalid ASCII encoded byte : line 1"},
    });
}

TEST(TIHex, LinesAndFailures)
{
    const std::string sixteen = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F";
    const std::string bytes = "000102030405060708090a0b0c0d0e0f";
    check<TIHexLoadFile>({
        {"@F000\n" + sixteen + "\n" + sixteen + " \nq\n", "f000:" + bytes + bytes},
        {"@F000\n" + sixteen + "\r\nq", "f000:" + bytes},
        {"01 02\n@2\n03\n@10 behind a blank\n04\nq\nrubbish", "0:010203 10:04"},
        {"@FFFFFFFF\nAA\nq\n", "ffffffff:aa"},
        {"01,02;03\nq\n", "0:010203"}, // any separator
        {"q", ""},
        {"01 02\n", "unexpected end of file : line 2"},
        {"@12G4\nq\n", "invalid ASCII encoded byte : line 1"},
        {"@100000000\nq\n", "invalid address : line 1"},
        {"@\nq\n", "invalid address : line 1"},
        {"0102\nq\n", "invalid ASCII encoded byte : line 1"},
        {"@FFFFFFFF\nAA BB\nq\n", "data beyond the end of the address space : line 2"},
    });
}

TEST(Hex, LinesAndFailures)
{
    check<HexLoadFile>({
        {"", ""},
        {"00001000 01 02 0a\n00001003 FF\n00002000\n", "1000:01020aff 2000:"},
        {"00001000 01 02\r\n", "1000:0102"},
        {"0000100\n", "invalid ASCII encoded byte : line 1"}, // eight characters with the newline
        {"000010\n", "invalid address : line 1"},
        {"00001000 01\n\n", "invalid address : line 2"},
        {"00001000\t01\n", "invalid seperator : line 1"},
        {"0000100x 01\n", "invalid ASCII encoded byte : line 1"},
        {"00001000 0\n", "invalid ASCII encoded byte : line 1"},
        {"FFFFFFFF 01 02\n", "data beyond the end of the address space : line 1"},
    });
}

// A file passes through a buffer: lines that cross its end, and a line longer than all of it, must read
// as they do from memory.
TEST(TextFormats, FilesReadAsTheirBytesDo)
{
    TempDir dir;
    std::string text;
    for (unsigned i = 0; i < 9000; ++i) {
        char body[64];
        snprintf(body, sizeof body, "%02X%08X%0*X", 5 + i % 16 + 1, i * 16, int(i % 16 + 1) * 2, i & 0xF);
        text += srec('3', body);
    }
    SRecordLoadFile fromFile(dir.write("a.s19", text).c_str());
    SRecordLoadFile fromMemory(std::span<const char>(text.data(), text.size()));
    const auto& a = fromFile.loadFileSections().sections();
    const auto& b = fromMemory.loadFileSections().sections();
    ASSERT_EQ(a.size(), b.size());
    for (size_t i = 0; i < a.size(); ++i)
        ASSERT_TRUE(*a[i] == *b[i]) << i;

    text = srec('1', "040010aa") + std::string(300000, 'S');
    std::string expected = outcome<SRecordLoadFile>(text);
    EXPECT_EQ(failureOf([&] { SRecordLoadFile file(dir.write("long.s19", text).c_str()); }), expected);
}

// Whatever the bytes, a reader ends with sections or with an HException.
TEST(TextFormats, RandomBytesEndInAResult)
{
    std::mt19937 random(1);
    const std::string seeds[] = {ihex("0400000311223344") + ihex("03001000aabbcc") + End,
                                 srec('1', "050010aabb") + srec('5', "030001") + srec('9', "030000"),
                                 "@10\n00 11 22\n@20\n33\nq\n", "00001000 01 02 03\n00002000 04\n"};
    const char alphabet[] = "0123456789ABCDEFabcdef:S@q \n\r\0-";
    for (int round = 0; round < 20000; ++round) {
        std::string text = seeds[round % 4];
        for (unsigned change = random() % 6 + 1; change > 0; --change)
            text[random() % text.size()] = alphabet[random() % (sizeof alphabet - 1)];
        outcome<IntelHexLoadFile>(text);
        outcome<SRecordLoadFile>(text);
        outcome<TIHexLoadFile>(text);
        outcome<HexLoadFile>(text);
    }
    EXPECT_EQ(HException::count(), 0);
}
