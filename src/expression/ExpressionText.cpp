// Values and their types as text.
#include "expression/ExpressionType.h"
#include "expression/limits.h"
#include "support/Numbers.h"

#include <algorithm>

namespace {

struct NamedType {
    ExpressionType::Type type;
    unsigned size;
    const char* name;
};

constexpr NamedType NamedTypes[] = {
    {ExpressionType::Signed, 1, "char"},
    {ExpressionType::Signed, 2, "short"},
    {ExpressionType::Signed, 4, "int"},
    {ExpressionType::Signed, 8, "long long"},
    {ExpressionType::Unsigned, 1, "unsigned char"},
    {ExpressionType::Unsigned, 2, "unsigned short"},
    {ExpressionType::Unsigned, 4, "unsigned int"},
    {ExpressionType::Unsigned, 8, "unsigned long long"},
};

// Digits of a value; 0 for no width. Those of octal and decimal are the display's own.
unsigned digitsFor(int radix, unsigned size, unsigned bits)
{
    struct Widths {
        int radix;
        unsigned one, two, four, eight;
    };
    static constexpr Widths Fixed[] = {{10, 3, 5, 10, 19}, {8, 3, 5, 11, 21}};
    size = std::clamp(size, 1u, EXPRESSION_MAXIMUM_DIGITS / 8);
    bits = std::min(bits, EXPRESSION_MAXIMUM_DIGITS);
    if (radix == 16)
        return bits ? (bits + 3) / 4 : 2 * size;
    if (radix == 2)
        return bits ? bits : 8 * size;
    for (const Widths& row : Fixed)
        if (row.radix == radix)
            switch (size) {
            case 1: return row.one;
            case 2: return row.two;
            case 4: return row.four;
            case 8: return row.eight;
            }
    return 0;
}

} // namespace

QString ExpressionType::TypeToString(bool byteWord) const
{
    switch (m_type) {
    case Boolean: return QStringLiteral("boolean");
    case String: return QStringLiteral("string");
    case Marker: return QStringLiteral("marker");
    case Float: return m_sizeInBytes == 4 ? QStringLiteral("float") : QStringLiteral("double");
    default: break;
    }
    if (byteWord && m_type == Signed && m_sizeInBytes == 1)
        return QStringLiteral("byte");
    for (const NamedType& row : NamedTypes)
        if (row.type == m_type && row.size == m_sizeInBytes)
            return QLatin1String(row.name);
    return QStringLiteral("unknown");
}

QString ExpressionType::toStr(int radix, bool unsignedView, bool asChar, const char* format) const
{
    switch (m_type) {
    case Boolean: return getBoolean() ? QStringLiteral("true") : QStringLiteral("false");
    case String: return m_text;
    case Marker: return m_marker ? m_marker->getValueAsString() : QString();
    case Signed:
    case Unsigned:
    case Float: break;
    default: return {};
    }
    if (asChar) {
        uint16_t code = uint16_t(m_bits);
        if (code >= 0x20 && code <= 0x7E)
            return QString(QChar(code));
        return QStringLiteral("\\u%1").arg(code, 4, 16, QLatin1Char('0'));
    }
    if (m_type == Signed && radix == 10 && !unsignedView)
        return QString::number(getInteger());
    if (m_type == Float && radix == 10)
        return QString::fromUtf8(toStringFromDouble(getFloating(), format ? format : "%g"));

    QString digits = QLatin1String(toStringFromuint64(getUInteger(), radix));
    if (unsigned width = digitsFor(radix, m_sizeInBytes, m_sizeInBits)) {
        if (radix != 10)
            digits = digits.rightJustified(width, u'0');
        digits = digits.right(width);
    }
    const char* prefix = radix == 16 ? "0x" : radix == 8 ? "0" : radix == 2 ? "0b" : "";
    return QLatin1String(prefix) + digits;
}
