#include "driver/dap/LogText.h"

#include "driver/dap/RequestFailure.h"
#include "driver/dap/limits.h"

LogText::LogText(const QString& text)
{
    QString plain;
    auto add = [this](const QString& piece, bool isExpression) {
        if (m_pieces.size() == size_t(DapLimits::LogPieces))
            throw RequestFailure("the log message has too many expressions");
        m_pieces.push_back({piece, isExpression});
    };
    for (qsizetype at = 0; at < text.size(); ++at) {
        QChar c = text[at];
        bool escapes = c == QLatin1Char('\\') && at + 1 < text.size() &&
                       (text[at + 1] == QLatin1Char('{') || text[at + 1] == QLatin1Char('}'));
        if (escapes || c != QLatin1Char('{')) {
            if (!escapes && c == QLatin1Char('}'))
                throw RequestFailure("the log message has a \"}\" without a \"{\"");
            plain += escapes ? text[++at] : c;
            continue;
        }
        qsizetype start = at + 1;
        for (int depth = 1; depth > 0;) {
            if (++at == text.size())
                throw RequestFailure("the log message has a \"{\" without a \"}\"");
            depth += text[at] == QLatin1Char('{') ? 1 : text[at] == QLatin1Char('}') ? -1 : 0;
        }
        QString expression = text.mid(start, at - start).trimmed();
        if (expression.isEmpty())
            throw RequestFailure("the log message has an empty expression");
        if (!plain.isEmpty())
            add(plain, false);
        plain.clear();
        add(expression, true);
    }
    if (!plain.isEmpty())
        add(plain, false);
}

QString LogText::expanded(const std::function<QString(const QString&)>& value) const
{
    QString text;
    for (const Piece& piece : m_pieces)
        text += piece.isExpression ? value(piece.text) : piece.text;
    return text;
}
