#include "debug/symbols/SymbolicDebug.h"

#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <set>
#include <string>

namespace {

constexpr int64_t LowestBound = -1;
constexpr int64_t HighestBound = 0x7FFFFFFF;

// A name as given and as the compiler decorates it.
struct Spellings {
    explicit Spellings(std::string_view name)
        : plain(HString::intern(name)), decorated(HString::intern("_" + std::string(name)))
    {
    }
    bool match(const HString* name) const { return name && (name == plain || name == decorated); }

    const HString* plain;
    const HString* decorated;
};

template <class Map> auto* lookUp(const Map& map, const Spellings& name)
{
    auto found = map.find(name.plain);
    if (found == map.end())
        found = map.find(name.decorated);
    return found == map.end() ? nullptr : found->second;
}

ZOFFSymbol* symbolIn(const ZOFFScope* scope, const Spellings& name)
{
    ZOFFObject* object = lookUp(scope->symbols(), name);
    return object && object->kind() == ZOFFKind::Symbol ? static_cast<ZOFFSymbol*>(object) : nullptr;
}

bool atPC(const ZOFFInsn* insn, uint32_t address)
{
    return uint32_t(insn->pc()) < address;
}

// Null unless the symbol's value lies in a section.
ZOFFSection* sectionOf(const ZOFFSymbol* symbol)
{
    return symbol->evaluate().section;
}

struct ScopeBounds {
    bool known = false;
    int64_t start = 0;
    int64_t end = 0;
};

ScopeBounds boundsOf(const ZOFFScope* scope)
{
    if (!scope->start() || !scope->end())
        return {};
    ZOFFEvaluation start = scope->start()->evaluate(), end = scope->end()->evaluate();
    return {!start.unresolved && !end.unresolved, start.value, end.value};
}

struct KnownScope {
    int64_t start;
    int64_t end;
    ZOFFScope* scope;
};

// Parents before children. How deep scopes are nested is bounded by the reader.
void collectScopes(ZOFFScope* scope, std::vector<KnownScope>& scopes)
{
    ScopeBounds bounds = boundsOf(scope);
    if (bounds.known && bounds.start < bounds.end && bounds.start >= LowestBound &&
        bounds.end <= HighestBound)
        scopes.push_back({std::max<int64_t>(bounds.start, 0), bounds.end, scope});
    for (ZOFFScope* child : scope->children())
        collectScopes(child, scopes);
}

} // namespace

const HString* fileNameOf(const ZOFFLocus* locus)
{
    return locus->file() ? locus->file()->fileName() : nullptr;
}

namespace {

// In the order of their keys, those of one key as they come. Most files have them in that order already,
// and comparing keys touches none of the objects again.
template <class T, class KeyOf> void sortByKey(std::vector<T>& items, KeyOf keyOf)
{
    std::vector<std::pair<uint64_t, T>> keyed;
    keyed.reserve(items.size());
    for (const T& item : items)
        keyed.emplace_back(keyOf(item), item);
    auto less = [](const auto& a, const auto& b) { return a.first < b.first; };
    if (std::is_sorted(keyed.begin(), keyed.end(), less))
        return;
    std::stable_sort(keyed.begin(), keyed.end(), less);
    std::transform(keyed.begin(), keyed.end(), items.begin(), [](const auto& entry) { return entry.second; });
}

// Numbers that are ordered as the places are. A locus without a file comes before all others.
uint64_t keyOf(const HString* file, int line)
{
    uint64_t number = file ? uint64_t(file->serial()) + 1 : 0;
    return number << 32 | (uint32_t(line) ^ 0x80000000);
}

uint64_t keyOf(const ZOFFLocus* locus)
{
    return keyOf(fileNameOf(locus), locus->line());
}

uint64_t keyOf(const ZOFFInsnListIteratorLocusLT::Place& place)
{
    return keyOf(place.first, place.second);
}

} // namespace

