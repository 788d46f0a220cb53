#include "expression/Expression.h"

#include "expression/ExpressionParser.h"
#include "expression/MarkerType.h"
#include "expression/ParserException.h"

namespace {

// The marker that an operation asks for; throws the text when the value is none.
MarkerType* markerOf(const ExpressionType& value, const char* otherwise)
{
    if (value.getType() != ExpressionType::Marker || !value.getMarker())
        throw ParserException(otherwise);
    return value.getMarker();
}

// A marker's content, or the value itself.
ExpressionType contentOf(ExpressionType value, ExpressionParser* parser)
{
    if (MarkerType* marker = value.getMarker())
        return parser->getValue(marker);
    return value;
}

} // namespace

std::vector<const ChainExpression*> ChainExpression::links(const Expression*& innermost) const
{
    std::vector<const ChainExpression*> links;
    innermost = this;
    while (const ChainExpression* link = innermost->asChain()) {
        links.push_back(link);
        innermost = link->m_first;
    }
    return links;
}

ExpressionType ChainExpression::evaluate() const
{
    const Expression* innermost = nullptr;
    std::vector<const ChainExpression*> chain = links(innermost);
    ExpressionType value = innermost->evaluate();
    for (auto link = chain.rbegin(); link != chain.rend(); ++link)
        value = (*link)->apply(std::move(value));
    return value;
}

QString ChainExpression::dump() const
{
    const Expression* innermost = nullptr;
    std::vector<const ChainExpression*> chain = links(innermost);
    QString text;
    for (const ChainExpression* link : chain)
        text += u'(' + link->dumpOperator() + u' ';
    text += innermost->dump();
    for (auto link = chain.rbegin(); link != chain.rend(); ++link)
        text += u' ' + (*link)->dumpOthers() + u')';
    return text;
}

ExpressionType IdentifierExpression::evaluate() const
{
    return ExpressionType(m_parser->getIdentifier(m_name));
}

ExpressionType ScopedIdentifierExpression::evaluate() const
{
    return ExpressionType(m_parser->getScopedIdentifier(m_names));
}

ExpressionType RegisterExpression::evaluate() const
{
    return ExpressionType(m_parser->getRegister(m_name));
}

ExpressionType AddressofExpression::evaluate() const
{
    ExpressionType value = operand()->evaluate();
    return ExpressionType(m_parser->getAddressof(markerOf(value, "cannot take address of a constant")));
}

ExpressionType SizeofExpression::evaluate() const
{
    ExpressionType value = operand()->evaluate();
    return m_parser->getSizeof(markerOf(value, "cannot determine sizeof of a constant"));
}

ExpressionType CastExpression::evaluate() const
{
    return m_parser->cast(m_type, m_operand->evaluate());
}

QString CastExpression::dump() const
{
    return QStringLiteral("((") + m_type->dump() + u')' + m_operand->dump() + u')';
}

CallExpression::CallExpression(const Expression* callee, std::vector<const Expression*> arguments,
                               ExpressionParser* parser)
    : ChainExpression(callee,
                      [&arguments] {
                          uint64_t cost = 0;
                          for (const Expression* argument : arguments)
                              cost += argument->cost();
                          return cost;
                      }()),
      m_arguments(std::move(arguments)), m_parser(parser)
{
}

ExpressionType CallExpression::apply(ExpressionType callee) const
{
    std::vector<ExpressionType> values;
    for (const Expression* argument : m_arguments)
        values.push_back(argument->evaluate());
    return m_parser->callFunction(callee.getMarker(), values);
}

QString CallExpression::dumpOthers() const
{
    QStringList texts;
    for (const Expression* argument : m_arguments)
        texts += argument->dump();
    return texts.join(u' ');
}

ExpressionType AssignExpression::apply(ExpressionType left) const
{
    MarkerType* marker = markerOf(left, "bad expression type");
    return m_parser->assign(marker, contentOf(right()->evaluate(), m_parser));
}

ExpressionType DotExpression::apply(ExpressionType left) const
{
    MarkerType* marker = markerOf(left, "bad expression type");
    if (auto* scoped = dynamic_cast<const ScopedIdentifierExpression*>(right()))
        m_parser->getDereference(marker, scoped->names());
    else
        m_parser->getDereference(marker, static_cast<const IdentifierExpression*>(right())->name());
    return left;
}

ExpressionType LeftSquareBracketExpression::apply(ExpressionType left) const
{
    MarkerType* marker = markerOf(left, "bad expression type");
    ExpressionType index = contentOf(right()->evaluate(), m_parser);
    if (index.getType() != ExpressionType::Signed && index.getType() != ExpressionType::Unsigned)
        throw ParserException("bad index type");
    m_parser->getDereference(marker, index.getType() == ExpressionType::Signed
                                         ? index.getInteger()
                                         : int64_t(index.getUInteger()));
    return left;
}
