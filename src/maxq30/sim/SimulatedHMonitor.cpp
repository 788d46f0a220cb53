#include "maxq30/sim/SimulatedHMonitor.h"

#include "project/MacroSystem.h"
#include "project/PropertyValue.h"
#include "support/Bracket.h"
#include "support/HException.h"
#include "target/TargetRegisterInterface.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace {

constexpr int SimulatorCapabilities = 0x2BF;
constexpr unsigned RoundsBetweenEvents = 300;
constexpr unsigned MostRoundsBetweenEvents = RoundsBetweenEvents << 12;
constexpr qint64 EventNanoseconds = 200'000; // between events, when the processor is that fast
constexpr unsigned RoundsOfSlice = 10'000;   // between looks at the clock
constexpr qint64 SliceMilliseconds = 2;

constexpr const char* ErrorTexts[SimulatedHMonitor::NoError] = {
    "Unsupported opcode",
    "Address outside memory range on read",
    "Address outside memory range on write",
    "Address outsize memory range on instruction fetch",
    "Uninitialised memory read",
    "Misc error",
    "Unaligned access on word read",
    "Unaligned access on word write",
};

} // namespace

SimulatedHMonitor::SimulatedHMonitor(const char* name, bool listAlignmentErrors, bool showPeripherals,
                                     TargetInterfaceHelperFunctions* helpers)
    : HMonitor(SimulatorCapabilities, name, helpers),
      m_peripheralFileClass("peripheralFile", PropertyClass::FileName, QString(), QString(), "Peripherals",
                            "Peripheral File", "JavaScript file that simulates peripherals."),
      m_enablePeripheralFileClass("enablePeripheralFile", PropertyClass::Boolean, "false", QString(),
                                  "Peripherals", "Enable Peripheral File",
                                  "Enable JavaScript simulation of peripherals."),
      m_traceBufferSizeClass("traceBufferSize", PropertyClass::IntegerRange, "256", QString(), "Diagnostic",
                             "Trace Buffer Size", "Set the number of trace entries that are recorded."),
      m_peripheralFile(&m_peripheralFileClass), m_enablePeripheralFile(&m_enablePeripheralFileClass),
      m_traceBufferSize(&m_traceBufferSizeClass), m_listAlignmentErrors(listAlignmentErrors)
{
    // Found by name all the same, but not shown.
    m_peripheralFile.setVisible(showPeripherals);
    m_enablePeripheralFile.setVisible(showPeripherals);
    m_traceBufferSizeClass.setRange(0, 655536);
    QObject::connect(&m_slices, &QTimer::timeout, [this] { slice(); });
}

SimulatedHMonitor::~SimulatedHMonitor() = default;

void SimulatedHMonitor::connect()
{
    QString file = peripheralFile();
    if (enablePeripheralFile() && !file.isEmpty())
        m_peripherals = std::make_unique<PeripheralSimulator>(
            MacroSystem::replaceMacros(macroSystem.globalMacros(true), file), this);
    m_counts.setProcessor(runner());
    m_connected = true;
}

void SimulatedHMonitor::disconnect()
{
    m_counts.setProcessor(nullptr);
    m_toldRunner = nullptr;
    m_peripherals.reset();
    clear();
    m_counts.free();
    m_connected = false;
}

void SimulatedHMonitor::clear()
{
    m_breakpoints.clear();
    m_trace.clear();
    m_counts.reset();
    stop();
    m_enabledErrors.reset();
    m_lastErrorText.clear();
    m_failure = nullptr;
    watchControlWord(0, nullptr);
}

void SimulatedHMonitor::getProperties(PropertyValueList& list)
{
    list.appendUnique(&m_peripheralFile);
    list.appendUnique(&m_enablePeripheralFile);
    list.appendUnique(&m_traceBufferSize);
    HMonitor::getProperties(list);
}

TargetRegisterInterface& SimulatedHMonitor::processor()
{
    if (TargetRegisterInterface* file = registers())
        return *file;
    throw HException("the simulator is not connected");
}

