#include "support/HString.h"

#include "support/Pool.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <new>
#include <vector>

namespace {

constexpr size_t FirstSlots = 8192;

// 256 well-mixed values from the SplitMix64 generator; no one outside the process sees a hash.
constexpr std::array<uint32_t, 256> makeHashTable()
{
    std::array<uint32_t, 256> table{};
    uint64_t state = 0x9E3779B97F4A7C15u;
    for (uint32_t& entry : table) {
        state += 0x9E3779B97F4A7C15u;
        uint64_t z = state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        entry = uint32_t(z >> 32);
    }
    return table;
}
constexpr std::array<uint32_t, 256> HashTable = makeHashTable();

// Finds entries by their hash: an open table of a power of two slots, never more than half full, in which
// one slot after another is tried. Slots are small and hashes stand apart from the entries, so that a
// text that is new, as most are, touches little memory.
class Table {
public:
    Table() : m_slots(FirstSlots) {}

    // The entry of this text; null when there is none, and then the slot where it belongs.
    template <class Same> const HString* find(unsigned hash, Same&& same, size_t& slot) const
    {
        for (slot = place(hash); m_slots[slot]; slot = next(slot)) {
            unsigned number = m_slots[slot] - 1;
            if (m_hashes[number] == hash && same(m_entries[number]))
                return m_entries[number];
        }
        return nullptr;
    }
    unsigned count() const { return unsigned(m_entries.size()); }
    void insert(size_t slot, const HString* entry)
    {
        m_hashes.resize(m_entries.size()); // memory may have been out behind it the last time
        m_hashes.push_back(entry->hash());
        m_entries.push_back(entry);
        m_slots[slot] = count();
        if (m_entries.size() > m_slots.size() / 2)
            grow();
    }

private:
    size_t place(unsigned hash) const { return hash & (m_slots.size() - 1); }
    size_t next(size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }
    void grow()
    {
        m_slots = std::vector<unsigned>(4 * m_slots.size());
        for (unsigned number = 0; number < count(); ++number) {
            size_t slot = place(m_hashes[number]);
            while (m_slots[slot])
                slot = next(slot);
            m_slots[slot] = number + 1;
        }
    }

    std::vector<unsigned> m_slots; // number of an entry plus 1; 0 is free
    std::vector<const HString*> m_entries;
    std::vector<unsigned> m_hashes;
};

std::string modified(const char* text, int length, HString::Modifier modifier)
{
    std::string copy(text, size_t(length));
    for (char& c : copy) {
        unsigned letterCase = modifier & 15;
        if (letterCase == 0 && c >= 'a' && c <= 'z')
            c = char(c - 'a' + 'A');
        else if (letterCase == 1 && c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
        unsigned separator = modifier & 0xF0;
        if (separator == HString::ToSlash && c == '\\')
            c = '/';
        else if (separator == HString::ToBackslash && c == '/')
            c = '\\';
    }
    return copy;
}

} // namespace

const HString* HString::intern(const char* text, int length, Modifier modifier)
{
    if (modifier != AsIs) {
        std::string copy = modified(text, length, modifier);
        return intern(copy.data(), length, AsIs);
    }
    // Each character stays in all of the hash: names often have long ends in common.
    uint32_t hash = 0;
    for (int i = 0; i < length; ++i)
        hash = HashTable[uint8_t(text[i])] + std::rotl(hash, 1);
    // Entries are used by other statics to the end of the process, so the table is never destroyed.
    static Table& table = *new Table;
    size_t slot;
    auto same = [=](const HString* entry) {
        return entry->m_length == length &&
               (length == 0 || memcmp(entry->c_str(), text, size_t(length)) == 0);
    };
    if (const HString* found = table.find(hash, same, slot))
        return found;
    // Entries with their texts are never freed.
    static Pool& pool = *new Pool;
    char* at = static_cast<char*>(pool.allocate(sizeof(HString) + size_t(length) + 1));
    auto* entry = new (at) HString(hash, length, table.count());
    char* stored = at + sizeof(HString);
    if (length)
        memcpy(stored, text, size_t(length));
    stored[length] = 0;
    table.insert(slot, entry);
    return entry;
}

const HString* HString::intern(const char* text, Modifier modifier)
{
    return intern(text, int(strlen(text)), modifier);
}

const HString* HString::intern(const std::string& text, Modifier modifier)
{
    return intern(text.data(), int(text.size()), modifier);
}

const HString* HString::intern(std::string_view text, Modifier modifier)
{
    return intern(text.data(), int(text.size()), modifier);
}

const HString* HString::intern(long number)
{
    char digits[24];
    auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return intern(digits, int(end - digits), AsIs);
}
