// What sources are made into before addresses are known: sections with their items, symbols, scopes and
// types. Everything lives as long as the Program; the deques never move what they hold.
#pragma once

#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Tags.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kvas {

struct Expr;
struct Scope;
struct Section;
struct Symbol;
struct Type;

// A place in a section.
struct Marker {
    int64_t pc = -1; // byte address; -1 until the first layout
    std::string_view name;
    uint32_t number = 0;
};

struct Expr {
    enum class Kind : uint8_t { Constant, Symbol, Marker, Register, SectionStart, SectionSize, Binary };
    Kind kind;
    Tag tag{};         // Binary
    uint8_t depth = 1; // levels of this tree
    int64_t value = 0; // Constant; Register: its number
    Symbol* symbol = nullptr;
    Marker* marker = nullptr;
    Section* section = nullptr;
    const Expr* left = nullptr;
    const Expr* right = nullptr;

    bool isConstant() const { return kind == Kind::Constant; }
};

struct Symbol {
    std::string_view name;
    const Expr* value = nullptr; // null while undefined
    Symbol* target = nullptr;    // the public symbol of another file that this name means
    Type* type = nullptr;
    Place defined;
    Place referenced; // first use; line 0 when there was none
    Place declared;   // for the debugger; line 0 for none
    std::string_view declaredFile;
    bool isPublic = false;
    bool isLabel = false; // names a place; written even when it is not public
    bool isLocal = false; // a label within another label's range: of no interest to the debugger
    bool evaluating = false;
    int32_t codelet = -1;
    bool patchable = false;
    int32_t patchValue = -1;
    bool patched = false;
    int32_t alias = -1; // number in the executable
    uint32_t pass = 0;  // in which `cached` was found
    int64_t cached = 0;

    Symbol* meant() { return target ? target : this; }
};

// Items of a section, in order.
enum class ItemKind : uint8_t {
    Instruction,
    Bytes,   // `size` bytes of the operand's value
    Address, // an address of the processor
    Fill,    // `count` bytes of value `fill`
    Align,   // up to the next multiple of `count`
    Origin,
    Space,  // operand bytes without contents
    Init,   // the contents of section `text`
    LinkIf, // what follows is dropped when the operand is 0
    EndLinkIf,
    Mark,
    Locus, // source line `count` of file `text` begins
    NoLocus,
};

struct Item {
    ItemKind kind = ItemKind::Mark;
    uint8_t size = 0; // Bytes; Instruction: words with prefix words
    bool hidden = false;
    bool dropped = false;
    uint16_t word = 0;   // Instruction: the word behind all prefix words
    uint16_t prefix = 0; // bits of the nearest prefix word, 0 when none is needed
    uint32_t pc = 0;
    uint32_t length = 0; // bytes
    int32_t stackAdjust = 0;
    uint32_t count = 0;
    uint8_t fill = 0;
    int64_t value = 0; // of the operand, once the layout stands
    const Expr* operand = nullptr;
    Marker* marker = nullptr;
    std::string_view text;
    Place place;
};

struct Fragment {
    std::vector<Item> items;
    bool hasOrigin = false;
    uint32_t origin = 0;
    uint32_t alignment = 1; // of the first item, when there is no origin
    Place place;
    uint32_t start = 0, end = 0;
    // The source line in force at the end, line 0 for none; not known behind items that may be dropped.
    std::string_view lineFile;
    uint32_t line = 0;
    bool lineKnown = true;
};

enum class SectionKind : uint8_t {
    None = 0,
    Code = 1,
    Data = 2,
    Data3 = 3,
    Data4 = 4,
    None5 = 5,
    Eeprom = 6
};

struct Section {
    std::string name;
    SectionKind kind = SectionKind::Code;
    bool load = true;
    uint32_t moreFlags = 0;
    bool defined = false;
    Place place;
    std::deque<Fragment> fragments;
    bool placed = false;         // start and end are known
    uint32_t start = 0, end = 0; // end is behind the last byte

    uint32_t flags() const { return uint32_t(kind) | (load ? 0x80000u : 0) | moreFlags; }
};

struct Field {
    std::string_view name;
    Type* type = nullptr;
    bool isStatic = false;
    int64_t bitOffset = 0, bitSize = 0;
    const Expr* value = nullptr; // static
};

struct Type {
    enum class Kind : uint8_t {
        Simple,
        Float,
        Untyped,
        Pointer,
        Array,
        CountedArray,
        Struct,
        Qualified,
        Function,
        Member
    };
    Kind kind;
    Tag tag{}; // kind of a simple type, qualifier, representation of a pointer
    uint8_t depth = 1;
    bool complete = true; // false for a struct that was only mentioned so far
    int64_t size = 0;
    int64_t count = 0;
    Type* base = nullptr; // element, target, what is qualified, class
    Type* counter = nullptr;
    std::string_view name; // given by a directive; empty for none
    std::vector<Field> fields;
    std::vector<Symbol*> in, out;
    int32_t frameSize = 0, savedRegisters = 0;
    Place place;
    int32_t alias = -1;
};

struct Scope {
    Tag kind;
    Scope* parent = nullptr;
    Marker* start = nullptr;
    Marker* end = nullptr;
    Symbol* function = nullptr;
    std::vector<Symbol*> symbols;
    Place place;
    int32_t alias = -1;
};

class Program {
public:
    Program();

    // Keeps a text for the life of the program.
    std::string_view keep(std::string text) { return m_texts.emplace_back(std::move(text)); }

    const Expr* constant(int64_t value);
    const Expr* of(Symbol* symbol);
    const Expr* of(Marker* marker);
    const Expr* ofRegister(unsigned number);
    const Expr* ofSection(Section* section, Expr::Kind kind);
    // Folds constants, also those of a sum within a sum. Null when the tree would be too deep.
    const Expr* binary(Tag tag, const Expr* left, const Expr* right);

    Marker* newMarker(std::string_view name = {});
    Symbol* newSymbol(std::string_view name);
    Type* newType(Type::Kind kind, int64_t size, const Place& place);
    Scope* newScope(Tag kind, Scope* parent);
    // The section of that name, made when it is not there.
    Section* section(std::string_view name);

    std::string moduleName;
    std::deque<Section> sections; // in the order of their making
    std::vector<Symbol*> symbols; // in the order of their definition
    std::vector<Scope*> scopes;   // parents first
    std::vector<std::string> libraries;
    std::map<std::string, std::string> attributes;
    bool isProtected = false;
    int32_t linkOrderPriority = 10;
    // Public symbols of all files, by name.
    std::unordered_map<std::string_view, Symbol*> publics;
    uint32_t markers = 0;

private:
    std::deque<std::string> m_texts;
    std::deque<Expr> m_exprs;
    std::deque<Marker> m_markers;
    std::deque<Symbol> m_symbols;
    std::deque<Type> m_types;
    std::deque<Scope> m_scopes;
    std::unordered_map<std::string_view, Section*> m_sectionsByName;
};

} // namespace kvas
