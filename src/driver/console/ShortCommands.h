// The short words of the prompt, each of which stands for a call of a debug command.
//
// A word counts when it is the first of a line, is no name that scripts have defined, and is not followed by
// what makes it part of a script: "(", ".", "[" right behind it, or "=" with or without blanks.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class ShortCommands {
public:
    // Whether scripts have defined a name.
    using IsDefined = std::function<bool(const QString& name)>;

    explicit ShortCommands(IsDefined isDefined) : m_isDefined(std::move(isDefined)) {}

    // The script that a line stands for: the call of a short word, or the line as it is. An empty line is the
    // last call again; empty when there was none. Throws HException "usage: ..." for a word whose
    // arguments make no sense.
    QString translate(const QString& line);

    static QStringList words();
    // A line of help for each.
    static QStringList help();
    // What may follow "info".
    static QStringList topics();

private:
    IsDefined m_isDefined;
    QString m_last;
};
