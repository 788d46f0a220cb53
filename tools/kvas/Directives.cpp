// Data, sections, and what concerns the module as a whole.
#include "tools/kvas/Assembler.h"
#include "tools/kvas/Cursor.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/limits.h"

#include <bit>
#include <cmath>
#include <filesystem>
#include <utility>

namespace kvas {

namespace {

constexpr std::pair<std::string_view, SectionKind> sectionKinds[] = {
    {"NONE", SectionKind::None},     {"CODE", SectionKind::Code},   {"DATA", SectionKind::Data},
    {"DATA3", SectionKind::Data3},   {"DATA4", SectionKind::Data4}, {"NONE5", SectionKind::None5},
    {"EEPROM", SectionKind::Eeprom},
};

} // namespace

void Assembler::putValue(unsigned size, const Expr* value)
{
    Item item = newItem(ItemKind::Bytes);
    item.size = uint8_t(size);
    item.operand = value;
    add(item);
}

void Assembler::bytes(std::string_view text)
{
    for (char c : text)
        putValue(1, m_program.constant((unsigned char)c));
}

void Assembler::data(unsigned size)
{
    do {
        m_cursor->peek();
        uint32_t column = m_cursor->column();
        if (m_cursor->peek() == '"') {
            if (size != 1)
                Cursor::failAt(column, "a text is made of bytes: use DB");
            bytes(m_cursor->quoted());
            continue;
        }
        putValue(size, expression());
        fragment().items.back().place.column = column;
    } while (more());
}

void Assembler::defineAddresses()
{
    do {
        Item item = newItem(ItemKind::Address);
        m_cursor->peek();
        item.place.column = m_cursor->column();
        item.operand = expression();
        add(item);
    } while (more());
}

void Assembler::text()
{
    do
        bytes(m_cursor->quoted());
    while (more());
}

void Assembler::textWithZero()
{
    do {
        bytes(m_cursor->quoted());
        bytes(std::string_view("\0", 1));
    } while (more());
}

void Assembler::singles()
{
    do {
        m_cursor->peek();
        uint32_t column = m_cursor->column();
        double value = m_cursor->floating();
        if (std::isfinite(value) && !std::isfinite(float(value)))
            Cursor::failAt(column, "the number is too large");
        putValue(4, m_program.constant(std::bit_cast<uint32_t>(float(value))));
    } while (more());
}

void Assembler::doubles()
{
    do {
        uint64_t bits = std::bit_cast<uint64_t>(m_cursor->floating());
        putValue(4, m_program.constant(int64_t(bits & 0xFFFFFFFF)));
        putValue(4, m_program.constant(int64_t(bits >> 32)));
    } while (more());
}

void Assembler::fill()
{
    Item item = newItem(ItemKind::Fill);
    item.count = uint32_t(number(0, limits::SectionBytes, "the count"));
    item.fill = more() ? uint8_t(number(-128, 255, "the byte")) : 0;
    add(item);
}

void Assembler::align()
{
    Item item = newItem(ItemKind::Align);
    bool bracket = m_cursor->acceptWord("BYTE");
    if (bracket)
        m_cursor->expect('[', "behind BYTE");
    item.count = uint32_t(number(1, 0x10000, "the alignment"));
    if (bracket)
        m_cursor->expect(']', "behind the alignment");
    add(item);
}

void Assembler::origin()
{
    uint32_t at = uint32_t(number(0, 0xFFFFFFFF, "the origin"));
    if (!m_section)
        fragment();
    if (m_scope)
        m_cursor->fail("an origin within a function");
    Fragment*& current = m_unit->fragments[m_section];
    current = &m_section->fragments.emplace_back();
    current->hasOrigin = true;
    current->origin = at;
    current->place = placeAt(1);
    Item item = newItem(ItemKind::Origin);
    item.count = at;
    add(item);
}

void Assembler::space()
{
    Item item = newItem(ItemKind::Space);
    m_cursor->peek();
    item.place.column = m_cursor->column();
    item.operand = expression();
    add(item);
}

void Assembler::init()
{
    Item item = newItem(ItemKind::Init);
    m_cursor->peek();
    item.place.column = m_cursor->column();
    Section* section = m_program.section(name("the name of a section"));
    if (section == m_section)
        Cursor::failAt(item.place.column, "a section cannot hold itself");
    if (!section->place.line)
        section->place = item.place;
    item.text = section->name;
    add(item);
}

void Assembler::linkIf()
{
    Item item = newItem(ItemKind::LinkIf);
    m_cursor->peek();
    item.place.column = m_cursor->column();
    item.operand = expression();
    if (m_linkIfs)
        Cursor::failAt(1, "LINKIF within LINKIF");
    fragment().items.push_back(item);
    ++m_linkIfs;
}

void Assembler::endLinkIf()
{
    if (!m_linkIfs)
        m_cursor->fail("ENDLINKIF without LINKIF");
    std::vector<Item>& items = fragment().items;
    bool opened = false;
    for (auto item = items.rbegin(); item != items.rend() && !opened; ++item)
        opened = item->kind == ItemKind::LinkIf;
    if (!opened)
        m_cursor->fail("LINKIF and ENDLINKIF must stand in the same run of code");
    --m_linkIfs;
    fragment().lineKnown = false;
    items.push_back(newItem(ItemKind::EndLinkIf));
}

void Assembler::enterSection(Section* section, uint32_t column)
{
    if (m_scope)
        Cursor::failAt(column, "the section changes within a function");
    if (m_linkIfs && section != m_section) // what stands in the other section would stay
        Cursor::failAt(column, "the section changes within LINKIF");
    m_section = section;
}

void Assembler::standardSection(const char* name, SectionKind kind, bool load)
{
    Section* section = m_program.section(name);
    if (!section->defined) {
        section->defined = true;
        section->kind = kind;
        section->load = load;
    }
    enterSection(section, 1);
}

uint32_t Assembler::sectionFlags()
{
    constexpr uint32_t worded = 0x8000F; // the kind, and LOAD
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    uint32_t flags = uint32_t(number(0, 0xFFFFFFFF, "the flags"));
    if (flags & worded)
        Cursor::failAt(column, "flags 0xF and 0x80000 are given by the kind and by LOAD or NOLOAD");
    return flags;
}

void Assembler::sectionDirective()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    Section* section = m_program.section(name("the name of a section"));
    if (!more()) {
        if (!section->defined)
            Cursor::failAt(column, "the first mention of a section names its kind");
        enterSection(section, column);
        return;
    }
    m_cursor->peek();
    uint32_t kindColumn = m_cursor->column();
    std::string_view word = identifier("a kind of section");
    const auto* found = std::begin(sectionKinds);
    while (found != std::end(sectionKinds) && found->first != word)
        ++found;
    if (found == std::end(sectionKinds))
        Cursor::failAt(kindColumn,
                       "unknown kind of section: CODE, DATA, DATA3, DATA4, EEPROM, NONE or NONE5");
    SectionKind kind = found->second;
    bool load = kind == SectionKind::Code || kind == SectionKind::Eeprom;
    uint32_t flags = 0;
    while (more()) {
        if (m_cursor->acceptWord("LOAD"))
            load = true;
        else if (m_cursor->acceptWord("NOLOAD"))
            load = false;
        else
            flags |= sectionFlags();
    }
    if (section->defined && (section->kind != kind || section->load != load || section->moreFlags != flags))
        Cursor::failAt(column, "the section was given other properties before");
    section->defined = true;
    section->kind = kind;
    section->load = load;
    section->moreFlags = flags;
    enterSection(section, column);
}

