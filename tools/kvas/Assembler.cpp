#include "tools/kvas/Assembler.h"
#include "tools/kvas/Cursor.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Instruction.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/Registers.h"
#include "tools/kvas/Tags.h"
#include "tools/kvas/limits.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace kvas {

namespace {

bool readWhole(const std::string& path, std::string& text)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        return false;
    std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "rb"), fclose);
    if (!file)
        return false;
    char buffer[1 << 16];
    while (size_t n = fread(buffer, 1, sizeof buffer, file.get())) {
        text.append(buffer, n);
        if (text.size() > limits::SourceBytes)
            return false;
    }
    return !ferror(file.get());
}

} // namespace

struct OperationTable {
    std::unordered_map<std::string_view, Assembler::Directive> directives;

    OperationTable()
    {
        using A = Assembler;
        directives = {
            {"DB", &A::defineBytes},
            {"DW", &A::defineWords},
            {"DC3", &A::defineThrees},
            {"DL", &A::defineLongs},
            {"DA", &A::defineAddresses},
            {".ASCII", &A::text},
            {".ASCIZ", &A::textWithZero},
            {".FLOAT", &A::singles},
            {".DOUBLE", &A::doubles},
            {".FILL", &A::fill},
            {".ALIGN", &A::align},
            {"ORG", &A::origin},
            {".SPACE", &A::space},
            {".INIT", &A::init},
            {"LINKIF", &A::linkIf},
            {"ENDLINKIF", &A::endLinkIf},
            {".SECTION", &A::sectionDirective},
            {".CODE", &A::code},
            {".CONST", &A::constants},
            {".DATA", &A::dataSection},
            {".BSS", &A::zeroed},
            {".INCLUDE", &A::include},
            {".LIBRARY", &A::library},
            {".PUBLIC", &A::makePublic},
            {".ATTRIBUTE", &A::attribute},
            {".PROTECTED", &A::protect},
            {".PRIORITY", &A::priority},
            {".CODELET", &A::codelet},
            {".PATCHABLE", &A::patchable},
            {".PATCHED", &A::patched},
            {".HIDDEN", &A::hidden},
            {".LINE", &A::lineDirective},
            {".NOLINE", &A::noLine},
            {".ADJUST", &A::stackAdjust},
            {".FUNC", &A::function},
            {".ENDFUNC", &A::endFunction},
            {".BLOCK", &A::block},
            {".ENDBLOCK", &A::endBlock},
            {".FRAME", &A::frame},
            {".SAVED", &A::saved},
            {".PARAM", &A::parameter},
            {".LOCAL", &A::local},
            {".RESULT", &A::result},
            {".VAR", &A::typedSymbol},
            {".DECL", &A::declaration},
            {".TYPE", &A::typeDirective},
            {".STRUCT", &A::structDirective},
            {".FIELD", &A::field},
            {".STATIC", &A::staticField},
            {".ENDSTRUCT", &A::endStruct},
        };
    }
};

Assembler::Assembler(Program& program, Diagnostics& diagnostics)
    : m_program(program), m_diagnostics(diagnostics), m_expressions(program, *this)
{
}

void Assembler::define(std::string_view name, int64_t value)
{
    if (auto known = m_program.publics.find(name); known != m_program.publics.end()) {
        known->second->value = m_program.constant(value);
        return;
    }
    Symbol* symbol = m_program.newSymbol(m_program.keep(std::string(name)));
    symbol->value = m_program.constant(value);
    symbol->isPublic = true;
    m_program.publics[symbol->name] = symbol;
    m_program.symbols.push_back(symbol);
}

const Assembler::Source* Assembler::open(const std::string& fileName)
{
    std::error_code fault;
    std::string path = std::filesystem::absolute(fileName, fault).lexically_normal().string();
    if (auto found = m_sources.find(path); found != m_sources.end())
        return found->second;
    std::string text;
    if (!readWhole(fileName, text))
        return nullptr;
    Source& source = m_sourceStore.emplace_back();
    source.text = std::move(text);
    source.directory = std::filesystem::path(fileName).parent_path().string();
    source.file = m_diagnostics.addFile(fileName);
    source.path = m_program.keep(path);
    m_sources.emplace(path, &source);
    return &source;
}

