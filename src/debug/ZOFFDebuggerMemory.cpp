// Memories of the target, as far as they exist.

#include "debug/ZOFFDebugger.h"
#include "support/AddressRanges.h"
#include "support/HException.h"
#include "target/memory/TargetMemoryInterface.h"

#include <algorithm>

namespace {

constexpr unsigned DumpColumns = 16;
constexpr unsigned LongestDump = 1 << 20; // bytes

bool exists(TargetMemoryInterface* memory, uint32_t address, unsigned count)
{
    return memory && count > 0 && (memory->addressRanges().isEmpty() || memory->memoryExists(address, count));
}

unsigned readFrom(TargetMemoryInterface* memory, uint32_t address, unsigned count, unsigned char* bytes)
{
    if (!exists(memory, address, count))
        return 0;
    memory->peekBytes(address, count, bytes);
    return count;
}

unsigned writeTo(TargetMemoryInterface* memory, uint32_t address, unsigned count, const unsigned char* bytes)
{
    if (!exists(memory, address, count))
        return 0;
    memory->pokeBytes(address, count, bytes);
    return count;
}

// "0100  68 69 00 ...  |hi.|"
QString dumpLine(const QString& address, const unsigned char* bytes, unsigned count)
{
    QString line = address + QLatin1Char(' '), text;
    for (unsigned i = 0; i < DumpColumns; ++i) {
        if (i == DumpColumns / 2)
            line += QLatin1Char(' ');
        line += i < count ? QString::asprintf(" %02x", unsigned(bytes[i])) : QStringLiteral("   ");
        if (i < count)
            text += QLatin1Char(bytes[i] >= ' ' && bytes[i] < 0x7F ? char(bytes[i]) : '.');
    }
    return line + QLatin1String("  |") + text + QLatin1Char('|');
}

} // namespace

unsigned ZOFFDebugger::readMemory(uint32_t address, unsigned count, unsigned char* bytes)
{
    return readFrom(checkedTarget().dataMemory(), address, count, bytes);
}

unsigned ZOFFDebugger::writeMemory(uint32_t address, unsigned count, const unsigned char* bytes)
{
    return writeTo(checkedTarget().dataMemory(), address, count, bytes);
}

unsigned ZOFFDebugger::readCodeMemory(uint32_t address, unsigned count, unsigned char* bytes)
{
    return readFrom(checkedTarget().codeMemory(), address, count, bytes);
}

unsigned ZOFFDebugger::writeCodeMemory(uint32_t address, unsigned count, const unsigned char* bytes)
{
    m_code.clear();
    m_disassembly.clear();
    return writeTo(checkedTarget().codeMemory(), address, count, bytes);
}

unsigned ZOFFDebugger::readEepromMemory(uint32_t address, unsigned count, unsigned char* bytes)
{
    return readFrom(checkedTarget().eeMemory(), address, count, bytes);
}

unsigned ZOFFDebugger::writeEepromMemory(uint32_t address, unsigned count, const unsigned char* bytes)
{
    return writeTo(checkedTarget().eeMemory(), address, count, bytes);
}

unsigned ZOFFDebugger::getMemory(const QString& space, uint32_t address, unsigned count, unsigned char* bytes)
{
    return readFrom(getMemorySegment(space), address, count, bytes);
}

unsigned ZOFFDebugger::setMemory(const QString& space, uint32_t address, unsigned count,
                                 const unsigned char* bytes)
{
    TargetMemoryInterface* memory = getMemorySegment(space);
    return memory == checkedTarget().codeMemory() ? writeCodeMemory(address, count, bytes)
                                                  : writeTo(memory, address, count, bytes);
}

uint32_t ZOFFDebugger::getMemoryRange(const QString& space, uint32_t address)
{
    TargetMemoryInterface* memory = getMemorySegment(space);
    const AddressRange* range = memory ? memory->addressRanges().find(address) : nullptr;
    return range ? range->high - address + 1 : 0;
}

void ZOFFDebugger::dumpMemory(const QString& space, uint32_t address, unsigned count, QStringList& lines)
{
    lines.clear();
    count = std::min(count, getMemoryRange(space, address));
    if (count > LongestDump)
        throw HException(QStringLiteral("more than %1 bytes to show").arg(LongestDump));
    std::vector<unsigned char> bytes(count);
    if (getMemory(space, address, count, bytes.data()) == 0)
        throw HException(QStringLiteral("no memory at 0x") + formatAddress(address));
    for (unsigned at = 0; at < count; at += DumpColumns)
        lines.append(
            dumpLine(formatAddress(address + at), bytes.data() + at, std::min(DumpColumns, count - at)));
}

QString ZOFFDebugger::instructionText(uint32_t address, uint32_t& length)
{
    uint32_t low = 0, high = 0, target = 0;
    bool isJump = false;
    length = 0;
    return m_code.range(address, low, high) ? disassemble(address, length, isJump, target) : QString();
}

uint32_t ZOFFDebugger::addressAdd(uint32_t address, uint32_t count)
{
    uint32_t low = 0, high = 0;
    if (!m_code.range(address, low, high))
        return address;
    return high - address < count ? high : address + count;
}

uint32_t ZOFFDebugger::addressSubtract(uint32_t address, uint32_t count)
{
    uint32_t low = 0, high = 0;
    if (!m_code.range(address, low, high))
        return address;
    return address - low < count ? low : address - count;
}

QString ZOFFDebugger::formatAddress(uint32_t address) const
{
    return QString::asprintf("%0*x", int(2 * getAddressSizeInBytes()), address);
}
