#include "board/Processor.h"

#include "sim/RegisterFile.h"

#include <algorithm>
#include <cassert>

namespace board {

namespace {

constexpr uint32_t UnusedCode = 0xFFFFFF;
constexpr uint32_t UnusedData = 0xFFFFFFFF;

std::vector<uint32_t> allRegisters(maxq30::Core& core)
{
    std::vector<uint32_t> values(maxq30::RegisterNumbers);
    for (unsigned number = 0; number < maxq30::RegisterNumbers; ++number)
        values[number] = core.readRegister(number);
    return values;
}

std::vector<uint8_t> allData(const maxq30::Core& core)
{
    std::vector<uint8_t> bytes(core.dataBytes());
    core.readData(0, core.dataBytes(), bytes.data());
    return bytes;
}

} // namespace

Processor::Processor(uint32_t codeBytes, uint32_t dataBytes) : m_core(codeBytes, dataBytes)
{
    m_code.fill(UnusedCode);
    m_data.fill(UnusedData);
}

void Processor::holdReset()
{
    if (m_state == State::Reset)
        return;
    m_state = State::Reset;
    m_stopOnRelease = false;
    m_core.reset();
    m_breakpointsEnabled = false;
    m_code.fill(UnusedCode);
    m_data.fill(UnusedData);
    breakpointsChanged();
}

void Processor::release(bool toRun)
{
    if (m_state != State::Reset)
        return;
    if (!toRun)
        m_state = State::Parked;
    else if (m_stopOnRelease || isAtBreakpoint())
        m_state = State::Stopped;
    else
        startRunning();
}

void Processor::stop()
{
    if (m_state == State::Reset)
        m_stopOnRelease = true;
    else if (m_state == State::Running)
        m_state = State::Stopped;
}

void Processor::resume()
{
    if (m_state == State::Stopped)
        startRunning();
}

void Processor::step()
{
    assert(m_state == State::Stopped);
    m_core.step();
}

void Processor::startRunning()
{
    m_state = State::Running;
    m_idle = false;
    m_idleInterval = m_untilIdleLook = limits::FirstIdleLook;
}

void Processor::enableBreakpoints(bool enable)
{
    m_breakpointsEnabled = enable;
    breakpointsChanged();
}

void Processor::setCodeBreakpoint(unsigned index, uint32_t word)
{
    m_code.at(index) = word;
    breakpointsChanged();
}

void Processor::setDataBreakpoint(unsigned index, uint32_t address)
{
    m_data.at(index) = address;
    breakpointsChanged();
}

void Processor::breakpointsChanged()
{
    m_stops.clear();
    bool watching = false;
    if (m_breakpointsEnabled) {
        std::copy_if(m_code.begin(), m_code.end(), std::back_inserter(m_stops),
                     [](uint32_t word) { return word != UnusedCode; });
        watching =
            std::any_of(m_data.begin(), m_data.end(), [](uint32_t address) { return address != UnusedData; });
    }
    m_core.setStops(m_stops);
    m_idle = false;
    // Callbacks slow the core down, so they are there only when somebody listens.
    if (watching != m_watching) {
        m_watching = watching;
        if (watching)
            m_core.setCallBacks(this, MAXQSIM_LongDataAccesses);
        else
            m_core.setCallBacks(nullptr);
    }
}

bool Processor::isAtBreakpoint() const
{
    return std::find(m_stops.begin(), m_stops.end(), m_core.ip()) != m_stops.end();
}

// The instruction at a breakpoint is executed when the host resumes there, so only addresses that were
// come to count.
void Processor::run(uint64_t maximum)
{
    if (m_state != State::Running || m_idle || !maximum)
        return;
    m_watchHit = false;
    uint64_t done = m_core.run(maximum);
    if (m_watchHit || (done && isAtBreakpoint())) {
        m_state = State::Stopped;
        return;
    }
    m_untilIdleLook -= std::min(m_untilIdleLook, done);
    if (!m_untilIdleLook)
        lookForIdleLoop();
}

void Processor::onDataAccess(bool, unsigned address, unsigned, unsigned byteAccess)
{
    watch(address, byteAccess ? 1 : 2);
}

void Processor::onLongDataAccess(bool, unsigned address, unsigned)
{
    watch(address, 4);
}

void Processor::watch(unsigned address, unsigned width)
{
    for (uint32_t watched : m_data) {
        if (watched != UnusedData && watched - address < width) {
            m_watchHit = true;
            m_core.requestStop();
        }
    }
}

// A program that comes back to the same registers and the same data memory will do so for ever, since
// nothing on the board but the host can change them: it waits for the host.
void Processor::lookForIdleLoop()
{
    m_idleInterval = std::min(2 * m_idleInterval, limits::LastIdleLook);
    m_untilIdleLook = m_idleInterval;
    std::vector<uint32_t> registers = allRegisters(m_core);
    std::vector<uint8_t> data = allData(m_core);
    for (unsigned i = 0; i < limits::IdleLoopSteps; ++i) {
        m_core.run(1);
        if (m_watchHit || isAtBreakpoint()) {
            m_state = State::Stopped;
            return;
        }
        if (m_core.ip() == registers[maxq30::reg::IP] && allRegisters(m_core) == registers) {
            m_idle = allData(m_core) == data;
            return;
        }
    }
}

} // namespace board
