// Text for a terminal as bytes: each QChar of it holds one byte, as Latin-1, so that UTF-8 and any other
// encoding goes through as it came.
#pragma once

#include <QString>

#include <algorithm>
#include <string_view>

namespace TerminalText {

inline bool isContinuation(QChar c)
{
    return (c.unicode() & 0xC0) == 0x80;
}

// Characters of a text whose bytes may be UTF-8.
inline qsizetype columns(QStringView text)
{
    return std::count_if(text.begin(), text.end(), [](QChar c) { return !isContinuation(c); });
}

inline QString repeated(const char* text, qsizetype count)
{
    return QString::fromLatin1(text).repeated(count);
}

inline QString fromBytes(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), qsizetype(bytes.size()));
}

// A text of the tool's own, in the locale's encoding.
inline QString asBytes(const QString& text)
{
    QByteArray bytes = text.toLocal8Bit();
    return fromBytes({bytes.constData(), size_t(bytes.size())});
}

inline QString fromBytesToText(const QString& bytes)
{
    return QString::fromLocal8Bit(bytes.toLatin1());
}

} // namespace TerminalText
