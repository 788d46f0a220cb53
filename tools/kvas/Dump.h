// Prints what an executable holds, as the tool's own reader sees it.
#pragma once

#include <cstdio>
#include <string>

namespace kvas {

// Sections, symbols, scopes, lines and disassembly to `out`. Throws HException when the file cannot be
// read.
void dump(const std::string& fileName, FILE* out);

} // namespace kvas
