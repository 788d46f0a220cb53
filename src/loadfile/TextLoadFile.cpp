#include "loadfile/TextLoadFile.h"

#include "loadfile/LoadFileSection.h"
#include "support/HException.h"

#include <array>
#ifdef __x86_64__
#include <emmintrin.h>
#endif
#include <string>

namespace {

constexpr uint8_t Bad = 0xFF;

// Value of a hexadecimal digit; Bad, which no digit has bits 4 to 7 of, for anything else.
constexpr std::array<uint8_t, 256> makeDigits()
{
    std::array<uint8_t, 256> digits{};
    digits.fill(Bad);
    for (unsigned i = 0; i < 10; ++i)
        digits['0' + i] = uint8_t(i);
    for (unsigned i = 0; i < 6; ++i)
        digits['A' + i] = digits['a' + i] = uint8_t(10 + i);
    return digits;
}
constexpr std::array<uint8_t, 256> Digits = makeDigits();

#ifdef __x86_64__
// Sixteen digits to eight bytes. Each lane is tried as a digit and as a letter; what is neither leaves its
// lane of `valid` clear.
inline __m128i decodeSixteen(const char* at, __m128i& valid)
{
    __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    __m128i digit = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    __m128i letter = _mm_sub_epi8(_mm_or_si128(text, _mm_set1_epi8(0x20)), _mm_set1_epi8('a'));
    __m128i isDigit = _mm_cmpeq_epi8(_mm_min_epu8(digit, _mm_set1_epi8(9)), digit);
    __m128i isLetter = _mm_cmpeq_epi8(_mm_min_epu8(letter, _mm_set1_epi8(5)), letter);
    valid = _mm_and_si128(valid, _mm_or_si128(isDigit, isLetter));
    __m128i nibbles = _mm_or_si128(_mm_and_si128(digit, isDigit),
                                   _mm_and_si128(_mm_add_epi8(letter, _mm_set1_epi8(10)), isLetter));
    __m128i pairs = _mm_or_si128(_mm_slli_epi16(nibbles, 4), _mm_srli_epi16(nibbles, 8));
    return _mm_packus_epi16(_mm_and_si128(pairs, _mm_set1_epi16(0xFF)), _mm_setzero_si128());
}

inline unsigned sumOfEight(__m128i bytes)
{
    return unsigned(_mm_cvtsi128_si32(_mm_sad_epu8(bytes, _mm_setzero_si128())));
}

inline bool areDigits(__m128i valid)
{
    return _mm_movemask_epi8(valid) == 0xFFFF;
}
#endif

[[noreturn]] void invalidByte()
{
    throw HException("invalid ASCII encoded byte");
}

} // namespace

unsigned TextLoadFile::getAsciiHexByte(Cursor& cursor, uint8_t* sum)
{
    if (cursor.left() < 2)
        invalidByte();
    unsigned high = Digits[uint8_t(cursor.at[0])];
    unsigned low = Digits[uint8_t(cursor.at[1])];
    if ((high | low) & 0xF0)
        invalidByte();
    cursor.at += 2;
    unsigned byte = high << 4 | low;
    if (sum)
        *sum = uint8_t(*sum + byte);
    return byte;
}

void TextLoadFile::getAsciiHexBytes(Cursor& cursor, size_t count, unsigned char* to, uint8_t* sum)
{
    if (cursor.left() / 2 < count)
        invalidByte();
    const char* at = cursor.at;
    unsigned total = 0;
    size_t i = 0;
#ifdef __x86_64__
    __m128i valid = _mm_set1_epi8(-1);
    for (; i + 8 <= count; i += 8, at += 16) {
        __m128i bytes = decodeSixteen(at, valid);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + i), bytes);
        total += sumOfEight(bytes);
    }
    if (!areDigits(valid))
        invalidByte();
#endif
    // One look at all digits together, after the loop: a branch for each would cost more than
    // decoding them.
    unsigned seen = 0;
    for (; i < count; ++i, at += 2) {
        unsigned high = Digits[uint8_t(at[0])];
        unsigned low = Digits[uint8_t(at[1])];
        seen |= high | low;
        unsigned byte = high << 4 | low;
        total += byte;
        to[i] = uint8_t(byte);
    }
    if (seen & 0xF0)
        invalidByte();
    cursor.at = at;
    if (sum)
        *sum = uint8_t(*sum + total);
}

bool TextLoadFile::getHead(Cursor& cursor, unsigned count, uint64_t& head, uint8_t& sum)
{
#ifdef __x86_64__
    if (cursor.left() < 16)
        return false;
    __m128i valid = _mm_set1_epi8(-1);
    __m128i bytes = decodeSixteen(cursor.at, valid);
    if (!areDigits(valid))
        return false;
    // The first byte is the lowest; what belongs to the data goes out at the top.
    bytes = _mm_sll_epi64(bytes, _mm_cvtsi32_si128(int(64 - 8 * count)));
    sum = uint8_t(sumOfEight(bytes));
    head = __builtin_bswap64(uint64_t(_mm_cvtsi128_si64(bytes)));
    cursor.at += 2 * count;
    return true;
#else
    static_cast<void>(cursor), static_cast<void>(count), static_cast<void>(head), static_cast<void>(sum);
    return false;
#endif
}

uint32_t TextLoadFile::getAsciiHexNumber(Cursor& cursor, unsigned count, uint8_t* sum)
{
    unsigned char bytes[sizeof(uint32_t)];
    getAsciiHexBytes(cursor, count, bytes, sum);
    uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

void TextLoadFile::beginSection(uint32_t address)
{
    auto section = std::make_unique<ExpandingLoadFileSection>(std::string(), address);
    m_current = section.get();
    m_sections.add(std::move(section));
}

void TextLoadFile::appendLineAndThrow(HException& failure) const
{
    failure.append(" : line " + std::to_string(m_line));
    throw failure;
}

void TextLoadFile::failAtLine(const char* text) const
{
    HException failure(text);
    appendLineAndThrow(failure);
}
