#include "driver/dap/Adapter.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/session/FaceSwitch.h"
#include "driver/session/Interrupt.h"
#include "driver/session/Loader.h"
#include "support/HException.h"

#include <QJsonArray>

Adapter::Adapter(const Session& session, MessageSink& sink)
    : m_session(session), m_debugger(session.run.debugger()), m_messages(sink),
      m_context(m_debugger, m_messages), m_progress(m_messages),
      m_breakpoints(m_context, {[this](const QString& text) { return m_values.truth(0, text); },
                                [this](const QString& text) { return m_values.text(0, text); },
                                [this](const QString& name) { return m_values.codeAddress(name); }}),
      m_stack(m_context), m_values(m_context), m_memory(m_context)
{
    m_session.face.setFace(*this);
    m_session.run.setStopListener(this);
    m_debugger.setHitListener(this);
}

Adapter::~Adapter()
{
    m_debugger.setHitListener(nullptr);
    m_session.run.setStopListener(nullptr);
}

// --- Messages ---------------------------------------------------------------------------------

void Adapter::handleFault(const char* text)
{
    m_messages.fail(Request(), QString::fromLatin1(text));
}

void Adapter::handle(const QByteArray& json)
{
    Request request;
    try {
        Request::parse(json, request);
    } catch (const RequestFailure& failure) {
        m_messages.fail(request, failure.text());
        return;
    }
    for (const Row& row : requests())
        if (request.command == QLatin1String(row.command)) {
            QString why = refusal(row);
            if (why.isEmpty())
                carryOut(request, row);
            else
                m_messages.fail(request, why);
            return;
        }
    m_messages.fail(request, QStringLiteral("unknown request \"%1\"").arg(request.command));
}

QString Adapter::refusal(const Row& row) const
{
    if (row.states & m_state)
        return QString();
    if (m_state == Fresh)
        return QStringLiteral("the first request must be \"initialize\"");
    if (m_state == Ended)
        return QStringLiteral("the program has ended");
    if (row.states == Fresh)
        return QStringLiteral("the adapter is initialized already");
    if (m_state == Ready)
        return QStringLiteral("no program is being debugged");
    if (row.states == Ready)
        return QStringLiteral("a program is being debugged already");
    if (m_state == Running && row.states & Stopped)
        return QStringLiteral("notStopped");
    return m_state == Configuring ? QStringLiteral("the breakpoints are still being set")
                                  : QStringLiteral("the breakpoints are set already");
}

void Adapter::carryOut(const Request& request, const Row& row)
{
    m_current = request.seq;
    m_cancelled = false;
    try {
        QJsonObject body = row.handler(*this, RequestArguments(request.arguments));
        m_messages.respond(request, body);
    } catch (const Interrupted&) {
        m_messages.fail(request, QStringLiteral("cancelled"));
    } catch (const HException& failure) {
        QString hint = QString::fromStdString(failure.hint());
        m_messages.fail(request, failure.text() + (hint.isEmpty() ? QString() : QLatin1Char('\n') + hint));
    }
    // One of them may lead to another.
    while (!m_afterResponse.empty()) {
        std::vector<std::function<void()>> acts;
        acts.swap(m_afterResponse);
        for (const auto& act : acts)
            act();
    }
}

Adapter::Ahead Adapter::lookAhead(const QByteArray& json)
{
    Request request;
    try {
        Request::parse(json, request);
    } catch (const RequestFailure&) {
        return Ahead::Leave; // told in its turn
    }
    if (request.command == QLatin1String("disconnect") || request.command == QLatin1String("terminate"))
        cancel();
    if (request.command != QLatin1String("cancel"))
        return Ahead::Leave;
    try {
        RequestArguments arguments(request.arguments);
        bool isThis = m_progress.has(arguments.text("progressId", QString())) ||
                      (arguments.has("requestId") && arguments.count("requestId") == m_current);
        if (!isThis)
            return Ahead::Leave;
        cancel();
        m_messages.respond(request);
    } catch (const RequestFailure& failure) {
        m_messages.fail(request, failure.text());
    }
    return Ahead::Taken;
}

void Adapter::hangUp()
{
    endProgram(!m_launch || !m_launch->attach, false);
    m_done = true;
}

// --- The session's face -----------------------------------------------------------------------

void Adapter::progress(int done, int total, const char* label, const char* unit)
{
    m_progress.show(done, total, label, unit);
    if (m_look)
        m_look();
    if (m_cancelled)
        throw Interrupted();
}

void Adapter::message(const QString& text)
{
    m_messages.output("console", text + QLatin1Char('\n'));
}

void Adapter::warning(const QString& text)
{
    m_messages.output("important", text + QLatin1Char('\n'));
}

void Adapter::output(std::string_view text)
{
    m_messages.output("console", QString::fromUtf8(text.data(), qsizetype(text.size())));
}

void Adapter::showLines(const QStringList& lines)
{
    for (const QString& line : lines)
        if (!line.isEmpty())
            message(line);
}
