#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReaderInline.h"

#include "support/HByteStream.h"
#include "support/HException.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <cstdio>

ZOFFReader::ZOFFReader(const HByteStream* input, bool keepLoci) : ZOFFReader(input->bytes(), keepLoci) {}

ZOFFReader::~ZOFFReader() = default;

void ZOFFReader::release(ZOFFModule* module)
{
    ZOFFModule::destroy(module);
}

ZOFFModule* ZOFFReader::readFile(bool verbose)
{
    m_quick = false;
    return read(verbose);
}

ZOFFModule* ZOFFReader::readFileQuickly(bool verbose)
{
    m_quick = true;
    return read(verbose);
}

// ---- input ----

inline void ZOFFReader::readWideLiteral()
{
    const unsigned char* from = m_input.at();
    if (uint64_t value; m_input.left() >= 9 && takeNumber(from, value)) [[likely]] {
        m_input.moveTo(from);
        pushConst(int64_t(value));
        return;
    }
    uint64_t value = 0;
    if (m_input.left() < 1 || m_input.left() < 1 + size_t(*from)) [[unlikely]]
        endOfInput();
    for (size_t count = *from++; count > 0; --count)
        value = value << 8 | *from++;
    m_input.moveTo(from);
    pushConst(int64_t(value));
}

inline void ZOFFReader::makeString()
{
    auto length = size_t(popConst(0, m_strings.size()));
    auto offset = size_t(popConst(0, m_strings.size()));
    if (length > m_strings.size() - offset)
        outOfRange();
    Entry entry;
    entry.kind = Entry::String;
    entry.text = m_strings.data() + offset;
    entry.length = uint32_t(length);
    pushEntry(entry);
}

void ZOFFReader::readStringPool()
{
    auto size = size_t(popConst(0, ZOFFLimits::StringPoolBytes));
    m_strings = m_input.take(size);
    if (m_strings.size() != size)
        endOfInput();
}

// ---- the machine ----

void ZOFFReader::trace(size_t offset, unsigned tag) const
{
    const char* name = tagName(tag);
    printf("%06zx %-20s", offset, name ? name : "?");
    for (int i = 0; i < m_depth; ++i)
        printf(" %s", describe(m_stack[i]).c_str());
    printf("\n");
}

std::string ZOFFReader::describe(const Entry& entry) const
{
    if (entry.kind == Entry::Const)
        return std::to_string(entry.value);
    if (entry.kind == Entry::String)
        return "\"" + std::string(entry.text, entry.length) + "\"";
    if (!entry.object)
        return "null";
    const HString* name = entry.object->name();
    return "<" + std::to_string(int(entry.object->kind())) + (name ? " " + std::string(name->view()) : "") +
           ">";
}

// ---- registers of the machine ----

namespace {

// Entries for a table in which there is none of that number yet: most numbers are the next ones.
size_t grownTo(uint64_t number)
{
    return size_t(number + number / 2 + 64);
}

} // namespace

ZOFFModule& ZOFFReader::module() const
{
    if (!m_module)
        bad("no defined module");
    return *m_module;
}

void ZOFFReader::needSection() const
{
    if (!m_section)
        bad("no defined section");
}

ZOFFMarker* ZOFFReader::marker(uint64_t number)
{
    if (number >= m_markers.size())
        m_markers.resize(grownTo(number));
    ZOFFMarker*& entry = m_markers[size_t(number)];
    if (!entry)
        entry = new ZOFFMarker;
    return entry;
}

// ---- the records ----

