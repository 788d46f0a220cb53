// The debugger for MAXQ30 programs: which instructions can change the flow and where they lead, how the
// calls of a stopped program are found, registers, memories, and a line of disassembly.
//
// The processor has no chain of frame pointers. The back-trace looks through the stack for words that are
// return addresses, and takes one for good when the executable has a call right in front of that place.
#pragma once

#include "debug/ZOFFDebugger.h"

class ZOFFMAXQ30Insn;

class MAXQ30Debugger : public ZOFFDebugger {
public:
    explicit MAXQ30Debugger(DebuggerHelperFunctions* helper) : ZOFFDebugger(helper) {}

    unsigned getAddressSizeInBytes() const override { return 2; }
    bool canAccessInterruptsEnables() override { return true; }
    // The global enable, in the innermost frame and in the target.
    void setInterruptsEnabled(bool on) override;
    bool getInterruptsEnabled() override;
    // Registers are read by number; the list of them all is not built.
    void getRegisters(Frame*, VariableListBuilder*) override {}
    // Of "M", a module number and a hexadecimal index as in "M8[0x5]"; 0 for anything else.
    unsigned getRegisterNumber(const QString& name) override;
    bool getRegisterValue(Frame* frame, unsigned number, uint64_t& value) override;
    bool setRegisterValue(Frame* frame, unsigned number, uint64_t value) override;
    QStringList getMemorySpaces() override;

    uint32_t nextInstruction(TargetRegisterInterface* registers, bool stepOver, uint32_t start,
                             uint32_t length) override;
    QString disassemble(uint32_t address, uint32_t& length, bool& isJump, uint32_t& target) override;

protected:
    uint32_t getEntryPoint() const override { return 0; }
    void generateBackTrace(std::unique_ptr<Frame> innermost) override;
    TargetRegisterInterface* createRegisters(unsigned*) override { return nullptr; }
    TargetRegisterInterface* createRegisters(uint32_t pc) override;
    int registerNameToNumber(const char* name) override;
    QString registerNumberToName(unsigned number) override;
    TargetMemoryInterface* getMemorySegment(const QString& name) const override;
    void initialiseDebugOperation(uint32_t) override {} // the words are polled
    bool debugOperationUsesBreakpoint() const override { return false; }

private:
    // The prefix words of the instruction that is being decoded.
    struct Prefix {
        unsigned count = 0;
        uint32_t value = 0;
        unsigned sourceBit = 0;
    };

    uint32_t isSequential(uint32_t address, uint32_t low, uint32_t high);
    uint32_t stepFrom(TargetRegisterInterface* registers, bool stepOver, uint32_t pc, uint32_t& next);
    bool getJumpDestination(TargetRegisterInterface* registers, uint16_t word, const Prefix& prefix,
                            uint32_t& destination);
    uint32_t readPointed(TargetRegisterInterface* registers, unsigned index);
    uint32_t dataNumber(uint32_t address, unsigned size);
    uint32_t endOfStack() const;
    const ZOFFMAXQ30Insn* callBefore(uint32_t address) const;
};
