// What only the debugger reads: lines, functions, variables.
#include "tools/kvas/Assembler.h"
#include "tools/kvas/Cursor.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/Registers.h"
#include "tools/kvas/Tags.h"
#include "tools/kvas/limits.h"

#include <filesystem>

namespace kvas {

// Lines come from the source itself until a directive names another file; .LINE alone goes back.
void Assembler::lineDirective()
{
    if (m_cursor->atEnd()) {
        m_lines = Lines::OfSource;
        return;
    }
    std::string_view file = m_givenFile;
    if (m_cursor->peek() == '"') {
        std::filesystem::path path = std::filesystem::path(m_source->directory) / m_cursor->quoted();
        std::error_code ignored;
        std::string absolute = std::filesystem::absolute(path, ignored).lexically_normal().string();
        if (absolute != file)
            file = m_program.keep(absolute);
        comma();
    } else if (file.empty()) {
        m_cursor->fail("the first .LINE names a file");
    }
    m_givenLine = uint32_t(number(1, 0x7FFFFFFF, "the line"));
    m_givenFile = file;
    m_lines = Lines::Given;
    m_locusDone = false;
}

void Assembler::noLine()
{
    m_lines = Lines::None;
}

void Assembler::stackAdjust()
{
    m_stackAdjust = int32_t(number(INT32_MIN, INT32_MAX, "the stack adjust"));
}

// Where a symbol was declared: what .DECL said, the line given by .LINE, or this one.
void Assembler::declare(Symbol* s)
{
    if (!s->declaredFile.empty())
        return;
    bool given = m_lines == Lines::Given;
    s->declared = placeAt(1);
    s->declared.line = given ? m_givenLine : m_line;
    s->declaredFile = given ? m_givenFile : m_source->path;
}

void Assembler::function()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    std::string_view word = identifier("the function's name");
    if (word.front() == '.')
        Cursor::failAt(column, "a function's name has no leading dot");
    if (m_scope)
        Cursor::failAt(column, "a function within a function");
    if (!m_section || m_section->kind != SectionKind::Code)
        Cursor::failAt(column, "a function stands in a code section");
    defineLabel(word, column);
    Symbol* s = symbol(word);
    s->type = m_program.newType(Type::Kind::Function, 0, placeAt(column));
    declare(s);
    m_scope = m_program.newScope(Tag::ScopeFunction, nullptr);
    m_scopeDepth = 1;
    m_scope->place = placeAt(column);
    m_scope->function = s;
    m_scope->start = markHere();
    while (more()) {
        if (m_cursor->acceptWord("FRAME")) {
            m_cursor->expect('=', "behind FRAME");
            s->type->frameSize = int32_t(number(0, INT32_MAX, "the frame's size"));
        } else if (m_cursor->acceptWord("SAVED")) {
            m_cursor->expect('=', "behind SAVED");
            s->type->savedRegisters = int32_t(number(0, 0xFFFF, "the mask"));
        } else {
            m_cursor->fail("expected FRAME or SAVED");
        }
    }
}

void Assembler::closeScope(Tag kind, const char* opener)
{
    if (!m_scope || m_scope->kind != kind)
        m_cursor->fail(std::string("there is no ") + opener + " to end");
    m_scope->end = markHere();
    m_scope = m_scope->parent;
    --m_scopeDepth;
}

void Assembler::endFunction()
{
    closeScope(Tag::ScopeFunction, ".FUNC");
}

void Assembler::block()
{
    if (!m_scope)
        m_cursor->fail("a block stands in a function");
    if (m_scopeDepth == limits::ScopeDepth)
        m_cursor->fail("blocks are nested too deeply");
    m_scope = m_program.newScope(Tag::ScopeBlock, m_scope);
    ++m_scopeDepth;
    m_scope->place = placeAt(1);
    m_scope->start = markHere();
}

void Assembler::endBlock()
{
    closeScope(Tag::ScopeBlock, ".BLOCK");
}

Type* Assembler::functionType(const char* directive)
{
    Scope* scope = m_scope;
    while (scope && !scope->function)
        scope = scope->parent;
    if (!scope)
        m_cursor->fail(std::string(directive) + " stands in a function");
    return scope->function->type;
}

void Assembler::frame()
{
    functionType(".FRAME")->frameSize = int32_t(number(0, INT32_MAX, "the frame's size"));
}

void Assembler::saved()
{
    Type* type = functionType(".SAVED");
    do {
        m_cursor->peek();
        uint32_t column = m_cursor->column();
        auto number = sourceRegister(m_cursor->registerText());
        unsigned index = number.value_or(0) >> 4;
        if (!number || (*number & 15) != 9 || index < 2)
            Cursor::failAt(column, "expected A[2] to A[15]");
        type->savedRegisters |= 1 << index;
    } while (more());
}

void Assembler::variable(bool isParameter)
{
    Type* function = functionType(isParameter ? ".PARAM" : ".LOCAL");
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    std::string_view word = identifier("the variable's name");
    if (word.front() == '.')
        Cursor::failAt(column, "a variable's name has no leading dot");
    comma();
    Type* variableType = type();
    comma();
    const Expr* where = m_expressions.location(*m_cursor);
    for (Symbol* other : m_scope->symbols) {
        if (other->name == word)
            Cursor::failAt(column, std::string(word) + " is already declared in this scope");
    }
    Symbol* s = m_program.newSymbol(word);
    s->type = variableType;
    s->value = where;
    s->defined = placeAt(column);
    declare(s);
    m_scope->symbols.push_back(s);
    if (isParameter)
        function->in.push_back(s);
}

void Assembler::result()
{
    Type* function = functionType(".RESULT");
    Symbol* s = m_program.newSymbol("");
    s->type = type();
    if (more())
        s->value = m_expressions.location(*m_cursor);
    s->defined = placeAt(1);
    function->out.push_back(s);
}

void Assembler::typedSymbol()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    std::string_view word = identifier("a symbol");
    if (word.front() == '.')
        Cursor::failAt(column, "a variable's name has no leading dot");
    Symbol* s = reference(word, column);
    if (s->type)
        Cursor::failAt(column, std::string(word) + " has a type already");
    comma();
    s->type = type();
    declare(s);
}

void Assembler::declaration()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    Symbol* s = reference(identifier("a symbol"), column);
    comma();
    std::filesystem::path path = std::filesystem::path(m_source->directory) / m_cursor->quoted();
    std::error_code ignored;
    s->declaredFile = m_program.keep(std::filesystem::absolute(path, ignored).lexically_normal().string());
    comma();
    s->declared = placeAt(column);
    s->declared.line = uint32_t(number(1, 0x7FFFFFFF, "the line"));
}

} // namespace kvas
