// A MAXQ30 processor with its memories, for programs that hold it in their own process. What it does is
// written down in README.md. Registers go by their numbers, (index << 4) | module; IP counts 16-bit
// words, every other address bytes.
#pragma once

#include "sim/Machine.h"
#include "sim/TraceFile.h"
#include "sim/limits.h"
#include "sim/maxqsim.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace maxq30 {

class Core {
public:
    // Sizes in bytes, multiples of 4 from 64 to 16 MiB; throws std::invalid_argument for others. Code
    // memory is erased (all ones), data memory zero, the processor at its reset state.
    explicit Core(uint32_t codeBytes = limits::DefaultCode, uint32_t dataBytes = limits::DefaultData);

    // Who hears of accesses and faults; not owned, null for nobody. The second form also says by
    // MAXQSIMFeature bits which of the further callbacks are called.
    void setCallBacks(MAXQSIMCallBacks* callBacks);
    void setCallBacks(MAXQSIMExtendedCallBacks* callBacks, unsigned features);
    // Writes a line for each instruction from now on; false when the file cannot be written.
    bool openTrace(const std::string& fileName);
    void closeTrace();

    // Registers to their reset state; memories and counts of time stay.
    void reset();

    // One instruction, or the entry into an interrupt; returns its cycles.
    unsigned step();
    // At most `maximum` steps; returns how many were done. Ends early behind a step in which requestStop was
    // called, and before an instruction at a stop, other than the first instruction.
    uint64_t run(uint64_t maximum);
    // For the users of maxqsim.h.
    void run(MAXQSIMRun& run);
    // For callbacks: the current run ends behind this instruction.
    void requestStop();
    // Word addresses where runs end. Any number costs nothing during a run.
    void setStops(std::span<const uint32_t> words) { m_machine.setStops(words); }
    // Of the data accesses only those that touch one of the ranges are told from now on; or all again.
    void tellAccesses(std::vector<MAXQSIMDataRange> ranges)
    {
        m_machine.setDataRanges(std::move(ranges), false);
    }
    void tellAllAccesses() { m_machine.setDataRanges({}, true); }

    // Executions of the instruction at a word address, and how often a jump was taken there. A run between
    // two calls costs the time to go through the code.
    MAXQSIMCount count(uint32_t word);
    void resetCounts() { m_machine.resetCounts(); }

    // False, and nothing is changed, when part of the range lies outside. Data reads may also reach the
    // code memory through its window at limits::CodeWindow.
    bool readCode(uint32_t address, uint32_t length, unsigned char* buffer) const;
    bool writeCode(uint32_t address, uint32_t length, const unsigned char* bytes);
    bool readData(uint32_t address, uint32_t length, unsigned char* buffer) const;
    bool writeData(uint32_t address, uint32_t length, const unsigned char* bytes);

    // Without side effects on pointers and stack: a number that names a memory access, or nothing, reads
    // as 0 and takes no value. Writing IP is a jump; writing IIR asks for interrupts.
    uint32_t readRegister(unsigned number);
    void writeRegister(unsigned number, uint32_t value);
    uint32_t ip() const { return m_machine.ip(); }

    uint32_t codeBytes() const { return m_machine.codeWords * 2; }
    uint32_t dataBytes() const { return m_machine.dataBytes; }
    // Since construction.
    uint64_t cycles() const { return m_machine.cycles; }

private:
    void setCallBacks(MAXQSIMCallBacks* events, MAXQSIMExtendedCallBacks* longEvents,
                      MAXQSIMExtendedCallBacks* peripherals);
    void advance(uint64_t end);
    void runTo(uint64_t end, bool fromStop);
    void enterInterrupt();
    void pollPeripherals();
    void flushTrace();
    void giveUpTrace();

    Machine m_machine;
    std::unique_ptr<TraceFile> m_trace;
    uint64_t m_steps = 0; // since construction
    uint64_t m_pollAt = limits::PeripheralPollInterval - 1;
};

} // namespace maxq30
