#include "zoff/ZOFFReader.h"

#include "support/HByteStream.h"
#include "support/HException.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"
#include "zoff/limits.h"

#include <algorithm>
#include <cstdio>

namespace {

[[noreturn]] void bad(const char* what)
{
    throw HException(std::string("bad object file: ") + what);
}

[[noreturn]] void badOperand(const char* expected)
{
    throw HException(std::string("bad object file: operand type error (") + expected + " expected)");
}

[[noreturn]] void outOfRange()
{
    bad("operand value error (constant out of range)");
}

} // namespace

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

// All objects, the module among them, go into one pool, which is the module's own once it is there; a
// read that fails drops it.
ZOFFModule* ZOFFReader::read(bool verbose)
{
    m_pool = std::make_unique<Pool>();
    CurrentPool current(m_pool.get());
    while (m_position < m_input.size()) {
        size_t offset = m_position;
        unsigned tag = getByte();
        if (verbose)
            trace(offset, tag);
        perform(tag);
    }
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

// ---- input ----

unsigned char ZOFFReader::getByte()
{
    if (m_position >= m_input.size())
        throw HException("premature end of ZOFF file");
    return m_input[m_position++];
}

void ZOFFReader::readWideLiteral()
{
    uint64_t value = 0;
    for (unsigned count = getByte(); count > 0; --count)
        value = value << 8 | getByte();
    pushConst(int64_t(value));
}

void ZOFFReader::readStringPool()
{
    auto size = size_t(popConst(0, ZOFFLimits::StringPoolBytes));
    if (size > m_input.size() - m_position)
        throw HException("premature end of ZOFF file");
    m_strings = {reinterpret_cast<const char*>(m_input.data()) + m_position, size};
    m_position += size;
}

// ---- the operand stack ----

void ZOFFReader::pushEntry(const Entry& entry)
{
    static_assert(sizeof m_stack / sizeof m_stack[0] == ZOFFLimits::StackEntries);
    if (m_depth >= ZOFFLimits::StackEntries)
        bad("reader stack overflow");
    m_stack[m_depth++] = entry;
}

ZOFFReader::Entry ZOFFReader::popEntry()
{
    if (m_depth == 0)
        bad("reader empty stack");
    return m_stack[--m_depth];
}

void ZOFFReader::pushConst(int64_t value)
{
    Entry entry;
    entry.kind = Entry::Const;
    entry.value = value;
    pushEntry(entry);
}

void ZOFFReader::push(ZOFFObject* object)
{
    Entry entry;
    entry.object = object;
    pushEntry(entry);
}

ZOFFObject* ZOFFReader::objectOf(const Entry& entry)
{
    switch (entry.kind) {
    case Entry::Const: return new ZOFFConstExpr(entry.value);
    case Entry::String: return new ZOFFString({entry.text, entry.length});
    default: return entry.object;
    }
}

ZOFFObject* ZOFFReader::popObject()
{
    return objectOf(popEntry());
}

ZOFFObject* ZOFFReader::popAnyObject()
{
    ZOFFObject* object = popObject();
    if (!object)
        badOperand("object");
    return object;
}

int64_t ZOFFReader::popConst()
{
    Entry entry = popEntry();
    if (entry.kind == Entry::Const)
        return entry.value;
    if (entry.kind != Entry::Object || !entry.object || entry.object->kind() != ZOFFKind::ConstExpr)
        badOperand("constant expression");
    return static_cast<ZOFFConstExpr*>(entry.object)->value();
}

int64_t ZOFFReader::popConst(uint64_t min, uint64_t max)
{
    int64_t value = popConst();
    if (uint64_t(value) < min || uint64_t(value) > max)
        outOfRange();
    return value;
}

int32_t ZOFFReader::popInt32()
{
    int64_t value = popConst();
    if (value < INT32_MIN || value > int64_t(UINT32_MAX))
        outOfRange();
    return int32_t(uint32_t(value));
}

int32_t ZOFFReader::popSize()
{
    return int32_t(popConst(0, INT32_MAX));
}

ZOFFExpr* ZOFFReader::popExpr(bool allowNull)
{
    Entry entry = popEntry();
    if (allowNull && entry.isNull())
        return nullptr;
    if (entry.kind == Entry::String || entry.isNull() ||
        (entry.kind == Entry::Object && !entry.object->isExpr()))
        badOperand("expression");
    return static_cast<ZOFFExpr*>(objectOf(entry));
}

ZOFFScope* ZOFFReader::popScope(bool allowNull)
{
    Entry entry = popEntry();
    if (allowNull && entry.isNull())
        return nullptr;
    if (entry.kind != Entry::Object || !entry.object || !entry.object->isScope())
        badOperand("scope");
    return static_cast<ZOFFScope*>(entry.object);
}

std::string_view ZOFFReader::popString()
{
    Entry entry = popEntry();
    if (entry.kind == Entry::String)
        return {entry.text, entry.length};
    // A string that some record has looked at as an object.
    if (entry.kind != Entry::Object || !entry.object || entry.object->kind() != ZOFFKind::String)
        badOperand("string");
    return static_cast<ZOFFString*>(entry.object)->bytes();
}

ZOFFSection* ZOFFReader::popSection()
{
    Entry entry = popEntry();
    if (entry.kind != Entry::Object || !entry.object || entry.object->kind() != ZOFFKind::Section)
        badOperand("section");
    return static_cast<ZOFFSection*>(entry.object);
}

ZOFFType* ZOFFReader::popType()
{
    Entry entry = popEntry();
    if (entry.kind != Entry::Object || !entry.object || entry.object->kind() != ZOFFKind::Type)
        badOperand("type");
    return static_cast<ZOFFType*>(entry.object);
}

ZOFFSymbol* ZOFFReader::popSymbol()
{
    Entry entry = popEntry();
    if (entry.kind != Entry::Object || !entry.object || entry.object->kind() != ZOFFKind::Symbol)
        throw HException("operand type error: symbol expected");
    return static_cast<ZOFFSymbol*>(entry.object);
}

ZOFFFilename* ZOFFReader::popFile()
{
    Entry entry = popEntry();
    if (entry.kind != Entry::Object || !entry.object || entry.object->kind() != ZOFFKind::Filename)
        badOperand("file");
    return static_cast<ZOFFFilename*>(entry.object);
}

// ---- names ----

// Interned text stays for good, and one pool may be cut into any number of overlapping names.
void ZOFFReader::chargeNameBytes(size_t count)
{
    m_nameBytes += int64_t(count);
    if (int64_t(count) > ZOFFLimits::NameLength ||
        m_nameBytes > ZOFFLimits::NameBytesFree + ZOFFLimits::NameBytesPerByte * int64_t(m_input.size()))
        bad("names too long");
}

const HString* ZOFFReader::nameOf(std::string_view bytes)
{
    chargeNameBytes(bytes.size());
    return HString::intern(bytes);
}

const HString* ZOFFReader::popName()
{
    return nameOf(popString());
}

const HString* ZOFFReader::popNameOrNull()
{
    if (m_depth > 0 && m_stack[m_depth - 1].isNull()) {
        --m_depth;
        return nullptr;
    }
    return popName();
}

// ---- registers of the machine ----

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

ZOFFInsn& ZOFFReader::currentInsn() const
{
    if (!m_insn)
        bad("no instruction defined");
    return *m_insn;
}

ZOFFMarker* ZOFFReader::marker(uint64_t number)
{
    if (number >= m_markers.size())
        m_markers.resize(size_t(number) + 1);
    ZOFFMarker*& entry = m_markers[size_t(number)];
    if (!entry)
        entry = new ZOFFMarker;
    return entry;
}

void ZOFFReader::place(ZOFFInsn* insn)
{
    insn->setPC(m_pc);
    insn->setLocus(m_locus);
    if (!m_keepLoci)
        m_locus = nullptr;
    m_section->addInsn(insn);
}

void ZOFFReader::placeAsCurrent(ZOFFInsn* insn)
{
    place(insn);
    m_insn = insn;
}

// ---- the records ----

void ZOFFReader::perform(unsigned number)
{
    if (number <= unsigned(ZOFFTag::Lit7)) {
        pushConst(number);
        return;
    }
    auto tag = ZOFFTag(number);
    switch (tag) {
    case ZOFFTag::LitX: readWideLiteral(); break;
    case ZOFFTag::NullNull: push(nullptr); [[fallthrough]];
    case ZOFFTag::Null: push(nullptr); break;
    case ZOFFTag::Dup: {
        Entry top = popEntry();
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
    // A file carries fewer objects than bytes, so a larger number is a lie.
    case ZOFFTag::MarkerRef: push(new ZOFFMarkerExpr(marker(uint64_t(popConst(0, m_input.size()))))); break;

    case ZOFFTag::Alias: {
        auto n = uint64_t(popConst());
        if (n >= m_aliases.size() || m_aliases[size_t(n)].isNull())
            bad("alias not defined");
        pushEntry(m_aliases[size_t(n)]);
        break;
    }
    case ZOFFTag::MkAlias: {
        auto n = size_t(popConst(0, m_input.size()));
        Entry entry = popEntry();
        if (n >= m_aliases.size())
            m_aliases.resize(n + 1);
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
    case ZOFFTag::MkString: {
        Entry entry;
        auto length = size_t(popConst(0, m_strings.size()));
        auto offset = size_t(popConst(0, m_strings.size()));
        if (length > m_strings.size() - offset)
            outOfRange();
        entry.kind = Entry::String;
        entry.text = m_strings.data() + offset;
        entry.length = uint32_t(length);
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
        ZOFFSymbol* symbol = popSymbol();
        symbol->setCodeletIndex(index);
        module().addPatchableSymbol(symbol);
        break;
    }
    case ZOFFTag::Patchable: {
        int32_t value = popInt32();
        ZOFFSymbol* symbol = popSymbol();
        symbol->setPatchable(value);
        module().addPatchableSymbol(symbol);
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
            m_position = m_input.size();
        }
        break;

    case ZOFFTag::MkSection: {
        auto* section = new ZOFFSection(popName());
        module().addSection(section);
        push(section);
        break;
    }
    case ZOFFTag::Section: m_section = popSection(); break;

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

    case ZOFFTag::ResetLocus: m_locus = nullptr; break;
    case ZOFFTag::AdjustStack: m_stackAdjust = popInt32(); break;
    case ZOFFTag::SetPC:
        m_pc = popInt32();
        if (m_breakPending) {
            m_breakPending = false;
            place(new ZOFFBreakInsn);
        }
        break;
    case ZOFFTag::SetBytes: {
        std::string_view bytes = popString();
        ZOFFInsn& insn = currentInsn();
        m_codeBytes += int64_t(bytes.size());
        if (m_codeBytes > ZOFFLimits::CodeBytes)
            bad("too much code");
        insn.appendBytes(bytes);
        break;
    }
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

void ZOFFReader::performItem(ZOFFTag tag)
{
    switch (tag) {
    case ZOFFTag::Insn:
    case ZOFFTag::HiddenInsn: {
        ZOFFInsn* insn = makeInsn();
        insn->setStackAdjust(m_stackAdjust);
        insn->setHidden(tag == ZOFFTag::HiddenInsn);
        placeAsCurrent(insn);
        break;
    }
    case ZOFFTag::DefBytes: {
        auto size = int(popConst(1, 4));
        placeAsCurrent(new ZOFFDefBytesInsn(popExpr(false), size));
        break;
    }
    case ZOFFTag::DefAddr: placeAsCurrent(new ZOFFDefAddrInsn(popExpr(false))); break;
    case ZOFFTag::Fill: {
        int32_t count = popSize();
        placeAsCurrent(new ZOFFFillInsn(count, popInt32()));
        break;
    }
    case ZOFFTag::Align: placeAsCurrent(new ZOFFAlignInsn(popInt32())); break;
    case ZOFFTag::Origin: placeAsCurrent(new ZOFFOriginInsn(popInt32())); break;
    case ZOFFTag::Space: placeAsCurrent(new ZOFFSpaceInsn(popExpr(false))); break;
    case ZOFFTag::LocalInsn: placeAsCurrent(new ZOFFLocalInsn(popExpr(false))); break;
    case ZOFFTag::LinkIf: placeAsCurrent(new ZOFFLinkIf(popExpr(false))); break;
    case ZOFFTag::EndLinkIf: placeAsCurrent(new ZOFFEndLinkIf); break;
    case ZOFFTag::Init: {
        auto* init = new ZOFFInitInsn(popName(), m_module);
        placeAsCurrent(init);
        m_inits.push_back(init);
        break;
    }
    case ZOFFTag::MarkerDef: {
        ZOFFMarker* placed = marker(uint64_t(popConst(0, m_input.size())));
        const HString* name = popNameOrNull();
        if (placed->fragment())
            bad("marker defined more than once");
        if (name)
            placed->setName(name);
        place(placed);
        break;
    }
    case ZOFFTag::Locus: {
        int32_t line = popInt32();
        auto* locus = new ZOFFLocus(popFile(), line, tag);
        locus->setPC(m_pc);
        m_section->addInsn(locus);
        m_locus = locus;
        if (m_keepLoci)
            locus->setLocus(locus);
        break;
    }
    case ZOFFTag::Break:
        m_section->newFragment();
        m_breakPending = true;
        break;
    case ZOFFTag::SetFlags: m_section->setFlags(uint32_t(popInt32())); break;
    default: break;
    }
}

void ZOFFReader::performScope(ZOFFTag tag)
{
    if (tag == ZOFFTag::SetScope) {
        ZOFFSymbol* symbol = popSymbol();
        ZOFFScope* scope = popScope(false);
        symbol->setScope(scope);
        push(scope);
        return;
    }
    if (tag == ZOFFTag::SetFctSymbol) {
        ZOFFSymbol* symbol = popSymbol();
        popScope(false)->setFunctionSymbol(symbol);
        return;
    }
    ZOFFExpr* end = popExpr(true);
    ZOFFExpr* start = popExpr(true);
    ZOFFScope* parent = popScope(true);
    ZOFFScope* scope;
    if (tag == ZOFFTag::ScopeModule) {
        if (m_module) {
            scope = new ZOFFModule;
        } else {
            scope = m_module = ZOFFModule::createIn(m_pool.get());
        }
    } else {
        auto markerOf = [](ZOFFExpr* expr) {
            return expr && expr->kind() == ZOFFKind::MarkerExpr ? static_cast<ZOFFMarkerExpr*>(expr)
                                                                : nullptr;
        };
        scope = new ZOFFScope(tag, markerOf(start), markerOf(end));
    }
    scope->setScope(parent);
    push(scope);
}
