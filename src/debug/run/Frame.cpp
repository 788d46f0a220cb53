#include "debug/run/Frame.h"

#include "target/TargetRegisterInterface.h"

Frame::Frame(SymbolicDebug* symbols, TargetRegisterInterface* target)
    : m_symbols(symbols), m_registers(target)
{
}

Frame::Frame(SymbolicDebug* symbols, std::unique_ptr<TargetRegisterInterface> own)
    : m_symbols(symbols), m_own(std::move(own)), m_registers(m_own.get())
{
}

Frame::Frame(SymbolicDebug* symbols, std::unique_ptr<TargetRegisterInterface> own, uint32_t call)
    : Frame(symbols, std::move(own))
{
    m_isCaller = true;
    m_call = call;
}

Frame::~Frame() = default;

uint32_t Frame::place() const
{
    return m_isCaller ? m_call : m_registers->getPC();
}
