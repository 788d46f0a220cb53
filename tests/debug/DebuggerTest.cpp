// The debugger over programs that run on the processor's core.
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/symbols/SymbolicDebug.h"
#include "maxq30/cpu/MAXQ30Debugger.h"
#include "target/io/TargetIOServer.h"
#include "tests/debug/CoreMonitor.h"
#include "tests/support/Failure.h"
#include "tests/tools/kvas/Sources.h"
#include "zoff/ZOFFfiles.h"

#include <optional>

namespace {

// What nextInstruction and the frames read is open to the tests.
class Debugger : public Sources, TargetIOServerTerminalInterface, TargetIOServerHelperFunctions {
protected:
    Debugger()
    {
        ZOFFDebugIndex::install(SymbolicDebugIndex);
        subject.setTargetInterface(&target);
        subject.setTargetIOServer(&m_server);
    }
    ~Debugger() override { subject.unloadSymbols(Path()); }

    // Assembles a program with the examples' startup, or without it, and puts it into the target.
    void program(const std::string& text, bool startup = true)
    {
        std::string library = QBURN_SOURCE_DIR "/examples/lib";
        job.directories = {library};
        job.sources.clear();
        if (startup)
            job.sources.push_back(library + "/crt.s");
        source = dir.write("program.s", text);
        job.sources.push_back(source);
        kvas::Diagnostics diagnostics;
        bytes = kvas::link(job, diagnostics);
        ASSERT_EQ(diagnostics.text(), "");
        executable = dir.write("program.kvx", bytes);
        subject.loadSymbols(Path(executable), 0);
        for (ZOFFSection* s : subject.tables().at(0)->module()->sections()) {
            s->computeSectionMetrics();
            if (!s->goesIntoLoadFile() || s->lowestAddress() == ZOFFSection::UnknownAddress)
                continue;
            std::vector<uint8_t> image(size_t(s->getSize()));
            s->dump(image.size(), image.data());
            target.core.writeCode(s->lowestAddress(), uint32_t(image.size()), image.data());
        }
    }
    // Polls until the program stops or ends; answers the line where it stands, 0 for an end.
    int wait()
    {
        for (int i = 0; i < 10000 && !status; ++i)
            if (subject.isStopped())
                return line(0);
        return status ? 0 : -1;
    }
    int line(unsigned frame)
    {
        QString name, function;
        Path path;
        int number = 0;
        uint32_t address = 0;
        subject.locate(subject.getFrame(frame), name, path, function, number, address);
        return number;
    }
    std::string function(unsigned frame)
    {
        QString name, text;
        Path path;
        int number = 0;
        uint32_t address = 0;
        subject.locate(subject.getFrame(frame), name, path, text, number, address);
        return text.toStdString();
    }
    int64_t address(const char* symbol) const
    {
        int64_t value = 0;
        EXPECT_TRUE(subject.getLinkerSymbolValue(symbol, value)) << symbol;
        return value;
    }
    DebuggerBreakpoint* breakAt(int number, int count = 0, bool temporary = false)
    {
        return subject.setBreakpoint(QString(), Path(source), number, count, true, temporary, QString(),
                                     QString());
    }

    void addOutput(const QString& text) override { output += text.toStdString(); }
    QString getInputLine() override { return {}; }
    int inputLines() const override { return 0; }
    QChar getInputChar() override { return {}; }
    bool inputCharAvailable() const override { return false; }
    void errorOccurred(const char*) override {}
    void debugBreakOccurred() override {}
    void inputRequested() override {}
    void outputUpdated() override {}
    void exitOccurred(int value) override
    {
        status = value;
        subject.clear();
    }
    void loadSymbols(const char*, unsigned) override {}