bool ZOFFInsnListIteratorLocusLT::operator()(const ZOFFLocus* a, const ZOFFLocus* b) const
{
    return keyOf(a) < keyOf(b);
}

bool ZOFFInsnListIteratorLocusLT::operator()(const ZOFFLocus* a, const Place& b) const
{
    return keyOf(a) < keyOf(b);
}

bool ZOFFInsnListIteratorLocusLT::operator()(const Place& a, const ZOFFLocus* b) const
{
    return keyOf(a) < keyOf(b);
}

constinit const ZOFFDebugIndex SymbolicDebugIndex = {
    .make = [](const Path& path, ZOFFModule* module) { return new SymbolicDebug(path, module); },
    .destroy = [](SymbolicDebug* index) { delete index; },
};

SymbolicDebug::SymbolicDebug(const Path& path, ZOFFModule* module)
    : m_path(path), m_module(module), m_sourceMap(this)
{
    for (auto& [name, section] : module->sectionsByName())
        if (section->sectionKind() == ZOFFSection::NoMemory || section->sectionKind() == ZOFFSection::Code)
            addItems(section);
    sortByKey(m_instructions, [](const ZOFFInsn* insn) { return uint32_t(insn->pc()); });
    sortByKey(m_loci, [](const ZOFFLocus* locus) { return keyOf(locus); });
    addSymbols();
}

void SymbolicDebug::addItems(ZOFFSection* section)
{
    section->find([this](ZOFFInsn* insn) {
        if (insn->length() > 0) {
            m_instructions.push_back(insn);
        } else if (insn->kind() == ZOFFKind::Locus) {
            auto* locus = static_cast<ZOFFLocus*>(insn);
            m_loci.push_back(locus);
            const HString* file = fileNameOf(locus);
            m_sourceMap.addLine(file ? file : HString::intern("???"), uint32_t(locus->line()));
        }
        return false;
    });
}

void SymbolicDebug::addSymbols()
{
    for (ZOFFSymbol* symbol : m_module->allSymbols()) {
        ZOFFType* type = symbol->type();
        while (type && type->isPtr())
            type = static_cast<ZOFFPtrType*>(type)->target();
        if (type && type->isStruc())
            m_namedTypes[type->getName()] = type;
        ZOFFEvaluation value = symbol->evaluate();
        if (!value.unresolved)
            m_symbols.push_back({uint32_t(value.value), symbol});
    }
    sortByKey(m_symbols, [](const AddressedSymbol& symbol) { return symbol.address; });
}

ZOFFInsn* SymbolicDebug::GetInsn(uint32_t address) const
{
    auto found = std::lower_bound(m_instructions.begin(), m_instructions.end(), address, atPC);
    return found != m_instructions.end() && uint32_t((*found)->pc()) == address ? *found : nullptr;
}

// Only an item's first address counts as a place in the line table; one inside an instruction has no
// line.
ZOFFInsn* SymbolicDebug::insnAround(uint32_t address) const
{
    auto found = std::lower_bound(m_instructions.begin(), m_instructions.end(), address, atPC);
    if (found == m_instructions.end())
        return nullptr;
    ZOFFInsn* insn = *found;
    uint64_t pc = uint32_t(insn->pc());
    return pc <= address && address < pc + uint64_t(insn->length()) ? insn : nullptr;
}

ZOFFInsn* SymbolicDebug::insnBefore(uint32_t address) const
{
    auto found = std::lower_bound(m_instructions.begin(), m_instructions.end(), address, atPC);
    if (found == m_instructions.begin())
        return nullptr;
    ZOFFInsn* insn = *std::prev(found);
    return uint32_t(insn->pc()) + uint64_t(insn->length()) == address ? insn : nullptr;
}

