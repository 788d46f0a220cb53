#include "script/engine/ESStringPool.h"

#include "script/engine/ESCollector.h"
#include "script/engine/ESException.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

// Up to this length a concatenation is put together at once.
constexpr uint32_t ShortText = 40;
// A part of a text is a copy up to this length, and leads to the whole beyond.
constexpr uint32_t CopiedPart = 64;
constexpr size_t BlockStrings = 680;

struct Entry {
    uint32_t hash;
    uint32_t index; // of the name; 0 in an empty entry
};

// Open addressing, at most half full.
std::vector<Entry> g_nameMap;
std::vector<ESString*> g_nameVector;
std::vector<ESString*> g_blocks;
ESString* g_free = nullptr;
uint64_t g_nextOrder = 1;
// Places of numbers in the order of strings, by pages that are made when one of their numbers is met.
constexpr unsigned NumberPage = 64;
std::vector<std::unique_ptr<std::array<uint64_t, NumberPage>>> g_numberOrder;

// Characters of short texts come from lists of rows of these lengths; multiples of four keep them aligned for
// the links of the lists.
constexpr uint32_t RowUnits[] = {16, 28, 60};
constexpr int RowCount = int(std::size(RowUnits));
constexpr size_t RowBlockUnits = 16384;
char16_t* g_freeRows[RowCount];
std::vector<std::unique_ptr<char16_t[]>> g_rowBlocks;

int rowFor(uint32_t units)
{
    int row = 0;
    while (row < RowCount && RowUnits[row] < units)
        ++row;
    return row;
}

void freeRow(char16_t* chars, int row)
{
    std::memcpy(chars, &g_freeRows[row], sizeof(char16_t*));
    g_freeRows[row] = chars;
}

uint32_t hashOf(QStringView text)
{
    uint64_t hash = uint64_t(text.size());
    for (QChar c : text)
        hash = (hash ^ c.unicode()) * 0x9E3779B97F4A7C15;
    return uint32_t(hash >> 32);
}

void place(uint32_t hash, uint32_t index)
{
    size_t mask = g_nameMap.size() - 1;
    size_t at = hash & mask;
    while (g_nameMap[at].index)
        at = (at + 1) & mask;
    g_nameMap[at] = {hash, index};
}

void growMap()
{
    std::vector<Entry> old(g_nameMap.empty() ? 2048 : g_nameMap.size() * 2);
    old.swap(g_nameMap);
    for (const Entry& entry : old)
        if (entry.index)
            place(entry.hash, entry.index);
}

int asArrayIndex(QStringView text)
{
    if (text.isEmpty() || text.size() > 10 || (text[0] == u'0' && text.size() > 1))
        return -1;
    int64_t value = 0;
    for (QChar c : text) {
        unsigned digit = unsigned(c.unicode()) - '0';
        if (digit > 9)
            return -1;
        value = value * 10 + digit;
    }
    return value < 2147483647 ? int(value) : -1;
}

QStringView formatNumber(unsigned n, char16_t (&buffer)[12])
{
    char16_t* at = buffer + 12;
    do {
        *--at = char16_t(u'0' + n % 10);
        n /= 10;
    } while (n);
    return QStringView(at, buffer + 12 - at);
}

bool same(QStringView a, QStringView b)
{
    return a.size() == b.size() && std::equal(a.utf16(), a.utf16() + a.size(), b.utf16());
}

ESString* search(QStringView text, uint32_t hash)
{
    if (g_nameMap.empty())
        return nullptr;
    size_t mask = g_nameMap.size() - 1;
    for (size_t at = hash & mask; g_nameMap[at].index; at = (at + 1) & mask) {
        if (g_nameMap[at].hash != hash)
            continue;
        ESString* candidate = g_nameVector[g_nameMap[at].index];
        if (same(candidate->view(), text))
            return candidate;
    }
    return nullptr;
}

} // namespace

