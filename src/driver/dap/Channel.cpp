#include "driver/dap/Channel.h"

#include "driver/dap/limits.h"

#include <QElapsedTimer>
#include <QSocketNotifier>

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr size_t ReadPiece = 64 * 1024;
constexpr int FlushMilliseconds = 2000;
constexpr int WaitMilliseconds = 100;
constexpr qsizetype CompactBytes = 1024 * 1024; // of sent text in front of what is unsent

// Returns the flags before.
int dontWait(int descriptor)
{
    int flags = fcntl(descriptor, F_GETFL);
    fcntl(descriptor, F_SETFL, flags | O_NONBLOCK);
    return flags;
}

bool again()
{
    return errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK;
}

} // namespace

Channel::Channel(int input, int output)
    : m_input(input), m_output(output), m_inputFlags(dontWait(input)), m_outputFlags(dontWait(output))
{
    m_readable = std::make_unique<QSocketNotifier>(input, QSocketNotifier::Read);
    m_writable = std::make_unique<QSocketNotifier>(output, QSocketNotifier::Write);
    QObject::connect(m_readable.get(), &QSocketNotifier::activated, this, &Channel::receive);
    QObject::connect(m_writable.get(), &QSocketNotifier::activated, this, &Channel::transmit);
    updateNotifiers();
}

// Whoever shares an end of the pipe expects it to wait again.
Channel::~Channel()
{
    fcntl(m_input, F_SETFL, m_inputFlags);
    fcntl(m_output, F_SETFL, m_outputFlags);
}

void Channel::updateNotifiers()
{
    m_readable->setEnabled(!m_inputClosed && m_waiting < DapLimits::WaitingBytes);
    m_writable->setEnabled(!m_outputClosed && m_sent < m_unsent.size());
}

void Channel::receive()
{
    bool news = false;
    char bytes[ReadPiece];
    while (!m_inputClosed && m_waiting < DapLimits::WaitingBytes) {
        ssize_t count = read(m_input, bytes, sizeof bytes);
        if (count < 0 && again())
            break;
        news = true;
        if (count <= 0) {
            m_inputClosed = true;
            break;
        }
        m_reader.add({bytes, size_t(count)});
        while (auto item = m_reader.next()) {
            m_waiting += size_t(item->json.size());
            m_messages.push_back(std::move(*item));
        }
    }
    updateNotifiers();
    if (news)
        Q_EMIT received();
}

MessageReader::Item Channel::takeMessage()
{
    MessageReader::Item item = std::move(m_messages.front());
    m_messages.pop_front();
    m_waiting -= size_t(item.json.size());
    updateNotifiers();
    return item;
}

void Channel::remove(size_t index)
{
    m_waiting -= size_t(m_messages[index].json.size());
    m_messages.erase(m_messages.begin() + ptrdiff_t(index));
    updateNotifiers();
}

void Channel::send(const QByteArray& message)
{
    if (m_outputClosed)
        return;
    m_unsent += message;
    transmit();
    while (!m_outputClosed && size_t(m_unsent.size() - m_sent) > DapLimits::UnsentBytes) {
        waitForEditor(WaitMilliseconds);
        // An editor that has closed its end will not take anything any more.
        if (m_inputClosed)
            m_outputClosed = true;
    }
}

void Channel::transmit()
{
    while (!m_outputClosed && m_sent < m_unsent.size()) {
        ssize_t count = write(m_output, m_unsent.constData() + m_sent, size_t(m_unsent.size() - m_sent));
        if (count < 0 && again())
            break;
        if (count < 0) {
            m_outputClosed = true;
            Q_EMIT received();
            break;
        }
        m_sent += count;
    }
    if (m_sent == m_unsent.size() || m_sent > CompactBytes) {
        m_unsent.remove(0, m_sent);
        m_sent = 0;
    }
    updateNotifiers();
}

void Channel::waitForEditor(int milliseconds)
{
    pollfd descriptors[] = {{m_output, POLLOUT, 0}, {m_readable->isEnabled() ? m_input : -1, POLLIN, 0}};
    if (poll(descriptors, 2, milliseconds) <= 0)
        return;
    if (descriptors[1].revents)
        receive();
    transmit();
}

void Channel::flush()
{
    QElapsedTimer timer;
    timer.start();
    while (!m_outputClosed && m_sent < m_unsent.size() && !timer.hasExpired(FlushMilliseconds))
        waitForEditor(WaitMilliseconds);
}
