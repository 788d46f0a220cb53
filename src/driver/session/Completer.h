// What may stand where the cursor is in a line of the prompt.
#pragma once

#include <QString>
#include <QStringList>

class Completer {
public:
    struct Completion {
        qsizetype start = 0;    // where the word begins that is completed; it ends at the cursor
        QStringList candidates; // in the order in which they are shown, each in place of the whole word
    };

    virtual ~Completer() = default;
    // Nothing is thrown: a completion that cannot be made has no candidates.
    virtual Completion complete(const QString& line, qsizetype cursor) = 0;
};
