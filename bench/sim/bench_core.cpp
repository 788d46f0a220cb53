// Compares the core with simavr: the same CRC-32 loop on both, in turns, best of several rounds.
// Usage: bench_sim_core [AVR program] [rounds]. Without an AVR program only our figures are printed.
#include "bench/sim/CrcProgram.h"
#include "bench/sim/simavr.h"
#include "sim/Core.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint64_t Instructions = 50'000'000;

template <class Body> void measure(Rate& rate, Body body)
{
    auto start = std::chrono::steady_clock::now();
    uint64_t done = body();
    rate.note(done, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

struct NoCallBacks final : MAXQSIMCallBacks {
    void onDataAccess(bool, unsigned, unsigned, unsigned) override { ++accesses; }
    void onDataError(bool, unsigned) override { std::abort(); }
    void onDataAlignmentError(bool, unsigned) override { std::abort(); }
    void onCodeError(unsigned) override { std::abort(); }
    void onInvalidInstruction(unsigned) override { std::abort(); }
    void onMiscError(const char*, unsigned) override { std::abort(); }
    uint64_t accesses = 0;
};

} // namespace

int main(int argc, char** argv)
{
    const char* avrProgram = argc > 1 ? argv[1] : nullptr;
    int rounds = argc > 2 ? std::atoi(argv[2]) : 5;

    maxq30::Core core;
    core.writeCode(0, sizeof crcProgram, reinterpret_cast<const unsigned char*>(crcProgram));
    NoCallBacks callBacks;

    Rate avr, run, stops, steps;
    const uint32_t addresses[4] = {0x1000, 0x1001, 0x1002, 0x1003};
    for (int round = 0; round < rounds; ++round) {
        if (avrProgram)
            avr = simavrRate(avrProgram, avr);
        core.setCallBacks(nullptr);
        measure(run, [&] { return core.run(Instructions); });
        measure(stops, [&] { return core.run(Instructions, addresses); });
        core.setCallBacks(&callBacks);
        measure(steps, [&] {
            for (uint64_t i = 0; i < Instructions; ++i)
                core.step();
            return Instructions;
        });
    }
    if (avr.best > 0)
        std::printf("simavr                      %7.1f million instructions/s\n", avr.best);
    auto print = [&](const char* name, const Rate& rate) {
        std::printf("%-27s %7.1f million instructions/s", name, rate.best);
        if (avr.best > 0)
            std::printf("   %.2f times simavr", rate.best / avr.best);
        std::printf("\n");
    };
    print("core, run", run);
    print("core, run, four stops", stops);
    print("core, step with callbacks", steps);
    return 0;
}
