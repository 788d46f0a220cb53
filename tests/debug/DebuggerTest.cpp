// Sessions of the debugger: a program and its requests, lines and names, disassembled text, memories.
#include "maxq30/cpu/MAXQ30Registers.h"
#include "support/HException.h"
#include "support/Path.h"
#include "tests/debug/DebuggerFixture.h"
#include "zoff/ZOFFfiles.h"

TEST_F(Debugger, ServesAProgramUntilItExits)
{
    program(
        ".LIBRARY console\n.PUBLIC main\n.CODE\n.FUNC main\nMOVE A[0], #text\nCALL puts\nMOVE A[0], #5\nRET\n"
        ".ENDFUNC\n.DATA\ntext: .ASCIZ \"hello\"\n");
    subject.start("start", false);
    EXPECT_EQ(wait(), 0);
    EXPECT_EQ(status, 5);
    EXPECT_EQ(output, "hello\n");
    int64_t control = 0;
    ASSERT_TRUE(subject.getLinkerSymbolValue("dbgCntrlWord", control)) << "found with the underscore, too";
    EXPECT_EQ(target.data.peekUint32(uint32_t(control)), 0xFFFFFFFFu)
        << "the program is told that nobody serves it";
    EXPECT_FALSE(subject.debugIOEnabled());
    EXPECT_TRUE(host.errors.isEmpty());
    EXPECT_FALSE(subject.isStopped()) << "what has ended is no stop";
}

TEST_F(Debugger, EntryPointsByNumberSymbolAndDefault)
{
    program(Loop);
    int64_t twice = 0;
    ASSERT_TRUE(subject.getLinkerSymbolValue("twice", twice));
    subject.start("twice", true);
    EXPECT_EQ(wait(), 19);
    subject.start(QStringLiteral("0x%1").arg(twice, 0, 16), true);
    EXPECT_EQ(wait(), 19);
    subject.start("nowhere", true);
    EXPECT_EQ(host.errors, QStringList{"entry point symbol nowhere not found"});
    wait();
    EXPECT_EQ(function(0), "start");
    EXPECT_THROW(subject.start("0xzz", true), HException);
}

TEST_F(Debugger, AProgramWithoutTheTwoWordsRunsUnserved)
{
    program(".PUBLIC start\n.CODE\nstart: NOP\nJUMP start\n", false);
    subject.start("start", false);
    EXPECT_FALSE(subject.debugIOEnabled());
    EXPECT_FALSE(subject.isStopped());
    subject.stop();
    EXPECT_TRUE(subject.isStopped());
}

TEST_F(Debugger, ALinkThatFailsIsToldAndTriedAgain)
{
    program(".LIBRARY console\n.PUBLIC main\n.CODE\n.FUNC main\nMOVE A[0], #text\nCALL puts\nRET\n.ENDFUNC\n"
            ".DATA\ntext: .ASCIZ \"hello\"\n");
    subject.start("start", false);
    target.data.linkLost = true;
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(subject.isStopped());
    EXPECT_EQ(host.errors, QStringList{"link lost"});
    target.data.linkLost = false;
    EXPECT_EQ(wait(), 0);
    EXPECT_EQ(host.errors.value(1), "the target answers again");
    EXPECT_EQ(output, "hello\n");
}

TEST_F(Debugger, NothingIsLeftInATargetThatIsClearedOverABrokenLink)
{
    program(".LIBRARY console\n.PUBLIC main\n.CODE\n.FUNC main\n.again: JUMP .again\n.ENDFUNC\n");
    subject.start("start", false);
    ASSERT_TRUE(subject.setBreakpoint(0, false, false, 0, -1, QString()));
    target.data.linkLost = true;
    EXPECT_THROW(subject.clear(), HException);
    EXPECT_TRUE(target.breakpoints.empty()) << "records that are gone";
    EXPECT_TRUE(target.stopped) << "cleared, too";

    ASSERT_TRUE(subject.setBreakpoint(0, false, false, 0, -1, QString()));
    target.connected = false;
    subject.clear();
    EXPECT_TRUE(target.breakpoints.empty());
}

