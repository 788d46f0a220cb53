#include "script/engine/ESCompiler.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESGenerator.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/limits.h"

#include <algorithm>
#include <cstdio>

int flag_debug = 0;
int ESCompiler::s_temporaries = 0;

ESCompiler::ESCompiler(ESContext* context) : m_context(context), m_lexer(context) {}
ESCompiler::~ESCompiler() = default;

void ESCompiler::setSource(const QString& source)
{
    m_lexer.setSource(source);
}

std::unique_ptr<ESCode> ESCompiler::parse()
{
    auto code = std::make_unique<ESCode>();
    m_function = nullptr;
    m_code = code.get();
    ESNode* program = makeList('{', statementList(ESToken::EndOfInput));
    generateFunctions();
    ESGenerator(*this, nullptr, code.get(), 2).program(program);
    finish(code.get());
    return code;
}

ESObject* ESCompiler::parseFunction(const QString& parameters, const QString& body)
{
    ESNode* function = make(ESToken::Function);
    beginFunction(function);
    m_lexer.setSource(parameters);
    parameterList(ESToken::EndOfInput);
    m_lexer.setSource(body);
    function->kids[0] = makeList('{', statementList(ESToken::EndOfInput));
    m_functions.push_back(function);
    m_function = nullptr;
    generateFunctions();
    return m_context->mkfunction(function->code, nullptr);
}

// Nodes.

ESNode* ESCompiler::make(int kind)
{
    m_nodes.emplace_back(kind, m_lexer.line());
    return &m_nodes.back();
}

namespace {

// Kinds whose left operand the generator follows in a loop, so that a long chain costs no depth.
bool isOperatorChain(int kind)
{
    switch (kind) {
    case '|':
    case '^':
    case '&':
    case '<':
    case '+':
    case '-':
    case '*':
    case '/':
    case '%':
    case ESToken::LogicalOr:
    case ESToken::LogicalAnd:
    case ESToken::Equal:
    case ESToken::NotEqual:
    case ESToken::LessEqual:
    case ESToken::ShiftLeft:
    case ESToken::ShiftRight:
    case ESToken::ShiftRightUnsigned: return true;
    default: return false;
    }
}

bool continuesChain(int kind, int left)
{
    return kind == ',' ? left == ',' : isOperatorChain(kind) && isOperatorChain(left);
}

bool hasEffect(int kind)
{
    switch (kind) {
    case '=':
    case ESToken::AndAssign:
    case ESToken::OrAssign:
    case ESToken::XorAssign:
    case ESToken::ShlAssign:
    case ESToken::ShrAssign:
    case ESToken::UshrAssign:
    case ESToken::AddAssign:
    case ESToken::SubAssign:
    case ESToken::MulAssign:
    case ESToken::DivAssign:
    case ESToken::ModAssign:
    case ESToken::Increment:
    case ESToken::Decrement:
    case ESToken::PostIncrement:
    case ESToken::PostDecrement:
    case ESToken::Delete:
    case ESToken::Call:
    case ESToken::NewCall: return true;
    default: return false;
    }
}

} // namespace

ESNode* ESCompiler::make(int kind, ESNode* a, ESNode* b, ESNode* c, ESNode* d)
{
    ESNode* node = make(kind);
    ESNode* kids[] = {a, b, c, d};
    node->pure = !hasEffect(kind);
    for (int i = 0; i < 4; ++i) {
        node->kids[i] = kids[i];
        if (!kids[i])
            continue;
        bool sameChain = i == 0 && continuesChain(kind, kids[i]->kind);
        node->depth = std::max(node->depth, kids[i]->depth + (sameChain ? 0 : 1));
        node->pure = node->pure && kids[i]->pure;
    }
    checkDepth(node);
    return node;
}

ESNode* ESCompiler::makeList(int kind, const ESNodeList& list)
{
    ESNode* node = make(kind);
    node->kids[0] = list.first;
    node->count = list.count;
    node->depth = list.depth + 1;
    node->pure = list.pure && !hasEffect(kind);
    checkDepth(node);
    return node;
}

void ESCompiler::checkDepth(ESNode* node)
{
    // Statements count with their expressions here, so the bound leaves room for both; what the parser
    // nests is bounded on the way down.
    if (node->depth > 2 * ESLimits::SourceNesting + 100)
        fail(node->line, QStringLiteral("nesting too deep"));
}

// Tokens.

void ESCompiler::fail(int line, const QString& text)
{
    m_context->throwSyntaxError(line, text);
}

void ESCompiler::expected(const QString& what)
{
    fail(m_lexer.line(), QStringLiteral("expected %1 found %2").arg(what, tokname(m_lexer.peek())));
}

void ESCompiler::accept(int token)
{
    if (!m_lexer.take(token))
        expected(tokname(token));
}

