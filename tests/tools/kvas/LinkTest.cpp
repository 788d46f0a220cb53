// Layout, symbols of several files, data directives, and what hostile sources get.
#include "tools/kvas/Sources.h"
#include "zoff/Records.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFTags.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Link : public Sources {};

} // namespace

TEST_F(Link, DataDirectivesGiveTheirBytes)
{
    load({".DATA\n"
          "DB 1, -1, 'A', '\\n', \"a\\x41\\\"\"\nDW 0x1234\nDC3 0x123456\nDL 0x89ABCDEF\nDA there\n"
          ".FILL 2, 0xEE\n.ALIGN BYTE[4]\nthere: .ASCIZ \"z\"\n.FLOAT 1.5\n.SPACE there - there + 3\n"
          ".DOUBLE -2\nDB 0b101\n"});
    EXPECT_EQ(image("data"), "01ff410a614122"
                             "3412"
                             "563412"
                             "efcdab89"
                             "1400"
                             "eeee"
                             "7a00"
                             "0000c03f"
                             "000000"
                             "00000000000000c0"
                             "05");
}

TEST_F(Link, ThePointIsWhereTheStatementBegins)
{
    dir.write("inner.s", " DB 8, .\n");
    load({".DATA\nDB 1\nx: DB 1, ., \"ab\", . - x\ny: DA ., ., y\n.INCLUDE \"inner.s\"\nDB .\n"
          ".SPACE 8 - (. - x) + 15\nEND = .\n.PUBLIC END\n"});
    EXPECT_EQ(image("data").substr(0, 30), "01"
                                           "0101616200"
                                           "060006000600"
                                           "080c"
                                           "0e");
    EXPECT_EQ(valueOf("END"), 24);
}

TEST_F(Link, OperatorsBindAsInCAndFoldOrStay)
{
    struct {
        const char* text;
        int64_t value;
    } cases[] = {
        {"2 + 3 * 4", 14},
        {"(2 + 3) * 4", 20},
        {"-7 / 2", -3},
        {"-7 % 3", -1},
        {"1 << 4 | 1 ^ 3 & 2", 0x13},
        {"-1 >> 63", 1},
        {"-8 ASHR 1", -4},
        {"1 < 2 == 1", 1},
        {"3 >= 4 || 2 != 2", 0},
        {"1 && !0", 1},
        {"10 - 4 - 3", 3},
        {"0x101 ??  0", 0x80},
        {"WORDADDR(7)", 3},
        {"~0 + 1", 0},
        {"1 << 64", 0},
        {"1 > 0 && 1 <= 1", 1},
        // Each operator beside those of the next level; from left to right all would give something else.
        {"1 || 0 && 0", 1},
        {"0 && 1 | 1", 0},
        {"1 | 1 ^ 1", 1},
        {"1 ^ 1 & 0", 1},
        {"2 & 2 == 2", 0},
        {"2 & 2 != 3", 0},
        {"2 == 2 < 3", 0},
        {"3 == 2 <= 2", 0},
        {"1 == 3 > 2", 1},
        {"1 == 3 >= 2", 1},
        {"1 != 2 < 3", 0},
        {"1 < 1 << 1", 1},
        {"1 <= 4 >> 2", 1},
        {"5 > 8 >> 1", 1},
        {"2 >= 2 ASHR 1", 1},
        {"1 << 1 + 1", 4},
        {"16 >> 3 - 1", 4},
        {"16 ASHR 1 + 1", 4},
        {"7 - 2 * 3", 1},
        {"7 - 6 / 2", 4},
        {"7 - 7 % 4", 4},
        {"3 * 5 ?? 0", 6},
        {"9 / 3 ?? 0", 9},
        {"9 % 5 ?? 0", 1},
        {"-5 ?? 0", -3},
        {"- ~ + !2", 1},
        {"100 / 5 / 2", 10},
        {"64 >> 2 << 1", 32},
        {"(3 > 3) + (3 < 3) * 2 + (3 >= 3) * 4 + (3 <= 3) * 8", 12},
        {"(2 && 1) + (2 || 4) * 2", 3},
        // What wraps or is shifted out.
        {"(1 << 63) / -1 >> 63", 1},
        {"(1 << 63) % -1", 0},
        {"5 >> 64", 0},
        {"-5 ASHR 64", -1},
        {"1 << -1", 0},
        {"0xFFFFFFFFFFFFFFFF + 1", 0},
    };
    std::string source = ".DATA\nbase:\n.PUBLIC base\n", late;
    for (size_t i = 0; i < std::size(cases); ++i) {
        std::string number = std::to_string(i);
        source += ".PUBLIC c" + number + ", l" + number + "\nc" + number + " = " + cases[i].text + "\n";
        // The same, not known before the label is.
        source += "l" + number + " = (" + cases[i].text + ") + (end - base)\n";
    }
    load({source + "end: .PUBLIC end\n"});
    for (size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(valueOf(("c" + std::to_string(i)).c_str()), cases[i].value) << cases[i].text;
        EXPECT_EQ(valueOf(("l" + std::to_string(i)).c_str()), cases[i].value) << cases[i].text;
    }
}

