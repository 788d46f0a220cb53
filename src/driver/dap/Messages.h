// The messages of the protocol: requests as they are read, responses and events as they are written.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

// Where messages go, framed.
class MessageSink {
public:
    virtual ~MessageSink() = default;
    virtual void send(const QByteArray& message) = 0;
};

struct Request {
    int seq = 0;
    QString command;
    QJsonObject arguments;

    // Throws RequestFailure for what is no request: nested too deeply, no JSON, no object, or without the
    // fields that all of them have. `seq` and `command` of the result are then as far as they were found.
    static void parse(const QByteArray& json, Request& result);
};

class Messages {
public:
    // Not owned.
    explicit Messages(MessageSink& sink) : m_sink(sink) {}

    void respond(const Request& request, const QJsonObject& body = {});
    // A failure that the editor shows as a text. Two words mean something to editors by themselves, and are
    // sent without one: "cancelled" and "notStopped".
    void fail(const Request& request, const QString& text);
    void event(const char* name, const QJsonObject& body = {});
    // An "output" event; a newline is not added.
    void output(const char* category, const QString& text);

private:
    void send(QJsonObject message);

    MessageSink& m_sink;
    int m_seq = 0;
};