[[gnu::always_inline]] inline void ZOFFReader::perform(unsigned number)
{
    auto tag = ZOFFTag(number);
    switch (tag) {
    case ZOFFTag::Lit0:
    case ZOFFTag::Lit1:
    case ZOFFTag::Lit2:
    case ZOFFTag::Lit3:
    case ZOFFTag::Lit4:
    case ZOFFTag::Lit5:
    case ZOFFTag::Lit6:
    case ZOFFTag::Lit7: pushConst(number); break;
    case ZOFFTag::LitX: readWideLiteral(); break;
    case ZOFFTag::Null: pushEntry(Entry()); break;
    case ZOFFTag::MkString: makeString(); break;
    case ZOFFTag::SetPC: setPC(); break;
    case ZOFFTag::SetBytes: setBytes(); break;
    case ZOFFTag::NullNull:
        push(nullptr);
        push(nullptr);
        break;
    case ZOFFTag::Dup: {
        Entry top = shared(popEntry());
        pushEntry(top);
        pushEntry(top);
        break;
    }
    case ZOFFTag::Drop: popEntry(); break;
    case ZOFFTag::Nop: break;

    case ZOFFTag::Add:
    case ZOFFTag::Sub:
    case ZOFFTag::Mul:
    case ZOFFTag::Div:
    case ZOFFTag::Mod:
    case ZOFFTag::And:
    case ZOFFTag::Or:
    case ZOFFTag::Xor:
    case ZOFFTag::Shl:
    case ZOFFTag::Shr:
    case ZOFFTag::Ashr:
    case ZOFFTag::Eq:
    case ZOFFTag::Ne:
    case ZOFFTag::Gt:
    case ZOFFTag::Lt:
    case ZOFFTag::Ge:
    case ZOFFTag::Le:
    case ZOFFTag::LogAnd:
    case ZOFFTag::LogOr:
    case ZOFFTag::OtherOperator:
    case ZOFFTag::WordAddress: {
        ZOFFExpr* right = popExpr(false);
        ZOFFExpr* left = popExpr(false);
        push(ZOFFBinaryExpr::make(tag, left, right));
        break;
    }
    case ZOFFTag::Register: push(new ZOFFRegisterExpr(popInt32())); break;
    case ZOFFTag::SymbolVal: push(new ZOFFSymbolExpr(popSymbol())); break;
    case ZOFFTag::MarkerRef: push(new ZOFFMarkerExpr(marker(uint64_t(popConst(0, largestNumber()))))); break;

    case ZOFFTag::Alias: {
        auto n = uint64_t(popConst());
        if (n >= m_aliases.size() || m_aliases[size_t(n)].isNull())
            bad("alias not defined");
        pushEntry(m_aliases[size_t(n)]);
        break;
    }
    case ZOFFTag::MkAlias: {
        auto n = size_t(popConst(0, largestNumber()));
        Entry entry = shared(popEntry());
        if (n >= m_aliases.size())
            m_aliases.resize(grownTo(n));
        if (!m_aliases[n].isNull())
            bad("alias defined more than once");
        m_aliases[n] = entry;
        break;
    }

    case ZOFFTag::StringPool: readStringPool(); break;
    case ZOFFTag::MkStringZ: {
        Entry entry;
        auto offset = size_t(popConst(0, m_strings.size()));
        std::string_view rest = m_strings.substr(offset, size_t(ZOFFLimits::NameLength) + 1);
        entry.kind = Entry::String;
        entry.text = rest.data();
        entry.length = uint32_t(std::min(rest.find('\0'), rest.size()));
        chargeNameBytes(entry.length);
        pushEntry(entry);
        break;
    }
    case ZOFFTag::MkSymbol: {
        auto* symbol = new ZOFFSymbol(popNameOrNull());
        module().addSymbol(symbol);
        push(symbol);
        break;
    }
    case ZOFFTag::SymbolDef: {
        ZOFFExpr* value = popExpr(false);
        ZOFFSymbol* symbol = popSymbol();
        symbol->setValue(value);
        if (!symbol->type())
            symbol->setType(value->type());
        break;
    }
    case ZOFFTag::SetType: {
        ZOFFType* type = popType();
        popAnyObject()->setType(type);
        break;
    }
    case ZOFFTag::SetName: {
        const HString* name = popName();
        ZOFFObject* object = popAnyObject();
        object->setName(name);
        push(object);
        break;
    }
    case ZOFFTag::Public: {
        ZOFFSymbol* symbol = popSymbol();
        if (!symbol->name())
            badOperand("string");
        module().makePublic(symbol);
        break;
    }
    case ZOFFTag::Codelet: {
        int32_t index = popInt32();
        popSymbol()->setCodeletIndex(index);
        break;
    }
    case ZOFFTag::Patchable: {
        int32_t value = popInt32();
        popSymbol()->setPatchable(value);
        break;
    }
    case ZOFFTag::Patched: {
        popConst();
        ZOFFSymbol* symbol = popSymbol();
        symbol->setPatched(true);
        push(symbol);
        break;
    }
    case ZOFFTag::SymbolLocus: {
        int32_t line = popInt32();
        ZOFFFilename* file = popFile();
        ZOFFSymbol* symbol = popSymbol();
        symbol->setLocus(new ZOFFLocus(file, line, tag));
        push(symbol);
        break;
    }
    case ZOFFTag::MkFilename: push(new ZOFFFilename(popNameOrNull())); break;

    case ZOFFTag::Library: module().addLibrary(popName()); break;
    case ZOFFTag::Attribute: {
        const HString* value = popName();
        const HString* key = popName();
        module().setAttribute(key, value);
        break;
    }
    case ZOFFTag::Protected: module().setProtected(true); break;
    case ZOFFTag::LinkOrderPriority: module().setLinkOrderPriority(popInt32()); break;
    case ZOFFTag::EndOfInfo:
        if (m_quick) {
            // The module's scope may still wait on the stack for its symbols.
            m_depth = 0;
            m_input.skipAll();
        }
        break;

    case ZOFFTag::MkSection: {
        auto* section = new ZOFFSection(popName());
        module().addSection(section);
        push(section);
        break;
    }
    case ZOFFTag::Section:
        m_section = popSection();
        m_packer.close();
        break;

    case ZOFFTag::SetScope:
    case ZOFFTag::ScopeModule:
    case ZOFFTag::ScopeFunction:
    case ZOFFTag::ScopeBlock:
    case ZOFFTag::SetFctSymbol: performScope(tag); break;

    case ZOFFTag::Char:
    case ZOFFTag::Int:
    case ZOFFTag::Unsigned:
    case ZOFFTag::OldStruc:
    case ZOFFTag::Struc:
    case ZOFFTag::Array:
    case ZOFFTag::CountedArray:
    case ZOFFTag::Ptr:
    case ZOFFTag::Untyped:
    case ZOFFTag::Float:
    case ZOFFTag::Function:
    case ZOFFTag::Member:
    case ZOFFTag::StaticField:
    case ZOFFTag::DynamicField:
    case ZOFFTag::ParamIn:
    case ZOFFTag::ParamOut:
    case ZOFFTag::ForwardType:
    case ZOFFTag::DataSpace:
    case ZOFFTag::CodeSpace:
    case ZOFFTag::EepromSpace:
    case ZOFFTag::PeripheralSpace:
    case ZOFFTag::BytePtr:
    case ZOFFTag::WordPtr: performType(tag); break;

    case ZOFFTag::ResetLocus:
        m_locus = nullptr;
        m_packedLocus.operation = nullptr;
        if (m_packer.isOpen())
            m_packer.resetLocus();
        break;
    case ZOFFTag::AdjustStack:
        m_stackAdjust = popInt32();
        if (m_packer.isOpen())
            m_packer.setStackAdjust(m_stackAdjust);
        break;
    case ZOFFTag::InstrumentationData: {
        int32_t data = popInt32();
        currentInsn().setInstrumentationData(data);
        break;
    }
    case ZOFFTag::ExtensionWord: {
        auto word = uint16_t(popConst());
        currentInsn().setExtensionWord(word);
        break;
    }

    case ZOFFTag::MarkerDef:
    case ZOFFTag::DefBytes:
    case ZOFFTag::DefAddr:
    case ZOFFTag::Insn:
    case ZOFFTag::HiddenInsn:
    case ZOFFTag::Fill:
    case ZOFFTag::Align:
    case ZOFFTag::Origin:
    case ZOFFTag::Break:
    case ZOFFTag::Locus:
    case ZOFFTag::Space:
    case ZOFFTag::LocalInsn:
    case ZOFFTag::SetFlags:
    case ZOFFTag::Init:
    case ZOFFTag::LinkIf:
    case ZOFFTag::EndLinkIf:
        needSection();
        performItem(tag);
        break;

    default: bad("unknown tag");
    }
}

// All objects, the module among them, go into one pool, which is the module's own once it is there; a
// read that fails drops it.
ZOFFModule* ZOFFReader::read(bool verbose)
{
    m_pool = std::make_unique<Pool>();
    CurrentPool current(m_pool.get());
    while (!m_input.atEnd()) {
        if (verbose)
            trace(m_input.position(), *m_input.at());
        else if (m_packer.isOpen() && !readPacked())
            break;
        unsigned tag = *m_input.at();
        m_input.moveTo(m_input.at() + 1);
        perform(tag);
    }
    m_packer.close();
    m_strings = {};
    if (m_depth != 0)
        bad("stack not empty at EOF");
    // Sections that are filled from one another in a circle have no size.
    for (ZOFFInitInsn* init : m_inits)
        init->length();
    if (!m_module) {
        m_pool.reset();
        return nullptr;
    }
    m_module->nameLabels();
    m_pool.release(); // the module's from here on
    return m_module;
}
