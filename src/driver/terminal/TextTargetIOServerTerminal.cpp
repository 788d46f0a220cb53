#include "driver/terminal/TextTargetIOServerTerminal.h"

#include "driver/session/Completer.h"
#include "driver/session/Interrupt.h"
#include "driver/terminal/RawTerminal.h"
#include "driver/terminal/StandardOutput.h"
#include "driver/terminal/TerminalText.h"
#include "target/TargetInterface.h"

#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>
#include <utility>

using namespace TerminalText;

namespace {

constexpr int KeyPollMilliseconds = 5;
constexpr size_t ReadPiece = 64 * 1024;
constexpr qsizetype MaximumBuffered = 1024 * 1024;       // characters that wait for the program
constexpr qsizetype MaximumPipedLine = 64 * 1024 * 1024; // characters; a longer line is cut
// A program that asks again within so many cycles does nothing else.
constexpr unsigned IdleCycles = 200;
constexpr unsigned IdleRequests = 100;
constexpr int IdleMilliseconds = 1;

} // namespace

// A look at the keyboard costs time that a program on the simulator could have, so the timer is as slow as
// a typist does not notice. A program that asks for input does not wait for it.
TextTargetIOServerTerminal::TextTargetIOServerTerminal(const QStringList& arguments, Observer& observer,
                                                       int input)
    : m_observer(observer), m_server(std::make_unique<TargetIOServer>(this, this)),
      m_keyTimer(new QTimer(this)), m_input(input), m_echo(isatty(input)), m_editor(*this)
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
        m_observer.outputFailed();
    }
}

void TextTargetIOServerTerminal::draw(const QString& bytes)
{
    if (m_echo && !bytes.isEmpty())
        write(bytes);
}

// The prompt stands below what the program writes.
void TextTargetIOServerTerminal::addOutput(const QString& text)
{
    m_idleRequests = 0;
    if (text.isEmpty())
        return;
    hidePrompt();
    write(text);
    if (!m_prompt.isEmpty()) {
        m_promptHidden = true;
        if (text.endsWith(QLatin1Char('\n')))
            revealPrompt();
    }
}

void TextTargetIOServerTerminal::hidePrompt()
{
    if (m_promptHidden)
        return;
    m_editor.clearFromScreen();
    if (!m_prompt.isEmpty())
        write(repeated("\b \b", columns(m_prompt)));
}

// A key changes what must stand on the screen.
void TextTargetIOServerTerminal::showLineForKeys()
{
    if (!m_promptHidden)
        return;
    write(QStringLiteral("\n"));
    revealPrompt();
}

void TextTargetIOServerTerminal::keyPressed(int key)
{
    showLineForKeys();
    m_editor.keyPressed(key);
}

void TextTargetIOServerTerminal::revealPrompt()
{
    m_promptHidden = false;
    showPromptString();
    m_editor.redraw();
}

void TextTargetIOServerTerminal::exitOccurred(int code)
{
    m_exitCode = code;
    m_exited = true;
    m_observer.programExited();
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
    if (m_promptHidden)
        write(QStringLiteral("\n"));
    hidePrompt();
    for (const QString& line : lines)
        if (!line.isEmpty())
            write(asBytes(line) + QLatin1Char('\n'));
    revealPrompt();
}

void TextTargetIOServerTerminal::dropLine()
{
    m_editor.take();
    if (m_echo)
        write(QStringLiteral("^C\n"));
    revealPrompt();
}

// --- Input for the program --------------------------------------------------------------------

QString TextTargetIOServerTerminal::getInputLine()
{
    if (inputLines() == 0)
        return QString();
    QString line = m_inputLines.takeFirst().mid(m_taken);
    m_taken = 0;
    m_buffered -= std::min(m_buffered, line.size() + 1);
    if (m_echo)
        m_editor.remember(line);
    return line;
}

QChar TextTargetIOServerTerminal::getInputChar()
{
    if (inputLines() == 0 && m_echo) { // of the line that is being edited
        if (m_editor.text().isEmpty())
            return QChar();
        QChar character = m_editor.text().front();
        m_editor.dropFirst(1);
        return character;
    }
    const QString& first = inputLines() > 0 ? m_inputLines.first() : m_partial;
    if (m_taken < first.size())
        return first[m_taken++];
    if (inputLines() == 0)
        return QChar();
    m_buffered -= std::min(m_buffered, first.size() + 1);
    m_inputLines.removeFirst();
    m_taken = 0;
    return QLatin1Char('\n');
}

bool TextTargetIOServerTerminal::inputCharAvailable() const
{
    return inputLines() > 0 || (m_echo ? !m_editor.text().isEmpty() : m_taken < m_partial.size());
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
    return inputLines() > 0 && m_buffered >= MaximumBuffered;
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
        if (m_echo) {
            showLineForKeys();
            m_decoder.decode(text, m_editor);
        } else {
            addPipedText(text);
        }
    }
}

void TextTargetIOServerTerminal::endInput()
{
    m_inputEnded = m_inputClosed = true;
    m_keyTimer->stop();
    if (!m_partial.isEmpty())
        completePartial();
}

void TextTargetIOServerTerminal::addPipedText(std::string_view bytes)
{
    while (!bytes.empty()) {
        size_t end = bytes.find('\n');
        m_partial.append(fromBytes(bytes.substr(0, end)));
        bool complete = end != std::string_view::npos;
        if (complete && m_partial.endsWith(QLatin1Char('\r')) &&
            !(inputLines() == 0 && m_taken == m_partial.size()))
            m_partial.chop(1);
        if (complete || m_partial.size() >= MaximumPipedLine)
            completePartial();
        bytes.remove_prefix(complete ? end + 1 : bytes.size());
    }
}

void TextTargetIOServerTerminal::completePartial()
{
    m_buffered += m_partial.size() + 1;
    m_inputLines.append(std::exchange(m_partial, QString()));
}

// --- The line editor's owner ------------------------------------------------------------------

void TextTargetIOServerTerminal::lineCompleted()
{
    m_partial += m_editor.take();
    completePartial();
    draw(QStringLiteral("\n"));
    if (m_echo)
        showPromptString();
}

void TextTargetIOServerTerminal::typed()
{
    m_inputEnded = false;
    m_offered.clear();
}

// The first Tab goes as far as all candidates go together, a second one shows them.
void TextTargetIOServerTerminal::completionRequested()
{
    if (!m_completer)
        return;
    const QString before = fromBytesToText(m_editor.text().left(m_editor.cursor()));
    const QString line = before + fromBytesToText(m_editor.text().mid(m_editor.cursor()));
    Completer::Completion completion = m_completer->complete(line, before.size());
    if (completion.candidates.isEmpty() || completion.start > before.size())
        return;
    QString common = completion.candidates.first();
    for (const QString& each : std::as_const(completion.candidates)) {
        auto end = std::mismatch(common.cbegin(), common.cend(), each.cbegin(), each.cend());
        common.truncate(end.first - common.cbegin());
    }
    if (common.size() > before.size() - completion.start) {
        m_editor.replaceToCursor(asBytes(before.left(completion.start)).size(), asBytes(common));
        m_offered.clear();
    } else if (m_offered == completion.candidates) {
        showOutputWithPrompt(completion.candidates);
    } else if (completion.candidates.size() > 1) {
        m_offered = completion.candidates;
    }
}
