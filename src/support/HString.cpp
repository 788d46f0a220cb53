#include "support/HString.h"

#include <array>
#include <charconv>
#include <cstring>
#include <vector>

namespace {

constexpr size_t FirstBuckets = 1024;
constexpr unsigned TextBlockSize = 4096;

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
constexpr std::array<uint32_t, 256> g_hashTable = makeHashTable();

unsigned g_count = 0;
char* g_textBlock = nullptr;
size_t g_textLeft = 0;

// Entries and texts are never freed, so they come from blocks that are simply abandoned when full.
char* storeText(const char* text, size_t length)
{
    if (g_textLeft < length + 1) {
        g_textLeft = length + TextBlockSize;
        g_textBlock = new char[g_textLeft];
    }
    char* stored = g_textBlock;
    if (length)
        memcpy(stored, text, length);
    stored[length] = 0;
    g_textBlock += length + 1;
    g_textLeft -= length + 1;
    return stored;
}

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
    unsigned hash = 0;
    for (int i = 0; i < length; ++i)
        hash = g_hashTable[uint8_t(text[i])] + 2 * hash;
    // A power of two, doubled when the chains get longer than one entry on average. Entries are used by
    // other statics to the end of the process, so the table is never destroyed.
    static std::vector<HString*>& buckets = *new std::vector<HString*>(FirstBuckets);
    for (HString* entry = buckets[hash & (buckets.size() - 1)]; entry; entry = entry->m_next)
        if (entry->m_hash == hash && entry->m_length == length &&
            (length == 0 || memcmp(entry->m_text, text, size_t(length)) == 0))
            return entry;
    auto* entry = new HString;
    entry->m_hash = hash;
    entry->m_text = storeText(text, size_t(length));
    entry->m_length = length;
    entry->m_serial = g_count++;
    if (g_count > buckets.size()) {
        std::vector<HString*> grown(2 * buckets.size());
        for (HString* moved : buckets)
            while (moved) {
                HString* next = moved->m_next;
                HString*& place = grown[moved->m_hash & (grown.size() - 1)];
                moved->m_next = place;
                place = moved;
                moved = next;
            }
        buckets.swap(grown);
    }
    HString*& bucket = buckets[hash & (buckets.size() - 1)];
    entry->m_next = bucket;
    bucket = entry;
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
