// What this version of the debugger cannot do: expressions and what is made of them, and the window of
// disassembled text.

#include "debug/LaterVersion.h"
#include "debug/ZOFFDebugger.h"

namespace {

constexpr char Disassembly[] = "show disassembly";
constexpr char Values[] = "show values of a program";
constexpr char Expressions[] = "evaluate expressions";

} // namespace

QStringList ZOFFDebugger::getDisassemblyModes()
{
    notInThisVersion(Disassembly);
}

void ZOFFDebugger::setDisassemblyMode(const QString&)
{
    notInThisVersion(Disassembly);
}

QString ZOFFDebugger::getDisassemblyMode()
{
    notInThisVersion(Disassembly);
}

void ZOFFDebugger::clearDisassemblyText()
{
    notInThisVersion(Disassembly);
}

void ZOFFDebugger::getDisassemblyText(QStringList&)
{
    notInThisVersion(Disassembly);
}

void ZOFFDebugger::moreDisassemblyText(bool)
{
    notInThisVersion(Disassembly);
}

int ZOFFDebugger::getDisassemblyLineNumber(uint32_t)
{
    notInThisVersion(Disassembly);
}

uint32_t ZOFFDebugger::getDisassemblyLineAddress(int)
{
    notInThisVersion(Disassembly);
}

bool ZOFFDebugger::getSourceLocation(int, Path&, int&)
{
    notInThisVersion(Disassembly);
}

bool ZOFFDebugger::getAssemblyLocation(const Path&, int, int&)
{
    notInThisVersion(Disassembly);
}

void ZOFFDebugger::locateDisassembly(uint32_t)
{
    notInThisVersion(Disassembly);
}

void ZOFFDebugger::setDisassemblyExecution(bool)
{
    notInThisVersion(Disassembly);
}

void ZOFFDebugger::dumpMemory(const QString&, uint32_t, unsigned, QStringList&)
{
    notInThisVersion("show memory as text");
}

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