TEST_F(Debugger, ARequestForMemoryThatIsNotThereGetsAnErrorForAnAnswer)
{
    program(".LIBRARY console\n.PUBLIC main\n.CODE\n.FUNC main\nMOVE A[0], #0x7FFFFFF0\nCALL puts\nCMP #-1\n"
            "MOVE A[0], #9\nJUMP E, .end\nMOVE A[0], #1\n.end: RET\n.ENDFUNC\n");
    subject.start("start", false);
    EXPECT_EQ(wait(), 0);
    EXPECT_EQ(status, 9);
    EXPECT_EQ(host.errors, QStringList{"request 24 of the program failed: no memory there"});
}

TEST_F(Debugger, AnExecutableMayClaimAnyLineAndLength)
{
    program(".CODE\n.LINE \"s.c\", 2147483646\nNOP\n.LINE 2147483647\nNOP\n", false);
    QStringList text;
    subject.getDisassemblyText(text);
    EXPECT_EQ(text.mid(0, 5).join('|').toStdString(),
              "--- s -- 2147483646 ----------------------------------------|"
              "line 2147483646|    da3a                NOP|"
              "line 2147483647|    da3a                NOP");
    target.code.reads = 0;
    using R = MAXQ30Registers;
    R registers;
    registers.setPC(0x100);
    EXPECT_EQ(subject.nextInstruction(&registers, false, 0x100, 0xF0000000), 0x102u);
    EXPECT_EQ(target.code.reads, 1) << "just the instruction";
    registers.setPC(0x50000);
    EXPECT_THROW(subject.nextInstruction(&registers, false, 0x50000, 16), HException) << "no memory there";
}

TEST_F(Debugger, LinesNamesAndExecutables)
{
    program(Loop);
    QString file;
    Path path;
    int64_t address = subject.getLineAddress(file, Path(source), 9);
    ASSERT_GT(address, 0);
    EXPECT_EQ(file.toStdString(), executable);
    EXPECT_EQ(subject.getAddressLine(uint32_t(address), file, path), 9);
    EXPECT_EQ(path.osPath(), source);
    EXPECT_EQ(subject.getAddressLine(0x7000, file, path), -1);
    EXPECT_EQ(subject.executableNames(), QStringList{QString::fromStdString(executable)});
    EXPECT_TRUE(subject.sourceFileNames(file).contains(QString::fromStdString(source)));
    EXPECT_TRUE(subject.lineNumbers(file, Path(source)).contains(9));
    EXPECT_TRUE(subject.symbolNames(file).contains("twice"));

    // The same file again changes nothing; a new state of it replaces the old one.
    subject.loadSymbols(Path(executable), 0);
    EXPECT_EQ(subject.executableNames().size(), 1);
    std::string old = executable;
    program(".PUBLIC other\n.CODE\nother: NOP\n", false);
    EXPECT_EQ(subject.executableNames().size(), 1);
    EXPECT_TRUE(subject.symbolNames(file).contains("other"));
    subject.unloadSymbols(Path(executable));
    EXPECT_TRUE(subject.executableNames().isEmpty());
    EXPECT_EQ(g_ZOFFfiles.count(), 0u);
    EXPECT_THROW(subject.loadSymbols(Path(dir / "missing.kvx"), 0), HException);
}

