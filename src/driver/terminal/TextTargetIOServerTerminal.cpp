#include "driver/terminal/TextTargetIOServerTerminal.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/session/Interrupt.h"
#include "driver/session/StandardOutput.h"
#include "driver/terminal/RawTerminal.h"
#include "target/TargetInterface.h"

#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr int KeyPollMilliseconds = 5;
constexpr size_t ReadPiece = 64 * 1024;
constexpr qsizetype MaxBuffered = 1024 * 1024;       // characters that wait for the program
constexpr qsizetype MaxPipedLine = 64 * 1024 * 1024; // characters; a longer line is cut
constexpr qsizetype MaxHistory = 1000;
// A program that asks again within so many cycles does nothing else.
constexpr unsigned IdleCycles = 200;
constexpr unsigned IdleRequests = 100;
constexpr int IdleMilliseconds = 1;

enum KeyCode {
    BackspaceKey = 8,
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

bool isContinuation(QChar c)
{
    return (c.unicode() & 0xC0) == 0x80;
}

// Characters of a text whose bytes may be UTF-8.
qsizetype columns(QStringView text)
{
    return std::count_if(text.begin(), text.end(), [](QChar c) { return !isContinuation(c); });
}

QString repeated(const char* text, qsizetype count)
{
    return QString::fromLatin1(text).repeated(count);
}

QString fromBytes(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), qsizetype(bytes.size()));
}

// A text of the tool's own, in the locale's encoding.
QString asBytes(const QString& text)
{
    QByteArray bytes = text.toLocal8Bit();
    return fromBytes({bytes.constData(), size_t(bytes.size())});
}

} // namespace

// A look at the keyboard costs time that a program on the simulator could have, so the timer is as slow as
// a typist does not notice. A program that asks for input does not wait for it.
TextTargetIOServerTerminal::TextTargetIOServerTerminal(const QStringList& arguments, int input)
    : m_server(std::make_unique<TargetIOServer>(this, this)), m_keyTimer(new QTimer(this)), m_input(input),
      m_echo(isatty(input))
{
    m_keyTimer->setObjectName(QStringLiteral("text-ioserver-timer"));
    QObject::connect(m_keyTimer, &QTimer::timeout, this, &TextTargetIOServerTerminal::poll);
    m_keyTimer->start(KeyPollMilliseconds);
    m_server->init(arguments);
    if (m_echo) {
        m_rawTerminal = std::make_unique<RawTerminal>(input);
        m_decoder.setKeys(m_rawTerminal->eraseKey(), m_rawTerminal->killKey(), m_rawTerminal->endOfFileKey());
    }
}

TextTargetIOServerTerminal::~TextTargetIOServerTerminal() = default;

// --- Output -----------------------------------------------------------------------------------

// A failure ends the run. It is kept, since a caller deep in the service of a request has no use for it.
void TextTargetIOServerTerminal::write(const QString& text)
{
    if (m_outputFailure)
        return;
    try {
        QByteArray bytes = text.toLatin1();
        StandardOutput::write(std::string_view(bytes.constData(), size_t(bytes.size())));
    } catch (const HException& failure) {
        m_outputFailure = failure;
        m_exited = true;
        stopProgram();
    }
}

void TextTargetIOServerTerminal::stopProgram()
{
    try {
        if (debugger)
            debugger->stop();
    } catch (const HException&) { // what went wrong first is what the user is told
    }
}

void TextTargetIOServerTerminal::show(const QString& text)
{
    if (m_echo && !text.isEmpty())
        write(text);
}

void TextTargetIOServerTerminal::addOutput(const QString& text)
{
    m_idleRequests = 0;
    write(text);
}

void TextTargetIOServerTerminal::exitOccurred(int code)
{
    m_exitCode = code;
    m_exited = true;
    if (debugger)
        debugger->clear();
}