ZOFFSection* SymbolicDebug::getSection(uint32_t address) const
{
    for (auto& [name, section] : m_module->sectionsByName()) {
        section->computeSectionMetrics();
        uint32_t lowest = section->lowestAddress();
        int64_t start = lowest == ZOFFSection::UnknownAddress ? 0 : lowest;
        if (start <= address && address < start + section->getSize())
            return section;
    }
    return nullptr;
}

// Of the scopes that hold an address the last one in the order of the file is the innermost, however they
// overlap. Between two bounds of scopes that one is the same.
const std::vector<SymbolicDebug::ScopeStretch>& SymbolicDebug::scopeStretches() const
{
    if (!m_scopeStretches.empty())
        return m_scopeStretches;
    std::vector<KnownScope> scopes;
    collectScopes(m_module, scopes);
    struct Bound {
        int64_t address;
        bool begins;
        size_t scope;
    };
    std::vector<Bound> bounds;
    for (size_t i = 0; i < scopes.size(); ++i) {
        bounds.push_back({scopes[i].start, true, i});
        bounds.push_back({scopes[i].end, false, i});
    }
    std::sort(bounds.begin(), bounds.end(),
              [](const Bound& a, const Bound& b) { return a.address < b.address; });
    std::set<size_t> open;
    m_scopeStretches.push_back({0, nullptr});
    for (size_t i = 0; i < bounds.size();) {
        int64_t address = bounds[i].address;
        for (; i < bounds.size() && bounds[i].address == address; ++i) {
            if (bounds[i].begins)
                open.insert(bounds[i].scope);
            else
                open.erase(bounds[i].scope);
        }
        m_scopeStretches.push_back(
            {uint32_t(address), open.empty() ? nullptr : scopes[*open.rbegin()].scope});
    }
    return m_scopeStretches;
}

ZOFFScope* SymbolicDebug::findScope(uint32_t address) const
{
    const auto& stretches = scopeStretches();
    auto behind =
        std::upper_bound(stretches.begin(), stretches.end(), address,
                         [](uint32_t wanted, const ScopeStretch& stretch) { return wanted < stretch.start; });
    return std::prev(behind)->scope;
}

ZOFFSymbol* SymbolicDebug::findScopedSymbol(std::string_view name, uint32_t address) const
{
    Spellings spellings(name);
    for (ZOFFScope* scope = findScope(address); scope; scope = scope->scope())
        if (ZOFFSymbol* symbol = symbolIn(scope, spellings))
            return symbol;
    return nullptr;
}

ZOFFSymbol* SymbolicDebug::findLocalSymbol(std::string_view name, uint32_t address) const
{
    Spellings spellings(name);
    for (ZOFFScope* scope = findScope(address); scope && scope->kind() != ZOFFKind::Module;
         scope = scope->scope())
        if (ZOFFSymbol* symbol = symbolIn(scope, spellings))
            return symbol;
    return nullptr;
}

template <class Visitor> ZOFFSymbol* SymbolicDebug::findNamed(std::string_view name, Visitor&& visit) const
{
    if (m_namedSymbols.empty()) {
        for (ZOFFSymbol* symbol : m_module->allSymbols())
            if (symbol->name())
                m_namedSymbols.emplace_back(symbol->name()->serial(), symbol);
        sortByKey(m_namedSymbols, [](const NamedSymbol& entry) { return entry.first; });
    }
    Spellings spellings(name);
    for (const HString* spelling : {spellings.plain, spellings.decorated}) {
        auto entry = std::lower_bound(
            m_namedSymbols.begin(), m_namedSymbols.end(), spelling->serial(),
            [](const NamedSymbol& symbol, uint32_t wanted) { return symbol.first < wanted; });
        for (; entry != m_namedSymbols.end() && entry->first == spelling->serial(); ++entry)
            if (visit(entry->second))
                return entry->second;
    }
    return nullptr;
}

ZOFFSymbol* SymbolicDebug::findModuleSymbol(std::string_view name) const
{
    if (ZOFFSymbol* symbol = symbolIn(m_module, Spellings(name)))
        return symbol;
    return findNamed(name, [](const ZOFFSymbol*) { return true; });
}

