// Reads sources into a Program: one call of assemble for each file, then finish. Faults are reported line
// by line; a line with one has no effect beyond what stood before the fault.
#pragma once

#include "tools/kvas/Cursor.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/ExpressionParser.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/Tags.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kvas {

struct Operation;

class Assembler : public Names {
public:
    Assembler(Program& program, Diagnostics& diagnostics);

    // Where include files and libraries are looked for, behind the directory of the file that names them.
    void addDirectory(std::string directory) { m_directories.push_back(std::move(directory)); }
    // A public symbol with a value, as if by a source; the last value counts.
    void define(std::string_view name, int64_t value);
    // A file that cannot be read is an error without a line.
    void assemble(const std::string& fileName);
    // Assembles the libraries that were asked for, and joins the names of all files.
    void finish();

    // Names
    Symbol* reference(std::string_view name, uint32_t column) override;
    Marker* here() override;

private:
    friend struct OperationTable;
    using Directive = void (Assembler::*)();

    // What belongs to one file named on the command line, with all it includes.
    struct Unit {
        std::unordered_map<std::string_view, Symbol*> symbols;
        std::vector<Symbol*> order; // of first mention
        std::unordered_map<std::string_view, Type*> types, structs;
        std::vector<Type*> structOrder;
        std::unordered_map<Section*, Fragment*> fragments; // that the unit is filling
    };
    struct Source {
        std::string text;
        std::string directory;
        uint32_t file = 0;
        std::string_view path; // absolute, for the debugger
    };

    const Source* open(const std::string& fileName);
    std::string find(const std::string& name) const;
    void read(const Source& source);
    void line(std::string_view text);
    void statement();
    void finishUnit();
    void resolve(Unit& unit);
    static void join(Symbol* symbol, Symbol* target);

    Place placeAt(uint32_t column) const override { return {m_source->file, m_line, column}; }
    Symbol* symbol(std::string_view name);
    Symbol* defineSymbol(std::string_view name, uint32_t column);
    void defineLabel(std::string_view name, uint32_t column);
    void equate(std::string_view name, uint32_t column);
    std::string_view fullName(std::string_view name);

    // Items go to the present section; the first one of a line brings its locus.
    Item newItem(ItemKind kind) const;
    Fragment& fragment();
    Item& add(const Item& item);
    void mark(Marker* marker);
    Marker* markHere();
    void locus();
    void enterSection(Section* section, uint32_t column);

    const Expr* expression() { return m_expressions.parse(*m_cursor); }
    int64_t number(int64_t low, int64_t high, const char* what)
    {
        return m_expressions.number(*m_cursor, low, high, what);
    }
    void comma() { m_cursor->expect(',', "between operands"); }
    bool more() { return m_cursor->accept(','); }
    std::string_view name(const char* what) { return m_program.keep(m_cursor->name(what)); }
    std::string_view identifier(const char* what);

    // Data and sections: Directives.cpp.
    void data(unsigned size);
    void bytes(std::string_view text);
    void putValue(unsigned size, const Expr* value);
    void defineBytes() { data(1); }
    void defineWords() { data(2); }
    void defineThrees() { data(3); }
    void defineLongs() { data(4); }
    void defineAddresses();
    void text();
    void textWithZero();
    void singles();
    void doubles();
    void fill();
    void align();
    void origin();
    void space();
    void init();
    void linkIf();
    void endLinkIf();
    void sectionDirective();
    uint32_t sectionFlags();
    void standardSection(const char* name, SectionKind kind, bool load);
    void code() { standardSection("code", SectionKind::Code, true); }
    void constants() { standardSection("const", SectionKind::Code, true); }
    void dataSection() { standardSection("data", SectionKind::Data, false); }
    void zeroed() { standardSection("bss", SectionKind::Data3, false); }
    void include();
    void library();
    void makePublic();
    void attribute();
    void protect() { m_program.isProtected = true; }
    void priority();
    void codelet();
    void patchable();
    void patched();
    void hidden();

    // For the debugger: DebugDirectives.cpp.
    void lineDirective();
    void noLine();
    void stackAdjust();
    void function();
    void endFunction();
    void block();
    void endBlock();
    void closeScope(Tag kind, const char* opener);
    void frame();
    void saved();
    void parameter() { variable(true); }
    void local() { variable(false); }
    void variable(bool parameter);
    void result();
    void typedSymbol();
    void declaration();
    void declare(Symbol* symbol);
    Type* functionType(const char* directive);

    // Types: TypeParser.cpp.
    Type* type(unsigned nesting = 0);
    Type* composed(std::string_view word, uint32_t column, unsigned nesting);
    Type* sized(Type::Kind kind, Tag tag, std::initializer_list<int64_t> sizes);
    Type* around(Type::Kind kind, Tag tag, Type* base, uint32_t column);
    void signature(Type* function, unsigned nesting);
    Type* structNamed(std::string_view name);
    void typeDirective();
    void structDirective();
    void field();
    void staticField();
    void endStruct();
    Type* openStruct(const char* directive);

    Program& m_program;
    Diagnostics& m_diagnostics;
    ExpressionParser m_expressions;
    std::vector<std::string> m_directories;
    std::unordered_map<std::string, Source*> m_sources;
    std::deque<Source> m_sourceStore;
    std::deque<Unit> m_units;
    std::vector<std::string> m_pendingLibraries;
    std::unordered_set<std::string> m_assembled; // paths of units, so that a library comes once

    Unit* m_unit = nullptr;
    const Source* m_source = nullptr;
    std::vector<const Source*> m_open; // including each other
    unsigned m_includes = 0;
    size_t m_bytes = 0;

    uint32_t m_line = 0;
    Cursor* m_cursor = nullptr;
    Section* m_section = nullptr;
    Marker* m_here = nullptr;      // of this statement, when it was asked for
    size_t m_firstItem = 0;        // of this statement, in the section's fragment
    bool m_locusDone = false;      // this line has its locus, or that of the last .LINE
    std::string_view m_lastGlobal; // label to which those with a leading dot belong
    std::string m_nameBuffer;

    enum class Lines : uint8_t { OfSource, Given, None } m_lines = Lines::OfSource;
    std::string_view m_givenFile;
    uint32_t m_givenLine = 0;
    int32_t m_stackAdjust = 0;
    bool m_hidden = false;
    unsigned m_linkIfs = 0;
    Scope* m_scope = nullptr;
    unsigned m_scopeDepth = 0;
    Type* m_struct = nullptr;
    int64_t m_structBits = 0;
    bool m_structSized = false;
    Place m_structPlace;
};

} // namespace kvas