void TextTargetIOServerTerminal::setPromptString(const QString& prompt)
{
    if (!m_echo)
        return;
    m_prompt = asBytes(prompt);
    showPromptString();
}

void TextTargetIOServerTerminal::showPromptString()
{
    if (!m_prompt.isEmpty())
        write(m_prompt);
}

void TextTargetIOServerTerminal::showOutputWithPrompt(const QStringList& lines)
{
    if (!m_prompt.isEmpty())
        write(repeated("\b \b", columns(m_prompt)));
    for (const QString& line : lines)
        if (!line.isEmpty())
            write(asBytes(line) + QLatin1Char('\n'));
    showPromptString();
}

// --- Input for the program --------------------------------------------------------------------

QString TextTargetIOServerTerminal::getInputLine()
{
    if (inputLines() == 0)
        return QString();
    QString line = m_inputLines.takeFirst().mid(m_taken);
    m_taken = 0;
    m_buffered -= std::min(m_buffered, line.size() + 1);
    if (m_echo && !line.isEmpty()) {
        if (m_history.isEmpty() || m_history.last() != line)
            m_history.append(line);
        if (m_history.size() > MaxHistory)
            m_history.removeFirst();
        m_historyIndex = m_history.size();
    }
    return line;
}

QChar TextTargetIOServerTerminal::getInputChar()
{
    QString& first = m_inputLines.first();
    if (m_taken < first.size()) {
        QChar character = first[m_taken++];
        if (m_echo && inputLines() == 0) { // of the line that is being edited
            first.remove(0, m_taken);
            m_taken = 0;
            m_cursor = std::max<qsizetype>(m_cursor - 1, 0);
        }
        return character;
    }
    if (inputLines() == 0)
        return QChar();
    m_buffered -= std::min(m_buffered, first.size() + 1);
    m_inputLines.removeFirst();
    m_taken = 0;
    return QLatin1Char('\n');
}

bool TextTargetIOServerTerminal::inputCharAvailable() const
{
    return inputLines() > 0 || m_taken < m_inputLines.first().size();
}

void TextTargetIOServerTerminal::inputRequested()
{
    poll();
    if (!inputCharAvailable())
        waitForInput();
}

void TextTargetIOServerTerminal::waitForInput()
{
    unsigned now = m_target ? m_target->cycleCount() : 0;
    bool idle = now != 0 && now - m_lastRequest < IdleCycles;
    m_lastRequest = now;
    m_idleRequests = idle ? m_idleRequests + 1 : 0;
    if (m_idleRequests < IdleRequests || Interrupt::requested())
        return;
    m_idleRequests = IdleRequests;
    pollfd input = {m_inputClosed ? -1 : m_input, POLLIN, 0};
    ::poll(&input, 1, IdleMilliseconds);
}

// --- Standard input ---------------------------------------------------------------------------

// Lines wait in a limited number; the rest stays in the pipe.
bool TextTargetIOServerTerminal::bufferFull() const
{
    return inputLines() > 0 && m_buffered >= MaxBuffered;
}

void TextTargetIOServerTerminal::poll()
{
    while (!m_inputClosed && !bufferFull()) {
        if (m_rawTerminal && !m_rawTerminal->ready())
            return;
        pollfd input = {m_input, POLLIN, 0};
        if (::poll(&input, 1, 0) <= 0)
            return;
        char bytes[ReadPiece];
        ssize_t count = read(m_input, bytes, sizeof bytes);
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            return;
        if (count <= 0) {
            endInput();
            return;
        }
        std::string_view text(bytes, size_t(count));
        if (m_echo)
            m_decoder.decode(text, *this);
        else
            addPipedText(text);
    }
}

void TextTargetIOServerTerminal::endInput()
{
    m_inputEnded = m_inputClosed = true;
    m_keyTimer->stop();
    if (!m_echo && !edited().isEmpty())
        m_inputLines.append(QString());
}

