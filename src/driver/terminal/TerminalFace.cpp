#include "driver/terminal/TerminalFace.h"

#include "driver/terminal/StandardOutput.h"
#include "driver/terminal/TerminalText.h"
#include "driver/terminal/TextTargetIOServerTerminal.h"
#include "support/Warning.h"

void TerminalFace::progress(int done, int total, const char* label, const char* unit)
{
    if (m_progress != Progress::None)
        m_progressBar.progress(done, total, label, unit, m_progress == Progress::Bar);
}

void TerminalFace::summary(const QString& text)
{
    if (m_progress == Progress::Lines)
        StandardOutput::write(text + QLatin1Char('\n'));
}

void TerminalFace::message(const QString& text)
{
    m_progressBar.message(text);
}

void TerminalFace::warning(const QString& text)
{
    m_progressBar.clearLine();
    clearBar();
    printWarning(text);
}

void TerminalFace::output(std::string_view text)
{
    if (m_console) // below which its prompt comes again
        m_console->addOutput(TerminalText::fromBytes(text));
    else
        StandardOutput::write(text);
}

void TerminalFace::showLines(const QStringList& lines)
{
    if (m_console) {
        m_console->showOutputWithPrompt(lines);
        return;
    }
    for (const QString& line : lines)
        if (!line.isEmpty())
            StandardOutput::write(line + QLatin1Char('\n'));
}