void ESCompiler::semi()
{
    int token = m_lexer.peek();
    if (token == ';')
        m_lexer.next();
    else if (token != '}' && token != ESToken::EndOfInput && !m_lexer.afterLineEnd())
        expected(QStringLiteral(";"));
}

// Names.

ESString* ESCompiler::mktempnam()
{
    return ESStringPool::intern(QStringLiteral("CG%1").arg(++s_temporaries));
}

int ESCompiler::globalSlot(ESString* name, unsigned attributes)
{
    ESObject* global = m_context->globalObject();
    if (ESProperty* found = global->find(name))
        return int(found - global->slots());
    return int(global->append(name, attributes, g_undefined));
}

void ESCompiler::codevar(ESString* name, unsigned attributes, bool redeclare)
{
    codevar(m_function, m_code, name, attributes, redeclare);
}

void ESCompiler::codevar(ESNode* function, ESCode* code, ESString* name, unsigned attributes, bool redeclare)
{
    if (!function) {
        globalSlot(name, attributes);
        return;
    }
    for (ESCode::Variable& variable : code->variables) {
        if (variable.name == name) {
            if (!redeclare)
                return;
            variable.name = mktempnam();
            break;
        }
    }
    if (code->variables.size() >= 65535)
        throw ESFatalError("compiler error: too many variables");
    code->variables.push_back({name, attributes});
    ++((attributes & ESProperty::Parameter) ? code->formalCount : code->localCount);
}

namespace {

ESCode::Variable* findVariable(ESCode* code, ESString* name)
{
    for (ESCode::Variable& variable : code->variables)
        if (variable.name == name)
            return &variable;
    return nullptr;
}

void markFrames(ESNode* function)
{
    for (; function; function = function->enclosing)
        function->code->needsFrame = true;
}

} // namespace

ESCompiler::ESLocation ESCompiler::resolve(ESNode* function, ESCode* code, ESString* name, int withDepth,
                                           int pass, bool make)
{
    if (pass == 1 && function && (name == g_argumentsString || name == g_evalString)) {
        // A parameter of that name hides the object.
        ESCode::Variable* variable = findVariable(code, g_argumentsString);
        if (!variable || !(variable->attributes & ESProperty::Parameter)) {
            if (name == g_argumentsString)
                markFrames(function);
            code->needsArguments = true;
            codevar(function, code, g_argumentsString, 0, false);
        }
    }
    if (withDepth > 0) {
        markFrames(function);
        return {ESLocation::Dynamic};
    }
    if (function) {
        if (ESCode::Variable* variable = findVariable(code, name)) {
            int slot = int(variable - code->variables.data());
            if (variable->attributes & ESProperty::Parameter)
                return {ESLocation::Parameter, slot};
            return {ESLocation::Local, slot - code->formalCount};
        }
    }
    // Outward. A variable that is found in an outer function has to live in that function's activation
    // object; the functions between only pass the scope chain on and keep theirs on the stack.
    for (ESNode* inner = function; inner; inner = inner->enclosing) {
        if (inner->insideWith) {
            markFrames(inner->enclosing);
            return {ESLocation::Dynamic};
        }
        ESNode* outer = inner->enclosing;
        if (outer && findVariable(outer->code, name)) {
            outer->code->needsFrame = true;
            return {ESLocation::Dynamic};
        }
    }
    if (!make)
        return {ESLocation::Dynamic};
    int slot = globalSlot(name, 0);
    if (slot > 0xFFFF)
        return {ESLocation::Dynamic};
    return {ESLocation::Global, slot};
}

// Functions.

void ESCompiler::beginFunction(ESNode* function)
{
    auto code = std::make_unique<ESCode>();
    function->enclosing = m_function;
    function->insideWith = m_withDepth > 0;
    function->code = code.get();
    function->functionIndex = ESContext::registerFunctionCode(std::move(code));
    m_function = function;
    m_code = function->code;
    m_withDepth = 0;
}

void ESCompiler::generateFunctions()
{
    for (ESNode* function : m_functions)
        generateFunction(function);
    m_functions.clear();
}

void ESCompiler::generateFunction(ESNode* function)
{
    ESCode* code = function->code;
    ESGenerator(*this, function, code, 1).function(function);
    if (code->needsFrame || code->needsArguments) {
        code->discard();
        ESGenerator(*this, function, code, 2).function(function);
    }
    finish(code);
}

void ESCompiler::finish(ESCode* code)
{
    if (code->length() > ESLimits::CodeBytes)
        throw ESFatalError("compiler error: patch constant too large");
    if (flag_debug & 2)
        std::fputs(qPrintable(dumpcode(code) + QLatin1Char('\n')), stdout);
}
