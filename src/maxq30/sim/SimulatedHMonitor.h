// A target that runs inside this process. The monitor owns the run loop, matches breakpoints in software,
// records a trace and counts executions; it knows nothing of the processor, which a derived class brings
// in by the pure operations.
//
// Outside of a debug session go() blocks its caller until the program stops; events are handled once in
// 300 instructions, so a stop() from an event reaches the loop, or in a multiple of that when a runner gets
// there in a fraction of a millisecond. In a session go() comes back at once, and the event loop carries the
// program on in slices of about two milliseconds.
#pragma once

#include "debug/monitor/HMonitor.h"
#include "maxq30/sim/PeripheralSimulator.h"
#include "maxq30/sim/SimulatedBreakpoints.h"
#include "maxq30/sim/SimulatedTrace.h"
#include "sim/maxqsim.h"

#include <QByteArray>
#include <QTimer>

#include <bitset>
#include <exception>

class SimulatedHMonitor : public HMonitor {
public:
    enum Error {
        UnsupportedOpcode,
        OutsideOnRead,
        OutsideOnWrite,
        OutsideOnFetch,
        UninitialisedRead,
        MiscError,
        UnalignedRead,
        UnalignedWrite,
        NoError,
    };

    // The flags say whether the alignment errors are listed, and the properties of peripherals.
    SimulatedHMonitor(const char* name, bool listAlignmentErrors, bool showPeripherals,
                      TargetInterfaceHelperFunctions* helpers);
    ~SimulatedHMonitor() override;

    // TargetInterface.
    void disconnect() override;
    bool isConnected() const override { return m_connected; }
    // Throws, once, what a slice of the program failed with.
    bool isStopped() override;
    unsigned cycleCount() const override { return m_connected ? m_cycleCount : 0; }
    void reset(bool stop, bool loader) override;
    // In a debug session the instruction at the pc executes before breakpoints are tested; outside, it
    // does when the program stands at a breakpoint that has matched.
    void go() override;
    // Tests the first instruction as well.
    void start(bool setPC, unsigned pc) override;
    // One instruction, without a breakpoint test before it. A match of its data accesses is kept, what was
    // before it is forgotten.
    void step() override;
    void stop() override;
    void clear() override;
    QString getObjectPixmap(bool) const override { return QStringLiteral("simulator"); }
    void getProperties(PropertyValueList& list) override;

    // HMonitor.
    void setDebugSession(bool on) override;
    bool runsOnEvents() const override { return m_session && !m_stopped; }
    // Tests the first instruction as well.
    void startDebugging(bool setPC, unsigned pc, bool stop) override;
    int numErrors() override { return m_listAlignmentErrors ? 8 : 6; }
    const char* getError(int error) override { return ErrorToStr(Error(error)); }
    bool errorEnabled(const char* text) override { return m_enabledErrors[StringToError(text)]; }
    void setErrorEnabled(const char* text, bool on) override { m_enabledErrors[StringToError(text)] = on; }
    const char* lastError(unsigned int& address) override;
    bool setBreakpoint(HBreakpoint* breakpoint) override;
    // True, also for one that was never set.
    bool removeBreakpoint(HBreakpoint* breakpoint) override;
    HBreakpoint* matched() override { return m_breakpoints.matched(); }
    bool watchStops(StopWatcher* watcher) override;
    bool canChain() override { return true; }
    int numTriggers() override { return HBreakpoint::NumTriggers; }
    const char* getTrigger(int trigger) override { return HBreakpoint::triggerName(trigger); }
    int getExecuteTriggerNumber() override { return HBreakpoint::Execute; }
    int getWriteTriggerNumber() override { return HBreakpoint::Write; }
    int numActions() override { return 2; }
    const char* getAction(int action) override { return action == TraceAction ? "Trace" : "Stop"; }
    int getStopActionNumber() override { return StopAction; }
    void setTraceEnabled(bool on) override { m_traceEnabled = on; }
    bool getTraceEnabled() override { return m_traceEnabled; }
    void resetTrace() override { m_trace.clear(); }
    void iterateTrace() override { m_trace.rewind(); }
    bool getNextTrace(unsigned int& address, unsigned int& data, unsigned int& cycles) override;
    void setExecutionCountEnabled(bool) override {} // executions are always counted
    bool getExecutionCountEnabled() override { return true; }
    void resetExecutionCount() override { m_counts.reset(); }
    void iterateExecutionCount() override { m_counts.rewind(); }
    bool getNextExecutionCount(unsigned int& address, unsigned int& count, unsigned int& other) override;
    // False for a place that is no multiple of four.
    bool watchControlWord(uint32_t address, ControlWordWatcher* watcher) override;

    // Resets the processor and the peripherals, and the counts of time.
    virtual void reset();
    // To be called by the derived class's connect(bool) when its processor is there.
    virtual void connect();
    using HMonitor::connect;
    // The processor: reset it, deliver interrupts, run one instruction and answer its cycles.
    virtual void checkReset() = 0;
    virtual void checkIRQ() = 0;
    virtual unsigned singleStep() = 0;
    // A processor that needs no checkIRQ may do many steps in one call, and counts executions; null without.
    virtual MAXQSIMRunner* runner() { return nullptr; }

    int numBreakpoints() const { return m_breakpoints.count(); }
    unsigned matchedAddress() const { return m_breakpoints.matchedAddress(); }
    unsigned matchedData() const { return m_breakpoints.matchedData(); }
    void resetMatched() { m_breakpoints.resetMatched(); }

