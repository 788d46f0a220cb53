#include "debug/BreakpointExpressions.h"

#include "debug/evaluation/DebugMarkerType.h"
#include "debug/evaluation/TypeQualifier.h"
#include "debug/evaluation/ZOFFExpressionEvaluator.h"
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/monitor/HBreakpoint.h"
#include "debug/monitor/HMonitor.h"
#include "debug/run/BreakpointList.h"
#include "debug/symbols/SymbolTables.h"
#include "debug/symbols/SymbolicDebug.h"
#include "expression/Expression.h"
#include "expression/ExpressionOperator.h"
#include "expression/ExpressionType.h"
#include "expression/ParserException.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"

#include <algorithm>

namespace {

constexpr size_t MostConditions = 64; // of one breakpoint: each is looked at for each access
constexpr unsigned WidestValue = 4;   // bytes that a monitor compares

using Kind = BreakpointExpression::Kind;

// What an expression compares, or null when it is no comparison.
const BinaryExpression* comparison(const Expression* tree, Kind& kind)
{
    auto is = [&]<class Operator>(const Operator* found, Kind itsKind) -> const BinaryExpression* {
        if (found)
            kind = itsKind;
        return found;
    };
    if (auto* found = is(dynamic_cast<const EqExpression*>(tree), Kind::Equal))
        return found;
    if (auto* found = is(dynamic_cast<const NeExpression*>(tree), Kind::NotEqual))
        return found;
    if (auto* found = is(dynamic_cast<const GeExpression*>(tree), Kind::GreaterOrEqual))
        return found;
    if (auto* found = is(dynamic_cast<const LeExpression*>(tree), Kind::LessOrEqual))
        return found;
    if (auto* found = is(dynamic_cast<const GtExpression*>(tree), Kind::Greater))
        return found;
    return is(dynamic_cast<const LtExpression*>(tree), Kind::Less);
}

// Whether it is one of the operators that make a value of two, as fields and elements are none.
bool isOperator(const Expression* tree)
{
#define IS_OPERATOR(name, text)                                                                              \
    if (dynamic_cast<const name##Expression*>(tree))                                                         \
        return true;
    EXPRESSION_OPERATORS(IS_OPERATOR)
#undef IS_OPERATOR
    return false;
}

HBreakpoint::Comparison comparisonOf(Kind kind)
{
    switch (kind) {
    case Kind::NotEqual: return HBreakpoint::NotEqual;
    case Kind::GreaterOrEqual: return HBreakpoint::GreaterOrEqual;
    case Kind::LessOrEqual: return HBreakpoint::LessOrEqual;
    case Kind::Greater: return HBreakpoint::Greater;
    case Kind::Less: return HBreakpoint::Less;
    default: return HBreakpoint::Equal;
    }
}

bool isNumber(const ExpressionType& value)
{
    return value.getType() == ExpressionType::Boolean || value.getType() == ExpressionType::Signed ||
           value.getType() == ExpressionType::Unsigned;
}

} // namespace

std::vector<BreakpointExpression> BreakpointExpressions::analyse(const QString& text)
{
    m_evaluator.beginEvaluation();
    Conditions conditions;
    try {
        if (ExpressionParser::Tree tree = m_evaluator.parse(text))
            collect(tree.get(), conditions);
    } catch (const ParserException& failure) {
        throw DebuggerBreakpointFailure(failure.getCause());
    }
    if (conditions.empty())
        throw DebuggerBreakpointFailure("Invalid expression");
    return conditions;
}

// A row of && leans to the left as far as a text is long, so it is walked.
void BreakpointExpressions::collect(const Expression* tree, Conditions& conditions)
{
    std::vector<const Expression*> parts;
    while (auto* both = dynamic_cast<const LogicalAndExpression*>(tree)) {
        parts.push_back(both->right());
        tree = both->left();
        if (parts.size() > MostConditions)
            throw ParserException("too many conditions");
    }
    parts.push_back(tree);
    std::reverse(parts.begin(), parts.end());
    for (const Expression* part : parts) {
        if (part != tree && dynamic_cast<const LogicalAndExpression*>(part)) {
            collect(part, conditions);
        } else if (auto* outside = dynamic_cast<const LogicalNotExpression*>(part)) {
            BreakpointExpression condition = analyse(outside->operand());
            if (condition.kind != Kind::Range)
                throw ParserException("! only applicable to range expressions");
            condition.kind = Kind::OutsideRange;
            conditions.push_back(condition);
        } else {
            conditions.push_back(analyse(part));
        }
        if (conditions.size() > MostConditions)
            throw ParserException("too many conditions");
    }
}

uint64_t BreakpointExpressions::number(const Expression* tree, const char* otherwise)
{
    ExpressionType value = tree->evaluate();
    auto* marker = static_cast<MyMarker*>(value.getMarker());
    if (marker && marker->kind == DebugMarkerType::Constant) // a name for a number
        return marker->address;
    if (!isNumber(value))
        throw ParserException(otherwise);
    return value.getUInteger();
}

BreakpointExpression BreakpointExpressions::analyse(const Expression* tree)
{
    BreakpointExpression condition;
    const Expression* left = tree;
    uint64_t value = 0, mask = ~uint64_t(0);
    const BinaryExpression* compared = comparison(tree, condition.kind);
    if (compared) {
        left = compared->left();
        if (isOperator(left)) {
            auto* masked = dynamic_cast<const BitAndExpression*>(left);
            if (!masked)
                throw ParserException("& is the only supported mask operator");
            mask = number(masked->right(), "Constant required for rhs of mask");
            left = masked->left();
        }
        value = number(compared->right(), "Constant required for rhs");
    }
    m_evaluator.beginEvaluation();
    ExpressionType place = left->evaluate();
    if (const ZOFFSymbol* symbol = m_evaluator.lastSymbol())
        condition.section = symbol->evaluate().section;
    auto* marker = static_cast<MyMarker*>(place.getMarker());
    if (marker && compared && marker->kind == DebugMarkerType::Constant)
        marker = nullptr;
    if (compared && !marker)
        throw ParserException("Symbol required for lhs");
    if (marker) {
        bool isMemory = marker->isMemory();
        condition.isRegister = marker->kind == DebugMarkerType::Register;
        condition.isObject = isMemory && marker->kind != DebugMarkerType::Code;
        condition.address = isMemory ? marker->location() : uint32_t(marker->address);
        condition.size = marker->sizeInBytes;
        auto* pointer = marker->kind == DebugMarkerType::Constant && marker->type->isPtr()
                            ? static_cast<const ZOFFPtrType*>(marker->type)
                            : nullptr;
        if (pointer && pointer->target()) // the address of an object stands for it
            condition.size = std::max(1u, sizeOf(beneath(pointer->target())));
        if (compared)
            compare(condition, *marker, value, mask);
    } else if (isNumber(place)) {
        condition.address = uint32_t(place.getUInteger());
        condition.size = place.getSizeInBytes();
    } else {
        throw ParserException("Expression has no address");
    }
    return condition;
}

// The bits of a field lie somewhere in what is accessed.
void BreakpointExpressions::compare(BreakpointExpression& condition, const MyMarker& place, uint64_t value,
                                    uint64_t mask)
{
    if (place.type && beneath(place.type)->isFloat())
        throw ParserException("a value that is no integer cannot be compared");
    if (place.isBitField()) {
        int64_t bits = 8 * int64_t(place.sizeInBytes);
        int64_t shift = place.littleEndian ? place.bitOffset : bits - place.bitOffset - place.bitSize;
        if (place.sizeInBytes > WidestValue || place.bitSize <= 0 || place.bitSize > bits || shift < 0 ||
            shift + place.bitSize > bits)
            throw ParserException("Expression has no address");
        uint64_t field = (uint64_t(1) << place.bitSize) - 1;
        mask = (mask & field) << shift;
        value = (value & field) << shift;
    }
    condition.value = uint32_t(value);
    condition.mask = uint32_t(mask);
}

// By the kind of memory: code is executed, and data is written to.
int BreakpointExpressions::trigger(const BreakpointExpression& condition, HMonitor& monitor,
                                   uint32_t& length) const
{
    if (condition.isRegister)
        return monitor.getWriteTriggerNumber();
    const ZOFFSection* section = condition.section;
    if (!section && condition.isObject)
        return monitor.getWriteTriggerNumber();
    if (!section)
        if (const SymbolicDebug* table = m_tables.at(condition.address))
            section = table->getSection(condition.address);
    if (!section)
        return monitor.getExecuteTriggerNumber();
    unsigned kind = section->sectionKind();
    if (kind >= ZOFFSection::Data && kind <= ZOFFSection::LastData)
        return monitor.getWriteTriggerNumber();
    if (kind <= ZOFFSection::Code)
        length = 1;
    return monitor.getExecuteTriggerNumber();
}

ZOFFBreakpoint::Records BreakpointExpressions::records(const Conditions& conditions,
                                                       const BreakpointList& list, HMonitor& monitor,
                                                       const QString& triggerText)
{
    ZOFFBreakpoint::Records records;
    for (const BreakpointExpression& condition : conditions) {
        auto record = std::make_unique<HBreakpoint>();
        record->address = condition.address;
        record->isRegister = condition.isRegister;
        record->length = condition.size;
        record->trigger = triggerText.isEmpty() ? trigger(condition, monitor, record->length)
                                                : list.triggerNumber(triggerText);
        record->inverted = condition.kind == Kind::OutsideRange;
        if (condition.kind >= Kind::Equal) {
            record->hasValue = true;
            record->value = condition.value;
            record->mask = condition.mask;
            record->comparison = comparisonOf(condition.kind);
        }
        records.insert(records.begin(), std::move(record));
    }
    return records;
}
