// The debugger for MAXQ30 programs: which instructions can change the flow and where they lead, how the
// calls of a stopped program are found, registers, memories, and a line of disassembly.
//
// The processor has no chain of frame pointers. The back-trace looks through the stack for words that are
// return addresses, and takes one for good when the executable has a call right in front of that place.
#pragma once

#include "debug/ZOFFDebugger.h"
#include "debug/evaluation/VariableListBuilder.h"
#include "debug/run/Frame.h"
#include "support/Endian.h"

#include <functional>

class ZOFFMAXQ30Insn;

class MAXQ30Debugger : public ZOFFDebugger {
public:
    explicit MAXQ30Debugger(DebuggerHelperFunctions* helper) : ZOFFDebugger(helper, 4, Endian::Little) {}

    unsigned getAddressSizeInBytes() const override { return 2; }
    bool canAccessInterruptsEnables() override { return true; }
    // The global enable, in the innermost frame and in the target.
    void setInterruptsEnabled(bool on) override;
    bool getInterruptsEnabled() override;
    // Those with a name, in the order of their list.
    void getRegisters(Frame* frame, VariableListBuilder* builder) override;
    // Of "M", a module number and a hexadecimal index as in "M8[0x5]"; 0 for anything else.
    unsigned getRegisterNumber(const QString& name) override;
    QString getRegisterFlags(const QString& name) const override;
    bool getRegisterValue(Frame* frame, unsigned number, uint64_t& value) override;
    bool setRegisterValue(Frame* frame, unsigned number, uint64_t value) override;
    QStringList getMemorySpaces() override;

    unsigned numRegisterWords() const override;
    // How many callers a back-trace looks for.
    void setMaximumCalls(int calls) { m_maximumCalls = calls; }

    uint32_t nextInstruction(TargetRegisterInterface* registers, bool stepOver, uint32_t start,
                             uint32_t length) override;
    bool isCallAt(uint32_t address) override;
    QString disassemble(uint32_t address, uint32_t& length, bool& isJump, uint32_t& target) override;

protected:
    uint32_t getEntryPoint() const override { return 0; }
    std::vector<std::unique_ptr<Frame>> generateBackTrace(Frame& innermost) override;
    std::unique_ptr<TargetRegisterInterface> createRegisters(const unsigned* block) override;
    std::unique_ptr<TargetRegisterInterface> createRegisters(uint32_t pc) override;
    int registerNameToNumber(const char* name) override;
    QString registerNumberToName(unsigned number) override;
    unsigned getRegisterLength(unsigned number) override;
    unsigned nextRegisterNumber(unsigned number) override;
    bool registerNumberLT(unsigned a, unsigned b) override;
    // -1 for an element that there is not.
    int registerDereference(int base, int64_t index) override;
    TargetMemoryInterface* getMemorySegment(const QString& name) const override;
    void initialiseDebugOperation(uint32_t) override {} // the words are polled
    bool debugOperationUsesBreakpoint() const override { return false; }

private:
    // The instruction word at an address, with what the prefix words in front of it make of it.
    struct Decoded {
        uint16_t word = 0;
        unsigned prefixes = 0;
        uint32_t value = 0;     // of an immediate source
        unsigned sourceBit = 0; // of a register source
        uint32_t next = 0;      // the address behind it
    };

    Decoded decode(uint32_t pc);
    uint32_t isSequential(uint32_t address, uint32_t low, uint32_t high);
    uint32_t stepFrom(TargetRegisterInterface* registers, bool stepOver, uint32_t pc, uint32_t& next);
    bool getJumpDestination(TargetRegisterInterface* registers, const Decoded& insn, uint32_t& destination);
    uint32_t readPointed(TargetRegisterInterface* registers, unsigned index);
    uint32_t dataNumber(uint32_t address, unsigned size);
    uint32_t endOfStack() const;
    // What the function around `place` has saved, whose return address lies at `entry` and whose stack
    // pointer is `sp`.
    void restoreRegisters(TargetRegisterInterface& caller, uint32_t place, uint32_t entry, uint32_t sp,
                          const std::function<uint32_t(uint32_t)>& stack);
    const ZOFFMAXQ30Insn* callBefore(uint32_t address) const;

    int m_maximumCalls = 100;
};
