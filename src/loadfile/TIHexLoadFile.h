// TI text: "@ADDRESS" lines, lines of bytes with one separator each, and a line "q" that ends the
// file. There is no checksum and no entry point. Throws HException with the line number behind its
// text.
#pragma once

#include "loadfile/TextLoadFile.h"

class TIHexLoadFile : public TextLoadFile {
public:
    explicit TIHexLoadFile(const char* file);
    // The bytes of a file.
    explicit TIHexLoadFile(std::span<const char> text);

private:
    template <class Source> void read(Source source); // a file name or its bytes
    bool readLine(Cursor line);
    uint32_t m_address = 0;
};
