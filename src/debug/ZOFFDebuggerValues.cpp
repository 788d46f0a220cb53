// What expressions and displays ask about the program, and the operations that they carry out.

#include "debug/ZOFFDebugger.h"
#include "debug/evaluation/ExpressionContext.h"
#include "debug/evaluation/VariableListBuilder.h"
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/monitor/HMonitor.h"
#include "debug/run/DebuggerBreakpoint.h"
#include "debug/run/Frame.h"
#include "debug/run/ZOFFBreakpoint.h"
#include "debug/symbols/SymbolicDebug.h"
#include "expression/ExpressionType.h"
#include "expression/MarkerType.h"
#include "expression/ParserException.h"
#include "support/HString.h"
#include "target/TargetRegisterInterface.h"
#include "zoff/ZOFFModule.h" // a scope
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

#include <map>

// --- The context ------------------------------------------------------------------------------

// Markers that a display has handed out outlive the frames.
Frame* ZOFFDebugger::contextFrame() const
{
    return m_frames.holds(m_context.frame) ? m_context.frame : nullptr;
}

void ZOFFDebugger::setContext(const ExpressionContext& context)
{
    m_context = context;
    beginEvaluation();
}

void ZOFFDebugger::setFrame(Frame* frame)
{
    ExpressionContext context;
    context.frame = frame;
    setContext(context);
}

uint64_t ZOFFDebugger::getRegister(unsigned number)
{
    Frame* frame = contextFrame();
    if (!frame)
        throw ParserException("there is no frame with registers");
    return frame->registers()->getValue(number);
}

void ZOFFDebugger::setRegister(unsigned number, uint64_t value)
{
    Frame* frame = contextFrame();
    if (!frame)
        throw ParserException("there is no frame with registers");
    setRegister(frame, number, uint32_t(value));
}

// --- Expressions ------------------------------------------------------------------------------

void ZOFFDebugger::evaluateExpression(const ExpressionContext& context, const QString& expression,
                                      const QString& name, VariableListBuilder* builder)
{
    setContext(context);
    builder->setExpressionContext(context);
    formatExpression(expression, name, builder);
}

void ZOFFDebugger::evaluateExpression(const ExpressionContext& context, const QString& expression,
                                      ExpressionType& value)
{
    setContext(context);
    value = parseAndEvaluate(expression);
}

void ZOFFDebugger::setExpression(const ExpressionContext& context, const QString& expression,
                                 const ExpressionType& value)
{
    setContext(context);
    assignExpression(expression, value);
}

DebuggerBreakpoint* ZOFFDebugger::setBreakpoint(const ExpressionContext& context, const QString& expression,
                                                const QString& trigger, int count, bool counted,
                                                bool temporary, const QString& limit, const QString& action)
{
    HMonitor& target = monitor();
    ExpressionContext seen = context;
    if (!seen.frame && m_run.stopped())
        seen.frame = m_frames.innermost();
    setContext(seen);
    ZOFFBreakpoint::Records records = m_breakpointExpressions.records(
        m_breakpointExpressions.analyse(expression), m_breakpoints, target, trigger);
    for (const auto& record : records) {
        record->count = count;
        record->counted = counted;
        record->limit = counted && !limit.isEmpty() ? limit.toInt() : -1;
        record->action = m_breakpoints.actionNumber(action);
    }
    ZOFFBreakpoint* breakpoint = m_breakpoints.add(std::move(records), temporary);
    if (!breakpoint)
        throw DebuggerBreakpointFailure(TargetRefuses);
    return breakpoint;
}

ExpressionType ZOFFDebugger::assign(MarkerType* marker, const ExpressionType& value)
{
    if (m_context.readOnly)
        throw ParserException("an assignment is not allowed here");
    return ZOFFExpressionEvaluator::assign(marker, value);
}

// --- Displays ---------------------------------------------------------------------------------

void ZOFFDebugger::getGlobalVariables(Frame* frame, VariableListBuilder* builder)
{
    if (!frame || !frame->symbols())
        return;
    setFrame(frame);
    builder->setExpressionContext(m_context);
    for (auto& [name, object] : frame->symbols()->module()->symbols())
        if (object->kind() == ZOFFKind::Symbol)
            formatSymbol(static_cast<ZOFFSymbol*>(object), builder);
}

void ZOFFDebugger::getStaticVariables(Frame* frame, VariableListBuilder* builder)
{
    const HString* file = nullptr;
    int line = 0;
    if (!frame || !frame->symbols() ||
        !frame->symbols()->sourceMap().AddressToSource(frame->place(), file, line))
        return;
    setFrame(frame);
    builder->setExpressionContext(m_context);
    const ZOFFModule& module = *frame->symbols()->module();
    for (ZOFFSymbol* symbol : module.allSymbols()) {
        bool local = symbol->scope() && symbol->scope()->kind() != ZOFFKind::Module;
        bool inFile = symbol->locus() && fileNameOf(symbol->locus()) == file;
        if (local || !inFile || !symbol->type() || symbol->type()->isFunction())
            continue;
        auto found = module.publicSymbols().find(symbol->name());
        if (found == module.publicSymbols().end() || found->second != symbol)
            formatSymbol(symbol, builder);
    }
}

// An inner name hides an outer one.
void ZOFFDebugger::getLocalVariables(Frame* frame, VariableListBuilder* builder)
{
    if (!frame || !frame->symbols())
        return;
    setFrame(frame);
    builder->setExpressionContext(m_context);
    std::map<const HString*, ZOFFSymbol*, HString::Earlier> visible;
    for (const ZOFFScope* scope = frame->symbols()->findScope(frame->place()); scope;
         scope = scope->scope()) {
        if (scope->kind() == ZOFFKind::Module)
            break;
        for (auto& [name, object] : scope->symbols())
            if (object->kind() == ZOFFKind::Symbol && object->type())
                visible.emplace(name, static_cast<ZOFFSymbol*>(object));
        if (scope->scopeKind() == ZOFFTag::ScopeFunction)
            break;
    }
    for (auto& [name, symbol] : visible)
        formatSymbol(symbol, builder);
}

void ZOFFDebugger::getParameters(Frame* frame, VariableListBuilder* builder)
{
    if (!frame || !frame->symbols())
        return;
    const ZOFFSymbol* function = frame->symbols()->findFunctionSymbol(frame->place());
    if (!function)
        return;
    setFrame(frame);
    builder->setExpressionContext(m_context);
    for (ZOFFSymbol* parameter : static_cast<const ZOFFFunctionType*>(function->type())->inParameters())
        formatSymbol(parameter, builder);
}
