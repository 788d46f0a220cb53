// Reads expressions of a small C language into trees, and is what those trees ask about a program: it has no
// symbols of its own.
//
// A fault of the text or of its evaluation throws ParserException, whose cause says what it is.
#pragma once

#include "expression/BaseType.h"
#include "expression/Expression.h"
#include "expression/ExpressionOperator.h"
#include "expression/ExpressionType.h"
#include "expression/Lexer.h"
#include "expression/MarkerType.h"

#include <QStringList>

#include <memory>
#include <vector>

class ExpressionParser {
public:
    // The root of a tree; it keeps all nodes. Null stands for an empty text.
    using Tree = std::shared_ptr<const Expression>;

    explicit ExpressionParser(std::unique_ptr<Lexer> lexer) : m_lexer(std::move(lexer)) {}
    virtual ~ExpressionParser() = default;
    ExpressionParser(const ExpressionParser&) = delete;
    ExpressionParser& operator=(const ExpressionParser&) = delete;

    // Reads as much of the text as makes an expression. What is left is no error: `end`, when it is
    // not null, gets the position of the first token that did not go on.
    Tree parse(const QString& text, int* end = nullptr);
    // Parses and evaluates; an empty text is a value of type None.
    ExpressionType parseAndEvaluate(const QString& text, int* end = nullptr);

    // What a name stands for. Names with "::" come as a list, registers without their "@".
    virtual std::unique_ptr<MarkerType> getScopedIdentifier(const QStringList& names) = 0;
    virtual std::unique_ptr<MarkerType> getIdentifier(const QString& name) = 0;
    virtual std::unique_ptr<MarkerType> getRegister(const QString& name) = 0;
    virtual bool isUserTypeName(const QString& name) = 0;
    virtual ExpressionType cast(const BaseType* type, const ExpressionType& value) = 0;
    // Make the marker that of its element or field.
    virtual void getDereference(MarkerType* marker, int64_t index) = 0;
    virtual void getDereference(MarkerType* marker, const QString& fieldName) = 0;
    virtual void getDereference(MarkerType* marker, const QStringList& names) = 0;
    virtual std::unique_ptr<MarkerType> getAddressof(MarkerType* marker);
    virtual ExpressionType getSizeof(MarkerType* marker);
    // Writes a value; returns what then stands there.
    virtual ExpressionType assign(MarkerType* marker, const ExpressionType& value) = 0;
    virtual ExpressionType getValue(MarkerType* marker) = 0;
    // The function is null when what is called is no marker.
    virtual ExpressionType callFunction(MarkerType* function, const std::vector<ExpressionType>& arguments);

private:
    struct Arena;
    class Nesting;
    static constexpr int LowestLevel = -4; // precedences
    static constexpr int HighestLevel = 9;

    template <typename Node, typename... Arguments> const Node* make(Arguments&&... arguments);
    template <typename Node, typename... Arguments> const Node* makeType(Arguments&&... arguments);

    const Expression* parseExpression(int level);
    const Expression* combine(int token, const Expression* left, const Expression* right);
    const Expression* parseExpr10();
    const Expression* parsePrimary();
    const Expression* parsePostfix(const Expression* expression);
    const Expression* step(const Expression* expression, ExpressionOperator op);
    const Expression* parseIdentifier(bool global);
    const Expression* parseCast();
    const BaseType* parseSimpleType();
    const BaseType* parsePostfixType(const BaseType* type);
    const BaseType* parseStructType();
    const BaseType* parseRegisterType();
    int64_t parseInteger(const char* otherwise);
    void expect(int token, const char* otherwise);

    std::unique_ptr<Lexer> m_lexer;
    Arena* m_arena = nullptr; // of the tree that is being read
    int m_depth = 0;
};
