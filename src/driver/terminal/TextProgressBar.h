// The progress line of a session on standard output: a label, a bar, a percentage; at its end one line
// that tells time and rate.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <string>

class TextProgressBar : public QObject {
    Q_OBJECT
public:
    explicit TextProgressBar(QObject* parent = nullptr) : QObject(parent) {}

    // A line of text above the bar.
    void message(const QString& text);
    // A label starts a new bar; a null label or unit, and -1 for a number, leave what was there. The
    // bar closes when `done` reaches the total. Without `bar` only its closing line is written.
    void progress(int done, int total, const char* label, const char* unit, bool bar = true);
    void clearLine();
    void displayLine();
    // Clears the line on a terminal when something stands on it; the bar comes back with its next step.
    void leaveLine();

private:
    std::string clearedLine() const;
    void close();

    bool m_bar = true; // is drawn
    int m_total = 0;
    int m_done = 0;
    QString m_label;
    QString m_unit;
    QElapsedTimer m_time;
    std::string m_drawn; // what stands on the line, so that nothing is drawn twice
};