void Assembler::include()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    std::string fileName = m_cursor->quoted();
    m_cursor->expectEnd();
    std::string path = find(fileName);
    const Source* source = path.empty() ? nullptr : open(path);
    if (!source)
        Cursor::failAt(column, "cannot read " + fileName);
    for (const Source* outer : m_open) {
        if (outer == source)
            Cursor::failAt(column, fileName + " includes itself");
    }
    if (m_open.size() == limits::IncludeDepth)
        Cursor::failAt(column, "files are included too deeply");
    if (++m_includes > limits::Includes) {
        m_diagnostics.error(placeAt(column), "too many files are included");
        throw GaveUp();
    }
    read(*source);
}

// A library is a source file that joins the program once, however often it is asked for.
void Assembler::library()
{
    m_cursor->peek();
    uint32_t column = m_cursor->column();
    std::string library = m_cursor->name("the name of a library");
    std::string path = find(library + ".s");
    if (path.empty())
        Cursor::failAt(column, "there is no library " + library + ".s");
    for (const std::string& known : m_program.libraries) {
        if (known == library)
            return;
    }
    if (++m_includes > limits::Includes) {
        m_diagnostics.error(placeAt(column), "too many files are included");
        throw GaveUp();
    }
    m_program.libraries.push_back(library);
    m_pendingLibraries.push_back(path);
}

void Assembler::makePublic()
{
    do {
        m_cursor->peek();
        uint32_t column = m_cursor->column();
        std::string_view word = identifier("a symbol");
        if (word.front() == '.')
            Cursor::failAt(column, "a label with a leading dot cannot be public");
        Symbol* s = reference(word, column);
        s->isPublic = true;
    } while (more());
}

void Assembler::attribute()
{
    std::string key = m_cursor->name("the attribute's name");
    comma();
    m_program.attributes[key] = m_cursor->quoted();
}

void Assembler::priority()
{
    m_program.linkOrderPriority = int32_t(number(0, 0x7FFFFFFF, "the priority"));
}

void Assembler::codelet()
{
    m_cursor->peek();
    Symbol* s = reference(identifier("a symbol"), m_cursor->column());
    comma();
    s->codelet = int32_t(number(0, 0x7FFFFFFF, "the index"));
}

void Assembler::patchable()
{
    m_cursor->peek();
    Symbol* s = reference(identifier("a symbol"), m_cursor->column());
    comma();
    s->patchValue = int32_t(number(0, 0x7FFFFFFF, "the value"));
    s->patchable = true;
}

void Assembler::patched()
{
    m_cursor->peek();
    Symbol* s = reference(identifier("a symbol"), m_cursor->column());
    s->patched = true;
}

void Assembler::hidden()
{
    if (m_cursor->acceptWord("ON"))
        m_hidden = true;
    else if (m_cursor->acceptWord("OFF"))
        m_hidden = false;
    else
        m_cursor->fail("expected ON or OFF");
}

} // namespace kvas
