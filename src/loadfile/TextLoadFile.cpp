#include "loadfile/TextLoadFile.h"

#include "support/HException.h"

#include <array>
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
constexpr std::array<uint8_t, 256> g_digits = makeDigits();

[[noreturn]] void invalidByte()
{
    throw HException("invalid ASCII encoded byte");
}

} // namespace

unsigned TextLoadFile::getAsciiHexByte(Cursor& cursor, uint8_t* sum)
{
    if (cursor.left() < 2)
        invalidByte();
    unsigned high = g_digits[uint8_t(cursor.at[0])];
    unsigned low = g_digits[uint8_t(cursor.at[1])];
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
    // One look at all digits together, after the loop: a branch for each would cost more than
    // decoding them.
    const char* at = cursor.at;
    unsigned seen = 0;
    unsigned total = 0;
    for (size_t i = 0; i < count; ++i, at += 2) {
        unsigned high = g_digits[uint8_t(at[0])];
        unsigned low = g_digits[uint8_t(at[1])];
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

uint32_t TextLoadFile::getAsciiHexNumber(Cursor& cursor, unsigned count, uint8_t* sum)
{
    uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i)
        value = value << 8 | getAsciiHexByte(cursor, sum);
    return value;
}

unsigned char* TextLoadFile::store(uint32_t address, uint32_t count)
{
    if (!m_current || m_current->end() != address) {
        auto section = std::make_unique<ExpandingLoadFileSection>(std::string(), address);
        m_current = section.get();
        m_sections.add(std::move(section));
    }
    return m_current->expand(count);
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
