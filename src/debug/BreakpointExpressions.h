// Breakpoints as a user writes them, "main", "x", "!buffer", "(flags & 0x0F) == 3", "a && b", made into the
// records that a monitor carries out.
#pragma once

#include "debug/run/ZOFFBreakpoint.h"
#include "expression/Expression.h"

#include <cstdint>
#include <vector>

class BreakpointList;
class HMonitor;
class SymbolTables;
class ZOFFExpressionEvaluator;
class ZOFFSection;

// One condition: what is accessed, and what must be true of it.
struct BreakpointExpression {
    enum Kind { Range, OutsideRange, Equal, NotEqual, GreaterOrEqual, LessOrEqual, Greater, Less };

    Kind kind = Range;
    bool isRegister = false;
    uint32_t address = 0; // of a register its number
    uint32_t size = 0;    // bytes
    uint32_t value = 0;
    uint32_t mask = 0xFFFFFFFF;
    // Where it lies, as far as that is known: the section of its symbol, or else whether it is an object in
    // another memory than that of code.
    const ZOFFSection* section = nullptr;
    bool isObject = false;
};

class BreakpointExpressions {
public:
    BreakpointExpressions(ZOFFExpressionEvaluator& evaluator, const SymbolTables& tables)
        : m_evaluator(evaluator), m_tables(tables)
    {
    }

    // The conditions of an expression, in its order. Throws DebuggerBreakpointFailure.
    std::vector<BreakpointExpression> analyse(const QString& text);
    // Their records, the last one first. An empty trigger stands for what suits the place.
    ZOFFBreakpoint::Records records(const std::vector<BreakpointExpression>& conditions,
                                    const BreakpointList& list, HMonitor& monitor, const QString& trigger);

private:
    using Conditions = std::vector<BreakpointExpression>;

    void collect(const Expression* tree, Conditions& conditions);
    BreakpointExpression analyse(const Expression* tree);
    void compare(BreakpointExpression& condition, const class MyMarker& place, uint64_t value, uint64_t mask);
    uint64_t number(const Expression* tree, const char* otherwise);
    int trigger(const BreakpointExpression& condition, HMonitor& monitor, uint32_t& length) const;

    ZOFFExpressionEvaluator& m_evaluator;
    const SymbolTables& m_tables;
};
