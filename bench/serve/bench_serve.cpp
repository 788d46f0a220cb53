// The same computing program on the simulator, left alone and served with debugger and console, in turns.
// Prints both rates in million cycles a second, best of the rounds, and their ratio.
#include "bench/sim/CrcProgram.h"
#include "bench/sim/SimulatorSession.h"
#include "debug/monitor/DebuggerHelperFunctions.h"
#include "driver/terminal/TextTargetIOServerTerminal.h"
#include "maxq30/cpu/MAXQ30Debugger.h"
#include "maxq30/sim/MAXQ30Simulator.h"
#include "support/HException.h"
#include "support/Path.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int Rounds = 8;
constexpr int RoundMilliseconds = 500;

struct Host : DebuggerHelperFunctions {
    bool debuggerDisassemblyShowAddresses() override { return true; }
    bool debuggerDisassemblyShowLabels() override { return true; }
    bool debuggerDisassemblyShowSource() override { return true; }
    bool debuggerUseHardwareStep() override { return false; }
    void displayError(const QString& text) override { fprintf(stderr, "%s\n", text.toUtf8().constData()); }
    Path getDebugSourcePath(const Path& path) override { return path; }
    QString getDebugSourceText(const Path&, int) override { return {}; }
};

// Million cycles a second.
double rate(MAXQ30Simulator& target)
{
    target.reset(true, false);
    QTimer::singleShot(RoundMilliseconds, [&target] { target.stop(); });
    auto start = std::chrono::steady_clock::now();
    target.go();
    std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return target.cycleCount() / taken.count() / 1e6;
}

double servedRate(MAXQ30Simulator& target, int input)
{
    Host host;
    MAXQ30Debugger subject(&host);
    TextTargetIOServerTerminal terminal({QString()}, input);
    subject.setTargetInterface(&target);
    subject.setTargetIOServer(terminal.server());
    subject.loadSymbols(Path(QBURN_BINARY_DIR "/examples/hello/hello.kvx"), 0);
    subject.enableDebugIO();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&subject] { subject.isStopped(); });
    poll.start(1);
    return rate(target);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    int keyboard[2]; // nobody types
    if (pipe(keyboard) != 0)
        return 1;
    try {
        SimulatorSession session(QBURN_BINARY_DIR "/lib/libmaxq30sim.so");
        MAXQ30Simulator& target = session.target();
        target.codeMemory()->pokeBytes(0, sizeof crcProgram,
                                       reinterpret_cast<const unsigned char*>(crcProgram));
        double alone = 0, served = 0;
        for (int round = 0; round < Rounds; ++round) {
            alone = std::max(alone, rate(target));
            served = std::max(served, servedRate(target, keyboard[0]));
        }
        std::printf("alone %.1f, served %.1f million cycles/s: %.3f\n", alone, served, served / alone);
    } catch (const HException& failure) {
        fprintf(stderr, "bench_serve: %s\n", failure.message().c_str());
        return 1;
    }
    return 0;
}