    FakeHelpers helpers;
    CoreMonitor target{&helpers};
    DebuggerHost host;
    MAXQ30Debugger subject{&host};
    std::string source, executable, output;
    std::optional<int> status;

private:
    TargetIOServer m_server{this, this};
};

constexpr char Loop[] = ".LIBRARY console\n"    // 1
                        ".PUBLIC main, twice\n" // 2
                        ".CODE\n"               // 3
                        ".FUNC main\n"          // 4
                        " PUSH A[6]\n"          // 5
                        ".ADJUST -4\n"          // 6
                        " MOVE A[6], #3\n"      // 7
                        ".again: CALL twice\n"  // 8
                        " MOVE A[0], A[6]\n"    // 9
                        " SUB #1\n"             // 10
                        " MOVE A[6], A[0]\n"    // 11
                        " JUMP NZ, .again\n"    // 12
                        " MOVE A[0], #7\n"      // 13
                        " POP A[6]\n"           // 14
                        ".ADJUST 0\n"           // 15
                        " RET\n"                // 16
                        ".ENDFUNC\n"            // 17
                        ".FUNC twice\n"         // 18
                        " ADD A[0]\n"           // 19
                        " RET\n"                // 20
                        ".ENDFUNC\n";

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

TEST_F(Debugger, BreakpointsIgnoreCountsAndLeaveAtTheirEnd)
{
    program(Loop);
    subject.start("start", true);
    wait();
    DebuggerBreakpoint* kept = breakAt(9, 1);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->getCount(), 1);
    breakAt(13, 0, true);
    DebuggerBreakpoint* existing = nullptr;
    EXPECT_TRUE(subject.canBreakAt(QString(), Path(source), 9, existing));
    EXPECT_EQ(existing, kept);
    EXPECT_TRUE(subject.canBreakAt(QString(), Path(source), 13, existing));
    EXPECT_EQ(existing, nullptr) << "a temporary one does not count";
    EXPECT_FALSE(subject.canBreakAt(QString(), Path(source), 2, existing));
    EXPECT_THROW(breakAt(2), DebuggerBreakpointFailure);

    subject.go();
    EXPECT_EQ(wait(), 9);
    EXPECT_EQ(target.file.getValue(MAXQ30Registers().nameToNumber("A[6]")), 2u)
        << "the first hit was ignored";
    EXPECT_EQ(subject.lastMatchedBreakpoint(), kept);
    EXPECT_EQ(target.breakpoints.size(), 1u) << "any stop removes temporary ones";
    subject.clearBreakpoint(kept);
    subject.clearBreakpoint(kept);
    EXPECT_TRUE(target.breakpoints.empty());
    subject.go();
    EXPECT_EQ(wait(), 0);
    EXPECT_EQ(status, 7);

    target.capacity = 0;
    EXPECT_EQ(failureOf([&] { breakAt(9); }), "the target refuses the breakpoint");
}

TEST_F(Debugger, StepsByLineOverIntoAndOut)
{
    program(Loop);
    subject.start("main", true);
    EXPECT_EQ(wait(), 5);
    EXPECT_TRUE(subject.atStatement());
    for (int expected : {7, 8, 9, 10, 11, 12, 8}) {
        subject.stepover(false);
        EXPECT_EQ(wait(), expected);
    }
    subject.stepinto(false);
    EXPECT_EQ(wait(), 19);
    ASSERT_EQ(subject.numcalls(), 2u);
    EXPECT_EQ(function(0), "twice");
    EXPECT_EQ(function(1), "main");
    EXPECT_EQ(line(1), 8) << "where the call is";
    subject.stepout(subject.getFrame(1));
    EXPECT_EQ(wait(), 9);
    EXPECT_EQ(target.singleSteps, 0);
    EXPECT_TRUE(target.breakpoints.empty());
    uint32_t pc = target.file.getPC();
    subject.stepinto(true);
    wait();
    EXPECT_EQ(target.file.getPC(), pc + 2);
}

TEST_F(Debugger, AStepBeginsWhereTheTargetIs)
{
    program(Loop);
    subject.start("main", true);
    wait();
    subject.locate(uint32_t(0x7000));
    EXPECT_FALSE(subject.getFrame(0)->live());
    subject.stepover(false);
    EXPECT_EQ(wait(), 7);
    program(".PUBLIC start\n.CODE\n.NOLINE\nstart: NOP\nNOP\n", false);
    subject.start("start", true);
    wait();
    subject.stepover(false);
    EXPECT_EQ(wait(), 0) << "no line is known, so the target steps";
    EXPECT_EQ(target.singleSteps, 1);
    EXPECT_EQ(target.file.getPC(), 2u);
}