TEST_F(Link, JumpsGrowOnlyWhereTheyMust)
{
    // 127 words between: within reach for the first jump, one too far for the second.
    load({".CODE\na: JUMP near\n" + repeat("NOP\n", 127) + "near: JUMP far\n" + repeat("NOP\n", 128) +
          "far: JUMP a\nCALL near\nJUMP end\nend: NOP\n"});
    EXPECT_EQ(valueOf("near"), 0x100);
    EXPECT_EQ(valueOf("far"), 0x100 + 4 + 0x100);
    EXPECT_EQ(image("code").substr(0, 4), "7f0c");
    EXPECT_EQ(image("code").substr(0x200, 8), "010b020c");
    EXPECT_EQ(image("code").substr(2 * 0x204, 8), "000b000c"); // the start of memory, from far away
}

TEST_F(Link, FilesShareOnlyTheirPublicNames)
{
    load({".PUBLIC main, shared\n.CODE\nmain: CALL helper\nMOVE A[0], #shared\nlocal: NOP\nshared = 0x21\n",
          ".PUBLIC helper\n.CODE\nhelper: MOVE A[1], #shared\nlocal: JUMP local\nloop: JUMP .x\n.x: RET\n"
          "other: JUMP .x\n.x: RET\n"});
    EXPECT_EQ(image("code"), "023d"
                             "2109"
                             "3ada"
                             "2119"
                             "ff0c"
                             "000c"
                             "0d8c"
                             "000c"
                             "0d8c");
    EXPECT_EQ(module->publicSymbols().size(), 3u);
    EXPECT_EQ(symbol("loop.x"), nullptr); // labels within a function are not for the debugger
    // A label of another may be used with its full name, before and after.
    load({".CODE\nstart: JUMP main.loop\nmain: NOP\n.loop: JUMP .loop\n.end: JUMP .loop\nlast: JUMP "
          "main.end\n"});
    EXPECT_EQ(image("code"), "010c3adaff0cfe0cfe0c");
    EXPECT_EQ(symbol("main.loop"), nullptr);
    EXPECT_EQ(link({".PUBLIC a\n.CODE\na: JUMP b\n", ".PUBLIC a\n.CODE\n  a: JUMP .c\nb:\n"}),
              "source2.s:3:3: error: the public symbol a is defined twice\n"
              "source1.s:3:9: error: undefined symbol b\n"
              "source2.s:3:11: error: undefined symbol a.c\n");
}

