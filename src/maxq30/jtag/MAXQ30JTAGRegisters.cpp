#include "maxq30/jtag/MAXQ30JTAGRegisters.h"

#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "maxq30/jtag/maxqd.h"
#include "support/Endian.h"

#include <algorithm>

namespace {

constexpr unsigned MapPiece = 240; // bytes
constexpr unsigned MapHeader = 2;  // bytes of the answer before the map
constexpr unsigned LastOffset = 0x2E8;

static_assert(MapHeader + LastOffset + 4 <= MAXQ30JTAGRegisters::MapAnswerBytes);

} // namespace

void MAXQ30JTAGRegisters::fetchMap()
{
    m_target.readRegisterMap();
    _maxqd_t* maxqd = m_target.driver();
    for (unsigned offset = 0; offset < MapAnswerBytes; offset += MapPiece)
        maxqd->multiShiftOutDR8(maxqd, m_answer + offset, std::min(MapPiece, MapAnswerBytes - offset));
    m_map = m_answer + MapHeader;
}

uint32_t MAXQ30JTAGRegisters::getValue1(unsigned number)
{
    if (number >= NumRegisters)
        return 0;
    if (!m_map)
        fetchMap();
    if (m_valid[number])
        return storage(number);
    uint32_t value = storage(number);
    if (int offset = offsetInRegisterMap(number); offset >= 0) {
        unsigned size = sizeInBytes(number);
        if (size != 1 && size != 2)
            size = 4;
        value = uint32_t(Endian::unpackNumber(m_map, unsigned(offset), size, Endian::Little));
    }
    if (number == IP)
        value *= 2; // the map counts words
    else if (number == SC)
        value = m_target.readRegister(SC); // the live register, not the map's copy
    m_valid[number] = true;
    return storage(number) = value;
}

void MAXQ30JTAGRegisters::setValue1(unsigned number, uint32_t value)
{
    if (number >= NumRegisters)
        return;
    storage(number) = value;
    if (number == IP)
        value >>= 1;
    else if (number == SP)
        value += 1; // the engine takes one level of the stack back
    m_target.writeRegister(static_cast<unsigned short>(number), value);
}

void MAXQ30JTAGRegisters::clear()
{
    m_map = nullptr;
    m_valid.reset();
}
