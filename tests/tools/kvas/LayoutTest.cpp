// Where sections, fragments and items come to lie, and how long instructions get.
#include "tools/kvas/Sources.h"
#include "zoff/ZOFFInsn.h"

namespace {

class Layout : public Sources {
protected:
    // The byte address to which the jump at a label leads, from its bytes; -1 when there is none.
    int64_t targetOf(const std::string& label) const
    {
        ZOFFInsn* insn = section("code")->findInsnAt(uint32_t(valueOf(label.c_str())));
        if (!insn)
            return -1;
        auto bytes = insn->bytes();
        EXPECT_EQ(bytes.size(), size_t(insn->length()));
        if (bytes.size() == 2)
            return insn->pc() + 2 + 2 * int8_t(bytes[0]);
        int64_t words = 0;
        for (size_t at = 0; at < bytes.size(); at += 2)
            words = words << 8 | bytes[at];
        return 2 * words;
    }
};

} // namespace

TEST_F(Layout, EachMemoryCountsItsOwnAddresses)
{
    std::string source = ".PUBLIC _RAM_Start_Address\n_RAM_Start_Address = 0x8001\n"
                         ".SECTION n, NONE\nn1: DB 1\n.SECTION m, NONE5\nn2: DB 1\n"
                         ".SECTION ee, EEPROM\ne1: DB 1\n.SECTION ef, EEPROM, NOLOAD\ne2: DB 1\n"
                         ".SECTION d2, DATA, LOAD, 0x30\nd1: DB 1\n.SECTION d3, DATA3\nv2: DB 1\n.SECTION "
                         "d4, DATA4\nv3: DB 1\n"
                         ".CODE\nc1: DB 1\n.CONST\nc2: DB 1\n"
                         // Parts without a memory are never in one another's way.
                         ".SECTION m\nORG 0\nDB 1\n";
    load({source});
    const std::pair<const char*, int64_t> places[] = {{"n1", 0},      {"n2", 4},      {"e1", 0},
                                                      {"e2", 4},      {"d1", 0x8004}, {"v2", 0x8008},
                                                      {"v3", 0x800C}, {"c1", 0},      {"c2", 2}};
    for (const auto& [name, address] : places)
        EXPECT_EQ(valueOf(name), address) << name;
    const std::pair<const char*, uint32_t> flags[] = {{"n", 0},  {"m", 5},          {"ee", 0x80006},
                                                      {"ef", 6}, {"d2", 0x80032},   {"d3", 3},
                                                      {"d4", 4}, {"code", 0x80001}, {"const", 0x80001}};
    for (const auto& [name, value] : flags)
        EXPECT_EQ(section(name)->flags(), value) << name;

    job.placement.code = 0x101;
    job.placement.data = 0x4000; // counts more than the symbol
    load({source});
    EXPECT_EQ(valueOf("c1"), 0x102);
    EXPECT_EQ(valueOf("d1"), 0x4000);
    EXPECT_EQ(valueOf("e1"), 0);
    EXPECT_EQ(valueOf("n1"), 0);
    job.placement = {};
    EXPECT_EQ(link({".PUBLIC _RAM_Start_Address\n _RAM_Start_Address = -1\n.DATA\nDB 1\n"}),
              "source1.s:2:2: error: data cannot begin at -1\n");
}

TEST_F(Layout, SectionsReachFromTheirLowestToTheirHighestByte)
{
    // Parts downwards, and one that is empty and lies outside.
    load({".CODE\nDL STARTOF(x), SIZEOF(x), STARTOF(y), SIZEOF(y)\n.SECTION x, CODE\nORG 0x60\nDB 1, 2\nORG "
          "0x40\nDB "
          "3\nORG 0x200\nnothing:\n.SECTION y, CODE\nORG 0x10\nfirst:\n",
          ".SECTION y, CODE\nORG 0x80\nDB 5\n"});
    EXPECT_EQ(image("code"), "4000000022000000"
                             "8000000001000000");
    EXPECT_EQ(valueOf("first"), 0x10);
    EXPECT_EQ(section("x")->getSize(), 0x22);
    // A chain of sizes, from the last section to the first, without a label that would tell of the change.
    load({".SECTION a, DATA\n.SPACE SIZEOF(b)\n.SECTION b, DATA\n.SPACE SIZEOF(c)\n.SECTION c, DATA\n"
          ".SPACE SIZEOF(d)\n.SECTION d, DATA\n.FILL 5\n.CODE\nDW STARTOF(d)\n"});
    EXPECT_EQ(image("code"), "1800");
    EXPECT_EQ(section("a")->getSize(), 5);
    EXPECT_EQ(link({".DATA\n.SPACE 8\na: .SPACE b - a + 1\nb: .SPACE 0\n"}),
              "source1.s:3:11: error: the size changes the addresses that it depends on\n");
}

