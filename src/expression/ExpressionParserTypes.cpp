// Casts, and the types in them.
#include "expression/BaseType.h"
#include "expression/ExpressionArena.h"
#include "expression/CStyleLexer.h"
#include "expression/ExpressionParser.h"
#include "expression/ParserException.h"
#include "expression/limits.h"

#include <optional>

// Called behind "(". Null, with nothing read, when no type begins here.
const Expression* ExpressionParser::parseCast()
{
    if (m_lexer->token() != Lexer::Identifier)
        return nullptr;
    const BaseType* type = nullptr;
    if (m_lexer->identIs(u"struct")) {
        m_lexer->gettok();
        type = parseStructType();
    } else if (m_lexer->identIs(u"register")) {
        m_lexer->gettok();
        type = parseRegisterType();
    } else {
        type = parseSimpleType();
    }
    if (!type)
        return nullptr;
    type = parsePostfixType(type);
    expect(CStyleLexer::CloseParenthesis, "')' expected");
    return make<CastExpression>(type, parseExpression(LowestLevel), this);
}

// Null, with nothing read, when no type begins here. A type word ends the type, unless a word like
// "unsigned" or "const" came before and more words follow.
const BaseType* ExpressionParser::parseSimpleType()
{
    bool isUnsigned = false, isLong = false, modified = false;
    std::optional<SimpleType::Kind> kind;
    const BaseType* user = nullptr;
    while (m_lexer->token() == Lexer::Identifier) {
        bool named = false; // the word is a type of its own
        if (m_lexer->identIs(u"long")) {
            named = isLong;
            if (isLong)
                kind = SimpleType::LongLong;
            isLong = true;
        } else if (m_lexer->identIs(u"int")) {
            named = true; // behind a length it changes nothing
            if (!kind)
                kind = isLong ? SimpleType::Long : SimpleType::Int;
        } else if (m_lexer->identIs(u"short") || m_lexer->identIs(u"char")) {
            named = true;
            kind = m_lexer->identIs(u"short") ? SimpleType::Short : SimpleType::Char;
        } else if (m_lexer->identIs(u"unsigned")) {
            isUnsigned = modified = true;
        } else if (m_lexer->identIs(u"signed") || m_lexer->identIs(u"const") ||
                   m_lexer->identIs(u"volatile")) {
            modified = true;
        } else if (!kind && !user && isUserTypeName(m_lexer->text().toString())) {
            named = true;
            user = makeType<UserType>(m_lexer->text().toString());
        } else {
            break;
        }
        m_lexer->gettok();
        if (named && !modified)
            break;
    }
    if (user)
        return user;
    if (!kind && !isLong && !modified)
        return nullptr;
    return makeType<SimpleType>(kind.value_or(isLong ? SimpleType::Long : SimpleType::Int), isUnsigned);
}

const BaseType* ExpressionParser::parsePostfixType(const BaseType* type)
{
    for (int parts = 0;; ++parts) {
        if (parts > EXPRESSION_MAXIMUM_DEPTH)
            throw ParserException("expression is nested too deeply");
        if (m_lexer->token() == CStyleLexer::Multiply) {
            m_lexer->gettok();
            type = makeType<PointerType>(type);
        } else if (m_lexer->token() == CStyleLexer::OpenBracket) {
            m_lexer->gettok();
            const Expression* size = parseExpression(LowestLevel);
            expect(CStyleLexer::CloseBracket, "']' expected");
            type = makeType<ArrayType>(type, size);
        } else {
            return type;
        }
    }
}

int64_t ExpressionParser::parseInteger(const char* otherwise)
{
    int token = m_lexer->token();
    if (token != Lexer::Integer && token != Lexer::HexInteger)
        throw ParserException(otherwise);
    int64_t value = token == Lexer::Integer ? m_lexer->intTok() : int64_t(m_lexer->hexTok());
    m_lexer->gettok();
    return value;
}

// Called behind "struct".
const BaseType* ExpressionParser::parseStructType()
{
    if (m_lexer->token() == Lexer::Identifier) {
        QString name = QStringLiteral("struct ") + m_lexer->text().toString();
        if (!isUserTypeName(name))
            throw ParserException("struct type not found");
        m_lexer->gettok();
        return makeType<UserType>(name);
    }
    expect(CStyleLexer::OpenBrace, "'{' expected");
    std::vector<StructType::Field> fields;
    while (m_lexer->token() != CStyleLexer::CloseBrace) {
        StructType::Field field{parseSimpleType(), QString(), -1};
        if (!field.type)
            throw ParserException("struct parse error");
        if (m_lexer->token() == Lexer::Identifier) {
            field.name = m_lexer->text().toString();
            m_lexer->gettok();
        }
        if (m_lexer->token() == CStyleLexer::Colon) {
            m_lexer->gettok();
            field.bitSize = parseInteger("integer must follow ':'");
        }
        expect(CStyleLexer::Semicolon, "';' expected");
        fields.push_back(field);
    }
    m_lexer->gettok();
    return makeType<StructType>(std::move(fields));
}

// Called behind "register".
const BaseType* ExpressionParser::parseRegisterType()
{
    int64_t size = parseInteger("size expected");
    std::vector<RegisterType::Field> fields;
    while (m_lexer->token() != CStyleLexer::Semicolon) {
        RegisterType::Field field;
        if (m_lexer->token() == Lexer::Identifier)
            field.name = m_lexer->text().toString();
        else if (m_lexer->token() == Lexer::String)
            field.name = m_lexer->strTok();
        else
            throw ParserException("fieldname expected");
        m_lexer->gettok();
        field.bitOffset = parseInteger("bitoffset expected");
        field.bitSize = parseInteger("bitsize expected");
        fields.push_back(field);
    }
    m_lexer->gettok();
    return makeType<RegisterType>(size, std::move(fields));
}
