#include "tools/kvas/Program.h"
#include "tools/kvas/Expression.h"
#include "tools/kvas/limits.h"

#include <algorithm>

namespace kvas {

Program::Program() = default;

const Expr* Program::constant(int64_t value)
{
    Expr expr{Expr::Kind::Constant};
    expr.value = value;
    return &m_exprs.emplace_back(expr);
}

const Expr* Program::of(Symbol* symbol)
{
    Expr expr{Expr::Kind::Symbol};
    expr.symbol = symbol;
    return &m_exprs.emplace_back(expr);
}

const Expr* Program::of(Marker* marker)
{
    Expr expr{Expr::Kind::Marker};
    expr.marker = marker;
    return &m_exprs.emplace_back(expr);
}

const Expr* Program::ofRegister(unsigned number)
{
    Expr expr{Expr::Kind::Register};
    expr.value = number;
    return &m_exprs.emplace_back(expr);
}

const Expr* Program::ofSection(Section* section, Expr::Kind kind)
{
    Expr expr{kind};
    expr.section = section;
    return &m_exprs.emplace_back(expr);
}

const Expr* Program::binary(Tag tag, const Expr* left, const Expr* right)
{
    if (left->isConstant() && right->isConstant()) {
        int64_t value;
        if (!applyOperator(tag, left->value, right->value, value))
            return constant(value);
    }
    auto isSum = [](const Expr* e) {
        return e->kind == Expr::Kind::Binary && e->tag == Tag::Add && e->right->isConstant();
    };
    if (tag == Tag::Add && left->isConstant() && isSum(right))
        return binary(tag, right->left, binary(tag, left, right->right));
    if (tag == Tag::Add && isSum(left) && right->isConstant())
        return binary(tag, left->left, binary(tag, left->right, right));

    unsigned depth = std::max(left->depth, right->depth) + 1u;
    if (depth > limits::Nesting)
        return nullptr;
    Expr expr{Expr::Kind::Binary, tag, uint8_t(depth)};
    expr.left = left;
    expr.right = right;
    return &m_exprs.emplace_back(expr);
}

Marker* Program::newMarker(std::string_view name)
{
    Marker& marker = m_markers.emplace_back();
    marker.name = name;
    marker.number = markers++;
    return &marker;
}

Symbol* Program::newSymbol(std::string_view name)
{
    Symbol& symbol = m_symbols.emplace_back();
    symbol.name = name;
    return &symbol;
}

Type* Program::newType(Type::Kind kind, int64_t size, const Place& place)
{
    Type& type = m_types.emplace_back();
    type.kind = kind;
    type.size = size;
    type.place = place;
    return &type;
}

Scope* Program::newScope(Tag kind, Scope* parent)
{
    Scope& scope = m_scopes.emplace_back();
    scope.kind = kind;
    scope.parent = parent;
    scopes.push_back(&scope);
    return &scope;
}

Section* Program::section(std::string_view name)
{
    if (auto found = m_sectionsByName.find(name); found != m_sectionsByName.end())
        return found->second;
    Section& section = sections.emplace_back();
    section.name = name;
    m_sectionsByName.emplace(section.name, &section);
    return &section;
}

} // namespace kvas