// The file beside the one being read, or in one of the directories; empty when there is none.
std::string Assembler::find(const std::string& name) const
{
    std::filesystem::path path(name);
    std::error_code ignored;
    if (path.is_absolute())
        return std::filesystem::is_regular_file(path, ignored) ? name : std::string();
    std::filesystem::path beside = std::filesystem::path(m_source->directory) / path;
    if (std::filesystem::is_regular_file(beside, ignored))
        return beside.string();
    for (const std::string& directory : m_directories) {
        std::filesystem::path candidate = std::filesystem::path(directory) / path;
        if (std::filesystem::is_regular_file(candidate, ignored))
            return candidate.string();
    }
    return {};
}

void Assembler::assemble(const std::string& fileName)
{
    const Source* source = open(fileName);
    if (!source) {
        m_diagnostics.error({m_diagnostics.addFile(fileName), 0, 0}, "cannot read the file");
        return;
    }
    if (!m_assembled.emplace(source->path).second)
        return; // named twice: it could only define everything twice
    m_unit = &m_units.emplace_back();
    m_section = nullptr;
    m_scope = nullptr;
    m_scopeDepth = 0;
    m_struct = nullptr;
    m_lastGlobal = {};
    m_lines = Lines::OfSource;
    m_givenFile = {};
    m_stackAdjust = 0;
    m_hidden = false;
    m_linkIfs = 0;
    read(*source);
    m_source = source;
    finishUnit();
}

