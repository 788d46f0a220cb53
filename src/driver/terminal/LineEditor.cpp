#include "driver/terminal/LineEditor.h"

#include "driver/terminal/TerminalText.h"

#include <algorithm>
#include <utility>

using namespace TerminalText;

namespace {

constexpr qsizetype MaximumHistory = 1000;

enum KeyCode {
    BackspaceKey = 8,
    TabKey = 9,
    NewlineKey = 10,
    ReturnKey = 13,
    EscapeKey = 27,
    UpKey = 72,
    LeftKey = 75,
    RightKey = 77,
    DownKey = 80,
    DeleteKey = 127,
    ExtendedKey = 224,
};

} // namespace

QString LineEditor::take()
{
    m_cursor = 0;
    return std::exchange(m_text, QString());
}

void LineEditor::dropFirst(qsizetype count)
{
    m_text.remove(0, count);
    m_cursor = std::max<qsizetype>(m_cursor - count, 0);
}

void LineEditor::remember(const QString& line)
{
    if (line.isEmpty())
        return;
    if (m_history.isEmpty() || m_history.last() != line)
        m_history.append(line);
    if (m_history.size() > MaximumHistory)
        m_history.removeFirst();
    m_historyIndex = m_history.size();
}

void LineEditor::onText(std::string_view text)
{
    QString inserted = fromBytes(text);
    m_escape = false;
    m_owner.typed();
    m_text.insert(m_cursor, inserted);
    m_cursor += inserted.size();
    QString rest = m_text.mid(m_cursor);
    m_owner.draw(inserted + rest + repeated("\b", columns(rest)));
}

// In the words of the key table. Home and End are as many steps as it takes.
void LineEditor::onKey(KeyDecoder::Key key)
{
    auto cursor = [this](int code) {
        keyPressed(EscapeKey);
        keyPressed(code);
    };
    switch (key) {
    case KeyDecoder::Key::Up: cursor(UpKey); break;
    case KeyDecoder::Key::Down: cursor(DownKey); break;
    case KeyDecoder::Key::Left: cursor(LeftKey); break;
    case KeyDecoder::Key::Right: cursor(RightKey); break;
    case KeyDecoder::Key::Home:
        while (m_cursor > 0)
            cursor(LeftKey);
        break;
    case KeyDecoder::Key::End:
        while (m_cursor < m_text.size())
            cursor(RightKey);
        break;
    case KeyDecoder::Key::Delete: keyPressed(DeleteKey); break;
    case KeyDecoder::Key::Backspace: keyPressed(BackspaceKey); break;
    case KeyDecoder::Key::Enter: keyPressed(NewlineKey); break;
    case KeyDecoder::Key::Tab: keyPressed(TabKey); break;
    case KeyDecoder::Key::Kill: setText(QString()); break;
    case KeyDecoder::Key::EndOfFile:
        if (m_text.isEmpty())
            m_owner.endOfFile();
        break;
    }
}

void LineEditor::keyPressed(int key)
{
    if (m_escape) {
        m_escape = false;
        cursorKey(key);
        return;
    }
    switch (key) {
    case EscapeKey:
    case ExtendedKey: m_escape = true; break;
    case ReturnKey:
    case NewlineKey: m_owner.lineCompleted(); break;
    case TabKey: m_owner.completionRequested(); break;
    case BackspaceKey:
        if (m_cursor > 0) {
            qsizetype start = characterBefore(m_cursor);
            m_owner.draw(QStringLiteral("\b"));
            eraseAt(start);
        }
        break;
    case DeleteKey:
        if (m_cursor < m_text.size())
            eraseAt(m_cursor);
        break;
    default:
        if (key >= 32 && key < DeleteKey) {
            char character = char(key);
            onText({&character, 1});
        }
        break;
    }
}

// One character, with the screen's cursor standing where it begins.
void LineEditor::eraseAt(qsizetype start)
{
    m_text.remove(start, characterBehind(start) - start);
    m_cursor = start;
    QString rest = m_text.mid(start);
    m_owner.draw(rest + QLatin1Char(' ') + repeated("\b", columns(rest) + 1));
}

void LineEditor::cursorKey(int key)
{
    switch (key) {
    case UpKey:
        if (m_historyIndex > 0)
            recall(m_historyIndex - 1);
        break;
    case DownKey:
        if (m_historyIndex < m_history.size())
            recall(m_historyIndex + 1);
        break;
    case LeftKey: moveLeft(); break;
    case RightKey: moveRight(); break;
    }
}

void LineEditor::recall(qsizetype index)
{
    m_historyIndex = index;
    setText(m_history.value(index));
}

void LineEditor::moveLeft()
{
    if (m_cursor == 0)
        return;
    m_cursor = characterBefore(m_cursor);
    m_owner.draw(QStringLiteral("\b"));
}

void LineEditor::moveRight()
{
    if (m_cursor == m_text.size())
        return;
    qsizetype end = characterBehind(m_cursor);
    m_owner.draw(m_text.mid(m_cursor, end - m_cursor));
    m_cursor = end;
}

void LineEditor::setText(const QString& bytes)
{
    clearFromScreen();
    m_text = bytes;
    m_cursor = bytes.size();
    m_owner.draw(bytes);
}

void LineEditor::replaceToCursor(qsizetype start, const QString& bytes)
{
    clearFromScreen();
    m_text.replace(start, m_cursor - start, bytes);
    m_cursor = start + bytes.size();
    redraw();
}

void LineEditor::clearFromScreen()
{
    m_owner.draw(m_text.mid(m_cursor) + repeated("\b \b", columns(m_text)));
}

void LineEditor::redraw()
{
    m_owner.draw(m_text + repeated("\b", columns(QStringView(m_text).mid(m_cursor))));
}

qsizetype LineEditor::characterBefore(qsizetype at) const
{
    do
        --at;
    while (at > 0 && isContinuation(m_text[at]));
    return at;
}

qsizetype LineEditor::characterBehind(qsizetype at) const
{
    do
        ++at;
    while (at < m_text.size() && isContinuation(m_text[at]));
    return at;
}
