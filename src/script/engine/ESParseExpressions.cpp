// The expressions of the parser; see ESCompiler.h.
#include "script/engine/ESCompiler.h"
#include "script/engine/ESCompilerInternals.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESNode.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESStringPool.h"

namespace {

// Binary operators by level, weakest first; within a level they group from the left.
constexpr int LevelWidth = 4;
constexpr int Prectab[][LevelWidth] = {
    {ESToken::LogicalOr},
    {ESToken::LogicalAnd},
    {'|'},
    {'^'},
    {'&'},
    {ESToken::Equal, ESToken::NotEqual},
    {'<', '>', ESToken::LessEqual, ESToken::GreaterEqual},
    {ESToken::ShiftLeft, ESToken::ShiftRight, ESToken::ShiftRightUnsigned},
    {'+', '-'},
    {'*', '/', '%'},
};
constexpr int LevelCount = int(std::size(Prectab));

// The level of a binary operator, or -1.
int levelOf(int token)
{
    for (int level = 0; level < LevelCount; ++level)
        for (int candidate : Prectab[level])
            if (candidate && candidate == token)
                return level;
    return -1;
}

bool isAssignment(int token)
{
    switch (token) {
    case '=':
    case ESToken::MulAssign:
    case ESToken::DivAssign:
    case ESToken::ModAssign:
    case ESToken::AddAssign:
    case ESToken::SubAssign:
    case ESToken::ShlAssign:
    case ESToken::ShrAssign:
    case ESToken::UshrAssign:
    case ESToken::AndAssign:
    case ESToken::XorAssign:
    case ESToken::OrAssign: return true;
    default: return false;
    }
}

bool isReference(const ESNode* node)
{
    return node->kind == ESToken::Identifier || node->kind == '.' || node->kind == '[';
}

} // namespace

ESNode* ESCompiler::expression()
{
    ESNode* left = assignment();
    while (m_lexer.take(','))
        left = make(',', left, assignment());
    return left;
}

ESNode* ESCompiler::assignment()
{
    ESNode* left = conditional();
    int token = m_lexer.peek();
    // What is no reference can't be assigned to, so the operator ends the expression.
    if (!isAssignment(token) || !isReference(left))
        return left;
    m_lexer.next();
    int line = m_lexer.line();
    Nesting nesting(this);
    ESNode* node = make(token, left, assignment());
    node->line = line;
    return node;
}

ESNode* ESCompiler::conditional()
{
    ESNode* condition = binary(0);
    if (!m_lexer.take('?'))
        return condition;
    Nesting nesting(this);
    ESNode* yes = assignment();
    accept(':');
    return make('?', condition, yes, assignment());
}

ESNode* ESCompiler::binary(int level)
{
    ESNode* left = unary();
    for (;;) {
        int token = m_lexer.peek();
        int found = levelOf(token);
        if (found < level)
            return left;
        m_lexer.next();
        int line = m_lexer.line();
        left = make(token, left, binary(found + 1));
        left->line = line;
    }
}

ESNode* ESCompiler::unary()
{
    int token = m_lexer.peek();
    switch (token) {
    case ESToken::Delete:
    case ESToken::Void:
    case ESToken::Typeof:
    case '~':
    case '!': break;
    case '+': token = ESToken::Plus; break;
    case '-': token = ESToken::Negate; break;
    case ESToken::Increment:
    case ESToken::Decrement: break;
    default: return postfix();
    }
    m_lexer.next();
    Nesting nesting(this);
    ESNode* operand = unary();
    bool step = token == ESToken::Increment || token == ESToken::Decrement;
    if (step && !isReference(operand))
        fail(m_lexer.line(), QStringLiteral("expected an expression, found %1").arg(tokname(token)));
    // The negative of a constant is a constant.
    if (token == ESToken::Negate && operand->kind == ESToken::NumberLiteral) {
        double number = m_code->numbers[size_t(operand->number)];
        if (number != 0) {
            setNumber(operand, -number);
            return operand;
        }
    }
    return make(token, operand);
}

ESNode* ESCompiler::postfix()
{
    ESNode* operand = leftHand();
    int token = m_lexer.peek();
    bool step = token == ESToken::Increment || token == ESToken::Decrement;
    if (!step || m_lexer.afterLineEnd() || !isReference(operand))
        return operand;
    m_lexer.next();
    return make(token == ESToken::Increment ? ESToken::PostIncrement : ESToken::PostDecrement, operand);
}

ESNode* ESCompiler::leftHand()
{
    ESNode* node = m_lexer.peek() == ESToken::New ? newExpression() : primary();
    for (;;) {
        if (m_lexer.peek() == '(') {
            int line = m_lexer.line();
            m_lexer.next();
            ESNodeList list = arguments();
            ESNode* call = makeList(ESToken::Call, list);
            call->kids[1] = node;
            call->depth = std::max(call->depth, node->depth + 1);
            call->line = line;
            checkDepth(call);
            node = call;
        } else if (ESNode* member = memberSuffix(node)) {
            node = member;
        } else {
            return node;
        }
    }
}

// The arguments in parentheses, if there are any, belong to the nearest `new` that has none yet.
ESNode* ESCompiler::newExpression()
{
    accept(ESToken::New);
    Nesting nesting(this);
    ESNode* constructor = m_lexer.peek() == ESToken::New ? newExpression() : primary();
    while (ESNode* member = memberSuffix(constructor))
        constructor = member;
    if (m_lexer.peek() != '(')
        return make(ESToken::New, constructor);
    int line = m_lexer.line();
    m_lexer.next();
    ESNodeList list = arguments();
    ESNode* node = makeList(ESToken::NewCall, list);
    node->kids[1] = constructor;
    node->depth = std::max(node->depth, constructor->depth + 1);
    node->line = line;
    checkDepth(node);
    return node;
}