TEST_F(Layout, OriginsAndAlignmentsMix)
{
    load({".CODE\nDB 1\n.ALIGN 1\nDB 2, 3\n.ALIGN 4\na: .ALIGN 4\nb: DB 4\nORG 0x21\nc: .ALIGN BYTE[16]\nd: "
          "DB 5\n",
          // Goes on behind the other file's origin, at an even address.
          ".CODE\ne: NOP\n.CONST\nf: NOP\n.DATA\nDB 1\ng: .ALIGN 0x10000\nh: DB 2\n"});
    const std::pair<const char*, int64_t> places[] = {{"a", 4},    {"b", 4},    {"c", 0x21}, {"d", 0x30},
                                                      {"e", 0x32}, {"f", 0x34}, {"g", 1},    {"h", 0x10000}};
    for (const auto& [name, address] : places)
        EXPECT_EQ(valueOf(name), address) << name;
    EXPECT_EQ(section("code")->fragments().size(), 3u);
    EXPECT_EQ(link({".CODE\n.FUNC f\n ORG 8\n.DATA\nNOP\n.ENDFUNC\n ORG -1\n .ALIGN 0\n .ALIGN BYTE[2\n "
                    ".FILL 1, 256\n"
                    " .FILL 2, -129\n"}),
              "source1.s:3:7: error: an origin within a function\n"
              "source1.s:4:1: error: the section changes within a function\n"
              "source1.s:7:6: error: the origin must be from 0 to 4294967295\n"
              "source1.s:8:9: error: the alignment must be from 1 to 65536\n"
              "source1.s:9:15: error: expected ']' behind the alignment\n"
              "source1.s:10:11: error: the byte must be from -128 to 255\n"
              "source1.s:11:11: error: the byte must be from -128 to 255\n");
}

TEST_F(Layout, OverlapsAreFoundInWhateverOrder)
{
    // One long part under two others, entered from the top; neighbours and empty parts are no overlap.
    EXPECT_EQ(
        link({".SECTION c, CODE\nORG 0x40\nDB 1\n.SECTION b, CODE\nORG 0x10\nDB 1\n.SECTION a, CODE\nORG 0\n"
              ".FILL 0x48\n.SECTION d, CODE\nORG 0x48\nDB 1\n.SECTION e, CODE\nORG 0x20\nnothing:\n"
              ".SECTION ee, EEPROM\nORG 0x40\nDB 1\n.DATA\nORG 0x41\nDB 1\n"}),
        "source1.s:5:1: error: section b at 0x10 overlaps section a, which ends at 0x48\n"
        "source1.s:2:1: error: section c at 0x40 overlaps section a, which ends at 0x48\n");
    // Within one section, over two files.
    EXPECT_EQ(link({".CODE\nORG 4\nNOP\nNOP\n", ".CODE\nNOP\nORG 6\nNOP\n"}),
              "source2.s:3:1: error: section code at 0x6 overlaps section code, which ends at 0x8\n");
}

TEST_F(Layout, TargetsAtTheEdgesOfTheShortForm)
{
    struct {
        const char* operation;
        unsigned operationByte; // the last one, in both forms
    } cases[] = {{"JUMP ", 0x0C}, {"JUMP NC, ", 0x6C}, {"CALL ", 0x3D}, {"DJNZ LC[0], ", 0x4D}};
    for (const auto& c : cases) {
        for (int words : {-129, -128, 127, 128}) {
            // Far from the start of memory, so that the far form has three words.
            std::string jump = std::string("here: ") + c.operation + "there\n";
            load({words < 0 ? ".CODE\nORG 0x20000\nthere:\n" + repeat("NOP\n", -1 - words) + jump
                            : ".CODE\nORG 0x20000\n" + jump + repeat("NOP\n", words) + "there: NOP\n"});
            bool isNear = words >= -128 && words <= 127;
            ZOFFInsn* insn = section("code")->findInsnAt(uint32_t(valueOf("here")));
            ASSERT_NE(insn, nullptr);
            EXPECT_EQ(insn->length(), isNear ? 2 : 6) << c.operation << words;
            EXPECT_EQ(targetOf("here"), valueOf("there")) << c.operation << words;
            EXPECT_EQ(insn->bytes()[size_t(insn->length()) - 1], c.operationByte) << c.operation;
        }
    }
    // A data address takes as many words as its value, wherever it is.
    load({".CODE\nMOVE A[0], #a\nMOVE A[0], #b\nMOVE A[0], #c\nMOVE A[0], #d\n.DATA\nORG 0xFF\na: DB 1\nb: "
          "DB 1\nORG "
          "0xFFFF\nc: DB 1\nd: DB 1\n"});
    EXPECT_EQ(image("code"), "ff09"
                             "010b0009"
                             "ff0bff09"
                             "010b000b0009");
}

TEST_F(Layout, LongFormsStayWhereTheShortWouldDoAgain)
{
    // When the first jump grows, the second reaches its target: the alignment takes up the growth.
    load({".CODE\nJUMP far\nNOP\nNOP\nsecond: JUMP third\n" + repeat("NOP\n", 125) +
          ".ALIGN 8\nthird: NOP\nORG 0x800\nfar: NOP\n"});
    EXPECT_EQ(valueOf("third"), 264);
    EXPECT_EQ(targetOf("second"), 264);
    EXPECT_EQ(section("code")->findInsnAt(8)->length(), 4);
}

TEST_F(Layout, ManyJumpsThatPushEachOtherSettle)
{
    // Each jump reaches its target until the jump behind it grows, so that each round lengthens one.
    for (int count : {45, 400}) {
        std::string source = ".CODE\n";
        for (int i = 0; i < count; ++i) {
            std::string number = std::to_string(i);
            source += "j" + number + ": JUMP t" + number + "\n";
            if (i)
                source += "t" + std::to_string(i - 1) + ":\n";
            source += repeat("NOP\n", 126);
        }
        load({source + "NOP\nNOP\nt" + std::to_string(count - 1) + ": NOP\n"});
        for (int i = 0; i < count; ++i) {
            std::string number = std::to_string(i);
            ASSERT_EQ(targetOf("j" + number), valueOf(("t" + number).c_str())) << i;
        }
    }
}