ESString* ESStringPool::g_numbers[ESLimits::NumberStrings];
ESString* ESStringPool::g_characters[256];
ESString** ESStringPool::g_names;
size_t ESStringPool::g_bytes;
size_t ESStringPool::g_limit = ESLimits::MemoryBytes;

// Memory.

void ESStringPool::charge(size_t bytes)
{
    if (g_bytes + bytes > g_limit)
        throw ESFatalError("out of memory");
    g_bytes += bytes;
    ESCollector::allocated(bytes);
}

char16_t* ESStringPool::allocateUnits(uint32_t& units)
{
    int row = rowFor(units);
    if (row == RowCount) {
        charge(size_t(units) * 2);
        auto* chars = static_cast<char16_t*>(std::malloc(size_t(units) * 2));
        if (!chars)
            throw std::bad_alloc();
        return chars;
    }
    units = RowUnits[row];
    charge(size_t(units) * 2);
    if (!g_freeRows[row]) {
        g_rowBlocks.push_back(std::make_unique<char16_t[]>(RowBlockUnits));
        char16_t* next = g_rowBlocks.back().get();
        for (size_t at = 0; at + units <= RowBlockUnits; at += units)
            freeRow(next + at, row);
    }
    char16_t* chars = g_freeRows[row];
    std::memcpy(&g_freeRows[row], chars, sizeof(char16_t*));
    return chars;
}

void ESStringPool::freeUnits(char16_t* chars, uint32_t units)
{
    g_bytes -= size_t(units) * 2;
    int row = rowFor(units);
    if (row == RowCount)
        std::free(chars);
    else
        freeRow(chars, row);
}

ESString* ESStringPool::allocate()
{
    charge(sizeof(ESString));
    if (!g_free) {
        auto* block = new ESString[BlockStrings];
        g_blocks.push_back(block);
        for (size_t i = BlockStrings; i-- > 0;) {
            block[i].m_nextFree = g_free;
            g_free = block + i;
        }
    }
    ESString* string = g_free;
    g_free = string->m_nextFree;
    string->m_order = g_nextOrder++;
    return string;
}

void ESStringPool::sweep()
{
    for (ESString* block : g_blocks) {
        for (size_t i = 0; i < BlockStrings; ++i) {
            ESString& string = block[i];
            if (string.m_form == ESString::Free || string.m_index)
                continue;
            if (string.m_marked) {
                string.m_marked = false;
                continue;
            }
            if (string.m_form == ESString::Flat)
                freeUnits(string.m_flat.chars, string.m_flat.capacity);
            g_bytes -= sizeof(ESString);
            string.m_form = ESString::Free;
            string.m_nextFree = g_free;
            g_free = &string;
        }
    }
}

void ESStringPool::clear()
{
    for (ESString* block : g_blocks) {
        for (size_t i = 0; i < BlockStrings; ++i)
            if (block[i].m_form == ESString::Flat)
                freeUnits(block[i].m_flat.chars, block[i].m_flat.capacity);
        delete[] block;
    }
    g_blocks.clear();
    g_rowBlocks.clear();
    std::fill(std::begin(g_freeRows), std::end(g_freeRows), nullptr);
    g_free = nullptr;
    g_nameMap.clear();
    g_nameVector.clear();
    g_names = nullptr;
    g_numberOrder.clear();
    g_nextOrder = 1;
    g_bytes = 0;
    std::memset(g_characters, 0, sizeof g_characters);
    std::memset(g_numbers, 0, sizeof g_numbers);
}

// Names.

ESString* ESStringPool::find(QStringView text)
{
    return search(text, hashOf(text));
}

// Makes a name of a string whose text is no name yet.
ESString* ESStringPool::enter(ESString* string, uint32_t hash)
{
    string->own();
    if ((g_nameVector.size() + 1) * 2 > g_nameMap.size())
        growMap();
    if (g_nameVector.empty())
        g_nameVector.push_back(nullptr);
    string->m_index = uint32_t(g_nameVector.size());
    g_nameVector.push_back(string);
    g_names = g_nameVector.data();
    string->m_arrayIndex = asArrayIndex(string->view());
    if (string->m_arrayIndex >= 0) {
        string->m_order = meetNumber(unsigned(string->m_arrayIndex));
        if (string->m_arrayIndex < ESLimits::NumberStrings)
            g_numbers[string->m_arrayIndex] = string;
    }
    place(hash, string->m_index);
    return string;
}