void SimulatedHMonitor::reset()
{
    processor();
    m_cycleCount = 0;
    m_loopCount = 0;
    checkReset();
    if (m_peripherals)
        m_peripherals->reset();
}

void SimulatedHMonitor::reset(bool stop, bool loader)
{
    reset();
    if (executeResetScript(loader) && !stop)
        go();
}

void SimulatedHMonitor::start(bool setPC, unsigned pc)
{
    if (setPC)
        processor().setPC(pc);
    resume(false);
}

void SimulatedHMonitor::startDebugging(bool setPC, unsigned pc, bool stop)
{
    if (setPC)
        processor().setPC(pc);
    if (stop)
        m_stopped = true;
    else
        resume(false);
}

void SimulatedHMonitor::step()
{
    TargetRegisterInterface& file = processor();
    m_breakpoints.refresh();
    m_breakpoints.resetMatched();
    m_pendingError = NoError;
    m_lastErrorText.clear();
    m_controlWordWritten = false;
    stepAt(file.getPC());
}

void SimulatedHMonitor::stepAt(unsigned pc)
{
    if (m_traceEnabled) [[unlikely]]
        addToInstructionTrace(pc, 0);
    if (!runner())
        m_counts.add(pc);
    if (m_breakpoints.watchesRegisters()) [[unlikely]]
        stepWatchingRegisters();
    else
        m_cycleCount += singleStep();
}

// The processor tells of no register accesses, so a write shows as a changed value.
void SimulatedHMonitor::stepWatchingRegisters()
{
    TargetRegisterInterface* file = registers();
    std::vector<unsigned> numbers = m_breakpoints.registers();
    std::vector<uint32_t> before;
    for (unsigned number : numbers)
        before.push_back(file->getValue(number));
    m_cycleCount += singleStep();
    for (size_t i = 0; i < numbers.size(); ++i) {
        uint32_t value = file->getValue(numbers[i]);
        if (value != before[i])
            m_breakpoints.matchRegister(numbers[i], file->sizeInBytes(numbers[i]), value, false);
    }
}

bool SimulatedHMonitor::isStopped()
{
    if (m_failure)
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    return m_stopped;
}

void SimulatedHMonitor::setDebugSession(bool on)
{
    m_session = on;
    if (on)
        return;
    m_slices.stop();
    if (!m_running)
        m_stopped = true; // nobody carries the program on
}

bool SimulatedHMonitor::watchStops(StopWatcher* watcher)
{
    m_stopWatcher = watcher;
    return true;
}

void SimulatedHMonitor::go()
{
    resume(m_session || m_breakpoints.matched());
}

void SimulatedHMonitor::resume(bool passFirst)
{
    processor();
    m_stopped = false;
    m_passFirst = passFirst;
    m_breakpoints.resetMatched();
    m_pendingError = NoError;
    m_lastErrorText.clear();
    m_failure = nullptr;
    if (m_asking) // in the middle of a run, which then goes on
        return;
    if (m_session) {
        m_slices.start(0);
        return;
    }
    Bracket running([this] { m_stopped = true; }); // when a simulated peripheral fails, nothing executes
    run(true);
    running.dismiss();
}

// A failure must not go into the event loop, so it waits for whoever asks for the stop.
void SimulatedHMonitor::slice()
{
    if (m_running) // whoever handles a request of the program may handle events as well
        return;
    if (!m_stopped) {
        try {
            run(false);
        } catch (...) {
            m_failure = std::current_exception();
            m_stopped = true;
        }
    }
    if (m_stopped)
        m_slices.stop();
}

