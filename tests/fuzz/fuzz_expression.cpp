// Any text as an expression must end in a value or a message.
#include "expression/ExpressionType.h"
#include "expression/ParserException.h"
#include "expression/VariablesParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static VariablesParser parser;
    if (parser.values.size() > 1000 || parser.values.isEmpty()) {
        parser.values.clear();
        for (const char* name : {"a", "b", "i", "p", "s", "@SP", "::x"})
            parser.values[QLatin1String(name)] = ExpressionType(1LL, 4);
        parser.values["s"] = ExpressionType("text", 4);
        parser.values["f"] = ExpressionType(1.5, 4);
        parser.values["u"] = ExpressionType(7ULL, 2);
    }
    parser.casts.clear();
    QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    try {
        if (ExpressionParser::Tree tree = parser.parse(text)) {
            if (tree->cost() < 10'000)
                tree->dump();
            ExpressionType value = tree->evaluate();
            for (int radix : {1, 2, 8, 10, 11, 16})
                value.toStr(radix == 11 ? 10 : radix, radix == 11, radix == 1, nullptr);
            value.TypeToString(false);
        }
    } catch (const ParserException&) {
    }
    return 0;
}
