// Intel Hex: records of type 0 to 5, each with a checksum, closed by a record of type 1. Extended
// segment (2) and extended linear (4) addresses stay in force until replaced and are added together;
// types 3 and 5 both set the 32-bit entry point; types above 5 are passed over. Throws HException
// with the line number behind its text.
#pragma once

#include "loadfile/TextLoadFile.h"

class IntelHexLoadFile : public TextLoadFile {
public:
    explicit IntelHexLoadFile(const char* file);
    // The bytes of a file.
    explicit IntelHexLoadFile(std::span<const char> text);

private:
    template <class Source> void read(Source source); // a file name or its bytes
    bool readRecord(Cursor line);
    uint32_t m_segment = 0;
    uint32_t m_linear = 0;
};
