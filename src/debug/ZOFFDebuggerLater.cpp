// What this version of the debugger cannot do: expressions, and what is made of them.

#include "debug/LaterVersion.h"
#include "debug/ZOFFDebugger.h"

namespace {

constexpr char Values[] = "show values of a program";
constexpr char Expressions[] = "evaluate expressions";

} // namespace

DebuggerBreakpoint* ZOFFDebugger::setBreakpoint(const ExpressionContext&, const QString&, const QString&, int,
                                                bool, bool, const QString&, const QString&)
{
    notInThisVersion("set a breakpoint on an expression");
}

void ZOFFDebugger::getGlobalVariables(Frame*, VariableListBuilder*)
{
    notInThisVersion(Values);
}

void ZOFFDebugger::getLocalVariables(Frame*, VariableListBuilder*)
{
    notInThisVersion(Values);
}

void ZOFFDebugger::getParameters(Frame*, VariableListBuilder*)
{
    notInThisVersion(Values);
}

void ZOFFDebugger::evaluateExpression(const ExpressionContext&, const QString&, const QString&,
                                      VariableListBuilder*)
{
    notInThisVersion(Expressions);
}

void ZOFFDebugger::evaluateExpression(const ExpressionContext&, const QString&, ExpressionType&)
{
    notInThisVersion(Expressions);
}

void ZOFFDebugger::setExpression(const ExpressionContext&, const QString&, const ExpressionType&)
{
    notInThisVersion(Expressions);
}
