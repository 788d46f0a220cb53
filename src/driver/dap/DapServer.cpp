#include "driver/dap/DapServer.h"

#include "driver/dap/Channel.h"
#include "driver/dap/MessageReader.h"
#include "driver/session/Interrupt.h"
#include "driver/session/ProgramRun.h"

#include <QCoreApplication>

namespace DapServer {

namespace {

class Server {
public:
    Server(const Adapter::Session& session, int input, int output)
        : m_run(session.run), m_channel(input, output), m_adapter(session, m_channel)
    {
        m_adapter.setWaiting([this] { lookAhead(); });
        QObject::connect(&m_channel, &Channel::received, &m_channel, [this] { process(); });
        // Wakes the loop.
        QObject::connect(&m_interrupt, &Interrupt::interrupted, &m_channel, [] {});
    }

    int run()
    {
        m_channel.receive();
        while (!m_adapter.done() && !Interrupt::requested()) {
            process();
            if (!m_adapter.done() && !Interrupt::requested())
                wait();
        }
        int status = 0;
        if (!m_adapter.done()) {
            m_adapter.hangUp();
            status = Interrupt::requested() ? Interrupt::ExitStatus : 0;
        }
        m_channel.flush();
        return status;
    }

private:
    void wait()
    {
        if (m_adapter.debugging())
            m_run.pass();
        else
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    // Requests come in order, so one that runs the event loop is not overtaken by the next.
    void process()
    {
        if (m_busy)
            return;
        m_busy = true;
        while (m_channel.hasMessage() && !m_adapter.done()) {
            MessageReader::Item item = m_channel.takeMessage();
            m_lookedAt = 0;
            if (item.fault)
                m_adapter.handleFault(item.fault);
            else
                m_adapter.handle(item.json);
        }
        if (m_channel.closed() && !m_adapter.done())
            m_adapter.hangUp();
        m_busy = false;
    }

    // Each message is looked at once.
    void lookAhead()
    {
        m_channel.receive();
        if (m_channel.closed() || Interrupt::requested())
            m_adapter.cancel();
        while (m_lookedAt < m_channel.messages().size()) {
            const MessageReader::Item& item = m_channel.messages()[m_lookedAt];
            if (!item.fault && m_adapter.lookAhead(item.json) == Adapter::Ahead::Taken)
                m_channel.remove(m_lookedAt);
            else
                ++m_lookedAt;
        }
    }

    ProgramRun& m_run;
    Interrupt m_interrupt;
    Channel m_channel;
    Adapter m_adapter;
    bool m_busy = false;
    size_t m_lookedAt = 0; // of the messages that wait
};

} // namespace

int run(const Adapter::Session& session, int input, int output)
{
    return Server(session, input, output).run();
}

} // namespace DapServer
