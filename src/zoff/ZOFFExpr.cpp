#include "zoff/ZOFFExpr.h"

#include "support/HException.h"
#include "support/HString.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFProcessor.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"
#include "zoff/limits.h"

#include <charconv>
#include <vector>

namespace {

// The work of the evaluation that is under way, through all symbols that it meets. Shared parts and
// symbols of symbols can ask for far more steps than a file has bytes.
int g_steps = 0;
int g_symbolNesting = 0;

std::string textOf(const HString* name)
{
    return name ? std::string(name->view()) : std::string();
}

} // namespace

ZOFFEvaluation ZOFFEvaluation::failure(std::string message)
{
    ZOFFEvaluation result;
    result.unresolved = true;
    result.message = std::move(message);
    return result;
}

std::string ZOFFExpr::printString() const
{
    std::string text;
    print(text);
    return text;
}

bool ZOFFConstExpr::equals(const ZOFFExpr* other) const
{
    return other->kind() == kind() && static_cast<const ZOFFConstExpr*>(other)->m_value == m_value;
}

ZOFFEvaluation ZOFFConstExpr::evaluate() const
{
    ZOFFEvaluation result;
    result.value = m_value;
    return result;
}

void ZOFFConstExpr::print(std::string& out) const
{
    char digits[24];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, m_value).ptr);
}

bool ZOFFRegisterExpr::equals(const ZOFFExpr* other) const
{
    return other->kind() == kind() && static_cast<const ZOFFRegisterExpr*>(other)->m_register == m_register;
}

ZOFFEvaluation ZOFFRegisterExpr::evaluate() const
{
    return ZOFFEvaluation::failure({});
}

std::string ZOFFRegisterExpr::getRegisterName(int32_t number)
{
    return ZOFFProcessor::current().registerName(unsigned(number));
}

void ZOFFRegisterExpr::print(std::string& out) const
{
    out += getRegisterName(m_register);
}

bool ZOFFSymbolExpr::equals(const ZOFFExpr* other) const
{
    return other->kind() == kind() && static_cast<const ZOFFSymbolExpr*>(other)->m_symbol == m_symbol;
}

ZOFFEvaluation ZOFFSymbolExpr::evaluate() const
{
    if (m_visiting)
        return ZOFFEvaluation::failure("circular reference to " + textOf(m_symbol->name()));
    if (g_symbolNesting == 0)
        g_steps = 0;
    if (g_symbolNesting >= ZOFFLimits::SymbolNesting || ++g_steps > ZOFFLimits::EvaluationSteps)
        return ZOFFEvaluation::failure("value of " + textOf(m_symbol->name()) + " is too complex");
    struct Visit {
        bool& visiting;
        explicit Visit(bool& flag) : visiting(flag)
        {
            visiting = true;
            ++g_symbolNesting;
        }
        ~Visit()
        {
            visiting = false;
            --g_symbolNesting;
        }
    } visit(m_visiting);
    return m_symbol->evaluate();
}

void ZOFFSymbolExpr::print(std::string& out) const
{
    if (m_symbol->name())
        out += m_symbol->name()->view();
}

bool ZOFFMarkerExpr::equals(const ZOFFExpr* other) const
{
    return other->kind() == kind() && static_cast<const ZOFFMarkerExpr*>(other)->m_marker == m_marker;
}

ZOFFEvaluation ZOFFMarkerExpr::evaluate() const
{
    if (m_marker->pc() == -1) {
        std::string message = "forward reference to label";
        if (m_marker->name())
            message += " " + textOf(m_marker->name());
        return ZOFFEvaluation::failure(std::move(message));
    }
    ZOFFEvaluation result;
    result.value = m_marker->pc();
    result.section = m_marker->fragment() ? m_marker->fragment()->section() : nullptr;
    return result;
}

void ZOFFMarkerExpr::print(std::string& out) const
{
    m_marker->print(out);
}

ZOFFTypeExpr::ZOFFTypeExpr(ZOFFType* type, ZOFFExpr* inner) : ZOFFExpr(ZOFFKind::TypeExpr), m_inner(inner)
{
    if (inner->depth() >= ZOFFLimits::MaxNesting)
        throw HException("bad object file: expression nested too deeply");
    m_type = type;
    m_depth = uint16_t(inner->depth() + 1);
}

bool ZOFFTypeExpr::equals(const ZOFFExpr* other) const
{
    if (other->kind() != kind())
        return false;
    auto* typed = static_cast<const ZOFFTypeExpr*>(other);
    return typed->m_type == m_type && m_inner->equals(typed->m_inner);
}

ZOFFEvaluation ZOFFTypeExpr::evaluate() const
{
    const ZOFFExpr* inner = m_inner;
    while (inner->kind() == ZOFFKind::TypeExpr)
        inner = static_cast<const ZOFFTypeExpr*>(inner)->m_inner;
    return inner->evaluate();
}

