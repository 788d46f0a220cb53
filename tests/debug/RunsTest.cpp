// Runs, stops, steps and breakpoints of a program.
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/run/DebuggerBreakpoint.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "support/Path.h"
#include "tests/debug/DebuggerFixture.h"
#include "tests/support/Failure.h"

namespace {

class Runs : public Debugger {};

} // namespace

TEST_F(Runs, BreakpointsIgnoreCountsAndLeaveAtTheirEnd)
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

TEST_F(Runs, StepsByLineOverIntoAndOut)
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

TEST_F(Runs, AStepBeginsWhereTheTargetIs)
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

TEST_F(Runs, WithoutABreakpointLeftTheTargetSteps)
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

TEST_F(Runs, StepsPassDeeperCallsOfTheSameLines)
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

TEST_F(Runs, ManyIgnoredHitsAreOnePoll)
{
    program(".PUBLIC start\n.CODE\nstart: NOP\n.LINE \"s.c\", 7\nNOP\n.LINE 8\nJUMP start\n", false);
    subject.start("start", true);
    wait();
    DebuggerBreakpoint* ignored = subject.setBreakpoint(2, false, false, 1'000'000'000, -1, QString());
    subject.go();
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(subject.isStopped());
    EXPECT_LT(ignored->getCount(), 1'000'000'000 - 20) << "more than one a poll";

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

TEST_F(Runs, ChainedBreakpointsAndTheirEnd)
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

TEST_F(Runs, ARequestDoesNotCarryTheProgramOverABreakpoint)
{
    program(".PUBLIC start, _dbgCntrlWord, _dbgCommWord\n.CODE\nstart: MOVE DP[0], #_dbgCntrlWord\n"
            " MOVE @DP[0].L, #0x18\n NOP\n.wait: MOVE A[0], @DP[0].L\n JUMP NZ, .wait\n.end: JUMP .end\n"
            ".DATA\n.ALIGN 4\n_dbgCntrlWord: .SPACE 4\n_dbgCommWord: .SPACE 4\n",
            false);
    subject.setTargetIOServer(nullptr);
    subject.start("start", true);
    wait();
    breakAt(5);
    subject.go();
    EXPECT_EQ(wait(), 5);
    EXPECT_EQ(target.data.peekUint32(uint32_t(address("_dbgCntrlWord"))), 0u) << "served all the same";

    // A program that stands for the user is left alone.
    target.data.reads = 0;
    EXPECT_TRUE(subject.isStopped());
    EXPECT_EQ(target.data.reads, 0);
}

TEST_F(Runs, ALinkThatFailsAtAStopIsTriedAgain)
{
    program(Loop);
    subject.start("start", true);
    wait();
    breakAt(9, 0, true);
    subject.go();
    target.file.linkLost = true;
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(subject.isStopped());
    EXPECT_EQ(host.errors, QStringList{"link lost"});
    target.file.linkLost = false;
    EXPECT_EQ(wait(), 9);
    EXPECT_TRUE(target.breakpoints.empty());
}

TEST_F(Runs, TheNextStatementIsMovedInTheTarget)
{
    program(Loop);
    subject.start("start", true);
    wait();
    breakAt(8, 0, true);
    subject.go();
    ASSERT_EQ(wait(), 8);
    EXPECT_FALSE(subject.setNextStatement(subject.getFrame(0), Path(source), 2));
    subject.locate(uint32_t(0x7000));
    EXPECT_TRUE(subject.setNextStatement(nullptr, Path(source), 13));
    EXPECT_EQ(line(0), 13);
    subject.go();
    EXPECT_EQ(wait(), 0);
    EXPECT_EQ(status, 7);
    EXPECT_EQ(target.file.getValue(MAXQ30Registers().nameToNumber("A[6]")), 0u) << "as crt.s has left it";
}
