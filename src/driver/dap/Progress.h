// Work that goes on, as the editor shows it: one bar for each piece, with a button that cancels it. An editor
// that has no bars gets a line of output for each piece.
#pragma once

#include <QString>

class Messages;

class Progress {
public:
    explicit Progress(Messages& messages) : m_messages(messages) {}
    void setBars(bool on) { m_bars = on; }
    void setRequest(int seq) { m_request = seq; }

    // As SessionFace::progress.
    void show(int done, int total, const char* label, const char* unit);
    // Takes away what is still shown.
    void end();
    // Whether a bar that was shown has this number.
    bool has(const QString& id) const { return m_open && id == this->id(); }

private:
    QString id() const { return QStringLiteral("work%1").arg(m_number); }

    Messages& m_messages;
    bool m_bars = false;
    bool m_open = false;
    int m_request = 0;
    int m_number = 0;
    int m_done = 0;
    int m_total = 0;
    int m_percent = 0;
};
