// Types of variables. A type is written as
//
//   CHAR(1) INT(1|2|4|8) UNSIGNED(...) FLOAT(4|8) VOID
//   PTR(type [, size])  WPTR(type [, size])       pointers that hold a byte or a word address
//   ARRAY(type, count)  COUNTED(counter, type, count)
//   DATA(type) CODE(type) EEPROM(type) PERIPHERAL(type)   the memory where a value lies
//   FUNCTION(parameters [-> results])  MEMBER(class)
//   STRUCT name, or a name given by .TYPE
#include "tools/kvas/Assembler.h"
#include "tools/kvas/Cursor.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/Tags.h"
#include "tools/kvas/limits.h"

#include <algorithm>

namespace kvas {

namespace {

constexpr int64_t PointerBytes = 4;
constexpr int64_t LargestType = int64_t(limits::SectionBytes);

} // namespace

Type* Assembler::sized(Type::Kind kind, Tag tag, std::initializer_list<int64_t> sizes)
{
    m_cursor->expect('(', "and the size in bytes");
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    int64_t size = number(1, 16, "the size");
    if (std::find(sizes.begin(), sizes.end(), size) == sizes.end())
        Cursor::failAt(column, "there is no such type of that size");
    m_cursor->expect(')', "behind the size");
    Type* result = m_program.newType(kind, size, placeAt(column));
    result->tag = tag;
    return result;
}

Type* Assembler::around(Type::Kind kind, Tag tag, Type* base, uint32_t column)
{
    if (base->depth >= limits::Nesting)
        Cursor::failAt(column, "types are nested too deeply");
    if (kind != Type::Kind::Pointer && !base->complete)
        Cursor::failAt(column, "the structure " + std::string(base->name) + " is not defined yet");
    Type* result = m_program.newType(kind, base->size, placeAt(column));
    result->tag = tag;
    result->base = base;
    result->depth = uint8_t(base->depth + 1);
    return result;
}

Type* Assembler::structNamed(std::string_view name)
{
    if (auto found = m_unit->structs.find(name); found != m_unit->structs.end())
        return found->second;
    Type* result = m_program.newType(Type::Kind::Struct, 0, placeAt(m_cursor->column()));
    result->name = name;
    result->complete = false;
    m_unit->structs.emplace(name, result);
    m_unit->structOrder.push_back(result);
    return result;
}

Type* Assembler::type(unsigned nesting)
{
    if (nesting > limits::Nesting)
        m_cursor->fail("types are nested too deeply");
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    std::string_view word = identifier("a type");
    if (word == "CHAR")
        return sized(Type::Kind::Simple, Tag::Char, {1});
    if (word == "INT")
        return sized(Type::Kind::Simple, Tag::Int, {1, 2, 3, 4, 8});
    if (word == "UNSIGNED")
        return sized(Type::Kind::Simple, Tag::Unsigned, {1, 2, 3, 4, 8});
    if (word == "FLOAT")
        return sized(Type::Kind::Float, Tag::Float, {4, 8});
    if (word == "VOID")
        return m_program.newType(Type::Kind::Untyped, 0, placeAt(column));
    if (word == "STRUCT")
        return structNamed(identifier("the structure's name"));
    if (m_cursor->peek() == '(')
        return composed(word, column, nesting);
    auto found = m_unit->types.find(word);
    if (found == m_unit->types.end())
        Cursor::failAt(column, "unknown type " + std::string(word));
    return found->second;
}

Type* Assembler::composed(std::string_view word, uint32_t column, unsigned nesting)
{
    struct Qualifier {
        std::string_view word;
        Tag tag;
    };
    static constexpr Qualifier qualifiers[] = {{"DATA", Tag::DataSpace},
                                               {"CODE", Tag::CodeSpace},
                                               {"EEPROM", Tag::EepromSpace},
                                               {"PERIPHERAL", Tag::PeripheralSpace}};
    m_cursor->accept('(');
    Type* result = nullptr;
    if (word == "PTR" || word == "WPTR") {
        result = around(Type::Kind::Pointer, word == "PTR" ? Tag::BytePointer : Tag::WordPointer,
                        type(nesting + 1), column);
        result->size = more() ? number(1, 8, "the pointer's size") : PointerBytes;
    } else if (word == "ARRAY") {
        result = around(Type::Kind::Array, Tag::Array, type(nesting + 1), column);
        comma();
        result->count = number(0, LargestType, "the count");
        result->size *= result->count;
    } else if (word == "COUNTED") {
        Type* counter = type(nesting + 1);
        comma();
        result = around(Type::Kind::CountedArray, Tag::CountedArray, type(nesting + 1), column);
        result->counter = counter;
        result->depth = std::max(result->depth, uint8_t(std::min(255, counter->depth + 1)));
        comma();
        result->count = number(0, LargestType, "the count");
    } else if (word == "FUNCTION") {
        result = m_program.newType(Type::Kind::Function, 0, placeAt(column));
        signature(result, nesting + 1);
    } else if (word == "MEMBER") {
        result = around(Type::Kind::Member, Tag::Member, type(nesting + 1), column);
        result->size = 0;
    }
    for (const Qualifier& qualifier : qualifiers) {
        if (word == qualifier.word)
            result = around(Type::Kind::Qualified, qualifier.tag, type(nesting + 1), column);
    }
    if (!result)
        Cursor::failAt(column, "unknown type " + std::string(word));
    if (result->size > LargestType)
        Cursor::failAt(column, "the type is too large");
    m_cursor->expect(')', "behind the type");
    return result;
}

// Parameters, and behind an arrow the results.
void Assembler::signature(Type* function, unsigned nesting)
{
    auto list = [&](std::vector<Symbol*>& symbols) {
        if (m_cursor->peek() == ')' || (m_cursor->peek() == '-' && m_cursor->ahead(1) == '>'))
            return;
        do {
            m_cursor->peek();
            uint32_t column = m_cursor->column();
            Symbol* s = m_program.newSymbol("");
            s->type = type(nesting);
            if (s->type->depth >= limits::Nesting)
                Cursor::failAt(column, "types are nested too deeply");
            function->depth = std::max(function->depth, uint8_t(s->type->depth + 1));
            symbols.push_back(s);
        } while (more());
    };
    list(function->in);
    if (m_cursor->accept("->"))
        list(function->out);
}

void Assembler::typeDirective()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    std::string_view word = identifier("the type's name");
    comma();
    Type* named = type();
    if (named->name.empty())
        named->name = word;
    if (!m_unit->types.emplace(word, named).second)
        Cursor::failAt(column, "the type " + std::string(word) + " is already defined");
}

