// The text of a log point, with expressions in braces: "i is {i}". A backslash in front of a brace takes it
// as it is; braces inside an expression must pair.
#pragma once

#include <QString>

#include <functional>
#include <vector>

class LogText {
public:
    LogText() = default;
    // Throws RequestFailure for braces that do not pair, and for empty ones.
    explicit LogText(const QString& text);

    bool isEmpty() const { return m_pieces.empty(); }
    // The text with each expression replaced by what `value` makes of it.
    QString expanded(const std::function<QString(const QString& expression)>& value) const;

private:
    struct Piece {
        QString text;
        bool isExpression;
    };
    std::vector<Piece> m_pieces;
};
