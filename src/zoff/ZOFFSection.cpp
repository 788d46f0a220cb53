#include "zoff/ZOFFSection.h"

#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFPackedItems.h"

#include <algorithm>
#include <cstring>

ZOFFFragment* ZOFFSection::newFragment()
{
    m_currentFragment = new ZOFFFragment(this);
    m_fragments.push_back(m_currentFragment);
    return m_currentFragment;
}

void ZOFFSection::addInsn(ZOFFInsn* insn)
{
    (m_currentFragment ? m_currentFragment : newFragment())->addInsn(insn);
}

ZOFFInsn* ZOFFSection::findInsnAt(uint32_t address) const
{
    return findAround(
        address, [address](ZOFFInsn* insn) { return uint32_t(insn->pc()) == address && insn->length() > 0; });
}

ZOFFInsn* ZOFFSection::findInsnInRange(uint32_t address) const
{
    return findAround(address, [address](ZOFFInsn* insn) {
        uint32_t pc = uint32_t(insn->pc());
        return pc <= address && address < uint64_t(pc) + uint64_t(std::max(insn->length(), 0));
    });
}

bool ZOFFSection::hasHiddenInsns() const
{
    return std::any_of(m_fragments.begin(), m_fragments.end(), [](const ZOFFFragment* fragment) {
        if (const ZOFFPackedItems* packed = fragment->packed())
            return packed->hasHiddenInsns();
        return std::any_of(fragment->begin(), fragment->end(),
                           [](const ZOFFInsn* insn) { return insn->hidden(); });
    });
}

// One walk finds both the addresses and the sum, which is what a load file and a debugger ask for.
void ZOFFSection::measure()
{
    int64_t sum = 0;
    uint32_t lowest = UnknownAddress, highest = 0;
    bool placed = false;
    forEachRun([&](const ZOFFRun& run) {
        int64_t size = run.size();
        if (size <= 0)
            return;
        sum += size;
        if (run.address() >= 0) {
            auto from = uint32_t(run.address());
            lowest = std::min(lowest, from);
            highest = std::max(highest, from + uint32_t(size) - 1);
            placed = true;
        }
    });
    m_accumulatedSize = sum;
    m_lowest = lowest;
    m_highest = placed ? highest : UnknownAddress;
    m_metricsKnown = m_sizeKnown = true;
}

void ZOFFSection::computeSectionMetrics()
{
    if (!m_metricsKnown)
        measure();
}

int64_t ZOFFSection::getSize()
{
    computeSectionMetrics();
    if (m_lowest != UnknownAddress && m_highest != UnknownAddress)
        return int64_t(m_highest) - m_lowest + 1;
    return accumulatedSize();
}

int64_t ZOFFSection::accumulatedSize()
{
    if (!m_sizeKnown)
        measure();
    return m_accumulatedSize;
}

void ZOFFSection::forgetMetrics()
{
    m_metricsKnown = m_sizeKnown = false;
    m_lowest = m_highest = UnknownAddress;
}

void ZOFFSection::dump(size_t size, uint8_t* buffer)
{
    computeSectionMetrics();
    forEachRun([&](const ZOFFRun& run) {
        int64_t count = run.size();
        if (count <= 0 || run.address() < 0)
            return;
        size_t at = uint32_t(run.address()) - m_lowest;
        if (at >= size)
            return;
        if (size_t(count) <= size - at)
            run.copyBytes(buffer + at);
        else if (run.item)
            for (size_t i = 0; i < size - at; ++i)
                buffer[at + i] = run.item->getByte(int(i));
        else
            memcpy(buffer + at, run.bytes, size - at);
    });
}