void Assembler::structDirective()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    if (m_struct)
        Cursor::failAt(column, "a structure within a structure");
    Type* opened = structNamed(identifier("the structure's name"));
    if (opened->complete)
        Cursor::failAt(column, "the structure " + std::string(opened->name) + " is already defined");
    opened->place = placeAt(column);
    m_structSized = more();
    if (m_structSized)
        opened->size = number(0, LargestType, "the size");
    m_struct = opened;
    m_structBits = 0;
    m_structPlace = placeAt(column);
}

Type* Assembler::openStruct(const char* directive)
{
    if (!m_struct)
        m_cursor->fail(std::string(directive) + " stands between .STRUCT and .ENDSTRUCT");
    return m_struct;
}

// .FIELD name, type [, offset [, size]], both in bits. Without an offset the field begins at the next whole
// byte.
void Assembler::field()
{
    Type* owner = openStruct(".FIELD");
    Field field;
    field.name = identifier("the field's name");
    comma();
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    field.type = type();
    if (!field.type->complete)
        Cursor::failAt(column, "the structure " + std::string(field.type->name) + " is not defined yet");
    field.bitOffset = (m_structBits + 7) / 8 * 8;
    field.bitSize = field.type->size * 8;
    if (more()) {
        field.bitOffset = number(0, LargestType * 8, "the offset in bits");
        if (more())
            field.bitSize = number(1, field.type->size * 8, "the size in bits");
    }
    m_structBits = std::max(m_structBits, field.bitOffset + field.bitSize);
    owner->depth = std::max(owner->depth, uint8_t(std::min(255, field.type->depth + 1)));
    if (owner->depth > limits::Nesting)
        Cursor::failAt(column, "types are nested too deeply");
    owner->fields.push_back(field);
}

void Assembler::staticField()
{
    Type* owner = openStruct(".STATIC");
    Field field;
    field.isStatic = true;
    field.name = identifier("the field's name");
    comma();
    field.type = type();
    comma();
    field.value = expression();
    owner->fields.push_back(field);
}

void Assembler::endStruct()
{
    Type* closed = openStruct(".ENDSTRUCT");
    m_struct = nullptr;
    int64_t needed = (m_structBits + 7) / 8;
    closed->complete = true;
    if (!m_structSized)
        closed->size = needed;
    if (closed->size < needed)
        m_cursor->fail("the fields need " + std::to_string(needed) + " bytes");
    if (closed->size > LargestType)
        m_cursor->fail("the structure is too large");
}

} // namespace kvas