TEST_F(Link, SectionsFollowOneAnotherInTheirMemory)
{
    load({".PUBLIC _RAM_Start_Address\n_RAM_Start_Address = 0x8000\n"
          ".SECTION vectors, CODE\nNOP\n.DATA\nv: DB 1, 2\nDW 0x1234\n.CODE\nc: NOP\n.BSS\nz: .SPACE 3\n"
          ".CONST\nk: .INIT data\n.SECTION ee, EEPROM\nDB 9\n.SECTION high, CODE\nORG 0x100\nh: DL v, "
          "SIZEOF(bss)\n"
          ".SECTION data\nDB 7\n"});
    EXPECT_EQ(valueOf("c"), 2);
    EXPECT_EQ(valueOf("v"), 0x8000);
    EXPECT_EQ(valueOf("z"), 0x8008);
    EXPECT_EQ(valueOf("k"), 4);
    EXPECT_EQ(valueOf("h"), 0x100);
    EXPECT_EQ(image("data"), "0102341207");
    EXPECT_EQ(image("const"), "0102341207");
    EXPECT_EQ(image("high"), "0080000003000000");
    EXPECT_TRUE(section("code")->goesIntoLoadFile());
    EXPECT_FALSE(section("data")->goesIntoLoadFile());
    EXPECT_EQ(section("ee")->sectionKind(), unsigned(ZOFFSection::Eeprom));

    job.definitions = {{"COUNT", 4}, {"COUNT", 3}};
    load({".DATA\nbyte equ 7\n.FILL COUNT, byte\n"});
    EXPECT_EQ(module->allSymbols().size(), 1u);
    EXPECT_EQ(image("data"), "070707");
    job.definitions.clear();

    job.placement.data = 0x9000;
    load({".DATA\nv: DB 1\n"});
    EXPECT_EQ(valueOf("v"), 0x9000);
    EXPECT_EQ(link({".CODE\nORG 0x10\n.FILL 8\n.SECTION x, CODE\nORG 0x16\nNOP\n"}),
              "source1.s:5:1: error: section x at 0x16 overlaps section code, which ends at 0x18\n");
}

TEST_F(Link, WhatIsNotPlacedYetHasNoNumber)
{
    EXPECT_EQ(link({".DATA\nDB 1, 2\n.CODE\n.FILL SIZEOF(data), 1\n ORG STARTOF(data)\n",
                    ".CODE\n DB STARTOF(none)\n.SECTION other\n"}),
              "source1.s:4:7: error: the count must be known here: section data has no address yet\n"
              "source1.s:5:6: error: the origin must be known here: section data has no address yet\n"
              "source2.s:3:10: error: the first mention of a section names its kind\n"
              "source2.s:2:5: error: there is no section none\n");
    EXPECT_EQ(link({".DATA\nDB 1\n.CODE\nLINKIF SIZEOF(data)\nNOP\nENDLINKIF\n"}),
              "source1.s:4:8: error: the condition must not depend on addresses: section data has no "
              "address yet\n");
    EXPECT_EQ(link({".PUBLIC _RAM_Start_Address\n_RAM_Start_Address = 1 << 31\n.DATA\nDB 1\n"}),
              "source1.s:2:1: error: data cannot begin at 2147483648\n");
    EXPECT_EQ(link({".SECTION x, CODE, 0x80002\n"}),
              "source1.s:1:19: error: flags 0xF and 0x80000 are given by the kind and by LOAD or NOLOAD\n");
    // Sections that come later have their sizes when the layout settles.
    load({".BSS\ns: .SPACE SIZEOF(tail) + 1\n.SECTION tail, DATA4\nDB 1, 2, 3\n"});
    EXPECT_EQ(section("bss")->getSize(), 4);
}

TEST_F(Link, ConditionsAtLinkTimeDropWhatTheyEnclose)
{
    load({".CODE\nLINKIF wanted\nNOP\nENDLINKIF\nLINKIF 1 - wanted\nRET\nENDLINKIF\nRL\n",
          ".PUBLIC wanted\nwanted = 0\n"});
    EXPECT_EQ(image("code"), "0d8c4a8a");
    EXPECT_NE(link({".CODE\nx: LINKIF x\nNOP\nENDLINKIF\n"}), "");
    // What is dropped has no faults, only labels; what follows has its place.
    load({".PUBLIC a, b\n.CODE\nLINKIF 0\na: MOVE A[0], #1 << 40\nDB 300\nENDLINKIF\nb: JUMP a\n"
          "LINKIF -1\n.CODE\nNOP\nENDLINKIF\n"});
    EXPECT_EQ(image("code"), "ff0c3ada");
    EXPECT_EQ(valueOf("a"), 0);
    EXPECT_EQ(link({".CODE\nENDLINKIF\nLINKIF 1\n LINKIF 2\n .DATA\nORG 8\nENDLINKIF\n", " LINKIF 0\n"}),
              "source1.s:2:10: error: ENDLINKIF without LINKIF\n"
              "source1.s:4:1: error: LINKIF within LINKIF\n"
              "source1.s:5:1: error: the section changes within LINKIF\n"
              "source1.s:7:10: error: LINKIF and ENDLINKIF must stand in the same run of code\n"
              "source1.s: error: a LINKIF has no ENDLINKIF\n"
              "source2.s:1:10: error: no section: .CODE, .DATA or .SECTION must come first\n");
}

