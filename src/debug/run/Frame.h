// One call of the stopped program: the index that covers its pc, and its registers.
#pragma once

#include <cstdint>
#include <memory>

class SymbolicDebug;
class TargetRegisterInterface;

class Frame {
public:
    // The innermost one of the stopped target, whose registers it shows.
    Frame(SymbolicDebug* symbols, TargetRegisterInterface* target);
    // One with registers of its own. A caller's pc is where its call comes back to; `call` is the address
    // of the call itself.
    Frame(SymbolicDebug* symbols, std::unique_ptr<TargetRegisterInterface> own);
    Frame(SymbolicDebug* symbols, std::unique_ptr<TargetRegisterInterface> own, uint32_t call);
    ~Frame();
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    SymbolicDebug* symbols() const { return m_symbols; } // null when none covers the pc
    TargetRegisterInterface* registers() const { return m_registers; }
    // True only for the innermost frame of the stopped target.
    bool live() const { return !m_own; }
    // The instruction that the frame is at, for its line, function and scope: the one at the pc, or in a
    // caller the call.
    uint32_t place() const;

private:
    SymbolicDebug* m_symbols;
    std::unique_ptr<TargetRegisterInterface> m_own;
    TargetRegisterInterface* m_registers;
    bool m_isCaller = false;
    uint32_t m_call = 0;
};
