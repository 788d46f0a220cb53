#include "tools/kvas/Expression.h"
#include "tools/kvas/Tags.h"
#include "tools/kvas/limits.h"

namespace kvas {

const char* applyOperator(Tag tag, int64_t l, int64_t r, int64_t& result)
{
    uint64_t ul = uint64_t(l), ur = uint64_t(r);
    switch (tag) {
    case Tag::Add: result = int64_t(ul + ur); break;
    case Tag::Subtract: result = int64_t(ul - ur); break;
    case Tag::Multiply: result = int64_t(ul * ur); break;
    case Tag::Divide:
        if (r == 0)
            return "division by zero";
        result = r == -1 ? int64_t(0 - ul) : l / r; // the smallest number by -1 wraps
        break;
    case Tag::Remainder:
        if (r == 0)
            return "modulus by zero";
        result = r == -1 ? 0 : l % r;
        break;
    case Tag::And: result = l & r; break;
    case Tag::Or: result = l | r; break;
    case Tag::Xor: result = l ^ r; break;
    case Tag::ShiftLeft: result = ur < 64 ? int64_t(ul << ur) : 0; break;
    case Tag::ShiftRight: result = ur < 64 ? int64_t(ul >> ur) : 0; break;
    case Tag::ArithmeticRight: result = l >> (ur < 64 ? ur : 63); break;
    case Tag::Equal: result = l == r; break;
    case Tag::NotEqual: result = l != r; break;
    case Tag::Greater: result = l > r; break;
    case Tag::Less: result = l < r; break;
    case Tag::GreaterEqual: result = l >= r; break;
    case Tag::LessEqual: result = l <= r; break;
    case Tag::LogicalAnd: result = l && r; break;
    case Tag::LogicalOr: result = l || r; break;
    case Tag::WordAddress: result = l >> 1; break;
    default: result = l; break;
    }
    return nullptr;
}

Value Evaluator::evaluate(const Expr* expr, unsigned symbols)
{
    switch (expr->kind) {
    case Expr::Kind::Constant: return {expr->value, {}};
    case Expr::Kind::Symbol: return evaluateSymbol(expr->symbol->meant(), symbols);
    case Expr::Kind::Marker:
        if (expr->marker->pc < 0)
            return {0, "forward reference to label " + std::string(expr->marker->name)};
        return {expr->marker->pc, {}};
    case Expr::Kind::Register: return {0, "a register has no address"};
    case Expr::Kind::SectionStart:
    case Expr::Kind::SectionSize:
        if (!expr->section->placed)
            return {0, "section " + expr->section->name + " has no address yet"};
        if (expr->kind == Expr::Kind::SectionStart)
            return {expr->section->start, {}};
        return {int64_t(expr->section->end) - expr->section->start, {}};
    case Expr::Kind::Binary: break;
    }
    Value left = evaluate(expr->left, symbols);
    if (!left.resolved())
        return left;
    Value right = evaluate(expr->right, symbols);
    if (!right.resolved())
        return right;
    Value result;
    if (const char* why = applyOperator(expr->tag, left.number, right.number, result.number))
        result.why = why;
    return result;
}

Value Evaluator::evaluateSymbol(Symbol* symbol, unsigned symbols)
{
    if (symbol->pass == m_pass)
        return {symbol->cached, {}};
    if (!symbol->value)
        return {0, "undefined symbol " + std::string(symbol->name)};
    if (symbol->evaluating)
        return {0, "circular reference to " + std::string(symbol->name)};
    if (symbols == limits::SymbolChain)
        return {0, "symbols are defined through too many others at " + std::string(symbol->name)};
    symbol->evaluating = true;
    Value value = evaluate(symbol->value, symbols + 1);
    symbol->evaluating = false;
    if (value.resolved()) {
        symbol->pass = m_pass;
        symbol->cached = value.number;
    }
    return value;
}

} // namespace kvas
