#include "script/engine/ESStringPool.h"

#include "script/engine/ESException.h"

#include <array>
#include <charconv>
#include <cstring>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace {

// Below this length a concatenation is put together at once: a copy of so few characters costs less
// than remembering its halves, and property names have to be flat anyway.
constexpr int ShortText = 32;

constexpr uint64_t HashBase = 0x9E3779B97F4A7C15;

// A polynomial hash, so that the hash of a concatenation follows from those of its halves.
uint64_t extend(uint64_t hash, QStringView text)
{
    for (QChar c : text)
        hash = hash * HashBase + c.unicode() + 1;
    return hash;
}

uint64_t power(unsigned exponent)
{
    uint64_t result = 1;
    for (uint64_t square = HashBase; exponent; exponent >>= 1, square *= square)
        if (exponent & 1)
            result *= square;
    return result;
}

// The low bits of a polynomial hash depend on the low bits of the characters alone.
uint32_t spread(uint64_t hash)
{
    hash ^= hash >> 29;
    return uint32_t((hash * 0xBF58476D1CE4E5B9) >> 32);
}

struct Entry {
    uint32_t hash;
    uint32_t index; // in the vector; 0 in an empty entry
};

// Open addressing, at most half full.
std::vector<Entry> g_stringMap;
std::vector<ESString*> g_stringVector;
std::deque<ESString> g_storage;
uint64_t g_nextOrder = 1;
// Places of numbers in the order of names, by pages that are made when one of their numbers is met.
constexpr unsigned NumberPage = 64;
std::vector<std::unique_ptr<std::array<uint64_t, NumberPage>>> g_numberOrder;
std::array<ESString*, 256> g_characters;

void place(uint32_t hash, uint32_t index)
{
    size_t mask = g_stringMap.size() - 1;
    size_t at = hash & mask;
    while (g_stringMap[at].index)
        at = (at + 1) & mask;
    g_stringMap[at] = {hash, index};
}

void grow()
{
    std::vector<Entry> old(g_stringMap.empty() ? 2048 : g_stringMap.size() * 2);
    old.swap(g_stringMap);
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

template <typename Same> ESString* find(uint64_t hash, int length, Same same)
{
    if (g_stringMap.empty())
        return nullptr;
    uint32_t low = spread(hash);
    size_t mask = g_stringMap.size() - 1;
    for (size_t at = low & mask; g_stringMap[at].index; at = (at + 1) & mask) {
        if (g_stringMap[at].hash != low)
            continue;
        ESString* candidate = g_stringVector[g_stringMap[at].index];
        if (candidate->length() == length && same(candidate))
            return candidate;
    }
    return nullptr;
}

} // namespace

ESString* ESStringPool::g_numbers[ESLimits::NumberStrings];

void ESString::join() const
{
    if (!m_left->m_pending && m_left->m_left && m_left->m_length >= m_right->m_length) {
        QString text = std::exchange(m_left->m_text, QString());
        m_left->m_pending = true;
        text += m_right->text();
        m_text = text;
        m_pending = false;
        return;
    }
    QString text(m_length, Qt::Uninitialized);
    QChar* end = text.data() + m_length;
    // From the right end, so that the long left-hand chains of "s = s + x" keep the list short.
    std::vector<const ESString*> open{this};
    while (!open.empty()) {
        const ESString* part = open.back();
        open.pop_back();
        if (part->m_pending) {
            open.push_back(part->m_left);
            open.push_back(part->m_right);
        } else {
            end -= part->m_length;
            std::memcpy(end, part->m_text.constData(), size_t(part->m_length) * sizeof(QChar));
        }
    }
    m_text = text;
    m_pending = false;
}

namespace {

template <typename Fill> ESString* add(uint64_t hash, Fill fill)
{
    if ((g_stringVector.size() + 1) * 2 > g_stringMap.size())
        grow();
    if (g_stringVector.empty())
        g_stringVector.push_back(nullptr); // index 0 is no string's
    g_storage.emplace_back();
    ESString* string = &g_storage.back();
    fill(string, int(g_stringVector.size()));
    g_stringVector.push_back(string);
    place(spread(hash), uint32_t(string->index()));
    return string;
}

} // namespace