void ZOFFTypeExpr::print(std::string& out) const
{
    m_inner->print(out);
}

// ---- operators ----

const char* ZOFFBinaryExpr::operatorText(ZOFFTag op)
{
    switch (op) {
    case ZOFFTag::Add: return " + ";
    case ZOFFTag::Sub: return " - ";
    case ZOFFTag::Mul: return " * ";
    case ZOFFTag::Div: return " / ";
    case ZOFFTag::Mod: return " % ";
    case ZOFFTag::And: return " & ";
    case ZOFFTag::Or: return " | ";
    case ZOFFTag::Xor: return " ^ ";
    case ZOFFTag::Shl: return " << ";
    case ZOFFTag::Shr: return " >> ";
    case ZOFFTag::Ashr: return " ASHR ";
    case ZOFFTag::Eq: return " == ";
    case ZOFFTag::Ne: return " != ";
    case ZOFFTag::Gt: return " > ";
    case ZOFFTag::Lt: return " < ";
    case ZOFFTag::Ge: return " >= ";
    case ZOFFTag::Le: return " <= ";
    case ZOFFTag::LogAnd: return " && ";
    case ZOFFTag::LogOr: return " || ";
    default: return " ?? ";
    }
}

ZOFFEvaluation ZOFFBinaryExpr::combine(ZOFFTag op, ZOFFEvaluation left, const ZOFFEvaluation& right)
{
    if (left.unresolved)
        return left;
    if (right.unresolved)
        return right;
    int64_t a = left.value, b = right.value;
    auto ua = uint64_t(a), ub = uint64_t(b);
    bool inRange = ub < 64;
    ZOFFSection* section = nullptr;
    int64_t value = 0;
    switch (op) {
    case ZOFFTag::Add:
        value = int64_t(ua + ub);
        section = left.section ? left.section : right.section;
        break;
    case ZOFFTag::Sub:
        value = int64_t(ua - ub);
        if (!left.section || !right.section)
            section = left.section ? left.section : right.section;
        break;
    case ZOFFTag::Mul:
        value = int64_t(ua * ub);
        section = right.section ? nullptr : left.section;
        break;
    case ZOFFTag::Div:
        if (b == 0)
            return ZOFFEvaluation::failure("division by zero");
        value = b == -1 ? int64_t(0 - ua) : a / b; // the lowest number has no negative and stays
        break;
    case ZOFFTag::Mod:
        if (b == 0)
            return ZOFFEvaluation::failure("modulus by zero");
        value = b == -1 ? 0 : a % b;
        break;
    case ZOFFTag::And: value = a & b; break;
    case ZOFFTag::Or: value = a | b; break;
    case ZOFFTag::Xor: value = a ^ b; break;
    case ZOFFTag::Shl: value = inRange ? int64_t(ua << ub) : 0; break;
    case ZOFFTag::Shr: value = inRange ? int64_t(ua >> ub) : 0; break;
    case ZOFFTag::Ashr: value = a >> (inRange ? b : 63); break;
    case ZOFFTag::Eq: value = a == b; break;
    case ZOFFTag::Ne: value = a != b; break;
    case ZOFFTag::Gt: value = a > b; break;
    case ZOFFTag::Lt: value = a < b; break;
    case ZOFFTag::Ge: value = a >= b; break;
    case ZOFFTag::Le: value = a <= b; break;
    case ZOFFTag::LogAnd: value = a && b; break;
    case ZOFFTag::LogOr: value = a || b; break;
    case ZOFFTag::WordAddress:
        value = a >> 1;
        section = left.section;
        break;
    default: return left;
    }
    left.value = value;
    left.section = section;
    if (left.codeletIndex == -1)
        left.codeletIndex = right.codeletIndex;
    left.patchable |= right.patchable;
    left.patched |= right.patched;
    return left;
}

namespace {

uint32_t nodesOf(const ZOFFExpr* expr)
{
    while (expr->kind() == ZOFFKind::TypeExpr)
        expr = static_cast<const ZOFFTypeExpr*>(expr)->inner();
    return expr->kind() == ZOFFKind::BinaryExpr ? static_cast<const ZOFFBinaryExpr*>(expr)->nodes() : 1;
}

void requireParts(const ZOFFExpr* left, const ZOFFExpr* right)
{
    if (left->depth() >= ZOFFLimits::MaxNesting || right->depth() >= ZOFFLimits::MaxNesting)
        throw HException("bad object file: expression nested too deeply");
    if (nodesOf(left) + nodesOf(right) >= ZOFFLimits::ExpressionNodes)
        throw HException("bad object file: expression too large");
}

} // namespace

