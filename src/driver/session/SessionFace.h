// What a session tells whoever watches it: a terminal shows it, an editor sends it on as events. Nothing in
// a session or in its script console writes to a stream by itself.
#pragma once

#include <QString>
#include <QStringList>

#include <string_view>

class SessionFace {
public:
    virtual ~SessionFace() = default;

    // Work that goes on. -1 leaves `done` or `total` as it was, and so does null for the label or the unit; a
    // label starts a new piece of work, which ends when `done` reaches the total.
    virtual void progress(int done, int total, const char* label, const char* unit) = 0;
    // The download is done: one line that sums it up.
    virtual void summary(const QString&) {}
    // A line about what the session does.
    virtual void message(const QString& text) = 0;
    // A failure that does not end the session; without "warning: " and newline.
    virtual void warning(const QString& text) = 0;
    // What a script writes, in UTF-8. Throws HException when it cannot be written.
    virtual void output(std::string_view text) = 0;
    // What a debug command shows, a text for each line. Empty ones are left out.
    virtual void showLines(const QStringList& lines) = 0;
};
