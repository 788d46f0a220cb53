// The console of a served program, and of the debugger's prompt: writes to standard output, reads standard
// input, and edits the line that is being typed.
//
// Text is bytes: each QChar of a line holds one byte, as Latin-1, so that UTF-8 and any other encoding
// reaches the program as it was typed; only the prompt and showOutputWithPrompt() take ordinary text.
//
// Input that is no terminal is taken as it comes, in whole lines, without echo, prompt and editing; a
// carriage return in front of a newline is dropped, and a last line without a newline counts.
//
// Invariant: the first m_taken characters of the first complete line, or of the unfinished piped one when
// there is none, were handed out already.
#pragma once

#include "driver/terminal/KeyDecoder.h"
#include "driver/terminal/LineEditor.h"
#include "support/HException.h"
#include "target/io/TargetIOServer.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>

class Completer;
class QTimer;
class RawTerminal;
class TargetInterface;

class TextTargetIOServerTerminal : public QObject,
                                   public TargetIOServerTerminalInterface,
                                   public TargetIOServerHelperFunctions,
                                   private LineEditor::Owner {
    Q_OBJECT
public:
    class Observer {
    public:
        // The program has reported its end.
        virtual void programExited() = 0;
        // Standard output takes no more; the program has nobody to run for.
        virtual void outputFailed() = 0;

    protected:
        ~Observer() = default;
    };

    // The arguments are the target program's. The input is a descriptor, which stays the caller's; a
    // terminal is in raw mode for as long as this lives.
    TextTargetIOServerTerminal(const QStringList& arguments, Observer& observer, int input = 0);
    ~TextTargetIOServerTerminal() override;

    TargetIOServer* server() { return m_server.get(); }
    int exitCode() const { return m_exitCode; }
    // The run is over: the program has ended, the connection is gone, output failed, or a command quit.
    bool exited() const { return m_exited; }
    void setExited() { m_exited = true; }
    // What standard output failed with.
    const std::optional<HException>& outputFailure() const { return m_outputFailure; }
    // No further input will come, or so the user says; further keys then take that back.
    bool keyboard() const { return m_echo; }
    bool inputEnded() const { return m_inputEnded; }
    // A target whose program asks for input again and again, and does nothing else for it, then costs no
    // processor time. Null for none; its cycle count tells how long the program was busy.
    void setWaitingTarget(const TargetInterface* target) { m_target = target; }

    void addOutput(const QString& text) override;
    // A line that is not empty joins the history of a keyboard, unless it is the latest there.
    QString getInputLine() override;
    int inputLines() const override { return int(m_inputLines.size()); }
    QChar getInputChar() override;
    bool inputCharAvailable() const override;

    void errorOccurred(const char*) override {}
    void debugBreakOccurred() override {}
    void inputRequested() override;
    void outputUpdated() override {}
    void exitOccurred(int code) override;
    void loadSymbols(const char*, unsigned) override {}

    void setPromptString(const QString& prompt);
    void showPromptString();
    // What Tab offers, not owned; null for nothing.
    void setCompleter(Completer* completer) { m_completer = completer; }
    // Ctrl-C at the prompt: the line that is being edited is given up.
    void dropLine();
    // Lines above the prompt and the edited line. Empty ones are left out.
    void showOutputWithPrompt(const QStringList& lines);
    // Puts a text in place of the edited line.
    void setInputString(const QString& text) { m_editor.setText(text); }
    // One key of the line editor, by its code.
    void keyPressed(int key);

public Q_SLOTS:
    // Reads what is there.
    void poll();

private:
    void draw(const QString& bytes) override;
    void lineCompleted() override;
    void endOfFile() override { m_inputEnded = true; }
    void typed() override;
    void completionRequested() override;
    void hidePrompt();
    void revealPrompt();
    void showLineForKeys();
    void addPipedText(std::string_view bytes);
    void completePartial();
    void endInput();
    bool bufferFull() const;
    void write(const QString& text);
    void waitForInput();

    Observer& m_observer;
    std::unique_ptr<TargetIOServer> m_server;
    int m_exitCode = 0;
    bool m_exited = false;
    QTimer* m_keyTimer;
    int m_input;
    bool m_echo;
    LineEditor m_editor;
    QStringList m_inputLines; // complete ones
    QString m_partial;        // of piped input
    qsizetype m_taken = 0;
    qsizetype m_buffered = 0; // characters in the completed lines, roughly
    QString m_prompt;
    bool m_promptHidden = false; // behind what the program wrote last, without a newline at its end
    Completer* m_completer = nullptr;
    QStringList m_offered; // by the last Tab, when it could not go further
    bool m_inputEnded = false;
    bool m_inputClosed = false; // nothing is left to read
    KeyDecoder m_decoder;
    std::unique_ptr<RawTerminal> m_rawTerminal; // null for input that is no terminal
    std::optional<HException> m_outputFailure;
    const TargetInterface* m_target = nullptr;
    unsigned m_lastRequest = 0;  // cycle count
    unsigned m_idleRequests = 0; // in a row
};
