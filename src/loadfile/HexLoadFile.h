// A listing of addressed bytes: on each line an address of eight hexadecimal digits, then bytes, each
// a blank and two digits. There is no checksum and no entry point. Throws HException with the line
// number behind its text.
#pragma once

#include "loadfile/TextLoadFile.h"

class HexLoadFile : public TextLoadFile {
public:
    explicit HexLoadFile(const char* file);
    // The bytes of a file.
    explicit HexLoadFile(std::span<const char> text);

private:
    template <class Source> void read(Source source); // a file name or its bytes
    void readLine(Cursor line);
};
