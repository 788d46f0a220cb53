// Jumps, calls, the stack, loops and interrupts.
#include "sim/Program.h"

namespace maxq30 {

namespace {

class ControlFlow : public CoreTest {};

} // namespace

TEST_F(ControlFlow, ConditionalJumpsInBothDirections)
{
    struct State {
        uint32_t acc;
        uint32_t psf;
        bool taken[8]; // in the order of dest::Condition
    };
    const State states[] = {
        {0, 0, {true, true, false, false, false, false, true, true}},
        {0x80000000, FlagC | FlagE, {true, false, true, true, true, true, false, false}},
        {1, FlagC, {true, false, true, false, false, true, false, true}},
    };
    for (const State& state : states)
        for (int i = 0; i < 8; ++i) {
            SCOPED_TRACE(i);
            unsigned jump = dest::jump(dest::Condition(i));
            set(reg::ACC, state.acc);
            set(reg::PSF, state.psf);
            uint32_t at = place;
            execute(imm(jump, 0x80)); // relative, backwards
            EXPECT_EQ(core.ip(), state.taken[i] ? at + 1 - 128 : at + 1);
            at = place;
            execute(imm(jump, 0x1234)); // absolute
            EXPECT_EQ(core.ip(), state.taken[i] ? 0x1234u : at + 2);
            at = place;
            execute(imm(jump, 0x05, 1)); // absolute by its prefix word
            EXPECT_EQ(core.ip(), state.taken[i] ? 5u : at + 2);
            set(reg::A(3), 0x777);
            at = place;
            execute(move(jump, reg::A(3)));
            EXPECT_EQ(core.ip(), state.taken[i] ? 0x777u : at + 1);
        }
}

TEST_F(ControlFlow, SourcesAreReadOnlyByTakenJumps)
{
    setData(0x20, 0x0321);
    set(reg::DP0, 0x20);
    set(reg::ACC, 1);
    execute(move(dest::jump(dest::Z), pointer(4)));
    EXPECT_EQ(get(reg::DP0), 0x20u);
    EXPECT_EQ(events.take(), Log{});
    execute(move(dest::jump(dest::NZ), pointer(4)));
    EXPECT_EQ(core.ip(), 0x321u);
    EXPECT_EQ(get(reg::DP0), 0x22u);
}

TEST_F(ControlFlow, CallsAndReturns)
{
    uint32_t at = place;
    EXPECT_EQ(execute(imm(dest::call, 0x0400)), 3u);
    EXPECT_EQ(core.ip(), 0x400u);
    EXPECT_EQ(get(reg::SP), 0xFFCu);
    EXPECT_EQ(data(0xFFC), at + 2); // the word address behind the call, 32 bits
    EXPECT_EQ(events.take(), (Log{"write.W ffe=0", "write.W ffc=102"}));

    set(reg::ACC, 1);
    put({0x9C0D, 0x8C0D}, 0x400); // RET Z, RET
    core.step();
    EXPECT_EQ(core.ip(), 0x401u);
    EXPECT_EQ(get(reg::SP), 0xFFCu); // an untaken return leaves the stack alone
    core.step();
    EXPECT_EQ(core.ip(), at + 2);
    EXPECT_EQ(get(reg::SP), 0x1000u);

    // A call through a register returns behind its one word.
    set(reg::A(2), 0x400);
    at = place;
    execute(move(dest::call, reg::A(2)));
    EXPECT_EQ(core.ip(), 0x400u);
    EXPECT_EQ(data(0xFFC), at + 1);
}

TEST_F(ControlFlow, PushAndPopMoveThirtyTwoBits)
{
    execute(imm(dest::push, 0x89ABCDEF));
    execute(move(dest::push, reg::SP)); // the source is read before SP moves
    EXPECT_EQ(data(0xFFC), 0x89ABCDEFu);
    EXPECT_EQ(data(0xFF8), 0xFFCu);
    execute(move(reg::A(1), src::pop));
    execute(move(reg::LC0, src::pop));
    EXPECT_EQ(get(reg::A(1)), 0xFFCu);
    EXPECT_EQ(get(reg::LC0), 0xCDEFu);
    EXPECT_EQ(get(reg::SP), 0x1000u);
    events.take();
    execute(move(reg::A(1), src::pop)); // an empty stack lies at the end of the memory
    EXPECT_EQ(events.take(), Log{"bad read 1000"});
}

TEST_F(ControlFlow, LoopsCountSixteenBits)
{
    for (auto [djnz, counter] : {std::pair{dest::djnz0, reg::LC0}, std::pair{dest::djnz1, reg::LC1}}) {
        set(counter, 2);
        uint32_t at = place;
        execute(imm(djnz, 0xFF)); // to itself
        EXPECT_EQ(core.ip(), at);
        core.step();
        EXPECT_EQ(core.ip(), at + 1);
        EXPECT_EQ(get(counter), 0u);
        set(reg::A(1), 0x555);
        execute(move(djnz, reg::A(1)));
        EXPECT_EQ(core.ip(), 0x555u);
        EXPECT_EQ(get(counter), 0xFFFFu);
    }
}

TEST_F(ControlFlow, InterruptsEnterOnceAndReturn)
{
    put({0xDA3A, 0xDA3A, 0xDA3A});
    put({0xDA3A, 0x8C8D}, 0x300); // NOP, RETI
    set(reg::IV, 0x300);
    set(reg::IC, InterruptEnable);
    set(reg::IIR, 4);
    core.step(); // masked
    EXPECT_EQ(core.ip(), 1u);
    set(reg::IMR, 4);
    EXPECT_EQ(core.step(), 2u); // the entry is a step of its own
    EXPECT_EQ(core.ip(), 0x300u);
    EXPECT_EQ(get(reg::IC), InterruptEnable | InterruptInService);
    EXPECT_EQ(data(get(reg::SP)), 1u);
    core.step(); // still requested, but in service
    EXPECT_EQ(core.ip(), 0x301u);
    set(reg::IIR, 0);
    core.step();
    EXPECT_EQ(core.ip(), 1u);
    EXPECT_EQ(get(reg::IC), InterruptEnable);
    EXPECT_EQ(get(reg::SP), 0x1000u);
    core.step();
    EXPECT_EQ(core.ip(), 2u);
}

TEST_F(ControlFlow, ProgramsRequestInterruptsThemselves)
{
    // The program enables interrupts and sets IIR while run() is inside its fast loop.
    Words program = imm(reg::IV, 0x300) + imm(reg::IMR, 1) + imm(reg::IC, 1) + imm(reg::IIR, 1) +
                    imm(reg::A(1), 7) + imm(dest::jump(dest::Always), 0xFF);
    put(program);
    put(imm(reg::A(2), 9) + imm(reg::IIR, 0) + Words{0x8C8D}, 0x300);
    uint32_t loop = uint32_t(program.size()) - 1;
    EXPECT_EQ(core.run(100), 100u);
    EXPECT_EQ(core.ip(), loop);
    EXPECT_EQ(get(reg::A(1)), 7u);
    EXPECT_EQ(get(reg::A(2)), 9u);
    EXPECT_EQ(get(reg::IC), 1u);
}

} // namespace maxq30