// `.name` or `[key]` behind an object; null when neither follows.
ESNode* ESCompiler::memberSuffix(ESNode* object)
{
    if (m_lexer.take('.')) {
        accept(ESToken::Identifier);
        ESString* name = m_lexer.name();
        ESNode* node = make('.', object);
        node->name = name;
        return node;
    }
    if (!m_lexer.take('['))
        return nullptr;
    ESNode* key;
    {
        Nesting nesting(this);
        key = expression();
    }
    accept(']');
    ESString* constant = nullptr;
    if (key->kind == ESToken::StringLiteral)
        constant = key->name;
    else if (key->kind == ESToken::NumberLiteral)
        constant = ESStringPool::name(ESContext::numberToEString(m_code->numbers[size_t(key->number)]));
    if (!constant)
        return make('[', object, key);
    ESNode* node = make('.', object);
    node->name = constant;
    return node;
}

// Behind the opening parenthesis, up to the closing one.
ESNodeList ESCompiler::arguments()
{
    Nesting nesting(this);
    ESNodeList list;
    if (m_lexer.take(')'))
        return list;
    do
        list.add(assignment());
    while (m_lexer.take(','));
    accept(')');
    return list;
}

void ESCompiler::setNumber(ESNode* node, double number)
{
    int index = m_code->addNumber(number);
    if (index < 0)
        throw ESFatalError("compiler error: too many constants");
    node->number = index;
}

ESNode* ESCompiler::primary()
{
    int token = m_lexer.peek();
    switch (token) {
    case ESToken::NumberLiteral: {
        m_lexer.next();
        ESNode* node = make(token);
        setNumber(node, m_lexer.number());
        return node;
    }
    case ESToken::StringLiteral:
    case ESToken::Identifier: {
        m_lexer.next();
        ESNode* node = make(token);
        node->name = m_lexer.name();
        return node;
    }
    case ESToken::This:
    case ESToken::True:
    case ESToken::False:
    case ESToken::Null: m_lexer.next(); return make(token);
    case '(': {
        m_lexer.next();
        Nesting nesting(this);
        ESNode* inner = expression();
        accept(')');
        return inner;
    }
    case ESToken::Function: m_lexer.next(); return functionLiteral(false);
    case '[': m_lexer.next(); return arrayLiteral();
    case '{': m_lexer.next(); return objectLiteral();
    default: fail(m_lexer.line(), QStringLiteral("expected an expression, found %1").arg(tokname(token)));
    }
}

// A comma without an element before it is a hole; the comma behind the last element is not.
ESNode* ESCompiler::arrayLiteral()
{
    Nesting nesting(this);
    ESNodeList elements;
    while (!m_lexer.take(']')) {
        if (m_lexer.take(',')) {
            elements.add(make(ESToken::Hole));
            continue;
        }
        elements.add(assignment());
        if (m_lexer.peek() == ']')
            continue;
        if (!m_lexer.take(','))
            fail(m_lexer.line(),
                 QStringLiteral("']' or ',' expected, found %1").arg(tokname(m_lexer.peek())));
    }
    return makeList(ESToken::ArrayInit, elements);
}

ESNode* ESCompiler::objectLiteral()
{
    Nesting nesting(this);
    ESNodeList members;
    while (!m_lexer.take('}')) {
        ESString* key;
        int token = m_lexer.next();
        if (token == ESToken::Identifier || token == ESToken::StringLiteral)
            key = m_lexer.name();
        else if (token == ESToken::NumberLiteral)
            key = ESStringPool::name(ESContext::numberToEString(m_lexer.number()));
        else
            fail(m_lexer.line(),
                 QStringLiteral("number, string, or identifier expected in object initialiser"));
        accept(':');
        ESNode* member = make(':', assignment());
        member->name = key;
        members.add(member);
        if (m_lexer.peek() != '}')
            accept(',');
    }
    return makeList(ESToken::ObjectInit, members);
}

void ESCompiler::parameterList(int closing)
{
    if (m_lexer.take(closing))
        return;
    do {
        accept(ESToken::Identifier);
        constexpr unsigned attributes = ESProperty::DontDelete | ESProperty::Parameter;
        codevar(m_lexer.name(), attributes, true);
    } while (m_lexer.take(','));
    accept(closing);
}

// Behind the word `function`. A function with a name is an assignment to that name.
ESNode* ESCompiler::functionLiteral(bool declaration)
{
    Nesting nesting(this);
    ESNode* function = make(ESToken::Function);
    ESString* name = nullptr;
    if (declaration || m_lexer.peek() == ESToken::Identifier) {
        accept(ESToken::Identifier);
        name = m_lexer.name();
        codevar(name, 0, false);
    }
    {
        State state(this);
        beginFunction(function);
        accept('(');
        parameterList(')');
        function->kids[0] = bracedList();
        function->depth = 1; // its body is generated by itself
        function->pure = true;
        m_functions.push_back(function);
    }
    if (!name)
        return function;
    function->name = name;
    ESNode* target = make(ESToken::Identifier);
    target->name = name;
    return make('=', target, function);
}