TEST_F(Debugger, WithoutABreakpointLeftTheTargetSteps)
{
    // A statement that branches, at 2 to 10, and a call in the next one.
    program(".PUBLIC start\n.CODE\nstart: NOP\n.LINE \"s.c\", 5\nJUMP Z, .there\nNOP\n.there: NOP\nNOP\n"
            ".LINE 6\nCALL start\nNOP\n.LINE 7\nNOP\n",
            false);
    subject.start("0x2", true);
    wait();
    target.file.setValue(MAXQ30Registers::PSF, MAXQ30Registers::FlagZ);
    subject.stepover(false);
    ASSERT_EQ(target.breakpoints.size(), 1u);
    target.capacity = 0; // before the breakpoint moves on
    EXPECT_EQ(wait(), 6);
    EXPECT_EQ(target.file.getPC(), 10u);
    EXPECT_TRUE(target.breakpoints.empty());
    EXPECT_EQ(failureOf([&] { subject.stepover(false); }), "the target refuses the breakpoint")
        << "what a call does is not for single steps";
    EXPECT_TRUE(subject.isStopped());
    EXPECT_EQ(target.file.getPC(), 10u);
    subject.stepinto(false);
    EXPECT_EQ(wait(), 3);

    // A breakpoint in the middle of the statement counts, and so does the user's wish to stop.
    target.capacity = 1;
    subject.start("0x2", true);
    wait();
    target.file.setValue(MAXQ30Registers::PSF, 0);
    ASSERT_TRUE(subject.setBreakpoint(6, false, false, 0, -1, QString()));
    subject.stepover(false);
    EXPECT_EQ(wait(), 5);
    EXPECT_EQ(target.file.getPC(), 6u);
    program(".PUBLIC start\n.CODE\nstart: JUMP start\n", false);
    subject.start("start", true);
    wait();
    subject.stepover(false);
    EXPECT_FALSE(subject.isStopped()) << "one poll follows it for a while";
    EXPECT_GT(target.singleSteps, 10);
    subject.stop();
    EXPECT_EQ(wait(), 3);
}

// A call that goes three deep, each time through the same lines.
constexpr char Recursion[] = ".PUBLIC start\n"          // 1
                             ".CODE\n"                  // 2
                             "start: MOVE SP, #0x400\n" // 3
                             " MOVE A[0], #3\n"         // 4
                             " CALL down\n"             // 5
                             ".end: JUMP .end\n"        // 6
                             ".FUNC down\n"             // 7
                             " SUB #1\n"                // 8
                             " RET Z\n"                 // 9
                             " CALL down\n"             // 10
                             " NOP\n"                   // 11
                             " RET\n"                   // 12
                             ".ENDFUNC\n";

TEST_F(Debugger, StepsPassDeeperCallsOfTheSameLines)
{
    program(Recursion, false);
    subject.start("start", true);
    wait();
    breakAt(10, 0, true);
    subject.go();
    ASSERT_EQ(wait(), 10);
    ASSERT_EQ(subject.numcalls(), 2u);
    uint32_t sp = target.file.getSP();
    subject.stepover(false);
    EXPECT_EQ(wait(), 11);
    EXPECT_EQ(target.file.getSP(), sp);
    EXPECT_EQ(target.file.getValue(MAXQ30Registers().nameToNumber("A[0]")), 0u) << "all of it has run";

    subject.start("start", true);
    wait();
    DebuggerBreakpoint* inner = breakAt(9);
    subject.go();
    ASSERT_EQ(wait(), 9);
    subject.clearBreakpoint(inner);
    sp = target.file.getSP();
    subject.stepout(subject.getFrame(1));
    EXPECT_EQ(wait(), 6);
    EXPECT_EQ(target.file.getSP(), sp + 4);
    EXPECT_EQ(failureOf([&] { subject.stepout(subject.getFrame(1)); }), "no calling frame");
}

