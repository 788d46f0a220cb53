#include "zoff/ZOFFSection.h"

#include <algorithm>

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
    return find([address](ZOFFInsn* insn) { return uint32_t(insn->pc()) == address && insn->length() > 0; });
}

ZOFFInsn* ZOFFSection::findInsnInRange(uint32_t address) const
{
    return find([address](ZOFFInsn* insn) {
        uint32_t pc = uint32_t(insn->pc());
        return pc <= address && address < uint64_t(pc) + uint64_t(std::max(insn->length(), 0));
    });
}

// One walk finds both the addresses and the sum, which is what a load file and a debugger ask for.
void ZOFFSection::measure()
{
    int64_t sum = 0;
    uint32_t lowest = UnknownAddress, highest = 0;
    bool placed = false;
    find([&](ZOFFInsn* insn) {
        int length = insn->length();
        sum += std::max(length, 0);
        if (length > 0 && insn->pc() >= 0) {
            uint32_t pc = uint32_t(insn->pc());
            lowest = std::min(lowest, pc);
            highest = std::max(highest, pc + uint32_t(length) - 1);
            placed = true;
        }
        return false;
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
    find([&](ZOFFInsn* insn) {
        int length = insn->length();
        if (length <= 0 || insn->pc() < 0)
            return false;
        size_t at = uint32_t(insn->pc()) - m_lowest;
        if (at + size_t(length) <= size)
            insn->copyBytes(buffer + at);
        else
            for (int i = 0; i < length && at + size_t(i) < size; ++i)
                buffer[at + size_t(i)] = insn->getByte(i);
        return false;
    });
}
