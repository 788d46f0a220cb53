// Places in a fragment: labels, source positions, and the names of source files.
#pragma once

#include "zoff/ZOFFInsn.h"

class ZOFFMarker : public ZOFFInsn {
public:
    ZOFFMarker() : ZOFFMarker(ZOFFKind::Marker) {}
    int length() const override { return 0; }
    // The name, or "@" and a number that is handed out at the first printing.
    void print(std::string& out) const override;

    // For a writer; -1 before it has a number.
    int32_t writerIndex() const { return m_writerIndex; }
    void setWriterIndex(int32_t index) { m_writerIndex = index; }
    // The symbol whose value is this place; null when there is none.
    ZOFFSymbol* label() const { return m_label; }
    void setLabel(ZOFFSymbol* symbol) { m_label = symbol; }

    static int32_t m_markCount;

protected:
    explicit ZOFFMarker(ZOFFKind kind) : ZOFFInsn(kind) {}

private:
    ZOFFSymbol* m_label = nullptr;
    int32_t m_writerIndex = -1;
    mutable int32_t m_printIndex = -1;
};

// The name of a source file. It stands in no fragment.
class ZOFFFilename : public ZOFFMarker {
public:
    explicit ZOFFFilename(const HString* name) : ZOFFMarker(ZOFFKind::Filename), m_fileName(name) {}
    const HString* fileName() const { return m_fileName; } // may be null
    void print(std::string& out) const override;

private:
    const HString* m_fileName;
};

// A source position: of the items that refer to it, or of a symbol's declaration.
class ZOFFLocus : public ZOFFMarker {
public:
    // The tag is LOCUS or SYMBOL_LOCUS.
    ZOFFLocus(ZOFFFilename* file, int line, ZOFFTag tag)
        : ZOFFMarker(ZOFFKind::Locus), m_line(line), m_recordTag(tag), m_file(file)
    {
    }
    ZOFFFilename* file() const { return m_file; }
    int line() const { return m_line; }
    ZOFFTag recordTag() const { return m_recordTag; }
    void print(std::string& out) const override;

private:
    int32_t m_line;
    ZOFFTag m_recordTag;
    ZOFFFilename* m_file;
};
