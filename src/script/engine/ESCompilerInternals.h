// What the source files of the compiler share.
#pragma once

#include "script/engine/ESCompiler.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESNode.h"
#include "script/engine/limits.h"

#include <algorithm>

// One level of source nesting while it is alive.
class ESCompiler::Nesting {
public:
    explicit Nesting(ESCompiler* compiler) : m_compiler(compiler)
    {
        if (compiler->m_nesting >= ESLimits::SourceNesting)
            compiler->fail(compiler->m_lexer.line(), QStringLiteral("nesting too deep"));
        ++compiler->m_nesting;
    }
    ~Nesting() { --m_compiler->m_nesting; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    ESCompiler* m_compiler;
};

// What a nested function pushes aside while it is parsed.
struct ESCompiler::State {
    explicit State(ESCompiler* c)
        : compiler(c), function(c->m_function), code(c->m_code), withDepth(c->m_withDepth)
    {
    }
    ~State()
    {
        compiler->m_function = function;
        compiler->m_code = code;
        compiler->m_withDepth = withDepth;
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    ESCompiler* compiler;
    ESNode* function;
    ESCode* code;
    int withDepth;
};
