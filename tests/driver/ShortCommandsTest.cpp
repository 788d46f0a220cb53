// Lines of the prompt as scripts.
#include "driver/console/ShortCommands.h"
#include "support/HException.h"

#include <QSet>

#include <gtest/gtest.h>

namespace {

struct Words {
    QSet<QString> defined;
    ShortCommands commands{[this](const QString& name) { return defined.contains(name); }};
    std::string operator()(const char* line)
    {
        try {
            return commands.translate(QString::fromUtf8(line)).toStdString();
        } catch (const HException& e) {
            return e.message();
        }
    }
};

} // namespace

TEST(ShortCommands, StandForCalls)
{
    Words words;
    constexpr std::pair<const char*, const char*> Lines[] = {
        {"b main.s:12", "Debug.breakline(\"main.s\", 12)"},
        {"b C:\\a\"b.s:1", "Debug.breakline(\"C:\\\\a\\\"b.s\", 1)"},
        {"b 12", "Debug.breakline(Debug.getfilename(), 12)"},
        {"b main", "Debug.breakexpr(\"main\")"},
        {" tb  table[2] == 4 ", "Debug.breakexpr(\"table[2] == 4\", true)"},
        {"tb a:7", "Debug.breakline(\"a\", 7, true)"},
        {"watch (flags & 1) == 1", "Debug.breakexpr(\"(flags & 1) == 1\")"},
        {"watch flags", "Debug.breakexpr(\"flags\")"},
        {"d", "Debug.deletebreak(0)"},
        {"d 3", "Debug.deletebreak(3)"},
        {"d x", "usage: d [NUMBER]"},
        {"c", "Debug.go()"},
        {"c 1", "usage: c"},
        {"s", "Debug.stepinto()"},
        {"n", "Debug.stepover()"},
        {"fin", "Debug.stepout()"},
        {"si", "Debug.stepinto(true)"},
        {"ni", "Debug.stepover(true)"},
        {"p x", "Debug.print(\"x\")"},
        {"p/x &x", "Debug.print(\"&x\", \"x\")"},
        {"p -1", "Debug.print(\"-1\")"},
        {"p mode = 2", "Debug.print(\"mode = 2\")"},
        {"p", "usage: p[/FORMAT] EXPRESSION"},
        {"x/32 table", "Debug.dump(\"table\", 32)"},
        {"x 0x100", "Debug.dump(\"0x100\", 16)"},
        {"x/y 0x100", "usage: x[/COUNT] ADDRESS"},
        {"bt", "Debug.where()"},
        {"f 2", "Debug.locate(2)"},
        {"l", "Debug.list(5, 5)"},
        {"info registers", "Debug.printregisters()"},
        {"info break", "Debug.showbreak(0)"},
        {"info", "usage: info locals|globals|registers|break|exceptions"},
        {"q", "Debug.quit()"},
        {"help", "Debug.help()"},
    };
    for (auto [line, script] : Lines)
        EXPECT_EQ(words(line), script) << line;
}

TEST(ShortCommands, ScriptsGoFirst)
{
    Words words;
    for (const char* line : {"p(1)", "p = 1", "p= 1", "p.x", "p[1]", "n++", "x/=2", "s-1", "print x", "bb 1",
                             "Debug.go()", "P x", "c;", "b=1"})
        EXPECT_EQ(words(line), line);
    words.defined = {"n", "x"};
    EXPECT_EQ(words("n"), "n");
    EXPECT_EQ(words("x/4"), "x/4");
    EXPECT_EQ(words("s"), "Debug.stepinto()");
}

TEST(ShortCommands, EmptyLineRepeatsTheLastOne)
{
    Words words;
    EXPECT_EQ(words(""), "");
    EXPECT_EQ(words("n"), "Debug.stepover()");
    EXPECT_EQ(words("Debug.echo(1)"), "Debug.echo(1)");
    EXPECT_EQ(words("d x"), "usage: d [NUMBER]");
    EXPECT_EQ(words("  "), "Debug.stepover()");
}