ESString* ESStringPool::makeName(ESString* string)
{
    uint32_t hash = hashOf(string->view());
    ESString* found = search(string->view(), hash);
    return found ? found : enter(string, hash);
}

ESString* ESStringPool::intern(QStringView text)
{
    uint32_t hash = hashOf(text);
    ESString* found = search(text, hash);
    return found ? found : enter(make(text), hash);
}

ESString* ESStringPool::intern(const QString& text)
{
    if (text.size() > ESLimits::StringLength)
        throw ESFatalError("string too long");
    return intern(QStringView(text));
}

ESString* ESStringPool::intern(const char* latin1)
{
    return intern(QStringView(QString::fromLatin1(latin1)));
}

int ESStringPool::count()
{
    return int(g_nameVector.size());
}

uint64_t ESStringPool::meetNumber(unsigned n)
{
    // So high up they come behind all others, in their own order.
    if (n >= ESLimits::OrderedNumbers)
        return (uint64_t(1) << 63) + n;
    size_t page = n / NumberPage;
    if (page >= g_numberOrder.size())
        g_numberOrder.resize(page + 1);
    if (!g_numberOrder[page])
        g_numberOrder[page] = std::make_unique<std::array<uint64_t, NumberPage>>();
    uint64_t& order = (*g_numberOrder[page])[n % NumberPage];
    if (!order)
        order = g_nextOrder++;
    return order;
}

ESString* ESStringPool::makeNumber(unsigned n)
{
    char16_t buffer[12];
    return intern(formatNumber(n, buffer));
}

ESString* ESStringPool::number(int n)
{
    if (n >= 0)
        return number(unsigned(n));
    char16_t buffer[12];
    QStringView digits = formatNumber(0u - unsigned(n), buffer);
    char16_t* sign = buffer + (12 - digits.size() - 1);
    *sign = u'-';
    return intern(QStringView(sign, digits.size() + 1));
}

ESString* ESStringPool::findNumber(unsigned n)
{
    if (n < unsigned(ESLimits::NumberStrings))
        return g_numbers[n];
    char16_t buffer[12];
    return find(formatNumber(n, buffer));
}

// Texts.

ESString* ESStringPool::make(QStringView text)
{
    auto length = uint32_t(text.size());
    uint32_t capacity = length;
    char16_t* chars = length > ESString::InlineLength ? allocateUnits(capacity) : nullptr;
    ESString* string = allocate();
    string->m_length = length;
    string->m_form = chars ? ESString::Flat : ESString::Inline;
    std::copy_n(text.utf16(), size_t(length), chars ? chars : string->m_inline);
    if (chars)
        string->m_flat = {chars, capacity};
    return string;
}

ESString* ESStringPool::makeCharacter(char16_t unit)
{
    if (unit >= 256)
        return make(QStringView(&unit, 1));
    return g_characters[unit] = intern(QStringView(&unit, 1));
}

ESString* ESStringPool::text(QStringView text)
{
    if (text.size() > ESLimits::StringLength)
        throw ESFatalError("string too long");
    if (text.size() <= 1)
        return text.isEmpty() ? g_emptyString : character(text[0].unicode());
    return make(text);
}

ESString* ESStringPool::text(const char* latin1, int length)
{
    char16_t buffer[128];
    if (length > int(std::size(buffer)))
        return text(QString::fromLatin1(latin1, length));
    for (int i = 0; i < length; ++i)
        buffer[i] = static_cast<unsigned char>(latin1[i]);
    return text(QStringView(buffer, length));
}

int ESStringPool::arrayIndexOf(const ESString* string)
{
    if (string->isName())
        return string->arrayIndex();
    return string->length() <= 10 ? asArrayIndex(string->view()) : -1;
}

