// The simulated target in a debug session against the core alone: free and with four code breakpoints on a
// CRC loop, with a data breakpoint of ten records on a loop whose every third instruction stores the watched
// word, and how many hits a second it can ignore.
#include "bench/sim/CrcProgram.h"
#include "bench/sim/SimulatorSession.h"
#include "bench/sim/simavr.h"
#include "debug/monitor/HBreakpoint.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "sim/Core.h"
#include "support/HException.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <vector>

namespace {

constexpr int Rounds = 5;
constexpr uint64_t Cycles = 50'000'000;
constexpr int IgnoredHits = 1'000'000;
constexpr uint32_t Word = 0x20;

// MOVE DP[0], #0x20; MOVE A[0], #0; loop: ADD #0x101; MOVE @DP[0].L, ACC; JUMP loop
constexpr unsigned char Program[] = {0x20, 0x3F, 0x00, 0x09, 0x01, 0x0B, 0x01,
                                     0x4A, 0x00, 0x2B, 0x0A, 0x9F, 0xFB, 0x0C};
constexpr uint32_t Jump = 12;

class Stopwatch {
public:
    double seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

// The program goes on from where it is, for about so many cycles.
void run(MAXQ30Simulator& target, Rate& rate)
{
    unsigned first = target.cycleCount();
    Stopwatch time;
    target.go();
    while (target.cycleCount() - first < Cycles && !target.isStopped())
        QCoreApplication::processEvents();
    target.stop();
    rate.note(target.cycleCount() - first, time.seconds());
}

void set(MAXQ30Simulator& target, std::vector<HBreakpoint>& breakpoints)
{
    for (HBreakpoint& b : breakpoints)
        target.setBreakpoint(&b);
}

void remove(MAXQ30Simulator& target, std::vector<HBreakpoint>& breakpoints)
{
    for (HBreakpoint& b : breakpoints)
        target.removeBreakpoint(&b);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    std::vector<HBreakpoint> code(4), data(10);
    for (uint32_t i = 0; i < code.size(); ++i)
        code[i].address = 0x2000 + 2 * i;
    for (uint32_t i = 0; i < data.size(); ++i) {
        data[i].address = Word;
        data[i].length = 4;
        data[i].trigger = 2;
        data[i].hasValue = true;
        data[i].mask = 0xFFFFFFFF;
        data[i].value = i; // numbers that are no multiples of 0x101
        data[i].comparison = HBreakpoint::Equal;
    }
    data[0].value = 1;
    Rate core, free, codeRate, stores, dataRate;
    double ignored = 0;
    try {
        SimulatorSession session(QBURN_BINARY_DIR "/lib/libmaxq30sim.so");
        MAXQ30Simulator& target = session.target();
        const auto* crc = reinterpret_cast<const unsigned char*>(crcProgram);
        target.setDebugSession(true);
        maxq30::Core alone;
        alone.writeCode(0, sizeof crcProgram, crc);
        for (int round = 0; round < Rounds; ++round) {
            Stopwatch time;
            uint64_t before = alone.cycles();
            alone.run(Cycles / 2);
            core.note(alone.cycles() - before, time.seconds());
            target.codeMemory()->pokeBytes(0, sizeof crcProgram, crc);
            target.reset(true, false);
            run(target, free);
            set(target, code);
            run(target, codeRate);
            remove(target, code);
            target.codeMemory()->pokeBytes(0, sizeof Program, Program);
            target.reset(true, false);
            run(target, stores);
            set(target, data);
            run(target, dataRate);
            remove(target, data);
        }
        std::vector<HBreakpoint> hit(1);
        hit[0].address = Jump;
        hit[0].count = IgnoredHits;
        set(target, hit);
        Stopwatch time;
        target.go();
        while (!target.isStopped())
            QCoreApplication::processEvents();
        ignored = IgnoredHits / time.seconds();
    } catch (const HException& failure) {
        fprintf(stderr, "bench_breakpoints: %s\n", failure.message().c_str());
        return 1;
    }
    auto print = [](const char* name, const Rate& rate, const Rate& against, const char* what) {
        std::printf("%-28s %6.1f million cycles/s   %.2f of %s\n", name, rate.best, rate.best / against.best,
                    what);
    };
    print("core alone", core, core, "the core");
    print("session", free, core, "the core");
    print("session, four code", codeRate, core, "the core");
    print("session, storing", stores, stores, "itself");
    print("session, ten data records", dataRate, stores, "it");
    std::printf("ignored hits                 %6.1f million/s\n", ignored / 1e6);
    return 0;
}