TEST_F(Debugger, ManyIgnoredHitsAreOnePoll)
{
    program(".PUBLIC start\n.CODE\nstart: NOP\n.LINE \"s.c\", 7\nNOP\n.LINE 8\nJUMP start\n", false);
    subject.start("start", true);
    wait();
    DebuggerBreakpoint* ignored = subject.setBreakpoint(2, false, false, 1'000'000'000, -1, QString());
    subject.go();
    EXPECT_FALSE(subject.isStopped());
    EXPECT_LT(ignored->getCount(), 1'000'000'000 - 100);

    // The user's stop counts at a hit that would be ignored, too; the program's next resume is a new one.
    subject.stop();
    EXPECT_TRUE(subject.isStopped());
    int left = ignored->getCount();
    EXPECT_TRUE(subject.isStopped());
    subject.go();
    EXPECT_FALSE(subject.isStopped());
    EXPECT_LT(ignored->getCount(), left);
    subject.setBreakpointEnabled(ignored, false);
    left = ignored->getCount();
    subject.isStopped();
    EXPECT_EQ(ignored->getCount(), left);
    EXPECT_FALSE(ignored->isEnabled());
}

TEST_F(Debugger, ChainedBreakpointsAndTheirEnd)
{
    program(Loop);
    subject.start("start", true);
    wait();
    DebuggerBreakpoint* first = breakAt(10);
    DebuggerBreakpoint* second = breakAt(8);
    target.chains = false;
    EXPECT_EQ(failureOf([&] { subject.chainFrom(second, first); }), "Chaining not supported");
    target.chains = true;
    subject.chainFrom(second, first);
    EXPECT_FALSE(second->isEnabled());
    subject.go();
    EXPECT_EQ(wait(), 8) << "the first only arms";
    EXPECT_EQ(target.file.getValue(MAXQ30Registers().nameToNumber("A[6]")), 2u);

    // A ring arms nothing, and what waits for a breakpoint that goes waits no longer.
    subject.chainFrom(first, second);
    subject.chainFrom(second, first);
    EXPECT_FALSE(first->isEnabled() || second->isEnabled());
    subject.clearBreakpoint(first);
    EXPECT_TRUE(second->isEnabled());
    subject.chainFrom(second, first); // it is gone
    EXPECT_TRUE(second->isEnabled());
    subject.go();
    EXPECT_EQ(wait(), 8);
    subject.clearBreakpoint(second);
    subject.go();
    EXPECT_EQ(wait(), 0);
}

TEST_F(Debugger, ARequestThatWaitsAtABreakpointDoesNotPassIt)
{
    program(".LIBRARY console\n.PUBLIC main\n.CODE\n.FUNC main\nMOVE A[0], #text\nCALL puts\nMOVE A[0], #5\n"
            "RET\n.ENDFUNC\n.DATA\ntext: .ASCIZ \"hello\"\n");
    subject.start("start", true);
    wait();
    breakAt(7);
    subject.go();
    EXPECT_EQ(wait(), 7);
    EXPECT_EQ(output, "hello\n");
    target.core.writeData(uint32_t(address("_dbgCntrlWord")), 1, reinterpret_cast<const uint8_t*>("\x18"));
    subject.go();
    EXPECT_EQ(wait(), 0);
    EXPECT_EQ(status, 5);
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

TEST_F(Debugger, CallsAreFoundOnTheStack)
{
    program(".LIBRARY console\n.PUBLIC main, far\n.CODE\n.FUNC main\nPUSH A[4]\n.ADJUST -4\nPUSH "
            "A[5]\n.ADJUST -8\n"
            "CALL near\nPOP A[5]\n.ADJUST -4\nPOP A[4]\n.ADJUST 0\nRET\n.ENDFUNC\n.FUNC near\nCALL "
            "far\nRET\n.ENDFUNC\n"
            "ORG 0x4000\n.FUNC far\nNOP\nNOP\n.ENDFUNC\n");
    subject.start("start", true);
    wait();
    breakAt(22);
    subject.go();
    EXPECT_EQ(wait(), 22);
    ASSERT_EQ(subject.numcalls(), 4u) << "one of the calls has prefix words";
    EXPECT_EQ(function(0) + function(1) + function(2) + function(3), "farnearmainstart");
    EXPECT_TRUE(subject.getFrame(0)->live());
    EXPECT_FALSE(subject.getFrame(1)->live());
    EXPECT_NO_THROW(subject.setRegister(subject.getFrame(0), MAXQ30Registers::LC0, 5));
    EXPECT_EQ(target.file.getValue(MAXQ30Registers::LC0), 5u);
    EXPECT_THROW(subject.setRegister(subject.getFrame(1), MAXQ30Registers::LC0, 6), HException);

    subject.setMaximumCalls(0);
    subject.locate();
    EXPECT_EQ(subject.numcalls(), 1u);
    subject.locate(uint32_t(0x4000));
    EXPECT_EQ(function(0), "far");
    EXPECT_FALSE(subject.getFrame(0)->live());
}

TEST_F(Debugger, WhereAnInstructionLeads)
{
    program(".CODE\nstart: NOP\nNOP\nJUMP start\n"     // 0, 2, 4
            "JUMP Z, start\nCALL start\nRET\nRET NZ\n" // 6, 8, 10, 12
            "DJNZ LC[0], start\nJUMP skip\nNOP\n"      // 14, 16, 18
            "skip: NOP\nJUMP A[3]\nJUMP 0x2000\n",     // 20, 22, 24
            false);
    using R = MAXQ30Registers;
    R registers;
    auto next = [&](uint32_t pc, uint32_t start, uint32_t length, bool over = false) {
        registers.setPC(pc);
        return subject.nextInstruction(&registers, over, start, length);
    };
    registers.setSP(0x100);
    target.data.pokeUint32(0x100, 0x321);
    registers.setValue(R().nameToNumber("A[3]"), 0x111);
    EXPECT_EQ(next(0, 0, 4), 4u);
    EXPECT_EQ(next(40, 0, 4), 40u) << "outside the range";
    EXPECT_EQ(next(4, 4, 2), 0u);
    EXPECT_EQ(next(6, 6, 2), 8u) << "Z is clear";
    registers.setValue(R::PSF, R::FlagZ);
    EXPECT_EQ(next(6, 6, 2), 0u);
    EXPECT_EQ(next(8, 8, 2), 0u);
    EXPECT_EQ(next(8, 8, 2, true), 10u);
    EXPECT_EQ(next(10, 10, 2), 0x642u);
    EXPECT_EQ(next(12, 12, 2), 14u);
    EXPECT_EQ(next(14, 14, 2), 0u);
    registers.setValue(R::LC0, 1);
    EXPECT_EQ(next(14, 14, 2), 16u);
    // A jump inside the range is followed: what stands at its target decides, without the registers.
    EXPECT_EQ(next(16, 16, 6), 22u);
    EXPECT_EQ(next(4, 0, 6), 2u);
    EXPECT_EQ(next(6, 4, 6), 0u);
    EXPECT_EQ(next(22, 22, 2), 0x222u);
    EXPECT_EQ(next(24, 24, 4), 0x2000u);

    // Through the data pointers: a byte, 16 or 32 bits, or the pointer itself. Indexes from 16 up need the
    // prefix's source bit.
    registers.setValue(R::DP0, 0x200);
    registers.setValue(R::DP1, 0x300);
    target.data.pokeUint32(0x200, 0x1122);
    target.data.pokeUint32(0x300, 0x3344);
    constexpr uint32_t byte0 = 0x44, word0 = 0x2244, pointer0 = 0x400;
    constexpr uint32_t byte1 = 0x88, word1 = 0x6688, pointer1 = 0x600;
    const uint32_t expected[] = {byte0, byte0, byte0, pointer0, word0, word0, word0,
                                 word0, word0, word0, byte1,    byte1, byte1, pointer1,
                                 word1, word1, word1, word1,    word1, word1, pointer0};
    for (unsigned index = 0; index < std::size(expected); ++index) {
        unsigned jump = 0x8C0F | (index & 15) << 4;
        unsigned char code[] = {0, 0x1B, uint8_t(jump), uint8_t(jump >> 8)};
        ASSERT_EQ(subject.setMemory("Code", 0x1000, sizeof code, code), sizeof code);
        unsigned first = index < 16 ? 0x1002 : 0x1000;
        EXPECT_EQ(next(first, first, 0x1004 - first), expected[index]) << index;
    }
    // All bits of a word address count, of a register and of an entry of the stack.
    registers.setValue(R().nameToNumber("A[3]"), 0xFF812345);
    EXPECT_EQ(next(22, 22, 2), 0x102468Au);
    target.data.pokeUint32(0x100, 0x812345);
    EXPECT_EQ(next(10, 10, 2), 0x102468Au);
    unsigned char fromInterrupt[] = {0x8D, 0x8C};
    subject.setMemory("Code", 10, sizeof fromInterrupt, fromInterrupt);
    EXPECT_EQ(next(10, 10, 2), 0x102468Au);

    uint32_t length = 0, destination = 0;
    bool isJump = false;
    EXPECT_EQ(subject.disassemble(24, length, isJump, destination), "0b100c00            JUMP\t0x2000");
    EXPECT_EQ(length, 4u);
    EXPECT_TRUE(isJump);
    EXPECT_EQ(destination, 0x2000u);
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
    subject.setDisassembleRange(0, 64);
    int reads = target.code.reads;
    for (uint32_t pc = 0; pc < 64; pc += 2)
        EXPECT_EQ(subject.peekPC(pc), 0xFFFFu);
    EXPECT_EQ(target.code.reads, reads) << "the cache is used";
}

} // namespace
