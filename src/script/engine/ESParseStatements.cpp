// The statements of the parser; see ESCompiler.h.
#include "script/engine/ESCompiler.h"
#include "script/engine/ESCompilerInternals.h"
#include "script/engine/ESNode.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"

ESNodeList ESCompiler::statementList(int closing)
{
    ESNodeList hoisted;
    ESNodeList rest;
    while (m_lexer.peek() != closing) {
        // The end of input closes nothing but the whole text.
        if (m_lexer.peek() == ESToken::EndOfInput)
            expected(tokname(closing));
        bool declaration = m_lexer.peek() == ESToken::Function;
        (declaration ? hoisted : rest).add(statement());
    }
    m_lexer.next();
    if (!hoisted.first)
        return rest;
    hoisted.last->next = rest.first;
    if (rest.last)
        hoisted.last = rest.last;
    hoisted.count += rest.count;
    hoisted.depth = std::max(hoisted.depth, rest.depth);
    hoisted.pure = hoisted.pure && rest.pure;
    return hoisted;
}

ESNode* ESCompiler::bracedList()
{
    accept('{');
    return makeList('{', statementList('}'));
}

ESNode* ESCompiler::block()
{
    Nesting nesting(this);
    return bracedList();
}

ESNode* ESCompiler::substatement()
{
    Nesting nesting(this);
    return statement();
}

ESNode* ESCompiler::statement()
{
    switch (m_lexer.peek()) {
    case '{': return block();
    case ';': m_lexer.next(); return make(';');
    case ESToken::Function: {
        m_lexer.next();
        ESNode* node = make(';', functionLiteral(true));
        node->declaration = true;
        return node;
    }
    case ESToken::Var: return varStatement();
    case ESToken::If: return ifStatement();
    case ESToken::While: return whileStatement();
    case ESToken::Do: return doStatement();
    case ESToken::For: return forStatement();
    case ESToken::With: return withStatement();
    case ESToken::Switch: return switchStatement();
    case ESToken::Return: return returnStatement();
    case ESToken::Break:
    case ESToken::Continue: return jumpStatement(m_lexer.next());
    case ESToken::Try: return tryStatement();
    case ESToken::Throw: return throwStatement();
    case ESToken::Identifier:
        if (m_lexer.colonFollows())
            return labeledStatement();
        break;
    default: break;
    }
    ESNode* value = expression();
    semi();
    return make(';', value);
}

// The names behind `var`, as a list of identifiers and of assignments to them.
ESNode* ESCompiler::variableList()
{
    ESNodeList list;
    do {
        accept(ESToken::Identifier);
        ESNode* target = make(ESToken::Identifier);
        target->name = m_lexer.name();
        codevar(target->name, ESProperty::DontEnum | ESProperty::DontDelete, false);
        if (m_lexer.take('=')) {
            Nesting nesting(this);
            list.add(make('=', target, assignment()));
        } else {
            list.add(target);
        }
    } while (m_lexer.take(','));
    return makeList(ESToken::Var, list);
}

ESNode* ESCompiler::varStatement()
{
    m_lexer.next();
    ESNode* list = variableList();
    semi();
    return list;
}

ESNode* ESCompiler::ifStatement()
{
    m_lexer.next();
    accept('(');
    ESNode* condition = expression();
    accept(')');
    ESNode* then = substatement();
    ESNode* otherwise = m_lexer.take(ESToken::Else) ? substatement() : nullptr;
    return make(ESToken::If, condition, then, otherwise);
}

ESNode* ESCompiler::whileStatement()
{
    m_lexer.next();
    accept('(');
    ESNode* condition = expression();
    accept(')');
    return make(ESToken::While, condition, substatement());
}

ESNode* ESCompiler::doStatement()
{
    m_lexer.next();
    ESNode* body = block();
    accept(ESToken::While);
    accept('(');
    ESNode* condition = expression();
    accept(')');
    semi();
    return make(ESToken::Do, condition, body);
}

ESNode* ESCompiler::forStatement()
{
    int line = m_lexer.line();
    m_lexer.next();
    accept('(');
    ESNode* start = nullptr;
    if (m_lexer.take(ESToken::Var)) {
        start = variableList();
        if (m_lexer.peek() == ESToken::In) {
            if (start->count > 1)
                fail(m_lexer.line(), QStringLiteral("too many variables in for-in expression"));
            return forInStatement(ESToken::ForVarIn, start->kids[0], line);
        }
    } else if (m_lexer.peek() != ';') {
        start = expression();
        bool target = start->kind == ESToken::Identifier || start->kind == '.' || start->kind == '[';
        if (target && m_lexer.peek() == ESToken::In)
            return forInStatement(ESToken::ForIn, start, line);
    }
    accept(';');
    ESNode* condition = m_lexer.peek() == ';' ? nullptr : expression();
    accept(';');
    ESNode* update = m_lexer.peek() == ')' ? nullptr : expression();
    accept(')');
    ESNode* body = substatement();
    return make(ESToken::For, start, condition, update, body);
}

