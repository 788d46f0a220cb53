// An interned string. Two equal texts are the same ESString, so that comparing names is comparing
// addresses.
//
// Invariants: m_hash is the hash of the text, and m_length its length, from the start. The text itself
// may be missing while m_left and m_right are set, whose concatenation it is; it is then put together
// when somebody first reads it, and a long left half hands its own text on rather than have it copied: it
// can put itself together again. So building a text in n steps costs n steps, not n copies of it, even if
// somebody looks at it after each.
#pragma once

#include <QString>
#include <cstdint>

class ESString {
public:
    // Position in the pool, from 1; what string operands of bytecode and properties carry.
    int index() const { return m_index; }
    // UTF-16 units.
    int length() const { return m_length; }
    QString text() const
    {
        if (m_pending)
            join();
        return m_text;
    }
    char16_t unit(int at) const
    {
        if (m_pending)
            join();
        return m_text.constData()[at].unicode();
    }
    // The number of which this text is the shortest decimal form, from 0 to 2147483646; otherwise -1.
    int arrayIndex() const { return m_arrayIndex; }

    // When the text was first met: the order of for-in.
    uint64_t order() const { return m_order; }

    // One bit of 16 by which an object remembers which names it may hold.
    uint16_t nameBit() const { return uint16_t(1u << (m_index & 15)); }
    // The slot at which some object last held this name: a guess, to be checked.
    uint32_t slotHint() const { return m_slotHint; }
    void setSlotHint(uint32_t slot) { m_slotHint = slot; }

private:
    friend class ESStringPool;
    void join() const;

    int m_index = 0;
    int m_length = 0;
    uint64_t m_hash = 0;
    uint64_t m_order = 0;
    ESString* m_left = nullptr;
    ESString* m_right = nullptr;
    mutable QString m_text;
    int m_arrayIndex = -1;
    uint32_t m_slotHint = 0;
    mutable bool m_pending = false;
};
