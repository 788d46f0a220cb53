#include "driver/dap/EditorConsole.h"

#include "driver/dap/Messages.h"

namespace {

constexpr int PauseMilliseconds = 20;
constexpr qsizetype PieceBytes = 4096;
constexpr qsizetype MaximumLines = 10000; // that wait for the program

} // namespace

EditorConsole::EditorConsole(Messages& messages, const QStringList& arguments,
                             std::function<void(int)> exited)
    : m_messages(messages), m_server(this, this), m_exited(std::move(exited))
{
    m_timer.setSingleShot(true);
    QObject::connect(&m_timer, &QTimer::timeout, this, &EditorConsole::flush);
    m_server.init(arguments);
}

// A character that is cut in two by a pause waits in the decoder for its rest.
void EditorConsole::flush()
{
    m_timer.stop();
    if (m_unsent.isEmpty())
        return;
    QString text = m_decoder.decode(m_unsent);
    m_unsent.clear();
    m_messages.output("stdout", text);
}

void EditorConsole::addOutput(const QString& text)
{
    m_unsent += text.toLatin1();
    if (m_unsent.size() >= PieceBytes)
        flush();
    else if (!m_timer.isActive())
        m_timer.start(PauseMilliseconds);
}

void EditorConsole::addInput(const QString& line)
{
    if (m_lines.size() < MaximumLines)
        m_lines.append(QString::fromLatin1(line.toUtf8()));
    m_reading = false;
}

QString EditorConsole::getInputLine()
{
    return m_lines.isEmpty() ? QString() : m_lines.takeFirst();
}

QChar EditorConsole::getInputChar()
{
    if (m_lines.isEmpty())
        return QChar();
    QString& line = m_lines.first();
    if (line.isEmpty()) {
        m_lines.removeFirst();
        return QLatin1Char('\n');
    }
    QChar character = line[0];
    line.remove(0, 1);
    return character;
}

void EditorConsole::inputRequested()
{
    m_reading = true;
    flush();
}

void EditorConsole::errorOccurred(const char* text)
{
    m_messages.output("important", QString::fromLocal8Bit(text) + QLatin1Char('\n'));
}

void EditorConsole::exitOccurred(int status)
{
    flush();
    m_exited(status);
}
