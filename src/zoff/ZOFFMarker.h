// Places in a fragment: labels, source positions, and the names of source files.
#pragma once

#include "support/HString.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"

class ZOFFFilename;

class ZOFFMarker : public ZOFFInsn {
public:
    ZOFFMarker() : ZOFFMarker(ZOFFKind::Marker) {}
    int length() const override { return 0; }
    // The name, or "@" and a number that is handed out at the first printing.
    void print(std::string& out) const override;

    // The symbol whose value is this place; null when there is none.
    ZOFFSymbol* label() const { return kind() == ZOFFKind::Marker ? m_label : nullptr; }
    void setLabel(ZOFFSymbol* symbol) { m_label = symbol; }

    static int32_t m_markCount;

protected:
    explicit ZOFFMarker(ZOFFKind kind) : ZOFFInsn(kind)
    {
        m_label = nullptr;
        m_numbers = {-1, -1};
    }
};

// The name of a source file. It stands in no fragment.
class ZOFFFilename : public ZOFFMarker {
public:
    explicit ZOFFFilename(const HString* name) : ZOFFMarker(ZOFFKind::Filename) { m_fileName = name; }
    const HString* fileName() const { return m_fileName; } // may be null
    void print(std::string& out) const override;
};

// A source position: of the items that refer to it, or of a symbol's declaration.
class ZOFFLocus : public ZOFFMarker {
public:
    // The tag is LOCUS or SYMBOL_LOCUS.
    ZOFFLocus(ZOFFFilename* file, int line, ZOFFTag tag) : ZOFFMarker(ZOFFKind::Locus)
    {
        m_file = file;
        m_numbers = {line, int32_t(tag)};
    }
    ZOFFFilename* file() const { return m_file; }
    int line() const { return m_numbers.number; }
    ZOFFTag recordTag() const { return ZOFFTag(m_numbers.printNumber); }
    void print(std::string& out) const override;
};
