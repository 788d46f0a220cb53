#include "driver/dap/Messages.h"

#include "driver/dap/RequestFailure.h"
#include "driver/dap/limits.h"

#include <QJsonDocument>

#include <limits>

namespace {

constexpr int FailureId = 1; // editors tell users no more than the text

// A parser that calls itself for each level is not asked about a million of them.
bool nestedTooDeeply(const QByteArray& json)
{
    int depth = 0;
    bool inText = false;
    for (qsizetype i = 0; i < json.size(); ++i) {
        char c = json[i];
        if (inText) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inText = false;
        } else if (c == '"') {
            inText = true;
        } else if (c == '[' || c == '{') {
            if (++depth > DapLimits::JsonNesting)
                return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

} // namespace

void Request::parse(const QByteArray& json, Request& result)
{
    if (nestedTooDeeply(json))
        throw RequestFailure("the message is nested too deeply");
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        throw RequestFailure(QLatin1String("the message is not JSON: ") + error.errorString());
    if (!document.isObject())
        throw RequestFailure("the message is not an object");
    QJsonObject message = document.object();
    double seq = message.value(QLatin1String("seq")).toDouble(-1);
    if (seq >= 0 && seq <= std::numeric_limits<int>::max())
        result.seq = int(seq);
    result.command = message.value(QLatin1String("command")).toString();
    if (message.value(QLatin1String("type")).toString() != QLatin1String("request"))
        throw RequestFailure("the message is not a request");
    if (result.seq != seq)
        throw RequestFailure("the request has no number");
    if (result.command.isEmpty())
        throw RequestFailure("the request has no command");
    QJsonValue arguments = message.value(QLatin1String("arguments"));
    if (!arguments.isUndefined() && !arguments.isNull() && !arguments.isObject())
        throw RequestFailure("the request's arguments are not an object");
    result.arguments = arguments.toObject();
}

void Messages::send(QJsonObject message)
{
    // Numbers are used up in years; an editor that stays that long sees them begin again.
    m_seq = m_seq == std::numeric_limits<int>::max() ? 1 : m_seq + 1;
    message.insert(QStringLiteral("seq"), m_seq);
    QByteArray json = QJsonDocument(message).toJson(QJsonDocument::Compact);
    m_sink.send("Content-Length: " + QByteArray::number(json.size()) + "\r\n\r\n" + json);
}

void Messages::respond(const Request& request, const QJsonObject& body)
{
    QJsonObject message{{QStringLiteral("type"), QStringLiteral("response")},
                        {QStringLiteral("request_seq"), request.seq},
                        {QStringLiteral("command"), request.command},
                        {QStringLiteral("success"), true}};
    if (!body.isEmpty())
        message.insert(QStringLiteral("body"), body);
    send(message);
}

void Messages::fail(const Request& request, const QString& text)
{
    QJsonObject message{{QStringLiteral("type"), QStringLiteral("response")},
                        {QStringLiteral("request_seq"), request.seq},
                        {QStringLiteral("command"), request.command},
                        {QStringLiteral("success"), false},
                        {QStringLiteral("message"), text}};
    if (text != QLatin1String("cancelled") && text != QLatin1String("notStopped")) {
        // Braces in the text are not those of a format's variables.
        QJsonObject error{{QStringLiteral("id"), FailureId},
                          {QStringLiteral("format"), QStringLiteral("{text}")},
                          {QStringLiteral("variables"), QJsonObject{{QStringLiteral("text"), text}}},
                          {QStringLiteral("showUser"), true}};
        message.insert(QStringLiteral("body"), QJsonObject{{QStringLiteral("error"), error}});
    }
    send(message);
}

void Messages::event(const char* name, const QJsonObject& body)
{
    QJsonObject message{{QStringLiteral("type"), QStringLiteral("event")},
                        {QStringLiteral("event"), QLatin1String(name)}};
    if (!body.isEmpty())
        message.insert(QStringLiteral("body"), body);
    send(message);
}

void Messages::output(const char* category, const QString& text)
{
    if (!text.isEmpty())
        event("output",
              {{QStringLiteral("category"), QLatin1String(category)}, {QStringLiteral("output"), text}});
}