    QString peripheralFile() const { return m_peripheralFile.propertyValue(); }
    void setPeripheralFile(const QString& file) { m_peripheralFile.setPropertyValue(file); }
    bool enablePeripheralFile() const { return m_enablePeripheralFile.toBool(); }
    void setEnablePeripheralFile(bool on) { m_enablePeripheralFile.setValue(on); }
    int traceBufferSize() const { return m_traceBufferSize.toInt(); }
    void setTraceBufferSize(int entries) { m_traceBufferSize.setValue(entries); }

    static const char* ErrorToStr(Error error);
    // An unknown text is a MiscError.
    static Error StringToError(const char* text);
    // Of the pending error.
    const char* ErrorString() const;

    int getExecutionCountCapabilities() const { return 1; }
    // In bytes. Throws HException when the range is too large.
    void setExecutionCountRange(unsigned int base, unsigned int size);
    void addToExecutionCount(unsigned int address) { m_counts.add(address); }
    void addToInstructionTrace(unsigned int address, unsigned int data);

    void setMatched(HBreakpoint* b, unsigned int address, unsigned int data)
    {
        m_breakpoints.setMatched(b, address, data);
    }
    void matchCodeBreakpoint(unsigned int pc) { m_breakpoints.matchCode(pc); }
    void matchDataBreakPoint(unsigned int address, unsigned int length, unsigned int value, bool read)
    {
        m_breakpoints.matchData(address, length, value, read);
        interruptOnMatch();
    }
    bool matchDataBreakPoint(HBreakpoint* b, unsigned int address, unsigned int length, unsigned int value,
                             bool read)
    {
        return SimulatedBreakpoints::matchesData(b, address, length, value, read);
    }
    void matchRegisterBreakpoint(unsigned int number, unsigned int length, unsigned int value, bool read)
    {
        m_breakpoints.matchRegister(number, length, value, read);
    }

protected:
    // What the processor's callbacks report. The text is for a MiscError.
    void setPendingError(Error error, unsigned address, const char* text = nullptr);
    // False when a data access of up to four bytes cannot match, so that it need not be looked at.
    bool mayMatchData(unsigned address) const { return m_breakpoints.mayMatchData(address); }
    PeripheralSimulator* peripherals() { return m_peripherals.get(); }
    // Of every write to data memory. The watcher is called behind the instruction, which may write more.
    void dataWritten(unsigned address, unsigned value)
    {
        if ((address & ~3u) == m_controlWord && value != 0) [[unlikely]]
            controlWordWritten();
    }

private:
    enum Action { StopAction, TraceAction };

    // Throws HException while there is no processor.
    TargetRegisterInterface& processor();
    void resume(bool passFirst);
    void slice();
    void run(bool blocking);
    void stepAt(unsigned pc);
    unsigned stepAhead(unsigned maximum);
    void tellRunner();
    bool endsAfterStep();
    void interruptRun()
    {
        if (MAXQSIMRunner* runner = this->runner())
            runner->interrupt();
    }
    // Also when the match has armed another breakpoint, of which the runner does not know yet.
    void interruptOnMatch()
    {
        if (m_breakpoints.matched() || m_breakpoints.generation() != m_toldGeneration)
            interruptRun();
    }
    void stepWatchingRegisters();
    void evaluateMatch();
    bool goesOnAfterMatch(HBreakpoint* matched);
    bool stopsOnPendingError();
    void controlWordWritten();

    PropertyClass m_peripheralFileClass;
    PropertyClass m_enablePeripheralFileClass;
    PropertyClass m_traceBufferSizeClass;
    TargetInterfacePropertyValue m_peripheralFile;
    TargetInterfacePropertyValue m_enablePeripheralFile;
    TargetInterfacePropertyValue m_traceBufferSize;

    bool m_listAlignmentErrors;
    bool m_connected = false;
    bool m_stopped = true;
    bool m_traceEnabled = false;
    SimulatedBreakpoints m_breakpoints;
    SimulatedTrace m_trace;
    ExecutionCounts m_counts;

    std::bitset<NoError> m_enabledErrors;
    Error m_pendingError = NoError;
    unsigned m_pendingErrorAddress = 0;
    QByteArray m_miscErrorText;
    QByteArray m_lastErrorText; // of the error that stopped the last run
    unsigned m_lastErrorAddress = 0;

    static constexpr uint32_t NoControlWord = 1; // no multiple of four
    uint32_t m_controlWord = NoControlWord;
    ControlWordWatcher* m_watcher = nullptr;
    bool m_controlWordWritten = false; // by the current step

    bool m_session = false;
    bool m_running = false;   // a run or slice is under way
    bool m_passFirst = false; // the next instruction executes without a test
    StopWatcher* m_stopWatcher = nullptr;
    bool m_asking = false; // the watcher is being asked
    QTimer m_slices;
    std::exception_ptr m_failure; // of a slice, until it is told

    MAXQSIMRunner* m_toldRunner = nullptr; // what the runner knows
    unsigned m_toldGeneration = 0;
    uint32_t m_toldControlWord = NoControlWord;
    unsigned m_loopCount = 0;
    unsigned m_cycleCount = 0;
    std::unique_ptr<PeripheralSimulator> m_peripherals;
};
