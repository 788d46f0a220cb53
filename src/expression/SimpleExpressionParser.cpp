#include "expression/SimpleExpressionParser.h"

#include "expression/BaseType.h"
#include "expression/CStyleLexer.h"
#include "expression/ExpressionType.h"
#include "expression/MarkerType.h"
#include "expression/ParserException.h"

SimpleExpressionParser::SimpleExpressionParser() : ExpressionParser(std::make_unique<CStyleLexer>()) {}

SimpleExpressionParser& SimpleExpressionParser::instance()
{
    static SimpleExpressionParser parser;
    return parser;
}

uint64_t SimpleExpressionParser::getUInteger(const QString& text, bool& ok)
{
    ok = false;
    try {
        int end = 0;
        ExpressionType value = parseAndEvaluate(text, &end);
        ok = end == text.size() && (value.isNumberType() || value.getType() == ExpressionType::Boolean);
        return ok ? value.getUInteger() : 0;
    } catch (const ParserException&) {
        return 0;
    }
}

std::unique_ptr<MarkerType> SimpleExpressionParser::getScopedIdentifier(const QStringList& names)
{
    throw ParserException(names.join(QLatin1String("::")) + QLatin1String(" symbol not found"));
}

std::unique_ptr<MarkerType> SimpleExpressionParser::getIdentifier(const QString& name)
{
    throw ParserException(name + QLatin1String(" symbol not found"));
}

std::unique_ptr<MarkerType> SimpleExpressionParser::getRegister(const QString&)
{
    throw ParserException("unknown register");
}

ExpressionType SimpleExpressionParser::cast(const BaseType*, const ExpressionType&)
{
    throw ParserException("cannot cast");
}

void SimpleExpressionParser::getDereference(MarkerType*, int64_t)
{
    throw ParserException("cannot dereference");
}

void SimpleExpressionParser::getDereference(MarkerType*, const QString&)
{
    throw ParserException("cannot dereference");
}

void SimpleExpressionParser::getDereference(MarkerType*, const QStringList&)
{
    throw ParserException("cannot dereference");
}

ExpressionType SimpleExpressionParser::assign(MarkerType*, const ExpressionType&)
{
    throw ParserException("this symbol not found");
}

ExpressionType SimpleExpressionParser::getValue(MarkerType*)
{
    throw ParserException("this symbol not found");
}