ZOFFBinaryExpr::ZOFFBinaryExpr(ZOFFTag op, ZOFFExpr* left, ZOFFExpr* right)
    : ZOFFExpr(ZOFFKind::BinaryExpr), m_op(op), m_nodes(1 + nodesOf(left) + nodesOf(right)), m_left(left),
      m_right(right)
{
    m_depth = uint16_t(1 + (left->depth() > right->depth() ? left->depth() : right->depth()));
}

namespace {

// An addition whose right operand is a constant, else null.
const ZOFFBinaryExpr* additionOfConstant(const ZOFFExpr* expr)
{
    if (expr->kind() != ZOFFKind::BinaryExpr)
        return nullptr;
    auto* sum = static_cast<const ZOFFBinaryExpr*>(expr);
    return sum->op() == ZOFFTag::Add && sum->right()->isConstant() ? sum : nullptr;
}

ZOFFExpr* foldedSum(const ZOFFExpr* left, const ZOFFExpr* right)
{
    return new ZOFFConstExpr(
        ZOFFBinaryExpr::combine(ZOFFTag::Add, left->evaluate(), right->evaluate()).value);
}

} // namespace

ZOFFExpr* ZOFFBinaryExpr::make(ZOFFTag op, ZOFFExpr* left, ZOFFExpr* right)
{
    if (left->isConstant() && right->isConstant()) {
        ZOFFEvaluation folded = combine(op, left->evaluate(), right->evaluate());
        if (!folded.unresolved)
            return new ZOFFConstExpr(folded.value);
    } else if (op == ZOFFTag::Add) {
        // Only resolved constants fold: a division by zero counts as no constant here, since a binary
        // expression never does.
        if (left->isConstant()) {
            if (const ZOFFBinaryExpr* sum = additionOfConstant(right))
                return new ZOFFBinaryExpr(op, sum->left(), foldedSum(left, sum->right()));
        } else if (right->isConstant()) {
            if (const ZOFFBinaryExpr* sum = additionOfConstant(left))
                return new ZOFFBinaryExpr(op, sum->left(), foldedSum(sum->right(), right));
        }
    }
    requireParts(left, right);
    return new ZOFFBinaryExpr(op, left, right);
}

bool ZOFFBinaryExpr::equals(const ZOFFExpr* other) const
{
    if (other == this)
        return true;
    if (other->kind() != kind())
        return false;
    auto* binary = static_cast<const ZOFFBinaryExpr*>(other);
    return binary->m_op == m_op && binary->m_nodes == m_nodes && m_left->equals(binary->m_left) &&
           m_right->equals(binary->m_right);
}

ZOFFEvaluation ZOFFBinaryExpr::evaluate() const
{
    // Deep trees take a stack on the heap, so that a file cannot exhaust the process's own.
    constexpr int ShallowDepth = 100;
    if (m_depth <= ShallowDepth) {
        if (g_symbolNesting && ++g_steps > ZOFFLimits::EvaluationSteps)
            return ZOFFEvaluation::failure("expression is too complex");
        return combine(m_op, m_left->evaluate(), m_right->evaluate());
    }
    struct Pending {
        const ZOFFExpr* expr;
        bool operandsDone;
    };
    std::vector<Pending> pending{{this, false}};
    std::vector<ZOFFEvaluation> values;
    auto enter = [&](const ZOFFExpr* part) {
        while (part->kind() == ZOFFKind::TypeExpr)
            part = static_cast<const ZOFFTypeExpr*>(part)->inner();
        pending.push_back({part, false});
    };
    while (!pending.empty()) {
        auto [expr, operandsDone] = pending.back();
        if (!operandsDone && (expr->kind() != ZOFFKind::BinaryExpr || expr->depth() <= ShallowDepth)) {
            values.push_back(expr->evaluate());
            pending.pop_back();
            continue;
        }
        auto* node = static_cast<const ZOFFBinaryExpr*>(expr);
        if (operandsDone) {
            ZOFFEvaluation right = std::move(values.back());
            values.pop_back();
            values.back() = combine(node->m_op, std::move(values.back()), right);
            pending.pop_back();
        } else {
            if (g_symbolNesting && ++g_steps > ZOFFLimits::EvaluationSteps)
                return ZOFFEvaluation::failure("expression is too complex");
            pending.back().operandsDone = true;
            enter(node->m_right);
            enter(node->m_left); // evaluated first
        }
    }
    return values.back();
}

void ZOFFBinaryExpr::print(std::string& out) const
{
    auto part = [&out](const ZOFFExpr* expr) {
        bool nested = expr->kind() == ZOFFKind::BinaryExpr;
        if (nested)
            out += '(';
        expr->print(out);
        if (nested)
            out += ')';
    };
    part(m_left);
    out += operatorText(m_op);
    part(m_right);
}
