// A MAXQ30 processor with its memories, for programs that hold it in their own process. What it does is
// written down in README.md. Registers go by their numbers, (index << 4) | module; IP counts 16-bit
// words, every other address bytes.
#pragma once

#include "sim/Machine.h"
#include "sim/TraceFile.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

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

    // One instruction, or the entry into an interrupt; answers its cycles.
    unsigned step();
    // At most `maximum` steps; answers how many were done. Stops early when requestStop was called in
    // one of them, and before an instruction at one of the word addresses in `stops`, other than the
    // first instruction. A handful of stops costs little; more cost more.
    uint64_t run(uint64_t maximum, std::span<const uint32_t> stops = {});
    // The same for the users of maxqsim.h.
    void runAhead(MAXQSIMRunAhead& run);
    // For callbacks: the current run ends behind this instruction.
    void requestStop();

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
    uint64_t cycles() const { return m_cycles; }

private:
    unsigned stepWithAttention();
    void flushTrace();
    void giveUpTrace();
    template <bool WithStops> uint64_t runPlain(uint64_t maximum, std::span<const uint32_t> stops);

    Machine m_machine;
    std::unique_ptr<TraceFile> m_trace;
    uint64_t m_cycles = 0;
    unsigned m_pollCount = 0;
};

} // namespace maxq30