ZOFFSymbol* SymbolicDebug::findGlobalSymbol(std::string_view name) const
{
    return lookUp(m_module->publicSymbols(), Spellings(name));
}

ZOFFSymbol* SymbolicDebug::findDeclaredSymbol(std::string_view name, const HString* file, int line) const
{
    return findNamed(name, [file, line](const ZOFFSymbol* symbol) {
        const ZOFFLocus* locus = symbol->locus();
        return locus && fileNameOf(locus) == file && (line == 0 || locus->line() == line);
    });
}

ZOFFSymbol* SymbolicDebug::findClosestSymbol(uint32_t address) const
{
    ZOFFInsn* insn = GetInsn(address);
    for (; insn; insn = insn->previous())
        if (insn->kind() == ZOFFKind::Marker)
            if (ZOFFSymbol* label = static_cast<ZOFFMarker*>(insn)->label())
                return label;
    return nullptr;
}

ZOFFSymbol* SymbolicDebug::findSymbol(uint32_t address, bool exact) const
{
    auto found = std::lower_bound(
        m_symbols.begin(), m_symbols.end(), address,
        [](const AddressedSymbol& symbol, uint32_t wanted) { return symbol.address < wanted; });
    if (found == m_symbols.end())
        return nullptr;
    if (found->address == address)
        return found->symbol;
    return exact || found == m_symbols.begin() ? nullptr : std::prev(found)->symbol;
}

ZOFFSymbol* SymbolicDebug::findDataSymbol(uint32_t address, bool exact) const
{
    ZOFFSymbol* symbol = findSymbol(address, exact);
    ZOFFSection* section = symbol ? sectionOf(symbol) : nullptr;
    return section && section->sectionKind() != ZOFFSection::Code ? symbol : nullptr;
}

ZOFFSymbol* SymbolicDebug::findCodeSymbol(uint32_t address, bool exact) const
{
    ZOFFSymbol* symbol = findSymbol(address, exact);
    ZOFFSection* section = symbol ? sectionOf(symbol) : nullptr;
    return section && section->sectionKind() == ZOFFSection::Code ? symbol : nullptr;
}

const std::vector<SymbolicDebug::CodeSymbol>& SymbolicDebug::codeSymbols() const
{
    if (m_codeSymbols.empty())
        for (const AddressedSymbol& entry : m_symbols) {
            ZOFFSection* section = sectionOf(entry.symbol);
            if (!section || section->sectionKind() != ZOFFSection::Code)
                continue;
            section->computeSectionMetrics();
            uint32_t highest = section->highestAddress();
            bool known = highest != ZOFFSection::UnknownAddress;
            m_codeSymbols.push_back({entry.address, known ? highest + 1 : entry.address, entry.symbol});
        }
    return m_codeSymbols;
}

ZOFFSymbol* SymbolicDebug::findFunctionSymbol(uint32_t address, bool exact) const
{
    const auto& symbols = codeSymbols();
    auto behind =
        std::upper_bound(symbols.begin(), symbols.end(), address,
                         [](uint32_t wanted, const CodeSymbol& symbol) { return wanted < symbol.address; });
    if (behind == symbols.begin())
        return nullptr;
    const CodeSymbol& last = *std::prev(behind);
    if (last.address != address && (exact || address >= last.end))
        return nullptr;
    // Of several at one place one may be a mere label.
    for (auto entry = behind; entry != symbols.begin() && std::prev(entry)->address == last.address;
         --entry) {
        ZOFFSymbol* symbol = std::prev(entry)->symbol;
        if (symbol->type() && symbol->type()->isFunction())
            return symbol;
    }
    return nullptr;
}

ZOFFType* SymbolicDebug::findNamedType(std::string_view name) const
{
    return lookUp(m_namedTypes, Spellings(name));
}