void Assembler::read(const Source& source)
{
    m_bytes += source.text.size();
    if (m_bytes > limits::SourceBytes) {
        m_diagnostics.error({source.file, 0, 0}, "the sources are too large");
        throw GaveUp();
    }
    const Source* outerSource = m_source;
    uint32_t outerLine = m_line;
    m_source = &source;
    m_line = 0;
    m_open.push_back(&source);
    std::string_view text = source.text;
    while (!text.empty()) {
        size_t end = text.find('\n');
        ++m_line;
        std::string_view one = text.substr(0, end);
        line(one.ends_with('\r') ? one.substr(0, one.size() - 1) : one);
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
    m_open.pop_back();
    m_source = outerSource;
    m_line = outerLine;
}

void Assembler::line(std::string_view text)
{
    Cursor cursor(text);
    if (cursor.atEnd())
        return;
    Cursor* outer = m_cursor;
    m_cursor = &cursor;
    m_here = nullptr;
    m_firstItem = 0;
    if (m_section) {
        if (auto current = m_unit->fragments.find(m_section); current != m_unit->fragments.end())
            m_firstItem = current->second->items.size();
    }
    if (m_lines == Lines::OfSource)
        m_locusDone = false;
    try {
        statement();
    } catch (const SyntaxError& error) {
        m_diagnostics.error(placeAt(error.column), error.text);
    }
    m_cursor = outer;
}

void Assembler::statement()
{
    static const OperationTable table;

    Cursor& cursor = *m_cursor;
    uint32_t column = cursor.column();
    std::string_view word = cursor.identifier();
    if (word.empty())
        cursor.fail("expected a label, an instruction or a directive");
    while (cursor.accept(':')) {
        defineLabel(word, column);
        if (cursor.atEnd())
            return;
        column = cursor.column();
        word = cursor.identifier();
        if (word.empty())
            cursor.fail("expected an instruction or a directive");
    }
    if ((cursor.peek() == '=' && cursor.ahead(1) != '=') || cursor.acceptWord("EQU") ||
        cursor.acceptWord("equ")) {
        cursor.accept('=');
        equate(word, column);
        cursor.expectEnd();
        return;
    }

    char buffer[16];
    if (word.size() > sizeof buffer)
        Cursor::failAt(column, "unknown operation " + std::string(word));
    for (size_t i = 0; i < word.size(); ++i)
        buffer[i] = word[i] >= 'a' && word[i] <= 'z' ? char(word[i] - 32) : word[i];
    std::string_view upper(buffer, word.size());
    if (const Mnemonic* mnemonic = findMnemonic(upper)) {
        Item item = newItem(ItemKind::Instruction);
        item.place.column = column;
        parseInstruction(*mnemonic, cursor, m_expressions, item);
        cursor.expectEnd();
        add(item);
        return;
    }
    auto directive = table.directives.find(upper);
    if (directive == table.directives.end())
        Cursor::failAt(column, "unknown operation " + std::string(word));
    (this->*directive->second)();
    cursor.expectEnd();
}

std::string_view Assembler::identifier(const char* what)
{
    m_cursor->peek();
    std::string_view word = m_cursor->identifier();
    if (word.empty())
        m_cursor->fail(std::string("expected ") + what);
    return word;
}

// Valid until the next call for names with a leading dot, which belong to the label before them.
std::string_view Assembler::fullName(std::string_view name)
{
    if (name.front() != '.')
        return name;
    m_nameBuffer.assign(m_lastGlobal);
    m_nameBuffer += name;
    return m_nameBuffer;
}

Symbol* Assembler::symbol(std::string_view name)
{
    bool isLocal = name.front() == '.';
    std::string_view full = fullName(name);
    if (auto found = m_unit->symbols.find(full); found != m_unit->symbols.end())
        return found->second;
    // Other names point into the source's text, which stays.
    Symbol* symbol = m_program.newSymbol(isLocal ? m_program.keep(std::string(full)) : full);
    symbol->isLocal = isLocal;
    m_unit->symbols.emplace(symbol->name, symbol);
    m_unit->order.push_back(symbol);
    return symbol;
}

Symbol* Assembler::reference(std::string_view name, uint32_t column)
{
    Symbol* s = symbol(name);
    if (!s->referenced.line)
        s->referenced = placeAt(column);
    // Known already: counts and origins may use it.
    if (!s->value && !s->target && !s->isLocal) {
        auto found = m_program.publics.find(s->name);
        if (found != m_program.publics.end())
            s->target = found->second;
    }
    return s;
}

Symbol* Assembler::defineSymbol(std::string_view name, uint32_t column)
{
    if (isRegisterName(name))
        Cursor::failAt(column, std::string(name) + " is the name of a register");
    Symbol* s = symbol(name);
    if (s->value)
        Cursor::failAt(column, std::string(s->name) + " is already defined in line " +
                                   std::to_string(s->defined.line));
    s->defined = placeAt(column);
    s->target = nullptr; // the file's own meaning counts
    return s;
}

void Assembler::defineLabel(std::string_view name, uint32_t column)
{
    Symbol* s = defineSymbol(name, column);
    s->isLocal = name.front() == '.'; // also when it was used with its full name before
    Marker* marker = m_program.newMarker(s->name);
    mark(marker);
    s->value = m_program.of(marker);
    s->isLabel = true;
    if (!s->isLocal)
        m_lastGlobal = s->name;
    m_program.symbols.push_back(s);
}

void Assembler::equate(std::string_view name, uint32_t column)
{
    Symbol* s = defineSymbol(name, column);
    s->value = expression();
    m_program.symbols.push_back(s);
}

Item Assembler::newItem(ItemKind kind) const
{
    Item item;
    item.kind = kind;
    item.stackAdjust = m_stackAdjust;
    item.hidden = m_hidden;
    item.place = placeAt(1);
    return item;
}

Fragment& Assembler::fragment()
{
    if (!m_section)
        m_cursor->fail("no section: .CODE, .DATA or .SECTION must come first");
    Fragment*& current = m_unit->fragments[m_section];
    if (!current) {
        current = &m_section->fragments.emplace_back();
        current->alignment = m_section->kind == SectionKind::Code ? 2 : 4;
        current->place = placeAt(1);
    }
    return *current;
}

Item& Assembler::add(const Item& item)
{
    Fragment& target = fragment();
    if (item.kind != ItemKind::Origin)
        locus();
    target.items.push_back(item);
    return target.items.back();
}

void Assembler::mark(Marker* marker)
{
    Item item = newItem(ItemKind::Mark);
    item.marker = marker;
    fragment().items.push_back(item);
}

Marker* Assembler::markHere()
{
    Marker* marker = m_program.newMarker();
    mark(marker);
    return marker;
}

// The place of the statement, also when some of its items are there already.
Marker* Assembler::here()
{
    if (!m_here) {
        m_here = m_program.newMarker();
        Item item = newItem(ItemKind::Mark);
        item.marker = m_here;
        std::vector<Item>& items = fragment().items;
        items.insert(items.begin() + ptrdiff_t(m_firstItem), item);
    }
    return m_here;
}

// Lines matter to the debugger where code is.
void Assembler::locus()
{
    if (m_section->kind != SectionKind::Code)
        return;
    Fragment& target = fragment();
    std::string_view file;
    uint32_t line = 0;
    if (m_lines != Lines::None) {
        file = m_lines == Lines::Given ? m_givenFile : m_source->path;
        line = m_lines == Lines::Given ? m_givenLine : m_line;
    }
    bool inForce = target.lineKnown && target.line == line && target.lineFile == file;
    if (inForce && (m_locusDone || m_lines == Lines::None))
        return;
    m_locusDone = true;
    Item item = newItem(m_lines == Lines::None ? ItemKind::NoLocus : ItemKind::Locus);
    item.text = file;
    item.count = line;
    target.items.push_back(item);
    target.lineFile = file;
    target.line = line;
    target.lineKnown = true;
}

void Assembler::finishUnit()
{
    if (m_scope)
        m_diagnostics.error(m_scope->place, m_scope->kind == Tag::ScopeFunction
                                                ? "the function has no .ENDFUNC"
                                                : "the block has no .ENDBLOCK");
    if (m_struct)
        m_diagnostics.error(m_structPlace, "the structure has no .ENDSTRUCT");
    if (m_linkIfs)
        m_diagnostics.error({m_source->file, 0, 0}, "a LINKIF has no ENDLINKIF");
    for (Type* type : m_unit->structOrder) {
        if (!type->complete)
            m_diagnostics.error(type->place, "the structure " + std::string(type->name) + " is not defined");
    }
    for (Symbol* symbol : m_unit->order) {
        if (!symbol->isPublic)
            continue;
        if (!symbol->value) {
            m_diagnostics.error(symbol->declared.line ? symbol->declared : symbol->referenced,
                                "the public symbol " + std::string(symbol->name) + " is not defined");
        } else if (!m_program.publics.emplace(symbol->name, symbol).second) {
            m_diagnostics.error(symbol->defined,
                                "the public symbol " + std::string(symbol->name) + " is defined twice");
        }
    }
}

void Assembler::finish()
{
    for (size_t i = 0; i < m_pendingLibraries.size(); ++i) // a library may ask for further ones
        assemble(m_pendingLibraries[i]);
    for (Unit& unit : m_units)
        resolve(unit);
    for (Section& section : m_program.sections) {
        // One without a place was only named in a line that is reported already.
        if (!section.defined && section.place.line)
            m_diagnostics.error(section.place, "there is no section " + section.name);
    }
}

// What is said of a symbol where it is used counts when nothing is said where it is defined.
void Assembler::join(Symbol* symbol, Symbol* target)
{
    symbol->target = target;
    if (!target->type)
        target->type = symbol->type;
    if (target->declaredFile.empty()) {
        target->declared = symbol->declared;
        target->declaredFile = symbol->declaredFile;
    }
    if (target->codelet < 0)
        target->codelet = symbol->codelet;
    if (symbol->patchable && !target->patchable) {
        target->patchable = true;
        target->patchValue = symbol->patchValue;
    }
    target->patched |= symbol->patched;
}

void Assembler::resolve(Unit& unit)
{
    for (Symbol* symbol : unit.order) {
        if (symbol->value)
            continue;
        auto found = m_program.publics.find(symbol->name);
        if (found != m_program.publics.end() && !symbol->isLocal)
            join(symbol, found->second);
        else if (symbol->referenced.line && !symbol->isPublic)
            m_diagnostics.error(symbol->referenced, "undefined symbol " + std::string(symbol->name));
    }
}

} // namespace kvas
