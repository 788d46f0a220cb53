#include "debug/symbols/SourceAddressMapping.h"

#include "debug/symbols/SymbolicDebug.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFObject.h"

#include <algorithm>

namespace {

// Bytes of the items from `insn` on that belong to the locus.
uint32_t extent(const ZOFFInsn* insn, const ZOFFLocus* locus)
{
    uint32_t length = 0;
    for (; insn && insn->locus() == locus; insn = insn->next())
        length += uint32_t(std::max(insn->length(), 0));
    return length;
}

} // namespace

// Of several places of a line the one with the lowest address.
ZOFFLocus* SourceAddressMapping::locusOf(const HString* file, int line) const
{
    const auto& loci = m_symbols->loci();
    ZOFFInsnListIteratorLocusLT less;
    std::pair place(file, line);
    ZOFFLocus* lowest = nullptr;
    for (auto at = std::lower_bound(loci.begin(), loci.end(), place, less);
         at != loci.end() && !less(place, *at); ++at)
        if (!lowest || uint32_t((*at)->pc()) < uint32_t(lowest->pc()))
            lowest = *at;
    return lowest;
}

bool SourceAddressMapping::SourceToAddress(const HString* file, int line, uint32_t& address) const
{
    ZOFFLocus* locus = locusOf(file, line);
    if (!locus)
        return false;
    address = uint32_t(locus->pc());
    return true;
}

bool SourceAddressMapping::SourceToAddress(const HString* file, int line, uint32_t& address,
                                           uint32_t& length) const
{
    ZOFFLocus* locus = locusOf(file, line);
    if (!locus)
        return false;
    address = uint32_t(locus->pc());
    length = extent(locus->next(), locus);
    return true;
}

const ZOFFInsn* SourceAddressMapping::statementAt(uint32_t address) const
{
    const ZOFFInsn* insn = m_symbols->insnAround(address);
    return insn && insn->locus() ? insn : nullptr;
}

bool SourceAddressMapping::AddressToRange(uint32_t address, uint32_t& start, uint32_t& length) const
{
    const ZOFFInsn* insn = statementAt(address);
    if (!insn)
        return false;
    const ZOFFLocus* locus = insn->locus();
    const ZOFFInsn* first = insn;
    while (first->previous() && first->kind() != ZOFFKind::Locus)
        first = first->previous();
    start = uint32_t(first->pc());
    length = extent(first->kind() == ZOFFKind::Locus ? first->next() : first, locus);
    return true;
}

bool SourceAddressMapping::AddressToSource(uint32_t address, const HString*& file, int& line) const
{
    const ZOFFInsn* insn = statementAt(address);
    if (!insn)
        return false;
    const ZOFFLocus* locus = insn->locus();
    file = fileNameOf(locus);
    if (!file)
        file = HString::intern("???");
    line = locus->line();
    return true;
}

const SourceAddressMapping::Lines* SourceAddressMapping::getLineNumbers(const HString* file) const
{
    auto found = m_lines.find(file);
    return found == m_lines.end() ? nullptr : &found->second;
}
