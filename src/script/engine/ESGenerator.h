// Generates the code of one function, or of the top level, from its tree. The first pass over a function
// finds out which of its names are reached from elsewhere; if any are, the second one generates the
// final forms.
#pragma once

#include "script/engine/ESCode.h"
#include "script/engine/ESCompiler.h"
#include "script/engine/ESNode.h"
#include "script/engine/ESString.h"

class ESGenerator {
public:
    ESGenerator(ESCompiler& compiler, ESNode* function, ESCode* code, int pass)
        : m_compiler(compiler), m_function(function), m_code(code), m_pass(pass)
    {
    }

    // The body of a function, ending in RETU.
    void function(ESNode* node);
    // The statements of a whole text; the value is that of the last one.
    void program(ESNode* list);

private:
    using Location = ESCompiler::ESLocation;

    // A statement that is being generated, as `break` and `continue` see it.
    struct Enclosing {
        ESNode* node;
        int withDepth;
    };
    class Inside;

    void statements(ESNode* list, bool want);
    void statement(ESNode* node, bool want);
    void variables(ESNode* node, bool want);
    void ifStatement(ESNode* node);
    void whileStatement(ESNode* node);
    void doStatement(ESNode* node);
    void forStatement(ESNode* node);
    void forInStatement(ESNode* node);
    void withStatement(ESNode* node);
    void switchStatement(ESNode* node);
    void returnStatement(ESNode* node);
    void breakStatement(ESNode* node);
    void continueStatement(ESNode* node);
    void leave(int withDepth);
    const Enclosing* findLabel(ESNode* jump) const;

    void genexpr(ESNode* node, bool want);
    void value(ESNode* node);
    void chain(ESNode* node);
    void comma(ESNode* node, bool want);
    void operate(ESNode* node);
    void logical(ESNode* node, int opcode);
    void conditional(ESNode* node, bool want);
    void unary(ESNode* node);
    void assign(ESNode* node, bool want);
    void compoundAssign(ESNode* node, bool want);
    void step(ESNode* node, bool want);
    void deleteExpression(ESNode* node);
    void callExpression(ESNode* node);
    void arguments(ESNode* list);
    void arrayLiteral(ESNode* node);
    void objectLiteral(ESNode* node);
    void number(ESNode* node);
    // Pops the value in A into the variable or member.
    void store(ESNode* target);
    void key(ESNode* member);
    int gencond(ESNode* node, bool sense, int list);

    Location locate(ESString* name);
    void loadName(ESString* name);
    void storeName(ESString* name);

    void gen0(int opcode);
    void gen1(int opcode, int operand);
    void gen2(int opcode, int operand, int second);
    void genquick(int opcode, int flag);
    void genString(int opcode, ESString* name);
    int stringOperand(ESString* name);
    int plant(int opcode, int head);
    void patch(int head, int target);
    void patchHere(int head) { patch(head, m_code->length()); }
    void jumpTo(int opcode, int target);
    [[noreturn]] static void tooLarge();

    ESCompiler& m_compiler;
    ESNode* m_function;
    ESCode* m_code;
    int m_pass;
    int m_line = 1;
    int m_withDepth = 0;
    std::vector<Enclosing> m_enclosing;
};
