// The pipe to the editor. Reads whole messages and writes framed ones, both without waiting, so that an
// editor that is slow to read cannot keep the adapter from hearing it.
//
// Invariants: a notifier is on only while there is something to do for it (one that is left on at the end of
// a file fires without end).
#pragma once

#include "driver/dap/MessageReader.h"
#include "driver/dap/Messages.h"

#include <QByteArray>
#include <QObject>

#include <deque>
#include <memory>

class QSocketNotifier;

class Channel : public QObject, public MessageSink {
    Q_OBJECT
public:
    // The descriptors stay the caller's; they do not wait while this lives.
    Channel(int input, int output);
    ~Channel() override;

    // Reads what is there.
    void receive();
    bool hasMessage() const { return !m_messages.empty(); }
    MessageReader::Item takeMessage();
    // Those that wait, for whoever looks ahead.
    const std::deque<MessageReader::Item>& messages() const { return m_messages; }
    void remove(size_t index);
    // The editor will send nothing more, or hears nothing any more.
    bool closed() const { return m_inputClosed || m_outputClosed; }

    // Keeps the message until the editor takes it. Waits when too much is kept, and goes on reading then.
    void send(const QByteArray& message) override;
    // Waits, but not for ever, until all is sent.
    void flush();

Q_SIGNALS:
    // Messages have come, or the channel is closed.
    void received();

private:
    void transmit();
    void waitForEditor(int milliseconds);
    void updateNotifiers();

    int m_input;
    int m_output;
    int m_inputFlags;
    int m_outputFlags;
    MessageReader m_reader;
    std::deque<MessageReader::Item> m_messages;
    size_t m_waiting = 0; // bytes in m_messages
    QByteArray m_unsent;
    qsizetype m_sent = 0; // of m_unsent
    bool m_inputClosed = false;
    bool m_outputClosed = false;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
};
