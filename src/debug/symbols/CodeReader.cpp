#include "debug/symbols/CodeReader.h"

#include "support/AddressRanges.h"
#include "support/HException.h"
#include "target/TargetInterface.h"
#include "target/memory/TargetMemoryInterface.h"

#include <vector>

void CodeReader::setTarget(TargetInterface* target)
{
    clear();
    m_target = target;
}

TargetMemoryInterface* CodeReader::memory() const
{
    return m_target ? m_target->codeMemory() : nullptr;
}

bool CodeReader::exists(uint32_t start, uint32_t size) const
{
    TargetMemoryInterface* code = memory();
    return code && (code->addressRanges().isEmpty() || code->memoryExists(start, size));
}

bool CodeReader::known(uint32_t address) const
{
    auto page = m_pages.find(address / PageBytes);
    return page != m_pages.end() && page->second.known[address % PageBytes];
}

void CodeReader::load(uint32_t start, std::span<const unsigned char> bytes)
{
    for (size_t i = 0; i < bytes.size(); ++i) {
        auto address = uint32_t(start + i);
        Page& page = m_pages[address / PageBytes];
        page.bytes[address % PageBytes] = bytes[i];
        page.known.set(address % PageBytes);
    }
}

void CodeReader::load(uint32_t start, uint32_t size)
{
    // How long a statement is tells the executable, which may claim more than any memory has.
    if (!exists(start, size))
        throw HException(QStringLiteral("no code memory at 0x%1, %2 bytes").arg(start, 0, 16).arg(size));
    uint64_t end = uint64_t(start) + size;
    for (uint64_t at = start; at < end;) {
        uint64_t from = at;
        while (at < end && !known(uint32_t(at)))
            ++at;
        if (at > from) {
            std::vector<unsigned char> bytes(at - from);
            memory()->peekBytes(uint32_t(from), unsigned(bytes.size()), bytes.data());
            load(uint32_t(from), bytes);
        } else {
            ++at;
        }
    }
}

uint16_t CodeReader::word(uint32_t address)
{
    if (!known(address) || !known(address + 1)) {
        if (!exists(address, 2))
            return 0;
        load(address, 2);
    }
    auto byte = [this](uint32_t at) { return m_pages.at(at / PageBytes).bytes[at % PageBytes]; };
    return uint16_t(byte(address) | byte(address + 1) << 8);
}

bool CodeReader::range(uint32_t address, uint32_t& low, uint32_t& high) const
{
    TargetMemoryInterface* code = memory();
    const AddressRange* range = code ? code->addressRanges().find(address) : nullptr;
    if (!range)
        return false;
    low = range->low;
    high = range->high;
    return true;
}
