// The same computing program on the core alone, on the simulator target, and served there with debugger,
// console and four breakpoints, in turns. Prints the rates in million cycles a second, best of the rounds,
// and their ratios.
#include "bench/sim/CrcProgram.h"
#include "bench/sim/SimulatorSession.h"
#include "debug/monitor/DebuggerHelperFunctions.h"
#include "debug/monitor/HBreakpoint.h"
#include "debug/symbols/SymbolicDebug.h"
#include "driver/terminal/TextTargetIOServerTerminal.h"
#include "maxq30/cpu/MAXQ30Debugger.h"
#include "maxq30/cpu/MAXQ30Processor.h"
#include "maxq30/sim/MAXQ30Simulator.h"
#include "sim/Core.h"
#include "support/HException.h"
#include "support/Path.h"
#include "target/memory/TargetMemoryInterface.h"
#include "zoff/ZOFFDebugIndex.h"
#include "zoff/ZOFFProcessor.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int Rounds = 8;
constexpr int RoundMilliseconds = 250;
constexpr uint64_t CoreSteps = 1'000'000;

struct Host : DebuggerHelperFunctions {
    bool debuggerDisassemblyShowAddresses() override { return true; }
    bool debuggerDisassemblyShowLabels() override { return true; }
    bool debuggerDisassemblyShowSource() override { return true; }
    bool debuggerUseHardwareStep() override { return false; }
    void displayError(const QString& text) override { fprintf(stderr, "%s\n", text.toUtf8().constData()); }
    Path getDebugSourcePath(const Path& path) override { return path; }
    QString getDebugSourceText(const Path&, int) override { return {}; }
};

// Nobody waits for the program's end.
struct Nobody : TextTargetIOServerTerminal::Observer {
    void programExited() override {}
    void outputFailed() override {}
};

// Million cycles a second while `run` blocks.
template <class Run> double rate(MAXQ30Simulator& target, Run&& run)
{
    target.reset(true, false);
    QTimer::singleShot(RoundMilliseconds, [&target] { target.stop(); });
    auto start = std::chrono::steady_clock::now();
    run();
    std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return target.cycleCount() / taken.count() / 1e6;
}

double coreRate(maxq30::Core& core)
{
    uint64_t before = core.cycles();
    auto start = std::chrono::steady_clock::now();
    std::chrono::duration<double> taken;
    do {
        core.run(CoreSteps);
        taken = std::chrono::steady_clock::now() - start;
    } while (taken < std::chrono::milliseconds(RoundMilliseconds));
    return double(core.cycles() - before) / taken.count() / 1e6;
}

double servedRate(MAXQ30Simulator& target, int input)
{
    Host host;
    Nobody nobody;
    MAXQ30Debugger subject(&host);
    TextTargetIOServerTerminal terminal({QString()}, nobody, input);
    subject.setTargetInterface(&target);
    subject.setTargetIOServer(terminal.server());
    subject.loadSymbols(Path(QBURN_BINARY_DIR "/examples/hello/hello.kvx"), 0);
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&subject] { subject.isStopped(); });
    poll.start(1);
    HBreakpoint breakpoints[4];
    for (uint32_t i = 0; i < 4; ++i) {
        breakpoints[i].address = 0x2000 + 2 * i;
        target.setBreakpoint(&breakpoints[i]);
    }
    double result = rate(target, [&subject] { subject.start(QStringLiteral("0x0"), false); });
    for (HBreakpoint& breakpoint : breakpoints)
        target.removeBreakpoint(&breakpoint);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    ZOFFProcessor::install(MAXQ30Processor);
    ZOFFDebugIndex::install(SymbolicDebugIndex);
    int keyboard[2]; // nobody types
    if (pipe(keyboard) != 0)
        return 1;
    try {
        SimulatorSession session(QBURN_BINARY_DIR "/lib/libmaxq30sim.so");
        MAXQ30Simulator& target = session.target();
        target.codeMemory()->pokeBytes(0, sizeof crcProgram,
                                       reinterpret_cast<const unsigned char*>(crcProgram));
        maxq30::Core core;
        core.writeCode(0, sizeof crcProgram, reinterpret_cast<const unsigned char*>(crcProgram));
        double bare = 0, alone = 0, served = 0;
        for (int round = 0; round < Rounds; ++round) {
            bare = std::max(bare, coreRate(core));
            alone = std::max(alone, rate(target, [&target] { target.go(); }));
            served = std::max(served, servedRate(target, keyboard[0]));
        }
        std::printf("core %.1f, go %.1f, served %.1f million cycles/s: %.3f and %.3f of the core\n", bare,
                    alone, served, alone / bare, served / bare);
    } catch (const HException& failure) {
        fprintf(stderr, "bench_serve: %s\n", failure.message().c_str());
        return 1;
    }
    return 0;
}
