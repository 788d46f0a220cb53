// Values of expressions. All arithmetic is on 64 bits and wraps.
#pragma once

#include "tools/kvas/Program.h"
#include "tools/kvas/Tags.h"

#include <optional>
#include <string>

namespace kvas {

// Computes one operator; answers null, or why there is no value.
const char* applyOperator(Tag tag, int64_t left, int64_t right, int64_t& result);

struct Value {
    int64_t number = 0;
    std::string why; // not empty: there is no value
    bool resolved() const { return why.empty(); }
};

// Evaluates against the addresses of the last layout. Values of symbols are kept until nextPass.
class Evaluator {
public:
    Value evaluate(const Expr* expr) { return evaluate(expr, 0); }
    void nextPass() { ++m_pass; }

private:
    Value evaluate(const Expr* expr, unsigned symbols);
    Value evaluateSymbol(Symbol* symbol, unsigned symbols);

    uint32_t m_pass = 1;
};

} // namespace kvas