TEST_F(Debugger, DisassemblyWithSourceAndLabels)
{
    QStringList text;
    subject.setTargetInterface(nullptr);
    subject.getDisassemblyText(text);
    EXPECT_EQ(text.size(), 200);
    subject.setTargetInterface(&target);
    program(".PUBLIC main\n.CODE\nORG 0x200\n.FUNC main\nNOP\n\n\n\n\nCALL main\n\nRET\n.ENDFUNC\n", false);
    subject.locateDisassembly(0x200);
    subject.getDisassemblyText(text);
    int at = int(text.indexOf("main:")) - 2;
    ASSERT_GE(at, 0);
    std::string shown = text.mid(at, 10).join('\n').toStdString();
    EXPECT_EQ(shown, "--- program -- 5 -------------------------------------------\n"
                     "line 5\n"
                     "main:\n"
                     "    da3a                NOP\n"
                     "--- program -- 10 ------------------------------------------\n"
                     "line 10\n"
                     "    3dfe                CALL\t0x200 <main>\n"
                     "line 11\n"
                     "line 12\n"
                     "    8c0d                RET");
    EXPECT_EQ(subject.getDisassemblyLineNumber(0x202), at + 6);
    uint32_t address = 0;
    EXPECT_TRUE(subject.getDisassemblyLineAddress(at + 9, address));
    EXPECT_EQ(address, 0x204u);
    EXPECT_FALSE(subject.getDisassemblyLineAddress(at + 2, address));
    Path path;
    int number = 0;
    EXPECT_TRUE(subject.getSourceLocation(at + 7, path, number));
    EXPECT_EQ(number, 11);
    EXPECT_TRUE(subject.getSourceLocation(at + 9, path, number));
    EXPECT_EQ(number, 12);
    EXPECT_TRUE(subject.getAssemblyLocation(Path(source), 10, number));
    EXPECT_EQ(number, at + 6);
    EXPECT_FALSE(subject.getAssemblyLocation(Path(source), 6, number));

    // What was executed is marked, and marked anew when the program has run.
    subject.setDisassemblyExecution(true);
    subject.start("main", true);
    subject.isStopped();
    subject.getDisassemblyText(text);
    EXPECT_EQ(text[at + 3], "    da3a                NOP");
    subject.stepinto(true);
    subject.isStopped();
    subject.getDisassemblyText(text);
    EXPECT_EQ(text[at + 3], "  * da3a                NOP");
    subject.setDisassemblyExecution(false);
    EXPECT_EQ(subject.getDisassemblyModes(), QStringList({"Mixed", "Code"}));
    subject.setDisassemblyMode("Code");
    subject.getDisassemblyText(text);
    EXPECT_EQ(text.size(), 100);
    EXPECT_EQ(text[50], "    da3a                NOP");
    EXPECT_THROW(subject.setDisassemblyMode("Thumb"), HException);
    subject.setDisassemblyMode("Mixed");
    subject.getDisassemblyText(text);

    qsizetype before = text.size();
    EXPECT_EQ(subject.getDisassemblyLineNumber(0x100), -1);
    subject.moreDisassemblyText(true);
    EXPECT_GE(subject.getDisassemblyLineNumber(0x100), 0);
    subject.moreDisassemblyText(false);
    subject.getDisassemblyText(text);
    EXPECT_EQ(text.size(), before + 256);
    subject.locateDisassembly(2);
    EXPECT_EQ(subject.getDisassemblyLineNumber(0), 0) << "cut at the memory's start";
    target.code.linkLost = true;
    subject.locateDisassembly(0x8000);
    subject.getDisassemblyText(text);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(host.errors, QStringList{"link lost"});
    target.code.linkLost = false;
    subject.getDisassemblyText(text);
    EXPECT_FALSE(text.isEmpty());
}

TEST_F(Debugger, MemoryOnlyWhereItIs)
{
    unsigned char bytes[4] = {1, 2, 3, 4};
    EXPECT_EQ(subject.setMemory("Data", 0x100, 4, bytes), 4u);
    unsigned char back[4] = {};
    EXPECT_EQ(subject.getMemory("Data", 0x100, 4, back), 4u);
    EXPECT_EQ(back[3], 4);
    EXPECT_EQ(subject.getMemory("Data", 0xFFFE, 4, back), 0u);
    EXPECT_EQ(subject.getMemoryRange("Data", 0xFFF0), 0x10u);
    EXPECT_EQ(subject.getMemoryRange("Data", 0x10000), 0u);
    EXPECT_EQ(subject.addressAdd(0x3FFFE, 10), 0x3FFFFu);
    EXPECT_EQ(subject.addressSubtract(5, 10), 0u);
    EXPECT_EQ(subject.addressAdd(0x40000, 10), 0x40000u);

    QStringList dump;
    subject.dumpMemory("Data", 0xFFEE, 100, dump);
    EXPECT_EQ(dump.join('\n').toStdString(),
              "ffee  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00  |................|\n"
              "fffe  00 00                                             |..|");
    unsigned char letters[] = {'h', 'i', 0x7F, 0xFF};
    subject.setMemory("Data", 0x100, sizeof letters, letters);
    subject.dumpMemory("Data", 0x100, 4, dump);
    EXPECT_EQ(dump.value(0).toStdString(), "0100  68 69 7f ff                                       |hi..|");
    EXPECT_THROW(subject.dumpMemory("Data", 0x10000, 4, dump), HException);

    subject.setDisassembleRange(0, 64);
    int reads = target.code.reads;
    for (uint32_t pc = 0; pc < 64; pc += 2)
        EXPECT_EQ(subject.peekPC(pc), 0xFFFFu);
    EXPECT_EQ(target.code.reads, reads) << "the cache is used";
}
