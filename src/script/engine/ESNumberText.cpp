#include "script/engine/ESNumberText.h"

#include "script/engine/ESValue.h"

#include <QByteArray>
#include <charconv>

namespace {

// Whether the number, which is known to be beyond the range, is a large one.
bool isLarge(const QByteArray& text)
{
    qsizetype exponent = text.indexOf('e') >= 0 ? text.indexOf('e') : text.indexOf('E');
    if (exponent >= 0 && text.mid(exponent + 1).startsWith('-'))
        return false;
    // Without an exponent, or with a positive one, only the digits before the point can be too many; with
    // enough zeros behind the point the number is small in spite of them.
    qsizetype point = text.indexOf('.');
    QByteArray whole = text.left(point >= 0 ? point : exponent >= 0 ? exponent : text.size());
    return whole.count('0') < whole.size() || exponent >= 0;
}

} // namespace

bool decimalToNumber(QStringView view, double& number)
{
    QByteArray text = view.toLatin1();
    if (text.isEmpty() || !((text[0] >= '0' && text[0] <= '9') || text[0] == '.'))
        return false;
    auto [end, status] = std::from_chars(text.constBegin(), text.constEnd(), number);
    if (end != text.constEnd() || (status != std::errc() && status != std::errc::result_out_of_range))
        return false;
    if (status == std::errc::result_out_of_range)
        number = isLarge(text) ? Infinity : 0;
    return true;
}
