// A session's face on a terminal or in a log file: progress as a bar and messages above it on standard
// output, warnings on standard error.
#pragma once

#include "driver/session/SessionFace.h"
#include "driver/terminal/TextProgressBar.h"

class TextTargetIOServerTerminal;

class TerminalFace : public SessionFace {
public:
    // The console of the running program, where lines stand above the prompt; null while there is none.
    void setConsole(TextTargetIOServerTerminal* console) { m_console = console; }

    void progress(int done, int total, const char* label, const char* unit) override;
    void summary(const QString& text) override;
    void message(const QString& text) override;
    void warning(const QString& text) override;
    void output(std::string_view text) override;
    void showLines(const QStringList& lines) override;

    // How progress is shown: a bar that is redrawn, a line for each step and one that sums up, or not at all.
    enum class Progress { Bar, Lines, None };
    void setProgress(Progress progress) { m_progress = progress; }
    // Takes the bar off a terminal, so that what comes on the other stream stands alone on its line.
    void clearBar() { m_progressBar.leaveLine(); }

private:
    TextProgressBar m_progressBar;
    Progress m_progress = Progress::Bar;
    TextTargetIOServerTerminal* m_console = nullptr;
};
