#include "debug/evaluation/DebugExpressionParser.h"

#include "expression/CStyleLexer.h"
#include "support/Endian.h"

#include <bit>

DebugExpressionParser::DebugExpressionParser(Endian::EndianType endian)
    : ExpressionParser(std::make_unique<CStyleLexer>()), m_endian(endian)
{
}

DebugExpressionParser::~DebugExpressionParser() = default;

double DebugExpressionParser::getFloat(unsigned size)
{
    if (size == 8)
        return std::bit_cast<double>(block().getInt(8));
    return std::bit_cast<float>(uint32_t(block().getInt(4)));
}

void DebugExpressionParser::putFloat(double value, unsigned size)
{
    if (size == 8)
        block().putInt(std::bit_cast<uint64_t>(value), 8);
    else
        block().putInt(std::bit_cast<uint32_t>(float(value)), 4);
}