TEST_F(Link, ErrorsNameTheirPlaceAndTheRestIsStillRead)
{
    EXPECT_EQ(link({".CODE\n  MOVE A[0], #1 +\n  FROB\nx: x: NOP\n\tMOVE\tA[0], #y ; why\n NOP NOP\n"
                    "SP: NOP\n DB 256\n DW -40000\n JUMP 3\n DB \"open\n .INCLUDE \"none.s\"\n .FUNC f\n"}),
              "source1.s:2:18: error: expected an expression\n"
              "source1.s:3:3: error: unknown operation FROB\n"
              "source1.s:4:4: error: x is already defined in line 4\n"
              "source1.s:6:6: error: unexpected text behind the operands\n"
              "source1.s:7:1: error: SP is the name of a register\n"
              "source1.s:11:10: error: a closing \" is missing\n"
              "source1.s:12:11: error: cannot read none.s\n"
              "source1.s:13:8: error: the function has no .ENDFUNC\n"
              "source1.s:5:14: error: undefined symbol y\n");
    EXPECT_EQ(link({".CODE\n DB 256\n DW -40000\n JUMP 3\n NOP\n MOVE A[0], #1 << 33\n MOVE A[0], #1 / (a - "
                    "a)\na:\n"}),
              "source1.s:2:5: error: the value 256 does not fit in 8 bits\n"
              "source1.s:3:5: error: the value -40000 does not fit in 16 bits\n"
              "source1.s:4:2: error: the instruction is at an odd address\n"
              "source1.s:4:2: error: the target is at an odd address\n"
              "source1.s:5:2: error: the instruction is at an odd address\n"
              "source1.s:6:2: error: the instruction is at an odd address\n"
              "source1.s:6:2: error: the value 8589934592 does not fit in 32 bits\n"
              "source1.s:7:2: error: the instruction is at an odd address\n"
              "source1.s:7:2: error: division by zero\n");
    EXPECT_EQ(link({".DATA\n DW 1, -32769 \n DA 0, 65536\n DC3 1 << 24\n .SPACE 1 << 25\n .FLOAT 1, 1e39\n"}),
              "source1.s:6:12: error: the number is too large\n");
    EXPECT_EQ(link({".DATA\n DW 1, -32769 \n DA 0, 65536\n DC3 1 << 24\n .SPACE 1 << 25\n"}),
              "source1.s:2:8: error: the value -32769 does not fit in 16 bits\n"
              "source1.s:3:8: error: the value 65536 does not fit in 16 bits\n"
              "source1.s:4:6: error: the value 16777216 does not fit in 24 bits\n"
              "source1.s:5:9: error: the space is too large\n");
    EXPECT_EQ(
        link({".DATA\n x = 1 % (e - e)\nDB STARTOF(data) / SIZEOF(none)\n.SECTION none, NONE\ny = SP + 1\n"
              "z = DP[0]\ne = y\n.SECTION\n"}),
        "source1.s:5:5: error: a register cannot be part of an expression\n"
        "source1.s:6:5: error: a register cannot be part of an expression\n"
        "source1.s:8:9: error: expected the name of a section\n"
        "source1.s:7:5: error: undefined symbol y\n");
    EXPECT_EQ(link({".DATA\n x = 1 % (e - e)\n DB STARTOF(data) / SIZEOF(none)\n.SECTION none, NONE\ne:\n"}),
              "source1.s:2:2: error: modulus by zero\n"
              "source1.s:3:5: error: division by zero\n");
    // Defined through 200 others, and one more.
    std::string chain = ".DATA\n";
    for (int i = 0; i < 200; ++i)
        chain += "s" + std::to_string(i) + " = s" + std::to_string(i + 1) + " + 1\n";
    load({chain + "s200 = 5\nDB s0\n"});
    EXPECT_EQ(image("data"), "cd");
    EXPECT_NE(link({chain + "s200 = s201\ns201 = 5\n"}), "");
    // The outermost values that fit.
    load({".DATA\nDB -128, 255\nDW -32768, 65535\nDC3 -8388608, 16777215\nDL -2147483648, 4294967295\n"
          "DA -32768, 65535\n"});
    EXPECT_EQ(image("data"), "80ff"
                             "0080ffff"
                             "000080ffffff"
                             "00000080ffffffff"
                             "0080ffff");
}

