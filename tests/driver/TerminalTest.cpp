// The console: lines from a pipe, the line editor and what it draws, keys of a terminal.
#include "driver/session/Completer.h"
#include "driver/terminal/KeyDecoder.h"
#include "driver/terminal/TextTargetIOServerTerminal.h"
#include "sim/Program.h"

#include <QCoreApplication>

#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

namespace {

class Console : public ::testing::Test {
protected:
    Console()
    {
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        static QCoreApplication application(argc, argv);
    }
    ~Console() override
    {
        for (int descriptor : {m_read, m_write})
            if (descriptor >= 0)
                close(descriptor);
    }
    // A terminal that nobody sees, or a pipe.
    void open(bool keyboard)
    {
        int ends[2];
        ASSERT_EQ(keyboard ? openpty(&ends[1], &ends[0], nullptr, nullptr, nullptr) : pipe(ends), 0);
        m_read = ends[0];
        m_write = ends[1];
        subject = std::make_unique<TextTargetIOServerTerminal>(QStringList{QString()}, observer, m_read);
    }
    void send(std::string_view text)
    {
        ASSERT_EQ(write(m_write, text.data(), text.size()), ssize_t(text.size()));
    }
    void endOfInput()
    {
        close(m_write);
        m_write = -1;
    }
    // What the keys draw, with the backspaces shown.
    std::string drawn(std::initializer_list<int> keys)
    {
        testing::internal::CaptureStdout();
        for (int key : keys)
            subject->keyPressed(key);
        return made();
    }
    std::string made()
    {
        std::string text = testing::internal::GetCapturedStdout();
        for (char& c : text)
            if (c == '\b')
                c = '<';
        return text;
    }
    std::string line() { return subject->getInputLine().toLatin1().toStdString(); }

    struct Nobody : TextTargetIOServerTerminal::Observer {
        void programExited() override {}
        void outputFailed() override {}
    } observer;
    std::unique_ptr<TextTargetIOServerTerminal> subject;

private:
    int m_read = -1;
    int m_write = -1;
};

} // namespace

TEST_F(Console, PipedLinesAndCharacters)
{
    open(false);
    subject->poll();
    EXPECT_FALSE(subject->inputCharAvailable());
    EXPECT_TRUE(subject->getInputChar().isNull());
    send("ab\r\n\nhalf");
    subject->poll();
    EXPECT_EQ(subject->inputLines(), 2);
    EXPECT_EQ(subject->getInputChar(), u'a');
    EXPECT_EQ(line(), "b") << "a line without what was taken as characters";
    EXPECT_EQ(subject->getInputChar(), u'\n');
    EXPECT_EQ(subject->inputLines(), 0);
    EXPECT_EQ(subject->getInputChar(), u'h') << "characters come before their line is complete";
    send("\x1b[A\x7f and \xC3\xA9");
    endOfInput();
    subject->poll();
    subject->poll();
    EXPECT_TRUE(subject->inputEnded());
    EXPECT_EQ(line(), "alf\x1b[A\x7f and \xC3\xA9") << "bytes as they came, without a newline at the end";
    EXPECT_TRUE(subject->getInputLine().isNull());
}

TEST_F(Console, InputWithoutEndIsReadInLimitedPieces)
{
    int yes = ::open("/dev/zero", O_RDONLY);
    TextTargetIOServerTerminal terminal({}, observer, yes);
    terminal.poll();
    EXPECT_EQ(terminal.inputLines(), 1) << "a line has a longest length";
    EXPECT_FALSE(terminal.inputEnded());
    close(yes);
}

TEST_F(Console, ManyLinesAndLongOnesTakeLinearTime)
{
    FILE* file = tmpfile();
    for (int i = 0; i < 500000; ++i)
        fputs("line\n", file);
    for (int i = 0; i < 2000000; ++i)
        fputc('x', file);
    rewind(file);
    TextTargetIOServerTerminal terminal({}, observer, fileno(file));
    int lines = 0;
    qsizetype characters = 0;
    while (lines < 500000) {
        terminal.poll();
        while (lines < 500000 && terminal.inputLines() > 0) {
            terminal.getInputLine();
            ++lines;
        }
    }
    terminal.poll();
    while (!terminal.getInputChar().isNull())
        ++characters;
    EXPECT_EQ(characters, 2000001) << "and a newline";
    fclose(file);
}

TEST_F(Console, EditorDrawsWhatItChanges)
{
    open(true);
    EXPECT_EQ(drawn({'a', 'c'}), "ac");
    EXPECT_EQ(drawn({27, 75, 'b'}), "<bc<") << "left, and an insertion in the middle";
    EXPECT_EQ(drawn({224, 77, 224, 77}), "c") << "right, and not beyond the end";
    EXPECT_EQ(drawn({8}), "< <");
    EXPECT_EQ(drawn({27, 75, 127}), "< <") << "the character under the cursor";
    EXPECT_EQ(drawn({8, 8, 127, 27, 75}), "< <") << "nothing in front of the line's start";
    EXPECT_EQ(drawn({'x', 'y', 13}), "xy\n");
    EXPECT_EQ(drawn({'z', 10, 7, 200}), "z\n") << "other keys do nothing";
    EXPECT_EQ(subject->inputLines(), 2);
    EXPECT_EQ(line(), "xy");
    EXPECT_EQ(line(), "z");
    EXPECT_EQ(drawn({27, 72}), "z");
    EXPECT_EQ(drawn({27, 72, 27, 72}), "< <xy");
    EXPECT_EQ(drawn({27, 80, 27, 80}), "< << <z< <") << "behind the latest line is an empty one";
    EXPECT_EQ(drawn({27, 80, 10}), "\n");
    line();
    EXPECT_EQ(drawn({27, 72}), "z") << "empty lines are not kept";
}

