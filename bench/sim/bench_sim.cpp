// Compares the simulator with simavr: the same CRC-32 loop on both, in turns, best of the rounds.
// Usage: bench_sim [AVR program]. Without an AVR program only our figures are printed.
#include "bench/sim/CrcProgram.h"
#include "bench/sim/SimulatorSession.h"
#include "bench/sim/simavr.h"
#include "debug/monitor/HBreakpoint.h"
#include "maxq30/sim/MAXQ30Simulator.h"
#include "sim/Core.h"
#include "sim/maxqsim.h"
#include "support/HException.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QCoreApplication>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int Rounds = 5;
constexpr uint64_t Instructions = 50'000'000;
constexpr uint32_t ControlWord = 0x400;

template <class Body> void measure(Rate& rate, Body body)
{
    auto start = std::chrono::steady_clock::now();
    uint64_t done = body();
    rate.note(done, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

struct CountingCallBacks final : MAXQSIMCallBacks {
    void onDataAccess(bool, unsigned, unsigned, unsigned) override { ++accesses; }
    void onDataError(bool, unsigned) override { std::abort(); }
    void onDataAlignmentError(bool, unsigned) override { std::abort(); }
    void onCodeError(unsigned) override { std::abort(); }
    void onInvalidInstruction(unsigned) override { std::abort(); }
    void onMiscError(const char*, unsigned) override { std::abort(); }
    uint64_t accesses = 0;
};

// What a debugger does on each tick while the program runs, with a second timer as a terminal has one.
// Returns the cycles, of which the loop takes one for each instruction.
uint64_t runUnderDebugger(MAXQ30Simulator& target)
{
    QTimer poll, terminal;
    TargetMemoryInterface* memory = target.dataMemory();
    unsigned before = target.cycleCount();
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (target.isStopped() || memory->peekWord(ControlWord) != 0)
            std::abort();
        if (target.cycleCount() - before >= Instructions)
            target.stop();
    });
    QObject::connect(&terminal, &QTimer::timeout, [] {});
    poll.start(0);
    terminal.start(0);
    target.go();
    return target.cycleCount() - before;
}

void begin(MAXQ30Simulator& target)
{
    target.codeMemory()->pokeBytes(0, sizeof crcProgram, reinterpret_cast<const unsigned char*>(crcProgram));
    target.reset(true, false);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const char* avrProgram = argc > 1 ? argv[1] : nullptr;

    maxq30::Core core;
    const auto* bytes = reinterpret_cast<const unsigned char*>(crcProgram);
    core.writeCode(0, sizeof crcProgram, bytes);
    CountingCallBacks callBacks;

    Rate avr, run, stops, steps, go, script;
    try {
        SimulatorSession session(QBURN_BINARY_DIR "/lib/libmaxq30sim.so");
        MAXQ30Simulator& target = session.target();
        begin(target);
        HBreakpoint breakpoints[4];
        for (uint32_t i = 0; i < 4; ++i) {
            breakpoints[i].address = 0x2000 + 2 * i;
            target.setBreakpoint(&breakpoints[i]);
        }
        const uint32_t addresses[4] = {0x1000, 0x1001, 0x1002, 0x1003};
        for (int round = 0; round < Rounds; ++round) {
            if (avrProgram)
                avr = simavrRate(avrProgram, avr);
            core.setCallBacks(nullptr);
            core.setStops({});
            measure(run, [&] { return core.run(Instructions); });
            core.setStops(addresses);
            measure(stops, [&] { return core.run(Instructions); });
            core.setCallBacks(&callBacks);
            measure(steps, [&] {
                for (uint64_t i = 0; i < Instructions; ++i)
                    core.step();
                return Instructions;
            });
            session.setPeripherals(nullptr);
            begin(target);
            measure(go, [&] { return runUnderDebugger(target); });
            session.setPeripherals(QBURN_SOURCE_DIR "/examples/peripherals/board.js");
            begin(target);
            measure(script, [&] { return runUnderDebugger(target); });
        }
    } catch (const HException& failure) {
        fprintf(stderr, "bench_sim: %s\n", failure.message().c_str());
        return 1;
    }
    if (avr.best > 0)
        std::printf("simavr                          %6.1f million instructions/s\n", avr.best);
    auto print = [&](const char* name, const Rate& rate) {
        std::printf("%-31s %6.1f million instructions/s", name, rate.best);
        if (avr.best > 0)
            std::printf("   %.2f times simavr", rate.best / avr.best);
        std::printf("\n");
    };
    print("core, run", run);
    print("core, run, four stops", stops);
    print("core, step with callbacks", steps);
    print("go, polled, four breakpoints", go);
    print("go, with a peripheral script", script);
    std::printf("of the core alone: go %.2f, with a peripheral script %.2f\n", go.best / run.best,
                script.best / run.best);
    return 0;
}