TEST_F(Link, HostileSourcesFailSoonAndCleanly)
{
    std::string chain = ".PUBLIC s0\n.DATA\n";
    for (int i = 0; i < 5000; ++i)
        chain += "s" + std::to_string(i) + " = s" + std::to_string(i + 1) + " + 1\n";
    std::string types = ".TYPE t0, INT(4)\n";
    for (int i = 0; i < 100; ++i)
        types += ".TYPE t" + std::to_string(i + 1) + ", PTR(t" + std::to_string(i) + ")\n";
    dir.write("self.s", ".INCLUDE \"self.s\"\n");
    for (int i = 0; i < 30; ++i) {
        std::string next = ".INCLUDE \"i" + std::to_string(i + 1) + ".s\"\n";
        dir.write("i" + std::to_string(i) + ".s", next + next);
    }
    dir.write("i30.s", "\n");
    std::string blocks = ".CODE\n.FUNC f\n" + repeat(".BLOCK\n", 100000);
    struct {
        std::string source;
        const char* error;
    } cases[] = {
        {"a = b\nb = a\n.DATA\nDB a\n", "circular reference to a"},
        {chain + "s5000:\n", "symbols are defined through too many others"},
        {".DATA\nDB " + std::string(100000, '(') + "1\n", "nested too deeply"},
        {".DATA\nDB " + std::string(100000, '-') + "1\n", "nested too deeply"},
        {".DATA\nx: DB x" + repeat("+x", 100000) + "\n", "too complex"},
        {".TYPE t, " + repeat("PTR(", 100000) + "\n", "nested too deeply"},
        {types, "nested too deeply"},
        {blocks, "blocks are nested too deeply"},
        {".DATA\n.FILL 0x7FFFFFFF\n", "the count must be"},
        {".DATA\n.SPACE 0x7FFFFFFFFFFFFFFF\n", "the space is too large"},
        {".DATA\n" + repeat(".FILL 0x1000000\n", 300), "too large"},
        {".DATA\nORG 0x7FFFFFFF\nDL 1, 2\n", "too large"},
        {".DATA\na: .SPACE b - a + 1\nb:\n", "the size changes the addresses"},
        {".DATA\n.SPACE -1\n", "the space is too large"},
        {".INCLUDE \"self.s\"\n", "self.s includes itself"},
        {".INCLUDE \"i0.s\"\n", "too many files are included"},
        {repeat("?\n", 1000), "too many errors"},
        {std::string("\0\xFF\x80 DB\n", 7), "expected a label"},
        {".DATA\n" + std::string(100000, 'n') + ": DB 1\n", "name is too long"},
        {".CODE\n.INIT code\n", "a section cannot hold itself"},
        {".DATA\n.INIT other\n.SECTION other, DATA\n.INIT data\n", "cannot itself be the source"},
        {".STRUCT s\n.FIELD f, STRUCT s\n", "is not defined yet"},
        {".TYPE t, ARRAY(ARRAY(INT(4), 0x1000000), 0x1000000)\n", "too large"},
        {"DB 1\n", "no section"},
    };
    for (const auto& c : cases) {
        std::string errors = link({c.source});
        EXPECT_NE(errors.find(c.error), std::string::npos) << c.error << " is missing in\n"
                                                           << errors.substr(0, 400) << "\nfor\n"
                                                           << c.source.substr(0, 100);
    }
}