ESString* ESStringPool::part(ESString* whole, int from, int length)
{
    if (length == whole->length())
        return whole;
    if (uint32_t(length) <= CopiedPart) {
        // The characters are copied first: making a string can't move them.
        return text(whole->view().mid(from, length));
    }
    whole->chars(); // a rope is put together once
    ESString* string = allocate();
    string->m_length = uint32_t(length);
    string->m_form = ESString::Slice;
    string->m_slice = {whole, uint32_t(from)};
    return string;
}

ESString* ESStringPool::concat(ESString* left, ESString* right)
{
    uint32_t first = left->m_length;
    uint32_t second = right->m_length;
    if (!first || !second)
        return first ? left : right;
    uint32_t length = first + second;
    if (length > uint32_t(ESLimits::StringLength))
        throw ESFatalError("string too long");

    bool takes = left->m_form == ESString::Flat && !left->m_index && first >= second;
    if (length <= ShortText && (!takes || left->m_flat.capacity < length)) {
        char16_t buffer[ShortText];
        std::copy_n(left->chars(), size_t(first), buffer);
        std::copy_n(right->chars(), size_t(second), buffer + first);
        return make(QStringView(buffer, length));
    }
    const char16_t* added = takes ? right->chars() : nullptr;
    ESString* string = allocate();
    string->m_length = length;
    if (!takes) {
        string->m_form = ESString::Rope;
        string->m_rope = {left, right};
        return string;
    }
    // The new text takes the characters of the left one over, which becomes a slice of it.
    char16_t* chars = left->m_flat.chars;
    uint32_t capacity = left->m_flat.capacity;
    if (capacity < length) {
        uint32_t wanted = length + length / 2;
        char16_t* grown = allocateUnits(wanted);
        std::copy_n(chars, size_t(first), grown);
        std::copy_n(added, size_t(second), grown + first);
        freeUnits(chars, capacity);
        chars = grown;
        capacity = wanted;
    } else {
        std::copy_n(added, size_t(second), chars + first);
    }
    string->m_flat = {chars, capacity};
    string->m_form = ESString::Flat;
    left->m_slice = {string, 0};
    left->m_form = ESString::Slice;
    return string;
}

ESString *g_lengthString, *g_prototypeString, *g_nullString, *g_trueString, *g_falseString, *g_evalString,
    *g_argumentsString, *g_calleeString, *g_constructorString, *g_indexString, *g_inputString, *g_emptyString,
    *g_undefinedString, *g_objectString, *g_booleanString, *g_numberString, *g_stringString,
    *g_functionString, *g_valueOfString, *g_toStringString, *g_messageString, *g_nameString;

void internWellKnownStrings()
{
    for (int n = 0; n < ESLimits::ReadyNumbers; ++n)
        ESStringPool::number(n);
    g_lengthString = ESStringPool::intern("length");
    g_prototypeString = ESStringPool::intern("prototype");
    g_nullString = ESStringPool::intern("null");
    g_trueString = ESStringPool::intern("true");
    g_falseString = ESStringPool::intern("false");
    g_evalString = ESStringPool::intern("eval");
    g_argumentsString = ESStringPool::intern("arguments");
    g_calleeString = ESStringPool::intern("callee");
    g_constructorString = ESStringPool::intern("constructor");
    g_indexString = ESStringPool::intern("index");
    g_inputString = ESStringPool::intern("input");
    g_emptyString = ESStringPool::intern("");
    g_undefinedString = ESStringPool::intern("undefined");
    g_objectString = ESStringPool::intern("object");
    g_booleanString = ESStringPool::intern("boolean");
    g_numberString = ESStringPool::intern("number");
    g_stringString = ESStringPool::intern("string");
    g_functionString = ESStringPool::intern("function");
    g_valueOfString = ESStringPool::intern("valueOf");
    g_toStringString = ESStringPool::intern("toString");
    g_messageString = ESStringPool::intern("message");
    g_nameString = ESStringPool::intern("name");
}
