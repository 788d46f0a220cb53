// A section: fragments of code or data, with the addresses that they span.
#pragma once

#include "support/HString.h"
#include "zoff/PoolContainers.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFPackedItems.h"

class ZOFFSection : public ZOFFObject {
public:
    // The kind of a section, its low four flag bits. 0 and 5 are no memory; 2, 3 and 4 are data.
    enum SectionKind { NoMemory = 0, Code = 1, Data = 2, LastData = 4, Eeprom = 6 };
    static constexpr uint32_t KindMask = 0xF;
    static constexpr uint32_t LoadFlag = 0x80000; // goes into a load file
    static constexpr uint32_t UnknownAddress = 0xFFFFFFFF;

    explicit ZOFFSection(const HString* name) : ZOFFObject(ZOFFKind::Section, name) {}

    uint32_t flags() const { return m_flags; }
    void setFlags(uint32_t flags) { m_flags = flags; }
    unsigned sectionKind() const { return m_flags & KindMask; }
    bool goesIntoLoadFile() const { return m_flags & LoadFlag; }

    const PoolList<ZOFFFragment*>& fragments() const { return m_fragments; }
    // The fragment that addInsn() appends to; null before the first.
    ZOFFFragment* currentFragment() const { return m_currentFragment; }
    ZOFFFragment* newFragment();
    // Makes a first fragment when there is none.
    void addInsn(ZOFFInsn* insn);

    // Whole walks over the section; null when there is none.
    ZOFFInsn* findInsnAt(uint32_t address) const;
    ZOFFInsn* findInsnInRange(uint32_t address) const;

    // Finds the addresses spanned by items with a pc that is not negative and a length above 0. Done
    // once; later calls return at once, until the metrics are forgotten.
    void computeSectionMetrics();
    bool metricsKnown() const { return m_metricsKnown; }
    uint32_t lowestAddress() const { return m_lowest; }   // UnknownAddress when there is none
    uint32_t highestAddress() const { return m_highest; } // of the last byte
    // From the lowest to the highest address; the sum of all lengths when there are no addresses.
    int64_t getSize();
    // The sum of all lengths, computed once.
    int64_t accumulatedSize();
    // For an assembler, after items were moved or changed.
    void forgetMetrics();

    bool hasHiddenInsns() const;

    // Stores each byte of each placed item at its distance from the lowest address. Bytes that would
    // fall beyond `size` are left out.
    void dump(size_t size, uint8_t* buffer);

    // Calls `visit` with each item in order, until it returns true; returns the item then, else null.
    template <class Visitor> ZOFFInsn* find(Visitor&& visit) const
    {
        for (ZOFFFragment* fragment : m_fragments)
            if (ZOFFInsn* found = findIn(fragment, visit))
                return found;
        return nullptr;
    }
    // Calls `visit` with each run of bytes (ZOFFRun), in order, and makes no objects of packed items.
    template <class Visitor> void forEachRun(Visitor&& visit) const
    {
        for (ZOFFFragment* fragment : m_fragments) {
            if (const ZOFFPackedItems* packed = fragment->packed())
                for (const ZOFFRun& run : packed->runs())
                    visit(run);
            else
                for (ZOFFInsn* insn : *fragment)
                    visit(ZOFFRun{insn, nullptr, 0, 0});
        }
    }

private:
    template <class Visitor> static ZOFFInsn* findIn(ZOFFFragment* fragment, Visitor& visit)
    {
        for (ZOFFInsn* insn = fragment->first(); insn; insn = insn->next())
            if (visit(insn))
                return insn;
        return nullptr;
    }
    // The first item for which `visit` is true, of those that may stand at an address.
    template <class Visitor> ZOFFInsn* findAround(uint32_t address, Visitor&& visit) const
    {
        for (ZOFFFragment* fragment : m_fragments)
            if (!fragment->packed() || fragment->packed()->covers(address))
                if (ZOFFInsn* found = findIn(fragment, visit))
                    return found;
        return nullptr;
    }
    void measure();

    bool m_metricsKnown = false;
    bool m_sizeKnown = false;
    uint32_t m_lowest = UnknownAddress;
    uint32_t m_highest = UnknownAddress;
    int64_t m_accumulatedSize = 0;
    PoolList<ZOFFFragment*> m_fragments;
    ZOFFFragment* m_currentFragment = nullptr;
    uint32_t m_flags = 0;
};
