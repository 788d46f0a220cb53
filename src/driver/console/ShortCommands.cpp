#include "driver/console/ShortCommands.h"

#include "support/HException.h"

#include <algorithm>

namespace {

// What stands behind a word.
struct Rest {
    QString format;   // behind a slash
    QString argument; // without blanks around it
};

QString quoted(const QString& text)
{
    QString made = QStringLiteral("\"");
    for (QChar c : text) {
        if (c == u'"' || c == u'\\')
            made += u'\\';
        if (c.unicode() < 0x20)
            made += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            made += c;
    }
    return made + u'"';
}

bool isNumber(QStringView text)
{
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

QString call(const char* command, const QString& arguments = QString())
{
    return QStringLiteral("Debug.%1(%2)").arg(QLatin1String(command), arguments);
}

// Null, for usage, in all of these.
template <const char* Command> QString plain(const Rest& rest)
{
    return rest.argument.isEmpty() ? call(Command) : QString();
}

template <const char* Command, const char* Fixed> QString fixed(const Rest& rest)
{
    return rest.argument.isEmpty() ? call(Command, QLatin1String(Fixed)) : QString();
}

template <const char* Command> QString numbered(const Rest& rest)
{
    if (rest.argument.isEmpty())
        return call(Command, QStringLiteral("0"));
    return isNumber(rest.argument) ? call(Command, rest.argument) : QString();
}

QString breakAt(const Rest& rest, const QString& options)
{
    if (rest.argument.isEmpty())
        return QString();
    if (isNumber(rest.argument))
        return call("breakline", QStringLiteral("Debug.getfilename(), ") + rest.argument + options);
    qsizetype colon = rest.argument.lastIndexOf(u':');
    if (colon > 0 && isNumber(QStringView(rest.argument).mid(colon + 1)))
        return call("breakline", quoted(rest.argument.left(colon)) + QLatin1String(", ") +
                                     rest.argument.mid(colon + 1) + options);
    return call("breakexpr", quoted(rest.argument) + options);
}

QString permanent(const Rest& rest)
{
    return breakAt(rest, QString());
}

QString temporary(const Rest& rest)
{
    return breakAt(rest, QStringLiteral(", true"));
}

QString watch(const Rest& rest)
{
    return rest.argument.isEmpty() ? QString() : call("breakexpr", quoted(rest.argument));
}

QString print(const Rest& rest)
{
    if (rest.argument.isEmpty())
        return QString();
    QString format = rest.format.isEmpty() ? QString() : QLatin1String(", ") + quoted(rest.format);
    return call("print", quoted(rest.argument) + format);
}

QString examine(const Rest& rest)
{
    if (rest.argument.isEmpty() || !(rest.format.isEmpty() || isNumber(rest.format)))
        return QString();
    QString count = rest.format.isEmpty() ? QStringLiteral("16") : rest.format;
    return call("dump", quoted(rest.argument) + QLatin1String(", ") + count);
}

struct Topic {
    const char* name;
    const char* command;
    const char* arguments;
};

constexpr Topic Topics[] = {
    {"locals", "printlocals", ""}, {"globals", "printglobals", ""},      {"registers", "printregisters", ""},
    {"break", "showbreak", "0"},   {"exceptions", "showexceptions", ""},
};

QString info(const Rest& rest)
{
    for (const Topic& topic : Topics)
        if (rest.argument == QLatin1String(topic.name))
            return call(topic.command, QLatin1String(topic.arguments));
    return QString();
}

constexpr char DeleteBreak[] = "deletebreak", Go[] = "go", StepInto[] = "stepinto", StepOver[] = "stepover",
               StepOut[] = "stepout", Where[] = "where", Locate[] = "locate", List[] = "list",
               Quit[] = "quit", Help[] = "help", True[] = "true", Around[] = "5, 5";

struct Row {
    const char* word;
    bool format; // may follow behind a slash
    const char* usage;
    QString (*translate)(const Rest&);
};

constexpr Row Rows[] = {
    {"b", false, "b FILE:LINE, b LINE, or b SYMBOL", permanent},
    {"tb", false, "tb FILE:LINE, tb LINE, or tb SYMBOL", temporary},
    {"watch", false, "watch EXPRESSION", watch},
    {"d", false, "d [NUMBER]", numbered<DeleteBreak>},
    {"c", false, "c", plain<Go>},
    {"s", false, "s", plain<StepInto>},
    {"n", false, "n", plain<StepOver>},
    {"fin", false, "fin", plain<StepOut>},
    {"si", false, "si", fixed<StepInto, True>},
    {"ni", false, "ni", fixed<StepOver, True>},
    {"p", true, "p[/FORMAT] EXPRESSION", print},
    {"x", true, "x[/COUNT] ADDRESS", examine},
    {"bt", false, "bt", plain<Where>},
    {"f", false, "f [NUMBER]", numbered<Locate>},
    {"l", false, "l", fixed<List, Around>},
    {"info", false, "info locals|globals|registers|break|exceptions", info},
    {"q", false, "q", plain<Quit>},
    {"help", false, "help", plain<Help>},
};

const Row* rowOf(QStringView word)
{
    for (const Row& row : Rows)
        if (word == QLatin1String(row.word))
            return &row;
    return nullptr;
}

} // namespace

QStringList ShortCommands::words()
{
    QStringList words;
    for (const Row& row : Rows)
        words.append(QLatin1String(row.word));
    return words;
}

QStringList ShortCommands::help()
{
    QStringList lines;
    for (const Row& row : Rows)
        lines.append(QLatin1String(row.usage));
    return lines;
}

QStringList ShortCommands::topics()
{
    QStringList names;
    for (const Topic& topic : Topics)
        names.append(QLatin1String(topic.name));
    return names;
}

QString ShortCommands::translate(const QString& line)
{
    QString text = line.trimmed();
    if (text.isEmpty())
        return m_last;
    qsizetype end = 0;
    while (end < text.size() && text[end] >= u'a' && text[end] <= u'z')
        ++end;
    const Row* row = rowOf(QStringView(text).left(end));
    Rest rest;
    if (row && row->format && end < text.size() && text[end] == u'/') {
        qsizetype start = end + 1;
        for (end = start; end < text.size() && !text[end].isSpace();)
            ++end;
        rest.format = text.mid(start, end - start);
    }
    if (!row || (end < text.size() && !text[end].isSpace()))
        return line;
    rest.argument = text.mid(end).trimmed();
    // An expression may well begin with a parenthesis, but not with this.
    if (rest.argument.startsWith(u'=') || rest.format.startsWith(u'='))
        return line;
    if (m_isDefined(QLatin1String(row->word)))
        return line;
    QString call = row->translate(rest);
    if (call.isNull())
        throw HException(QLatin1String("usage: ") + QLatin1String(row->usage));
    return m_last = call;
}
