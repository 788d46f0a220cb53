// One call of the stopped program: the index that covers its pc, and its registers.
#pragma once

class SymbolicDebug;
class TargetRegisterInterface;

class Frame {
public:
    // Registers that are live are the target's own; others belong to the frame.
    Frame(SymbolicDebug* symbols, TargetRegisterInterface* registers, bool live)
        : m_symbols(symbols), m_registers(registers), m_live(live)
    {
    }
    ~Frame();
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    SymbolicDebug* symbols() const { return m_symbols; } // null when none covers the pc
    TargetRegisterInterface* registers() const { return m_registers; }
    // True only for the innermost frame of the stopped target.
    bool live() const { return m_live; }

private:
    SymbolicDebug* m_symbols;
    TargetRegisterInterface* m_registers;
    bool m_live;
};
