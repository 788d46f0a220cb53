// What directives accept and refuse, over the borders of files.
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Sources.h"

namespace {

class Directives : public Sources {};

} // namespace

TEST_F(Directives, SectionsKeepThePropertiesOfTheirFirstMention)
{
    load({".SECTION x, DATA, LOAD, 0x40000030\n.SECTION x\n.SECTION data, DATA4, LOAD\n.DATA\nDB 1\n",
          ".SECTION x, DATA, 0x10, LOAD, 0x40000020\nDB 1\n"});
    EXPECT_EQ(section("x")->flags(), 0x40080032u);
    EXPECT_EQ(section("data")->flags(), 0x80004u);
    EXPECT_EQ(
        link({".SECTION x, CODE\n", " .SECTION x, EEPROM\n.SECTION x, CODE, NOLOAD\n.SECTION x, CODE, 0x10\n"
                                    ".SECTION y, RAM\n.SECTION z, CODE, LOAD, 1 << 32\n.SECTION\n"}),
        "source2.s:1:11: error: the section was given other properties before\n"
        "source2.s:2:10: error: the section was given other properties before\n"
        "source2.s:3:10: error: the section was given other properties before\n"
        "source2.s:4:13: error: unknown kind of section: CODE, DATA, DATA3, DATA4, EEPROM, NONE or NONE5\n"
        "source2.s:5:25: error: the flags must be from 0 to 4294967295\n"
        "source2.s:6:9: error: expected the name of a section\n");
    // Each place that names a section which nobody makes.
    EXPECT_EQ(link({".DATA\n.INIT a\nDL STARTOF(b)\nDL SIZEOF(c), 1 + SIZEOF(d)\n.INIT a\n"}),
              "source1.s:2:7: error: there is no section a\n"
              "source1.s:3:4: error: there is no section b\n"
              "source1.s:4:4: error: there is no section c\n"
              "source1.s:4:19: error: there is no section d\n");
}

TEST_F(Directives, IncludedFilesAreFoundBesideTheirReaderFirst)
{
    dir.write("sub/inner.s", "DB 1\n.INCLUDE \"deeper.s\"\n FROB1\nDB 9\n");
    dir.write("sub/deeper.s", "DB 2\n FROB2\n");
    dir.write("lib/deeper.s", "DB 3\n");
    dir.write("deeper.s", "DB 4\n");
    job.directories = {dir / "lib", dir / "sub"};
    EXPECT_EQ(
        link({".DATA\n.INCLUDE \"sub/inner.s\"\n FROB3\n .INCLUDE \"none.s\" ; gone\n .INCLUDE \"sub\"\n"}),
        "sub/deeper.s:2:2: error: unknown operation FROB2\n"
        "sub/inner.s:3:2: error: unknown operation FROB1\n"
        "source1.s:3:2: error: unknown operation FROB3\n"
        "source1.s:4:11: error: cannot read none.s\n"
        "source1.s:5:11: error: cannot read sub\n");
    dir.write("sub/inner.s", "DB 1\n.INCLUDE \"deeper.s\"\nDB 9\n");
    dir.write("sub/deeper.s", "DB 2\n");
    std::string absolute = ".INCLUDE \"" + (dir / "lib/deeper.s") + "\"\n";
    load({".DATA\n.INCLUDE \"sub/inner.s\"\n.INCLUDE \"deeper.s\"\n.INCLUDE \"inner.s\"\n" + absolute});
    EXPECT_EQ(image("data"), "010209"
                             "04"
                             "010209"
                             "03");
    // A name with a leading dot belongs to the label before it, also when that stands in another file; the
    // directory of an included file counts for lines and declarations, too.
    dir.write("sub/inner.s", "x: NOP\n.LINE \"a.c\", 3\nNOP\n.DECL x, \"x.c\", 4\n");
    load({".CODE\n.INCLUDE \"sub/inner.s\"\n.y: JUMP x.y\n"});
    EXPECT_EQ(section("code")->findInsnAt(2)->locus()->file()->fileName()->c_str(), dir / "sub/a.c");
    EXPECT_EQ(symbol("x")->locus()->file()->fileName()->c_str(), dir / "sub/x.c");
    // 32 files deep, and one more.
    for (int i = 0; i < 40; ++i)
        dir.write("n" + std::to_string(i) + ".s", "DB 1\n.INCLUDE \"n" + std::to_string(i + 1) + ".s\"\n");
    dir.write("n30.s", "DB 1\n");
    load({".DATA\n.INCLUDE \"n0.s\"\n"});
    EXPECT_EQ(section("data")->getSize(), 31);
    dir.write("n30.s", " .INCLUDE \"n31.s\"\n");
    dir.write("n31.s", "DB 1\n");
    EXPECT_EQ(link({".DATA\n.INCLUDE \"n0.s\"\n"}), "n30.s:1:11: error: files are included too deeply\n");
}