TEST_F(Link, DamagedSourcesNeverCrash)
{
    auto read = [](const char* name) {
        std::ifstream file(name);
        return std::string((std::istreambuf_iterator<char>(file)), {});
    };
    std::string good = read(QBURN_SOURCE_DIR "/examples/calc/calc.s");
    std::string startup = read(QBURN_SOURCE_DIR "/examples/lib/crt.s");
    job.directories = {QBURN_SOURCE_DIR "/examples/lib"};
    ASSERT_EQ(link({startup, good}), "");
    uint32_t random = 1;
    auto next = [&](size_t limit) {
        random = random * 1664525 + 1013904223;
        return size_t(random >> 8) % limit;
    };
    for (int i = 0; i < 300; ++i) {
        std::string bad = good;
        for (size_t n = next(8) + 1; n--;) {
            size_t at = next(bad.size());
            switch (next(3)) {
            case 0: bad[at] = char(next(256)); break;
            case 1: bad.erase(at, next(40)); break;
            case 2: bad.insert(at, bad.substr(next(bad.size()), next(40))); break;
            }
        }
        (void)link({startup, bad});
    }
}

// The program itself: what is left on disk, and what a user sees.
TEST_F(Link, OutputIsWrittenWholeOrNotAtAll)
{
    std::string good = dir.write("good.s", ".CODE\nx: NOP\n"), bad = dir.write("bad.s", "\n FROB\n");
    std::string out = dir.write("out.kvx", "before");
    auto run = [&](const std::string& arguments) {
        std::string command = std::string(KVAS_PROGRAM) + " " + arguments + " >" + (dir / "text") + " 2>&1";
        int status = system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };
    auto contents = [](const std::string& name) {
        std::ifstream in(name);
        return std::string((std::istreambuf_iterator<char>(in)), {});
    };
    EXPECT_EQ(run("-o " + out + " " + bad), 1);
    EXPECT_EQ(contents(dir / "text"), bad + ":2:2: error: unknown operation FROB\n");
    EXPECT_EQ(contents(out), "before");
    EXPECT_EQ(run("-o " + (dir / "none/out.kvx") + " " + good), 1);
    EXPECT_EQ(run("-o " + good + " " + good), 1);
    EXPECT_EQ(run(dir / "missing.s"), 1);
    EXPECT_EQ(contents(dir / "text"), (dir / "missing.s") + ": error: cannot read the file\n");
    EXPECT_EQ(run("-o " + out + " " + good), 0);
    EXPECT_EQ(run("--dump " + out), 0);
    EXPECT_NE(contents(dir / "text").find("NOP"), std::string::npos);
    EXPECT_EQ(run("--dump " + good), 1);
    EXPECT_EQ(run("--dump " + out + " " + good), 1);
    for (const char* definition : {"=1", "1x", "'a b=1'", ".x", "SP=1", "x=0x", "x=y"})
        EXPECT_EQ(run(std::string("-D ") + definition + " -o " + out + " " + good), 1) << definition;
    EXPECT_EQ(run("-D _a.b=-3 -o " + out + " " + good), 0);
    EXPECT_EQ(system((std::string(KVAS_PROGRAM) + " --dump " + out + " >/dev/full 2>/dev/null").c_str()),
              1 << 8);
    // A pipe stays a pipe, and a link a link.
    std::string pipe = dir / "pipe", alias = dir / "alias.kvx";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    int reader = open(pipe.c_str(), O_RDWR);
    EXPECT_EQ(run("-o " + pipe + " " + good), 0);
    std::string piped(4096, 0);
    piped.resize(size_t(std::max<ssize_t>(read(reader, piped.data(), piped.size()), 0)));
    close(reader);
    std::filesystem::create_symlink(out, alias);
    EXPECT_EQ(run("-o " + alias + " " + good), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(alias));
    EXPECT_EQ(run("-o " + (dir / "pipe.kvx") + " " + good), 0);
    EXPECT_EQ(piped, contents(dir / "pipe.kvx"));
    // What other tools leave out: a symbol without a name.
    std::string other = dir.write("other.kvx", Records()
                                                   .module()
                                                   .text("x")
                                                   .tags({ZOFFTag::MkSymbol, ZOFFTag::Public, ZOFFTag::Null,
                                                          ZOFFTag::MkSymbol, ZOFFTag::Drop})
                                                   .file());
    EXPECT_EQ(run("--dump " + other), 0);
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        files += entry.path().string().find("out.kvx.") != std::string::npos;
    EXPECT_EQ(files, 0u);
}
