#include "driver/terminal/TextProgressBar.h"

#include "driver/terminal/StandardOutput.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int DefaultColumns = 80;

// Of the terminal as it is now; of anything else always the same.
int columns()
{
    winsize size = {};
    if (!isatty(STDOUT_FILENO) || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 2)
        return DefaultColumns;
    return size.ws_col;
}

} // namespace

void TextProgressBar::message(const QString& text)
{
    std::string line = m_bar ? clearedLine() : std::string();
    m_drawn.clear();
    StandardOutput::write(line + text.toLocal8Bit().toStdString() + "\n");
    displayLine();
}

void TextProgressBar::progress(int done, int total, const char* label, const char* unit, bool bar)
{
    m_bar = bar;
    if (label) {
        m_label = QString::fromUtf8(label);
        m_time.start();
    }
    if (unit)
        m_unit = QString::fromUtf8(unit);
    if (total != -1)
        m_total = total;
    if (done != -1)
        m_done = done;
    displayLine();
    if (done == m_total)
        close();
}

std::string TextProgressBar::clearedLine() const
{
    return "\r" + std::string(size_t(columns() - 1), ' ') + "\r";
}

void TextProgressBar::clearLine()
{
    if (!m_drawn.empty())
        StandardOutput::write(clearedLine());
    m_drawn.clear();
}

// A log file gets a line for each step that shows, not one for each call.
void TextProgressBar::displayLine()
{
    if (m_label.isEmpty() || !m_bar)
        return;
    const int width = columns();
    const int barWidth = std::max(0, width - int(m_label.size()) - 10);
    double part = m_done == 0 || m_total == 0 ? 0.0 : double(m_done) / m_total;
    part = std::clamp(part, 0.0, 1.0);
    int stars = int(part * barWidth);
    std::string line = "\r" + m_label.toLocal8Bit().toStdString() + " [" + std::string(size_t(stars), '*') +
                       std::string(size_t(barWidth - stars), '.') + "] " +
                       QString::asprintf("%3d%% ", int(part * 100)).toStdString();
    if (isatty(STDOUT_FILENO)) // a line that wraps could not be drawn again in its place
        line.resize(std::min(line.size(), size_t(width)));
    if (line == m_drawn)
        return;
    StandardOutput::write(line);
    m_drawn = line;
}

void TextProgressBar::leaveLine()
{
    if (!m_drawn.empty() && isatty(STDOUT_FILENO))
        clearLine();
}

void TextProgressBar::close()
{
    if (m_label.isEmpty())
        return;
    double elapsed = double(m_time.elapsed());
    QString line = m_label;
    if (elapsed > 1000)
        line += QString::asprintf(" completed in %0.1f seconds", elapsed / 1000);
    else
        line += QString::asprintf(" completed in %0.1f milliseconds", elapsed);
    if (!m_unit.isEmpty()) {
        double seconds = std::max(elapsed, 1.0) / 1000;
        line += QString::asprintf(" (%0.1f ", m_done / seconds) + m_unit + QLatin1String("/sec)");
    }
    m_label.clear();
    m_unit.clear();
    m_drawn.clear();
    StandardOutput::write((m_bar ? clearedLine() : std::string()) + line.toLocal8Bit().toStdString() + "\n");
}