TEST_F(Console, PromptAndOutputAboveIt)
{
    open(true);
    testing::internal::CaptureStdout();
    subject->setPromptString("> ");
    subject->showOutputWithPrompt({"one", "", "two"});
    subject->keyPressed(10);
    EXPECT_EQ(made(), "> < << <one\ntwo\n> \n> ");
    testing::internal::CaptureStdout();
    subject->showOutputWithPrompt({QStringLiteral("\u00e9 \u20ac")});
    subject->addOutput(QStringLiteral("\u00c3\u00a9"));
    EXPECT_EQ(made(), "< << <\xC3\xA9 \xE2\x82\xAC\n> < << <\xC3\xA9")
        << "text of the tool, and bytes of a program";
    subject.reset();
    open(false);
    testing::internal::CaptureStdout();
    subject->setPromptString("> ");
    subject->keyPressed('a');
    subject->keyPressed(10);
    subject->showOutputWithPrompt({"one"});
    EXPECT_EQ(made(), "one\n") << "a pipe sees neither prompt nor echo";
    EXPECT_EQ(line(), "a");
}

TEST_F(Console, PromptStandsBelowWhatTheProgramWrites)
{
    open(true);
    testing::internal::CaptureStdout();
    subject->setPromptString(">");
    subject->keyPressed('a');
    subject->addOutput("out");
    subject->addOutput("put\n");
    EXPECT_EQ(made(), ">a< << <output\n>a") << "the line being typed comes back with it";
    testing::internal::CaptureStdout();
    subject->addOutput("half");
    subject->showOutputWithPrompt({"line"});
    subject->addOutput("half");
    subject->keyPressed('b');
    EXPECT_EQ(made(), "< << <half\nline\n>a< << <half\n>ab") << "a key needs to see its line";
    testing::internal::CaptureStdout();
    subject->dropLine();
    subject->keyPressed(13);
    EXPECT_EQ(made(), "^C\n>\n>");
    EXPECT_EQ(line(), "");
}

TEST_F(Console, TabGoesAsFarAsTheCandidatesGoTogether)
{
    struct Words : Completer {
        Completion complete(const QString& line, qsizetype cursor) override
        {
            qsizetype start = line.left(cursor).lastIndexOf(u' ') + 1;
            Completion completion{start, {}};
            for (const QString& word :
                 {QStringLiteral("break"), QStringLiteral("breath"), QStringLiteral("\u00fcber")})
                if (word.startsWith(line.mid(start, cursor - start)))
                    completion.candidates.append(word);
            return completion;
        }
    } words;
    open(true);
    EXPECT_EQ(drawn({9, 'b', 9}), "b") << "nobody to ask";
    subject->setCompleter(&words);
    EXPECT_EQ(drawn({9}), "< <brea");
    EXPECT_EQ(drawn({9, 9}), "< << << << <break\nbreath\nbrea") << "the second Tab shows what there is";
    drawn({'k', ' ', 'x', 27, 75, 27, 75, 9, '!', 10}); // behind a whole word, in the middle of a line
    EXPECT_EQ(line(), "break! x");
    testing::internal::CaptureStdout();
    subject->setInputString(QStringLiteral("a \u00c3"));
    subject->keyPressed(9);
    subject->keyPressed(10);
    made();
    EXPECT_EQ(line(), "a \xC3") << "half a character has no candidates";
    testing::internal::CaptureStdout();
    subject->setInputString(QStringLiteral("a \u00c3\u00bc"));
    subject->keyPressed(9);
    subject->keyPressed(10);
    made();
    EXPECT_EQ(line(), "a \xC3\xBC"
                      "ber");
}

TEST(Keys, SequencesMayComeInPieces)
{
    struct Log : KeyDecoder::Receiver {
        void onText(std::string_view text) override { seen += "[" + std::string(text) + "]"; }
        void onKey(KeyDecoder::Key key) override { seen += std::to_string(int(key)); }
        std::string seen;
    };
    const char all[] = "a\x1b[A\x1bOB\x1b[1;5C\x1b[H\x1b[3~\x1bxb\x1b\x1b[D\x1b[20~\x1b[\x7f\n";
    Log whole, torn;
    KeyDecoder first, second;
    first.decode(all, whole);
    for (const char* c = all; *c; ++c)
        second.decode({c, 1}, torn);
    EXPECT_EQ(whole.seen, "[a]01346[b]28");
    EXPECT_EQ(torn.seen, whole.seen);
}
