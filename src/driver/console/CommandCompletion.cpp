#include "driver/console/CommandCompletion.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/console/ShortCommands.h"
#include "driver/session/ProgramRun.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "support/HException.h"

#include <algorithm>

namespace {

constexpr qsizetype MaximumCandidates = 200;
constexpr const char* ExpressionFunctions[] = {"print", "breakexpr", "evaluate", "set", "dump"};
constexpr char LineFunction[] = "breakline";

bool isNameCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'$';
}

// Where the name that ends here begins.
qsizetype nameStart(QStringView text)
{
    qsizetype start = text.size();
    while (start > 0 && isNameCharacter(text[start - 1]))
        --start;
    return start;
}

// The text of a script up to the cursor, when that stands inside quotes.
struct Quote {
    qsizetype start = -1; // behind the opening one; -1 outside
    QStringView function; // whose argument it is
    bool first = false;   // the first argument
};

Quote quoteAround(QStringView before)
{
    QChar open;
    Quote quote;
    for (qsizetype at = 0; at < before.size(); ++at) {
        QChar c = before[at];
        if (!open.isNull() && c == u'\\') {
            ++at;
        } else if (!open.isNull() && c == open) {
            open = QChar();
        } else if (open.isNull() && (c == u'"' || c == u'\'')) {
            open = c;
            quote.start = at + 1;
        }
    }
    if (open.isNull())
        return {};
    QStringView call = before.left(quote.start - 1).trimmed();
    qsizetype parenthesis = call.lastIndexOf(u'(');
    quote.first = parenthesis == call.size() - 1;
    call = call.left(std::max<qsizetype>(parenthesis, 0)).trimmed();
    quote.function = call.mid(nameStart(call));
    return quote;
}

void finish(Completer::Completion& completion)
{
    completion.candidates.sort();
    completion.candidates.removeDuplicates();
    if (completion.candidates.size() > MaximumCandidates)
        completion.candidates.resize(MaximumCandidates);
}

} // namespace

Completer::Completion CommandCompletion::complete(const QString& line, qsizetype cursor)
{
    QStringView before = QStringView(line).left(cursor);
    Completion completion;
    try {
        Quote quote = quoteAround(before);
        if (quote.start < 0) {
            completion = shortWord(before);
            if (completion.candidates.isEmpty())
                completion = names(before);
        } else if (quote.function == QLatin1String(LineFunction) && quote.first) {
            completion = files(before, quote.start);
        } else if (std::any_of(std::begin(ExpressionFunctions), std::end(ExpressionFunctions),
                               [&](const char* name) { return quote.function == QLatin1String(name); })) {
            completion = symbols(before);
        }
    } catch (const HException&) { // no program, no names
    }
    finish(completion);
    return completion;
}

Completer::Completion CommandCompletion::symbols(QStringView before) const
{
    Completion completion{nameStart(before), {}};
    QStringView begun = before.mid(completion.start);
    SymbolicDebuggerInterface& debugger = m_run.debugger();
    for (const QString& executable : debugger.executableNames())
        for (const QString& name : debugger.symbolNames(executable))
            if (name.startsWith(begun))
                completion.candidates.append(name);
    return completion;
}

// A file is offered by its name, or by its path when one was begun.
Completer::Completion CommandCompletion::files(QStringView before, qsizetype start) const
{
    Completion completion{start, {}};
    QStringView begun = before.mid(start);
    SymbolicDebuggerInterface& debugger = m_run.debugger();
    for (const QString& executable : debugger.executableNames())
        for (const QString& source : debugger.sourceFileNames(executable)) {
            QString name = source.mid(source.lastIndexOf(u'/') + 1);
            if (name.startsWith(begun))
                completion.candidates.append(name);
            else if (source.startsWith(begun))
                completion.candidates.append(source);
        }
    return completion;
}

// Behind a short word stands an expression, a place or a topic.
Completer::Completion CommandCompletion::shortWord(QStringView before) const
{
    qsizetype start = 0;
    while (start < before.size() && before[start].isSpace())
        ++start;
    qsizetype end = start;
    while (end < before.size() && before[end] >= u'a' && before[end] <= u'z')
        ++end;
    QStringView word = before.mid(start, end - start);
    qsizetype rest = before.indexOf(u' ', end);
    if (rest < 0 || !ShortCommands::words().contains(word.toString()))
        return {};
    while (rest < before.size() && before[rest] == u' ')
        ++rest;
    if (word == u"info") {
        Completion completion{rest, {}};
        for (const QString& topic : ShortCommands::topics())
            if (topic.startsWith(before.mid(rest)))
                completion.candidates.append(topic);
        return completion;
    }
    Completion completion = symbols(before);
    if ((word == u"b" || word == u"tb") && completion.candidates.isEmpty())
        return files(before, rest);
    return completion;
}

Completer::Completion CommandCompletion::names(QStringView before) const
{
    qsizetype start = nameStart(before);
    QStringView begun = before.mid(start);
    ESObject* object = m_context->globalObject();
    qsizetype first = start; // of the objects whose member it is
    while (first > 0 && (isNameCharacter(before[first - 1]) || before[first - 1] == u'.'))
        --first;
    Completion completion{start, {}};
    if (first < start)
        for (QStringView name : before.mid(first, start - 1 - first).split(u'.')) {
            ESProperty* member = object->find(ESStringPool::intern(name));
            if (!member || !member->value().isObject())
                return completion;
            object = member->value().object();
        }
    for (const ESProperty& member : object->properties()) {
        QString name = member.isNamed() ? member.name()->text() : QString();
        if (name.isEmpty() || !name.startsWith(begun))
            continue;
        bool function = member.value().isObject() && member.value().object()->isCallable();
        completion.candidates.append(function ? name + u'(' : name);
    }
    return completion;
}