// Until the program stops, or for the length of a slice.
void SimulatedHMonitor::run(bool blocking)
{
    Bracket running([this] { m_running = false; });
    m_running = true;
    m_breakpoints.refresh();
    TargetRegisterInterface* file = registers();
    QElapsedTimer time;
    time.start();
    unsigned betweenEvents = RoundsBetweenEvents;
    auto roundsToPause = [&] {
        return blocking ? betweenEvents - m_loopCount % RoundsBetweenEvents : RoundsOfSlice;
    };
    unsigned untilPause = roundsToPause();
    while (true) {
        checkIRQ();
        ++m_loopCount;
        if (--untilPause == 0) [[unlikely]] {
            if (blocking) {
                QCoreApplication::processEvents();
                // An event may have done anything a debugger does: edited breakpoints, reset, disconnected.
                m_breakpoints.refresh();
                file = registers();
                bool early = runner() && time.nsecsElapsed() < EventNanoseconds;
                betweenEvents = early ? std::min(2 * betweenEvents, MostRoundsBetweenEvents)
                                      : std::max(betweenEvents / 2, RoundsBetweenEvents);
                time.start();
            } else if (time.hasExpired(SliceMilliseconds)) {
                return;
            }
            untilPause = roundsToPause();
        }
        if (m_stopped)
            return;

        unsigned pc = file->getPC();
        if (std::exchange(m_passFirst, false)) [[unlikely]] {
            m_breakpoints.resetMatched();
        } else if (m_breakpoints.mayMatchCode(pc)) [[unlikely]] {
            m_breakpoints.matchCode(pc);
            evaluateMatch();
            if (m_stopped)
                return;
            m_passFirst = false; // that is this instruction
        }

        stepAt(pc);
        if (endsAfterStep())
            return;
        // Rounds in which nothing but a step can happen are done in one go, up to the next pause.
        if (untilPause > 1 && runner() && !m_passFirst && !m_traceEnabled &&
            !m_breakpoints.watchesRegisters() && !m_breakpoints.matchesCodeEverywhere()) {
            untilPause -= stepAhead(untilPause - 1);
            if (endsAfterStep())
                return;
        }
    }
}

// At most `maximum` rounds; returns how many. It ends before an instruction that may match a breakpoint,
// and behind one that brought a match, an error or a stop.
unsigned SimulatedHMonitor::stepAhead(unsigned maximum)
{
    tellRunner();
    MAXQSIMRun run{maximum, false, 0, 0, false};
    Bracket counting([&] { // also when a simulated peripheral fails
        m_loopCount += unsigned(run.steps);
        m_cycleCount += unsigned(run.cycles);
    });
    runner()->run(&run);
    counting.end();
    return unsigned(run.steps);
}

// Where the runner has to end, and of which data it has to tell.
void SimulatedHMonitor::tellRunner()
{
    MAXQSIMRunner* runner = this->runner();
    if (runner == m_toldRunner && m_toldGeneration == m_breakpoints.generation() &&
        m_toldControlWord == m_controlWord)
        return;
    m_toldRunner = runner;
    m_toldGeneration = m_breakpoints.generation();
    m_toldControlWord = m_controlWord;
    std::vector<unsigned> stops = m_breakpoints.codeAddresses();
    runner->setStops(stops.data(), unsigned(stops.size()));
    std::vector<MAXQSIMDataRange> ranges = m_breakpoints.dataRanges();
    if (m_controlWord != NoControlWord)
        ranges.push_back({m_controlWord, m_controlWord + 3});
    runner->setDataRanges(ranges.data(), unsigned(ranges.size()));
    if (m_breakpoints.matchesDataEverywhere())
        runner->setDataRanges(nullptr, 0);
}

// What the latest step brought: its match is carried out. True when the run is over.
bool SimulatedHMonitor::endsAfterStep()
{
    if (m_breakpoints.matched() && !m_stopped) [[unlikely]]
        evaluateMatch();
    if (m_pendingError != NoError && stopsOnPendingError()) [[unlikely]]
        return true;
    if (m_controlWordWritten) [[unlikely]] {
        m_controlWordWritten = false;
        if (m_watcher && !m_stopped)
            m_watcher->controlWordWritten();
    }
    return m_stopped;
}

bool SimulatedHMonitor::watchControlWord(uint32_t address, ControlWordWatcher* watcher)
{
    bool possible = address % 4 == 0;
    m_watcher = possible ? watcher : nullptr;
    m_controlWord = m_watcher ? address : NoControlWord;
    m_controlWordWritten = false;
    return possible;
}

