// The console of a program that an editor debugs: what it writes becomes output events, in pieces that end
// with a line, a pause or a read, and what it reads is what the user types at the editor's console.
#pragma once

#include "target/io/TargetIOServer.h"

#include <QObject>
#include <QString>
#include <QStringDecoder>
#include <QStringList>
#include <QTimer>

#include <functional>

class Messages;

class EditorConsole : public QObject,
                      public TargetIOServerTerminalInterface,
                      public TargetIOServerHelperFunctions {
    Q_OBJECT
public:
    // The arguments are the program's. `exited` is called from inside a request of the program.
    EditorConsole(Messages& messages, const QStringList& arguments, std::function<void(int)> exited);

    TargetIOServer& server() { return m_server; }
    // Sends what is not sent yet; what the program says next then stands behind it.
    void flush();

    // The program has asked for input that was not there.
    bool reading() const { return m_reading; }
    void addInput(const QString& line);

    void addOutput(const QString& text) override;
    QString getInputLine() override;
    int inputLines() const override { return int(m_lines.size()); }
    QChar getInputChar() override;
    bool inputCharAvailable() const override { return !m_lines.isEmpty(); }

    void errorOccurred(const char* text) override;
    void debugBreakOccurred() override {}
    void inputRequested() override;
    void outputUpdated() override {}
    void exitOccurred(int status) override;
    void loadSymbols(const char*, unsigned) override {}

private:
    Messages& m_messages;
    TargetIOServer m_server;
    std::function<void(int)> m_exited;
    QTimer m_timer;
    QByteArray m_unsent;
    QStringDecoder m_decoder{QStringDecoder::Utf8};
    // Bytes, as the program gets them; each is a whole line without its end. The first may be begun.
    QStringList m_lines;
    bool m_reading = false;
};
