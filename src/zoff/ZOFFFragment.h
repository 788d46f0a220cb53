// A run of items with consecutive addresses. A new one starts wherever a linker may cut a section.
#pragma once

#include "zoff/ZOFFInsn.h"

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

    iterator begin() const { return iterator(m_first); }
    iterator end() const { return iterator(); }
    ZOFFInsn* first() const { return m_first; } // null when empty
    ZOFFInsn* last() const { return m_last; }
    ZOFFSection* section() const { return m_section; }

private:
    ZOFFInsn* m_first = nullptr;
    ZOFFInsn* m_last = nullptr;
    ZOFFSection* m_section;
};