void TextTargetIOServerTerminal::addPipedText(std::string_view bytes)
{
    while (!bytes.empty()) {
        size_t end = bytes.find('\n');
        edited().append(fromBytes(bytes.substr(0, end)));
        bool complete = end != std::string_view::npos;
        if (complete && edited().endsWith(QLatin1Char('\r')) &&
            !(inputLines() == 0 && m_taken == edited().size()))
            edited().chop(1);
        if (complete || edited().size() >= MaxPipedLine) {
            m_buffered += edited().size() + 1;
            m_inputLines.append(QString());
        }
        bytes.remove_prefix(complete ? end + 1 : bytes.size());
    }
}

// --- Keyboard and line editor -----------------------------------------------------------------

void TextTargetIOServerTerminal::onText(std::string_view text)
{
    QString inserted = fromBytes(text);
    m_escape = false;
    m_inputEnded = false;
    edited().insert(m_cursor, inserted);
    m_cursor += inserted.size();
    QString rest = edited().mid(m_cursor);
    show(inserted + rest + repeated("\b", columns(rest)));
}

// In the words of the key table. Home and End are as many steps as it takes.
void TextTargetIOServerTerminal::onKey(KeyDecoder::Key key)
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
        while (m_cursor < edited().size())
            cursor(RightKey);
        break;
    case KeyDecoder::Key::Delete: keyPressed(DeleteKey); break;
    case KeyDecoder::Key::Backspace: keyPressed(BackspaceKey); break;
    case KeyDecoder::Key::Enter: keyPressed(NewlineKey); break;
    case KeyDecoder::Key::Kill: setInputString(QString()); break;
    case KeyDecoder::Key::EndOfFile: m_inputEnded = edited().isEmpty(); break;
    }
}

void TextTargetIOServerTerminal::keyPressed(int key)
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
    case NewlineKey: completeLine(); break;
    case BackspaceKey:
        if (m_cursor > 0) {
            qsizetype start = characterBefore(m_cursor);
            show(QStringLiteral("\b"));
            eraseAt(start);
        }
        break;
    case DeleteKey:
        if (m_cursor < edited().size())
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

void TextTargetIOServerTerminal::completeLine()
{
    m_buffered += edited().size() + 1;
    m_inputLines.append(QString());
    m_cursor = 0;
    show(QStringLiteral("\n"));
    if (m_echo)
        showPromptString();
}

// One character, with the screen's cursor standing where it begins.
void TextTargetIOServerTerminal::eraseAt(qsizetype start)
{
    edited().remove(start, characterBehind(start) - start);
    m_cursor = start;
    QString rest = edited().mid(start);
    show(rest + QLatin1Char(' ') + repeated("\b", columns(rest) + 1));
}

void TextTargetIOServerTerminal::cursorKey(int key)
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

void TextTargetIOServerTerminal::recall(qsizetype index)
{
    m_historyIndex = index;
    setInputString(m_history.value(index));
}

void TextTargetIOServerTerminal::moveLeft()
{
    if (m_cursor == 0)
        return;
    m_cursor = characterBefore(m_cursor);
    show(QStringLiteral("\b"));
}

void TextTargetIOServerTerminal::moveRight()
{
    if (m_cursor == edited().size())
        return;
    qsizetype end = characterBehind(m_cursor);
    show(edited().mid(m_cursor, end - m_cursor));
    m_cursor = end;
}

void TextTargetIOServerTerminal::setInputString(const QString& text)
{
    show(edited().mid(m_cursor) + repeated("\b \b", columns(edited())) + text);
    edited() = text;
    m_cursor = text.size();
}

qsizetype TextTargetIOServerTerminal::characterBefore(qsizetype at) const
{
    do
        --at;
    while (at > 0 && isContinuation(edited()[at]));
    return at;
}

qsizetype TextTargetIOServerTerminal::characterBehind(qsizetype at) const
{
    do
        ++at;
    while (at < edited().size() && isContinuation(edited()[at]));
    return at;
}