TEST_F(Directives, LibrariesJoinOnceAndAskForFurtherOnes)
{
    dir.write("lib/a.s", ".LIBRARY b\n.PUBLIC a\n.CODE\na: CALL b\n");
    dir.write("lib/b.s", ".LIBRARY c\n.LIBRARY a\n.PUBLIC b\n.CODE\nb: CALL c\n");
    dir.write("lib/c.s", ".PUBLIC c\n.CODE\nc: CALL d\n");
    job.directories = {dir / "lib"};
    // The second source is a library, too, and named twice.
    std::string d = dir.write("d.s", ".PUBLIC d\n.CODE\nd: RET\n");
    load({".LIBRARY d\n.CODE\nCALL a\n.LIBRARY a\n.LIBRARY a\n"});
    EXPECT_EQ(image("code"), "013d" // a
                             "0d8c" // d, asked for first
                             "003d" // b
                             "003d" // c
                             "fc3d");
    EXPECT_EQ(module->libraries().size(), 4u);
    job.sources = {d, d, dir / "./d.s"};
    kvas::Diagnostics diagnostics;
    EXPECT_NE(kvas::link(job, diagnostics), "");
    EXPECT_EQ(diagnostics.text(), "");
    EXPECT_EQ(link({" .LIBRARY none\n.LIBRARY\n"}), "source1.s:1:11: error: there is no library none.s\n"
                                                    "source1.s:2:9: error: expected the name of a library\n");
}

TEST_F(Directives, NothingOfOneFileHoldsInTheNext)
{
    // Section, last label, hidden instructions, stack adjust, types and structures end with their file.
    EXPECT_EQ(link({".CODE\nx:\n.HIDDEN ON\n.ADJUST -4\n.TYPE t, INT(4)\n", "NOP\n"}),
              "source2.s:1:4: error: no section: .CODE, .DATA or .SECTION must come first\n");
    EXPECT_EQ(link({".CODE\n.TYPE t, INT(4)\n.STRUCT s\n.ENDSTRUCT\nx:\n.y: NOP\n",
                    ".CODE\n JUMP x.y\nz: .VAR z, t\n.TYPE u, PTR(STRUCT s)\n"}),
              "source2.s:3:12: error: unknown type t\n"
              "source2.s:4:22: error: the structure s is not defined\n"
              "source2.s:2:7: error: undefined symbol x.y\n");
    load({".CODE\n.HIDDEN ON\n.ADJUST -4\nx: NOP\n", ".CODE\n.y: NOP\n.PUBLIC z\nz = .y\n"});
    EXPECT_TRUE(section("code")->findInsnAt(0)->hidden());
    EXPECT_FALSE(section("code")->findInsnAt(2)->hidden());
    EXPECT_EQ(section("code")->findInsnAt(0)->stackAdjust(), -4);
    EXPECT_EQ(section("code")->findInsnAt(2)->stackAdjust(), 0);
    EXPECT_EQ(valueOf("z"), 2);
}

TEST_F(Directives, PublicNamesAndTheirFaults)
{
    // A file's own meaning counts, wherever it stands.
    load({".PUBLIC x\nx = 1\n", ".DATA\nDB x\nx = 2\nDB x\n.FILL x, x\n", ".DATA\nDB x\n.FILL x, 7\n"});
    EXPECT_EQ(image("data"), "02020202"
                             "0107");
    EXPECT_EQ(link({".PUBLIC x, y, .z\nx = 1\n", " .PUBLIC x\n", ".PUBLIC x\n  x: NOP\n",
                    ".VAR SP, INT(2)\n.PUBLIC u\n.DECL u, "
                    "\"u.c\", 3\n"}),
              "source1.s:1:15: error: a label with a leading dot cannot be public\n"
              "source1.s:1:12: error: the public symbol y is not defined\n"
              "source2.s:1:10: error: the public symbol x is not defined\n"
              "source3.s:2:5: error: no section: .CODE, .DATA or .SECTION must come first\n"
              "source3.s:1:9: error: the public symbol x is not defined\n"
              "source4.s:3:7: error: the public symbol u is not defined\n"
              "source4.s:1:6: error: undefined symbol SP\n");
}

TEST_F(Directives, LineEndsAndOddBytes)
{
    load({".DATA\r\nx:\tDB 'A', ';', '/', \"\xC3\xA4;//\" ; \xC3\xA4\r\n\r\n.PUBLIC $y\r\n $y EQU 3 // "
          "\"\r\nDB '\\t', '\\r', "
          "'\\0', '\\\\', '\"', '\\xfF', $y // last, without an end"});
    EXPECT_EQ(image("data"), "413b2f"
                             "c3a43b2f2f"
                             "090d005c22ff03");
    std::string longLine = ".DATA\nDB 0";
    for (int i = 1; i < 50000; ++i)
        longLine += "," + std::to_string(i % 256);
    load({longLine});
    EXPECT_EQ(section("data")->getSize(), 50000);
    EXPECT_EQ(link({".DATA\r\n DB 1 2\r\n DB \"a\r\n DB 'ab'\r\n DB '\r\n DB \"\\q\"\r\n DB \"\\x1\"\r\n DB "
                    "0x\r\n DB 12a\r\n"
                    " DB 18446744073709551616\r\n DB 1 +\r\n DB (1\r\n DB 1,\r\n: NOP\r\n DB \xC3\xA4\r\n"}),
              "source1.s:2:7: error: unexpected text behind the operands\n"
              "source1.s:3:7: error: a closing \" is missing\n"
              "source1.s:4:7: error: a closing ' is missing\n"
              "source1.s:5:6: error: a character is missing\n"
              "source1.s:6:7: error: unknown escape \\q\n"
              "source1.s:7:8: error: \\x needs two hexadecimal digits\n"
              "source1.s:8:5: error: malformed number\n"
              "source1.s:9:5: error: malformed number\n"
              "source1.s:10:5: error: the number is too large\n"
              "source1.s:11:8: error: expected an expression\n"
              "source1.s:12:7: error: expected ')' behind the expression\n"
              "source1.s:13:7: error: expected an expression\n"
              "source1.s:14:1: error: expected a label, an instruction or a directive\n"
              "source1.s:15:5: error: expected an expression\n");
}
