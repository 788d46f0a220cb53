// The nodes of one tree, which go all at once however deep it is.
#pragma once

#include "expression/BaseType.h"
#include "expression/ExpressionParser.h"
#include "expression/ParserException.h"
#include "expression/limits.h"

struct ExpressionParser::Arena {
    std::vector<std::unique_ptr<const Expression>> nodes;
    std::vector<std::unique_ptr<const BaseType>> types;
};

// One level of a rule within others.
class ExpressionParser::Nesting {
public:
    explicit Nesting(ExpressionParser& parser) : m_depth(parser.m_depth)
    {
        if (m_depth >= EXPRESSION_MAXIMUM_DEPTH)
            throw ParserException("expression is nested too deeply");
        ++m_depth;
    }
    ~Nesting() { --m_depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    int& m_depth;
};

template <typename Node, typename... Arguments> const Node* ExpressionParser::make(Arguments&&... arguments)
{
    auto node = std::make_unique<const Node>(std::forward<Arguments>(arguments)...);
    if (node->cost() > EXPRESSION_MAXIMUM_COST)
        throw ParserException("expression is too complex");
    const Node* made = node.get();
    m_arena->nodes.push_back(std::move(node));
    return made;
}

template <typename Node, typename... Arguments>
const Node* ExpressionParser::makeType(Arguments&&... arguments)
{
    auto type = std::make_unique<const Node>(std::forward<Arguments>(arguments)...);
    const Node* made = type.get();
    m_arena->types.push_back(std::move(type));
    return made;
}
