// What the debugger asks of the processor: where an instruction leads, how calls lie on the stack, how
// registers and memories are named. The processor's class implements it beside the debugger itself.
// Addresses are byte addresses.
#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

class Frame;
class TargetMemoryInterface;
class TargetRegisterInterface;

class DebugProcessor {
public:
    virtual uint32_t getEntryPoint() const = 0;
    // The calls that lead to the given frame, its caller first, as the stack has them.
    virtual std::vector<std::unique_ptr<Frame>> generateBackTrace(Frame& innermost) = 0;
    // Where a temporary breakpoint ends one step of the range. Null registers are not read.
    virtual uint32_t nextInstruction(TargetRegisterInterface* registers, bool stepOver, uint32_t start,
                                     uint32_t length) = 0;
    // Whether the instruction at an address is a call, which a step over passes.
    virtual bool isCallAt(uint32_t address) = 0;
    // Registers that are no target's: from as many words as numRegisterWords() says, and with nothing but
    // a pc.
    virtual std::unique_ptr<TargetRegisterInterface> createRegisters(const unsigned* block) = 0;
    virtual std::unique_ptr<TargetRegisterInterface> createRegisters(uint32_t pc) = 0;
    // Null for a name that the target has no memory for.
    virtual TargetMemoryInterface* getMemorySegment(const QString& name) const = 0;
    // The program's requests: called once its control word is known; whether a request shows as a stop.
    virtual void initialiseDebugOperation(uint32_t controlWord) = 0;
    virtual bool debugOperationUsesBreakpoint() const = 0;
    // One line of disassembly, its length in bytes, and where it jumps to.
    virtual QString disassemble(uint32_t address, uint32_t& length, bool& isJump, uint32_t& target) = 0;

protected:
    ~DebugProcessor() = default;
};
