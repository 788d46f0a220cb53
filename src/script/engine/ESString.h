// A string of the engine. A name is a string that serves to find properties: it is interned, so that two
// equal names are the same ESString and comparing them is comparing addresses. Any other string is a text, of
// which there may be several that are equal; it lives as long as a value leads to it (see ESCollector).
//
// Invariant: the characters of a name are its own. Those of a text may be put together when somebody first
// asks for them (Rope), or lie within those of a longer text (Slice): what is appended to a long text goes
// behind its characters, which the new text takes over, so that building a text in n steps costs n steps.
#pragma once

#include <QString>
#include <cstdint>

class ESString {
public:
    // Position among the names, from 1, which string operands of bytecode and properties carry; 0 for a text.
    int index() const { return int(m_index); }
    bool isName() const { return m_index; }
    // UTF-16 units.
    int length() const { return int(m_length); }

    // The characters, until the next string is made.
    const char16_t* chars() const
    {
        if (m_form == Inline)
            return m_inline;
        return m_form == Flat ? m_flat.chars : settle();
    }
    QStringView view() const { return {chars(), qsizetype(m_length)}; }
    QString text() const { return view().toString(); }
    char16_t unit(int at) const { return chars()[at]; }

    // Of a name, the number of which it is the shortest decimal form, from 0 to 2147483646; otherwise -1.
    int arrayIndex() const { return m_arrayIndex; }
    // When the string was first met: the order of for-in.
    uint64_t order() const { return m_order; }
    // One bit of 16 by which an object remembers which names it may hold.
    uint16_t nameBit() const { return uint16_t(1u << (m_index & 15)); }
    // The slot at which some object last held this name: a guess, to be checked.
    uint32_t slotHint() const { return m_slotHint; }
    void setSlotHint(uint32_t slot) { m_slotHint = slot; }

private:
    friend class ESStringPool;
    friend class ESMarker;
    enum Form : uint8_t { Free, Inline, Flat, Rope, Slice };
    static constexpr uint32_t InlineLength = 8;

    const char16_t* settle() const;
    void flatten() const;
    void own();

    uint32_t m_length = 0;
    uint32_t m_index = 0;
    uint64_t m_order = 0;
    // Where the characters are; asking for them may change it.
    union {
        mutable char16_t m_inline[InlineLength];
        mutable struct {
            char16_t* chars;
            uint32_t capacity; // units
        } m_flat;
        mutable struct {
            ESString* left;
            ESString* right;
        } m_rope;
        mutable struct {
            ESString* base;
            uint32_t offset;
        } m_slice;
        mutable ESString* m_nextFree;
    };
    int32_t m_arrayIndex = -1;
    uint32_t m_slotHint = 0;
    mutable Form m_form = Free;
    bool m_marked = false;
};
static_assert(sizeof(ESString) == 48);