ESString* ESStringPool::intern(QStringView text)
{
    uint64_t hash = extend(0, text);
    ESString* found = find(hash, int(text.size()),
                           [&](ESString* s) { return s->m_hash == hash && QStringView(s->text()) == text; });
    if (found)
        return found;
    return add(hash, [&](ESString* s, int index) {
        s->m_index = index;
        s->m_length = int(text.size());
        s->m_hash = hash;
        s->m_text = text.toString();
        s->m_arrayIndex = asArrayIndex(text);
        s->m_order = s->m_arrayIndex >= 0 ? meetNumber(unsigned(s->m_arrayIndex)) : g_nextOrder++;
        if (s->m_arrayIndex >= 0 && s->m_arrayIndex < ESLimits::NumberStrings)
            g_numbers[s->m_arrayIndex] = s;
    });
}

ESString* ESStringPool::intern(const QString& text)
{
    if (text.size() > ESLimits::StringLength)
        throw ESFatalError("string too long");
    return intern(QStringView(text));
}

ESString* ESStringPool::intern(const char* latin1)
{
    char16_t buffer[64];
    size_t length = std::strlen(latin1);
    if (length > std::size(buffer))
        return intern(QString::fromLatin1(latin1));
    for (size_t i = 0; i < length; ++i)
        buffer[i] = static_cast<unsigned char>(latin1[i]);
    return intern(QStringView(buffer, qsizetype(length)));
}

ESString* ESStringPool::get(int index)
{
    return g_stringVector[size_t(index)];
}

int ESStringPool::count()
{
    return int(g_stringVector.size());
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

ESString* ESStringPool::signedNumber(int n)
{
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
    QStringView text = formatNumber(n, buffer);
    uint64_t hash = extend(0, text);
    return find(hash, int(text.size()),
                [&](ESString* s) { return s->m_hash == hash && QStringView(s->text()) == text; });
}

ESString* ESStringPool::concat(ESString* left, ESString* right)
{
    if (!left->m_length)
        return right;
    if (!right->m_length)
        return left;
    int length = left->m_length + right->m_length;
    if (length > ESLimits::StringLength)
        throw ESFatalError("string too long");
    if (length <= ShortText) {
        char16_t buffer[ShortText];
        // Texts as short as these are never pending.
        std::memcpy(buffer, left->m_text.constData(), size_t(left->m_length) * 2);
        std::memcpy(buffer + left->m_length, right->m_text.constData(), size_t(right->m_length) * 2);
        return intern(QStringView(buffer, length));
    }

    uint64_t shift = right->m_length == 1 ? HashBase : power(unsigned(right->m_length));
    uint64_t hash = left->m_hash * shift + right->m_hash;
    ESString* found = find(hash, length, [&](ESString* s) {
        if (s->m_hash != hash)
            return false;
        if (s->m_left == left && s->m_right == right)
            return true;
        QString text = s->text();
        return text.startsWith(left->text()) && QStringView(text).mid(left->m_length) == right->text();
    });
    if (found)
        return found;
    return add(hash, [&](ESString* s, int index) {
        s->m_index = index;
        s->m_length = length;
        s->m_hash = hash;
        s->m_left = left;
        s->m_right = right;
        s->m_pending = true;
        s->m_order = g_nextOrder++;
    });
}

ESString* ESStringPool::character(char16_t unit)
{
    if (unit >= g_characters.size())
        return intern(QStringView(&unit, 1));
    if (!g_characters[unit])
        g_characters[unit] = intern(QStringView(&unit, 1));
    return g_characters[unit];
}

void ESStringPool::clear()
{
    g_stringMap.clear();
    g_stringVector.clear();
    g_storage.clear();
    g_numberOrder.clear();
    g_nextOrder = 1;
    g_characters.fill(nullptr);
    std::memset(g_numbers, 0, sizeof g_numbers);
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
