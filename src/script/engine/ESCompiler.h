// Compiles source text to bytecode: a recursive-descent parser that builds a small tree, and a walk over
// the tree that generates the code (ESGenerator). One compiler serves one text. The first fault ends the
// compilation with a SyntaxError, and nothing of the source is run.
#pragma once

#include "script/engine/ESCode.h"
#include "script/engine/ESLexer.h"
#include "script/engine/ESNode.h"
#include "script/engine/ESTokens.h"

#include <deque>
#include <memory>
#include <vector>

class ESContext;
struct ESObject;

// When bit 2 is set, each function's code is printed after its generation.
extern int flag_debug;

class ESCompiler {
public:
    // What a name means at a place.
    struct ESLocation {
        enum Kind { Global = 0, Parameter = 1, Local = 2, Dynamic = 3 };
        Kind kind;
        int slot = 0; // Global: of the global object; Parameter, Local: of that part of the frame
    };

    explicit ESCompiler(ESContext* context);
    ~ESCompiler();

    void setSource(const QString& source);
    // Compiles all of the source and returns the code of its top level.
    std::unique_ptr<ESCode> parse();
    // Makes a function of a comma-separated list of identifiers and a body.
    ESObject* parseFunction(const QString& parameters, const QString& body);

    static QString tokname(int token) { return ESToken::text(token); }
    // The instruction at an offset, as text; the whole of a code, one instruction a line.
    static QString printInsn(const ESCode* code, int offset);
    static QString dumpcode(const ESCode* code);

private:
    friend class ESGenerator;
    struct State;
    class Nesting;

    // Statements.
    ESNodeList statementList(int closing);
    ESNode* block();
    ESNode* bracedList();
    ESNode* statement();
    ESNode* substatement();
    ESNode* varStatement();
    ESNode* ifStatement();
    ESNode* whileStatement();
    ESNode* doStatement();
    ESNode* forStatement();
    ESNode* forInStatement(int kind, ESNode* target, int line);
    ESNode* withStatement();
    ESNode* switchStatement();
    ESNode* returnStatement();
    ESNode* jumpStatement(int kind);
    ESNode* labeledStatement();
    ESNode* tryStatement();
    ESNode* throwStatement();
    ESNode* variableList();
    void semi();

    // Expressions.
    ESNode* expression();
    ESNode* assignment();
    ESNode* conditional();
    ESNode* binary(int level);
    ESNode* unary();
    ESNode* postfix();
    ESNode* leftHand();
    ESNode* newExpression();
    ESNode* memberSuffix(ESNode* object);
    ESNode* primary();
    ESNode* arrayLiteral();
    ESNode* objectLiteral();
    ESNodeList arguments();
    void setNumber(ESNode* node, double number);
    ESNode* functionLiteral(bool declaration);
    void parameterList(int closing);

    // Nodes.
    ESNode* make(int kind);
    ESNode* make(int kind, ESNode* a, ESNode* b = nullptr, ESNode* c = nullptr, ESNode* d = nullptr);
    ESNode* makeList(int kind, const ESNodeList& list);
    void checkDepth(ESNode* node);

    void accept(int token);
    [[noreturn]] void expected(const QString& what);
    [[noreturn]] void fail(int line, const QString& text);

    // Names.
    void codevar(ESString* name, unsigned attributes, bool redeclare);
    void codevar(ESNode* function, ESCode* code, ESString* name, unsigned attributes, bool redeclare);
    // An unknown name gets a global slot, unless `make` is false; then it is looked for when it is used.
    ESLocation resolve(ESNode* function, ESCode* code, ESString* name, int withDepth, int pass,
                       bool make = true);
    int globalSlot(ESString* name, unsigned attributes);
    static ESString* mktempnam();

    void beginFunction(ESNode* function);
    void endFunction(ESNode* function);
    void generateFunctions();
    void generateFunction(ESNode* function);
    void finish(ESCode* code);

    ESContext* m_context;
    ESLexer m_lexer;
    ESNode* m_function = nullptr; // null at top level
    ESCode* m_code = nullptr;
    int m_withDepth = 0;
    int m_nesting = 0;
    std::deque<ESNode> m_nodes;
    // Functions whose bodies wait for code, in the order in which they were finished.
    std::vector<ESNode*> m_functions;
    static int s_temporaries;
};