ESNode* ESCompiler::forInStatement(int kind, ESNode* target, int line)
{
    accept(ESToken::In);
    ESNode* object = expression();
    accept(')');
    ESNode* node = make(kind, target, object, substatement());
    node->line = line;
    return node;
}

ESNode* ESCompiler::withStatement()
{
    m_lexer.next();
    accept('(');
    ESNode* object = expression();
    accept(')');
    ++m_withDepth;
    ESNode* body = substatement();
    --m_withDepth;
    return make(ESToken::With, object, body);
}

ESNode* ESCompiler::switchStatement()
{
    Nesting nesting(this);
    m_lexer.next();
    accept('(');
    ESNode* value = expression();
    accept(')');
    accept('{');
    ESNodeList clauses;
    bool defaultSeen = false;
    while (!m_lexer.take('}')) {
        ESNode* condition = nullptr;
        if (m_lexer.take(ESToken::Case)) {
            condition = expression();
        } else if (m_lexer.take(ESToken::Default)) {
            if (defaultSeen)
                fail(m_lexer.line(), QStringLiteral("default case already defined"));
            defaultSeen = true;
        } else {
            fail(m_lexer.line(),
                 QStringLiteral("expected 'case' or 'default' but found '%1'").arg(tokname(m_lexer.peek())));
        }
        accept(':');
        ESNodeList body;
        for (;;) {
            int token = m_lexer.peek();
            if (token == ESToken::Case || token == ESToken::Default || token == '}')
                break;
            if (token == ESToken::EndOfInput)
                expected(QStringLiteral("}"));
            body.add(statement());
        }
        clauses.add(make(ESToken::Case, condition, makeList('{', body)));
    }
    ESNode* list = makeList('{', clauses);
    return make(ESToken::Switch, value, list);
}

ESNode* ESCompiler::returnStatement()
{
    m_lexer.next();
    if (!m_function)
        fail(m_lexer.line(), tokname(ESToken::Return) + QStringLiteral(" not in a function"));
    ESNode* value = nullptr;
    int token = m_lexer.peek();
    if (token != ';' && token != '}' && token != ESToken::EndOfInput && !m_lexer.afterLineEnd())
        value = expression();
    ESNode* node = make(ESToken::Return, value);
    semi();
    return node;
}

ESNode* ESCompiler::jumpStatement(int kind)
{
    ESNode* node = make(kind);
    if (m_lexer.peek() == ESToken::Identifier && !m_lexer.afterLineEnd()) {
        m_lexer.next();
        node->name = m_lexer.name();
    }
    semi();
    return node;
}

ESNode* ESCompiler::labeledStatement()
{
    m_lexer.next();
    ESString* name = m_lexer.name();
    accept(':');
    ESNode* node = make(ESToken::Label, substatement());
    node->name = name;
    return node;
}

// Blocks of `try` are checked and their names declared, but no code comes of them: there is nothing in
// the machine that could catch.
ESNode* ESCompiler::tryStatement()
{
    m_lexer.next();
    int line = m_lexer.line();
    ESNode* body = block();
    ESNode* handler = nullptr;
    ESNode* last = nullptr;
    if (m_lexer.take(ESToken::Catch)) {
        accept('(');
        accept(ESToken::Identifier);
        accept(')');
        handler = block();
    }
    if (m_lexer.take(ESToken::Finally))
        last = block();
    if (!handler && !last)
        fail(m_lexer.line(), QStringLiteral("'catch' or 'finally' clause expected after 'try'"));
    m_context->addWarning(line, QStringLiteral("'try' blocks do not run"));
    int kind = !last ? ESToken::TryCatch : !handler ? ESToken::TryFinally : ESToken::TryCatchFinally;
    return make(kind, body, handler, last);
}

ESNode* ESCompiler::throwStatement()
{
    m_lexer.next();
    int line = m_lexer.line();
    ESNode* value = expression();
    semi();
    m_context->addWarning(line, QStringLiteral("'throw' statements do not run"));
    return make(ESToken::Throw, value);
}