void SimulatedHMonitor::controlWordWritten()
{
    m_controlWordWritten = true;
    interruptRun();
}

void SimulatedHMonitor::stop()
{
    m_stopped = true;
    interruptRun();
}

void SimulatedHMonitor::evaluateMatch()
{
    HBreakpoint* b = m_breakpoints.matched();
    if (!b)
        return;
    if (b->action == StopAction) {
        m_stopped = !goesOnAfterMatch(b);
        if (!m_stopped) {
            m_breakpoints.resetMatched();
            m_passFirst = true;
        }
        return;
    }
    if (b->action == TraceAction)
        addToInstructionTrace(matchedAddress(), matchedData());
    m_breakpoints.resetMatched();
}

// The watcher sees the target stopped, as it would be if it were polled. One that lets it go by itself
// has decided, whatever it returns.
bool SimulatedHMonitor::goesOnAfterMatch(HBreakpoint* matched)
{
    if (matched->count > 0) {
        --matched->count;
        return true;
    }
    if (!m_stopWatcher || m_asking)
        return false;
    Bracket asking([this] { m_asking = false; });
    m_asking = true;
    m_stopped = true;
    bool goesOn = m_stopWatcher->goesOn() || !m_stopped;
    m_breakpoints.refresh();
    return goesOn && m_connected;
}

bool SimulatedHMonitor::stopsOnPendingError()
{
    if (!m_enabledErrors[m_pendingError])
        return false;
    m_lastErrorText = ErrorString();
    m_lastErrorAddress = m_pendingErrorAddress;
    m_stopped = true;
    return true;
}

void SimulatedHMonitor::setPendingError(Error error, unsigned address, const char* text)
{
    m_pendingError = error;
    m_pendingErrorAddress = address;
    if (text)
        m_miscErrorText = text;
    interruptRun();
}

const char* SimulatedHMonitor::lastError(unsigned int& address)
{
    if (m_pendingError == NoError)
        return nullptr;
    // An error that did not stop the run is shown as well.
    bool stopped = !m_lastErrorText.isEmpty();
    address = stopped ? m_lastErrorAddress : m_pendingErrorAddress;
    return stopped ? m_lastErrorText.constData() : ErrorString();
}

const char* SimulatedHMonitor::ErrorToStr(Error error)
{
    return error >= 0 && error < NoError ? ErrorTexts[error] : "Invalid Error";
}

SimulatedHMonitor::Error SimulatedHMonitor::StringToError(const char* text)
{
    for (int i = 0; i < NoError; ++i)
        if (!std::strcmp(ErrorTexts[i], text))
            return Error(i);
    return MiscError;
}

const char* SimulatedHMonitor::ErrorString() const
{
    return m_pendingError == MiscError ? m_miscErrorText.constData() : ErrorToStr(m_pendingError);
}

bool SimulatedHMonitor::setBreakpoint(HBreakpoint* breakpoint)
{
    m_breakpoints.add(breakpoint);
    return true;
}

bool SimulatedHMonitor::removeBreakpoint(HBreakpoint* breakpoint)
{
    m_breakpoints.remove(breakpoint);
    return true;
}

bool SimulatedHMonitor::getNextTrace(unsigned int& address, unsigned int& data, unsigned int& cycles)
{
    const SimulatedTrace::Entry* entry = m_trace.next();
    if (!entry)
        return false;
    address = entry->address;
    data = entry->data;
    cycles = entry->cycles;
    return true;
}

bool SimulatedHMonitor::getNextExecutionCount(unsigned int& address, unsigned int& count, unsigned int& other)
{
    other = 0;
    return m_counts.next(address, count);
}

void SimulatedHMonitor::setExecutionCountRange(unsigned int base, unsigned int size)
{
    if (!m_counts.setRange(base, size))
        throw HException(QStringLiteral("cannot count executions in a range of %1 bytes").arg(size));
}

void SimulatedHMonitor::addToInstructionTrace(unsigned int address, unsigned int data)
{
    m_trace.add({address, data, m_cycleCount}, unsigned(std::max(0, traceBufferSize())));
}
