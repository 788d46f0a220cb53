// From source lines to addresses and back, over the index of one executable. A statement is the run of
// items in a fragment that share one locus.
#pragma once

#include "support/HString.h"

#include <cstdint>
#include <map>
#include <vector>

class SymbolicDebug;
class ZOFFInsn;
class ZOFFLocus;

class SourceAddressMapping {
public:
    using Lines = std::vector<uint32_t>;

    explicit SourceAddressMapping(const SymbolicDebug* symbols) : m_symbols(symbols) {}

    // While the index is being built.
    void addLine(const HString* file, uint32_t line) { m_lines[file].push_back(line); }

    // The first statement of exactly that line; false when the line has no code. The length is that of
    // the statement in bytes.
    bool SourceToAddress(const HString* file, int line, uint32_t& address) const;
    bool SourceToAddress(const HString* file, int line, uint32_t& address, uint32_t& length) const;
    // The statement around an address; false when none is there.
    bool AddressToRange(uint32_t address, uint32_t& start, uint32_t& length) const;
    // The file is "???" when the executable does not name it.
    bool AddressToSource(uint32_t address, const HString*& file, int& line) const;

    // The lines with code, in the order of the file's statements; null for a file that has none.
    const Lines* getLineNumbers(const HString* file) const;
    const std::map<const HString*, Lines, HString::Earlier>& files() const { return m_lines; }

private:
    ZOFFLocus* locusOf(const HString* file, int line) const;
    const ZOFFInsn* statementAt(uint32_t address) const;

    const SymbolicDebug* m_symbols;
    std::map<const HString*, Lines, HString::Earlier> m_lines;
};
