// The index over one executable for a debugger: instructions by address, source positions by line,
// symbols by address and by name, scopes and named types. Made once for each file and shared through the
// cache of open files; the module must outlive it.
//
// A name is looked up as given, and then with the compiler's "_" in front. Lookups return null when there
// is nothing.
#pragma once

#include "debug/symbols/SourceAddressMapping.h"
#include "support/HString.h"
#include "support/Path.h"
#include "zoff/ZOFFDebugIndex.h"

#include <cstdint>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

class ZOFFInsn;
class ZOFFLocus;
class ZOFFModule;
class ZOFFObject;
class ZOFFScope;
class ZOFFSection;
class ZOFFSymbol;
class ZOFFType;

// Null for a locus without a file, or a file without a name.
const HString* fileNameOf(const ZOFFLocus* locus);

// Orders loci by file, in the order in which file names were first seen, then by line.
struct ZOFFInsnListIteratorLocusLT {
    using Place = std::pair<const HString*, int>;
    bool operator()(const ZOFFLocus* a, const ZOFFLocus* b) const;
    bool operator()(const ZOFFLocus* a, const Place& b) const;
    bool operator()(const Place& a, const ZOFFLocus* b) const;
};

class SymbolicDebug {
public:
    struct AddressedSymbol {
        uint32_t address;
        ZOFFSymbol* symbol;
    };

    SymbolicDebug(const Path& path, ZOFFModule* module);
    SymbolicDebug(const SymbolicDebug&) = delete;
    SymbolicDebug& operator=(const SymbolicDebug&) = delete;

    const Path& path() const { return m_path; }
    ZOFFModule* module() const { return m_module; }
    const SourceAddressMapping& sourceMap() const { return m_sourceMap; }
    // Items with bytes, by address.
    const std::vector<ZOFFInsn*>& instructions() const { return m_instructions; }
    const std::vector<ZOFFLocus*>& loci() const { return m_loci; }

    // The item that begins at the address, and the one whose bytes hold it.
    ZOFFInsn* GetInsn(uint32_t address) const;
    ZOFFInsn* insnAround(uint32_t address) const;
    // The item whose last byte lies right in front of the address.
    ZOFFInsn* insnBefore(uint32_t address) const;
    ZOFFSection* getSection(uint32_t address) const;

    // The innermost scope around an address, as the scopes are nested in the file.
    ZOFFScope* findScope(uint32_t address) const;
    // From that scope outward, with or without the names of the module itself.
    ZOFFSymbol* findScopedSymbol(std::string_view name, uint32_t address) const;
    ZOFFSymbol* findLocalSymbol(std::string_view name, uint32_t address) const;
    // The module's own names, then all symbols.
    ZOFFSymbol* findModuleSymbol(std::string_view name) const;
    // Public symbols only.
    ZOFFSymbol* findGlobalSymbol(std::string_view name) const;
    // By where it is declared; line 0 stands for any.
    ZOFFSymbol* findDeclaredSymbol(std::string_view name, const HString* file, int line) const;
    // The last label in front of the address, in its fragment.
    ZOFFSymbol* findClosestSymbol(uint32_t address) const;
    // By value: the one at the address, or unless `exact` the last one in front. Nothing is found behind
    // the last symbol.
    ZOFFSymbol* findSymbol(uint32_t address, bool exact) const;
    ZOFFSymbol* findDataSymbol(uint32_t address, bool exact) const;
    ZOFFSymbol* findCodeSymbol(uint32_t address, bool exact) const;
    // Among the symbols of code, the one at the address, or unless `exact` the last one in front; the last
    // one of a section reaches to the section's end. It must have a function's type.
    ZOFFSymbol* findFunctionSymbol(uint32_t address, bool exact = false) const;
    ZOFFType* findNamedType(std::string_view name) const;

private:
    // What a symbol of code covers.
    struct CodeSymbol {
        uint32_t address;
        uint32_t end; // of its section, behind the last byte
        ZOFFSymbol* symbol;
    };
    // From an address on, up to the next stretch: the innermost scope, or null.
    struct ScopeStretch {
        uint32_t start;
        ZOFFScope* scope;
    };
    using NamedSymbol = std::pair<uint32_t, ZOFFSymbol*>; // by the serial number of its name

    void addItems(ZOFFSection* section);
    void addSymbols();
    const std::vector<CodeSymbol>& codeSymbols() const;
    const std::vector<ScopeStretch>& scopeStretches() const;
    // Calls `visit` with the symbols of either spelling in the order of the file, until that returns true.
    template <class Visitor> ZOFFSymbol* findNamed(std::string_view name, Visitor&& visit) const;

    Path m_path;
    ZOFFModule* m_module;
    std::vector<ZOFFInsn*> m_instructions;
    std::vector<ZOFFLocus*> m_loci;
    std::vector<AddressedSymbol> m_symbols; // by address
    // Made when they are asked for.
    mutable std::vector<CodeSymbol> m_codeSymbols; // by address
    mutable std::vector<ScopeStretch> m_scopeStretches;
    mutable std::vector<NamedSymbol> m_namedSymbols;
    std::map<const HString*, ZOFFType*, HString::Earlier> m_namedTypes;
    SourceAddressMapping m_sourceMap;
};

// The index as the cache of open files makes it: ZOFFDebugIndex::install(SymbolicDebugIndex).
extern const ZOFFDebugIndex SymbolicDebugIndex;
