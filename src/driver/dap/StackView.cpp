#include "driver/dap/StackView.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/dap/DapContext.h"
#include "driver/dap/MemoryReference.h"
#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/dap/SourceFiles.h"
#include "driver/dap/limits.h"

#include <QJsonArray>

#include <algorithm>

QJsonObject StackView::frame(unsigned number)
{
    SymbolicDebuggerInterface& debugger = m_context.debugger;
    QString name, function;
    Path path;
    int line = 0;
    uint32_t address = 0;
    bool known = debugger.locate(debugger.getFrame(number), name, path, function, line, address);
    QJsonObject body{{QStringLiteral("id"), m_context.frames.add(number)},
                     {QStringLiteral("column"), 0},
                     {QStringLiteral("line"), 0},
                     {QStringLiteral("instructionPointerReference"), MemoryReference::text(address)}};
    QString text = QLatin1String("0x") + debugger.formatPC(address);
    body.insert(QStringLiteral("name"), function.isEmpty() ? text : function);
    if (known && line > 0) {
        body.insert(QStringLiteral("source"), m_context.sources.source(path));
        body.insert(QStringLiteral("line"), m_context.client.line(line));
        body.insert(QStringLiteral("column"), m_context.client.firstColumn());
    } else {
        // Code without lines: editors show its instructions.
        body.insert(QStringLiteral("name"), function.isEmpty() ? text : function + QLatin1Char(' ') + text);
        body.insert(QStringLiteral("presentationHint"), QStringLiteral("subtle"));
    }
    return body;
}

QJsonObject StackView::stackTrace(const RequestArguments& arguments)
{
    SymbolicDebuggerInterface& debugger = m_context.debugger;
    unsigned first = unsigned(arguments.count("startFrame", 0));
    unsigned levels = unsigned(arguments.count("levels", 0));
    if (levels == 0 || levels > unsigned(DapLimits::Frames))
        levels = DapLimits::Frames;
    QJsonArray frames;
    unsigned number = first;
    for (; number - first < levels && debugger.getFrame(number); ++number)
        frames.append(frame(number));
    QJsonObject body{{QStringLiteral("stackFrames"), frames}};
    // To tell how many there are, all would have to be looked for; an editor asks for more while it gets
    // as many as it asked for.
    if (number - first < levels)
        body.insert(QStringLiteral("totalFrames"), int(number));
    return body;
}

QJsonObject StackView::loadedSources() const
{
    QJsonArray list;
    for (const SourceFiles::File& file : m_context.sources.files())
        list.append(m_context.sources.source(file.built));
    return {{QStringLiteral("sources"), list}};
}

QJsonObject StackView::gotoTargets(const RequestArguments& arguments)
{
    QJsonArray list;
    const SourceFiles::File* file =
        m_context.sources.find(arguments.object("source").text("path", QString()));
    int line = m_context.client.lineFrom(arguments.count("line"));
    QString executable = file ? file->executable : QString();
    int64_t address = file ? m_context.debugger.getLineAddress(executable, file->built, line) : -1;
    if (address >= 0)
        list.append(QJsonObject{
            {QStringLiteral("id"), m_targets.add({file->built, line})},
            {QStringLiteral("label"), QStringLiteral("%1:%2").arg(file->built.fileName()).arg(line)},
            {QStringLiteral("line"), m_context.client.line(line)},
            {QStringLiteral("instructionPointerReference"), MemoryReference::text(uint32_t(address))}});
    return {{QStringLiteral("targets"), list}};
}

void StackView::jump(const RequestArguments& arguments)
{
    Target target = m_targets.at(arguments.count("targetId"));
    if (!m_context.debugger.setNextStatement(m_context.debugger.getFrame(0), target.path, target.line))
        throw RequestFailure("the line has no code");
}

void StackView::forget()
{
    m_targets.clear();
    m_context.frames.clear();
}
