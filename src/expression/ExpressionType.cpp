#include "expression/ExpressionType.h"

#include "support/Numbers.h"

#include <bit>
#include <cmath>
#include <limits>

namespace {

// Brings digits of a radix into the form in which the number conversions know them.
std::string withPrefix(const QString& text, int radix)
{
    QString digits = text.trimmed();
    QString sign;
    if (digits.startsWith(u'-') || digits.startsWith(u'+')) {
        sign = digits.left(1);
        digits.remove(0, 1);
    }
    if (digits.startsWith(QLatin1String("0x")) || digits.startsWith(QLatin1String("0b")))
        return (sign + digits).toStdString();
    qsizetype zeros = 0;
    while (zeros < digits.size() - 1 && digits[zeros] == u'0')
        ++zeros;
    digits.remove(0, zeros);
    const char* prefix = radix == 16 ? "0x" : radix == 2 ? "0b" : radix == 8 ? "0" : "";
    return (sign + QLatin1String(prefix) + digits).toStdString();
}

} // namespace

ExpressionType::ExpressionType(bool value) : m_type(Boolean), m_bits(value), m_sizeInBytes(0) {}

ExpressionType::ExpressionType(long long value, unsigned sizeInBytes, unsigned sizeInBits)
    : m_type(Signed), m_bits(uint64_t(value)), m_sizeInBytes(sizeInBytes), m_sizeInBits(sizeInBits)
{
}

ExpressionType::ExpressionType(unsigned long long value, unsigned sizeInBytes, unsigned sizeInBits)
    : m_type(Unsigned), m_bits(value), m_sizeInBytes(sizeInBytes), m_sizeInBits(sizeInBits)
{
}

ExpressionType::ExpressionType(double value, unsigned sizeInBytes)
    : m_type(Float), m_bits(std::bit_cast<uint64_t>(value)), m_sizeInBytes(sizeInBytes)
{
}

ExpressionType::ExpressionType(const char* text, unsigned sizeInBytes)
    : ExpressionType(QString::fromUtf8(text), sizeInBytes)
{
}

ExpressionType::ExpressionType(const QString& text, unsigned sizeInBytes)
    : m_type(String), m_sizeInBytes(sizeInBytes), m_text(text)
{
}

ExpressionType::ExpressionType(std::unique_ptr<MarkerType> marker)
    : m_type(Marker), m_marker(std::move(marker))
{
}

ExpressionType::ExpressionType(const ExpressionType& like, const QString& text, int radix)
    : m_type(like.m_type), m_sizeInBytes(like.m_sizeInBytes), m_sizeInBits(like.m_sizeInBits)
{
    switch (m_type) {
    case Boolean: m_bits = text == QLatin1String("true"); break;
    case Signed: m_bits = uint64_t(fromStringToint64(withPrefix(text, radix).c_str())); break;
    case Unsigned: m_bits = fromStringTouint64(withPrefix(text, radix).c_str()); break;
    case String: m_text = text; break;
    case Marker:
        m_marker = like.m_marker;
        if (m_marker)
            m_marker->setValue(text);
        break;
    case Float: m_bits = std::bit_cast<uint64_t>(fromStringToDouble(text.toStdString().c_str())); break;
    case None: break;
    }
}

void ExpressionType::setType(Type type)
{
    if (type == Float && (m_type == Boolean || m_type == Signed || m_type == Unsigned)) {
        double value = m_sizeInBytes == 4 ? double(float(m_bits)) : double(m_bits);
        m_bits = std::bit_cast<uint64_t>(value);
    }
    m_type = type;
}

uint64_t ExpressionType::zeroExtended() const
{
    switch (m_sizeInBytes) {
    case 1: return uint8_t(m_bits);
    case 2: return uint16_t(m_bits);
    case 4: return uint32_t(m_bits);
    default: return m_bits;
    }
}

int64_t ExpressionType::getInteger() const
{
    switch (m_type) {
    case Boolean: return lowByte();
    case Signed:
    case Unsigned:
        switch (m_sizeInBytes) {
        case 1: return int8_t(m_bits);
        case 2: return int16_t(m_bits);
        case 4: return int32_t(m_bits);
        default: return int64_t(m_bits);
        }
    case Float: {
        double value = std::bit_cast<double>(m_bits);
        constexpr double Beyond = 9223372036854775808.0;
        if (std::isnan(value))
            return 0;
        if (value >= Beyond)
            return std::numeric_limits<int64_t>::max();
        return value < -Beyond ? std::numeric_limits<int64_t>::min() : int64_t(value);
    }
    default: return 0;
    }
}

uint64_t ExpressionType::getUInteger() const
{
    switch (m_type) {
    case Boolean: return lowByte();
    case Signed:
    case Unsigned: return zeroExtended();
    case Float:
        if (m_sizeInBytes == 4)
            return std::bit_cast<uint32_t>(float(std::bit_cast<double>(m_bits)));
        return m_sizeInBytes == 8 ? m_bits : 0;
    default: return 0;
    }
}

double ExpressionType::getFloating() const
{
    switch (m_type) {
    case Boolean: return lowByte();
    case Signed: return double(getInteger());
    case Unsigned: return double(zeroExtended());
    case Float: return std::bit_cast<double>(m_bits);
    default: return 0;
    }
}

void ExpressionType::evaluate()
{
    if (m_type == Marker && m_marker)
        *this = m_marker->getValue();
}

bool ExpressionType::equiv(const ExpressionType& other) const
{
    if (m_type != other.m_type)
        return false;
    switch (m_type) {
    case Boolean: return lowByte() == other.lowByte();
    case Signed:
    case Unsigned: return m_sizeInBytes == other.m_sizeInBytes && zeroExtended() == other.zeroExtended();
    case String: return m_text == other.m_text;
    case Marker: return m_marker && other.m_marker && m_marker->equiv(other.m_marker.get());
    case Float: return m_sizeInBytes == other.m_sizeInBytes && getFloating() == other.getFloating();
    case None: return true;
    }
    return false;
}
