#include "maxq30/sim/MAXQ30SimulatorMemory.h"

#include "sim/maxqsim.h"
#include "support/Endian.h"
#include "support/HException.h"

namespace {

constexpr unsigned CodeWordBytes = 2;
constexpr unsigned DataWordBytes = 4;

void check(bool done, const char* what, uint32_t address, unsigned count)
{
    if (!done)
        throw HException(QString::asprintf("simulator: cannot %s %u bytes at 0x%x", what, count, address));
}

} // namespace

MAXQ30CodeMemory::MAXQ30CodeMemory(MAXQSIMInterface* simulator)
    : TargetMemoryInterface(Endian::Little, CodeWordBytes, false), m_simulator(simulator)
{
}

void MAXQ30CodeMemory::pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes)
{
    check(m_simulator->writeCode(address, count, bytes), "write code memory:", address, count);
}

void MAXQ30CodeMemory::peekBytes(uint32_t address, unsigned count, unsigned char* bytes)
{
    check(m_simulator->readCode(address, count, bytes), "read code memory:", address, count);
}

MAXQ30DataMemory::MAXQ30DataMemory(MAXQSIMInterface* simulator)
    : TargetMemoryInterface(Endian::Little, DataWordBytes, false), m_simulator(simulator)
{
}

void MAXQ30DataMemory::pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes)
{
    check(m_simulator->writeData(address, count, bytes), "write data memory:", address, count);
}

void MAXQ30DataMemory::peekBytes(uint32_t address, unsigned count, unsigned char* bytes)
{
    check(m_simulator->readData(address, count, bytes), "read data memory:", address, count);
}
