#include "script/engine/ESString.h"

#include "script/engine/ESStringPool.h"

#include <cstring>
#include <vector>

const char16_t* ESString::settle() const
{
    if (m_form == Rope) {
        flatten();
        return m_flat.chars;
    }
    // A slice of a slice leads to the whole from now on.
    ESString* base = m_slice.base;
    uint32_t offset = m_slice.offset;
    while (base->m_form == Slice) {
        offset += base->m_slice.offset;
        base = base->m_slice.base;
    }
    m_slice = {base, offset};
    return base->chars() + offset;
}

void ESString::flatten() const
{
    uint32_t capacity = m_length;
    char16_t* chars = ESStringPool::allocateUnits(capacity);
    char16_t* end = chars + m_length;
    // From the right end, so that long chains to the left keep the list short.
    std::vector<const ESString*> open{m_rope.left, m_rope.right};
    while (!open.empty()) {
        const ESString* piece = open.back();
        open.pop_back();
        if (piece->m_form == Rope) {
            open.push_back(piece->m_rope.left);
            open.push_back(piece->m_rope.right);
        } else {
            end -= piece->m_length;
            std::memcpy(end, piece->chars(), size_t(piece->m_length) * 2);
        }
    }
    m_flat = {chars, capacity};
    m_form = Flat;
}

// Makes the characters the string's own.
void ESString::own()
{
    if (m_form == Rope) {
        flatten();
    } else if (m_form == Slice) {
        uint32_t capacity = m_length;
        char16_t* chars = ESStringPool::allocateUnits(capacity);
        std::memcpy(chars, settle(), size_t(m_length) * 2);
        m_flat = {chars, capacity};
        m_form = Flat;
    }
}
