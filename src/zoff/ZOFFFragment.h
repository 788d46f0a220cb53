// A run of items with consecutive addresses. A new one starts wherever a linker may cut a section. After
// reading, the items are packed until somebody walks over them.
#pragma once

#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFPackedItems.h"

#include <iterator>

class ZOFFSection;

class ZOFFFragment : public ZOFFObject {
public:
    class iterator {
    public:
        using value_type = ZOFFInsn*;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::forward_iterator_tag;
        using reference = ZOFFInsn*;
        using pointer = ZOFFInsn**;

        explicit iterator(ZOFFInsn* insn = nullptr) : m_insn(insn) {}
        ZOFFInsn* operator*() const { return m_insn; }
        iterator& operator++()
        {
            m_insn = m_insn->next();
            return *this;
        }
        iterator operator++(int)
        {
            iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const iterator&) const = default;

    private:
        ZOFFInsn* m_insn;
    };

    explicit ZOFFFragment(ZOFFSection* section) : ZOFFObject(ZOFFKind::Fragment), m_section(section) {}

    // Appends an item, which is in no fragment yet. Null is a programming error and stops the program.
    void addInsn(ZOFFInsn* insn);

    iterator begin() const { return iterator(first()); }
    iterator end() const { return iterator(); }
    ZOFFInsn* first() const // null when empty
    {
        if (m_packed)
            unpack();
        return m_first;
    }
    ZOFFInsn* last() const
    {
        if (m_packed)
            unpack();
        return m_last;
    }
    ZOFFSection* section() const { return m_section; }

    // The items while they are packed; null when they are objects all.
    const ZOFFPackedItems* packed() const { return m_packed; }
    void unpack() const;

private:
    friend class ZOFFItemPacker;
    friend class ZOFFPackedItems;
    void link(ZOFFInsn* insn);
    void link(ZOFFInsn* insn, ZOFFLocus* locus);

    mutable ZOFFInsn* m_first = nullptr;
    mutable ZOFFInsn* m_last = nullptr;
    ZOFFSection* m_section;
    mutable ZOFFPackedItems* m_packed = nullptr;
};
