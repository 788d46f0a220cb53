// The line that is being typed, with its cursor and the history of earlier ones. It draws by writing text,
// blanks and backspaces behind a prompt that stands on the screen already.
//
// Text is bytes: each QChar holds one byte, as Latin-1. Cursor and erasing count a UTF-8 character as one.
//
// Invariant: the cursor is at most the text's length, and at the beginning of a character.
#pragma once

#include "driver/terminal/KeyDecoder.h"

#include <QString>
#include <QStringList>

class LineEditor : public KeyDecoder::Receiver {
public:
    class Owner {
    public:
        // To be shown at the screen's cursor.
        virtual void draw(const QString& bytes) = 0;
        // Enter: take() has the line.
        virtual void lineCompleted() = 0;
        // The end-of-file key on an empty line.
        virtual void endOfFile() = 0;
        // Text was typed.
        virtual void typed() = 0;
        // Tab.
        virtual void completionRequested() = 0;

    protected:
        ~Owner() = default;
    };

    explicit LineEditor(Owner& owner) : m_owner(owner) {}

    const QString& text() const { return m_text; }
    qsizetype cursor() const { return m_cursor; }
    // The text, leaving an empty line. Nothing is drawn.
    QString take();
    // The first so many characters are used up. Nothing is drawn.
    void dropFirst(qsizetype count);
    // Behind the text, without drawing.
    void append(const QString& bytes) { m_text.append(bytes); }

    // One key by its code. 27 or 224 announces a cursor key: 72 up, 80 down, 75 left, 77 right. 13 and 10 end
    // the line, 9 asks for completion, 8 erases the character in front of the cursor, 127 the one under it,
    // 32 to 126 are inserted.
    void keyPressed(int key);
    void onText(std::string_view text) override;
    void onKey(KeyDecoder::Key key) override;
    // Puts a text in place of the line.
    void setText(const QString& bytes);
    // Puts bytes in place of those from `start` to the cursor.
    void replaceToCursor(qsizetype start, const QString& bytes);
    // Takes the line off the screen, to be put back by redraw().
    void clearFromScreen();
    void redraw();

    // A line that is not empty joins the history, unless it is the latest there; the next one recalled is the
    // latest.
    void remember(const QString& line);

private:
    void cursorKey(int key);
    void recall(qsizetype index);
    void moveLeft();
    void moveRight();
    void eraseAt(qsizetype start);
    qsizetype characterBefore(qsizetype at) const;
    qsizetype characterBehind(qsizetype at) const;

    Owner& m_owner;
    QString m_text;
    qsizetype m_cursor = 0;
    bool m_escape = false; // the next key is a cursor key
    QStringList m_history;
    qsizetype m_historyIndex = -1;
};
