// Files that go into the memories of a device before it is served, and files that its memories are
// written to at the end.
#pragma once

#include "sim/Core.h"

#include <cstdint>
#include <string>

namespace board {

struct Image {
    std::string fileName;
    uint32_t address = 0; // where a binary file begins, in bytes; an Intel Hex file has its own
    bool atAddress = false;
};

// Each is empty when all is well, otherwise a text for people.
//
// Into the code memory, a file whose first character is a colon is Intel Hex unless an address was given.
// Data memory takes binary files only.
std::string loadCode(maxq30::Core& core, const Image& image);
std::string loadData(maxq30::Core& core, const Image& image);
// The whole memory, as binary. The file is there as a whole or, after a failure, not at all.
std::string saveCode(const maxq30::Core& core, const std::string& fileName);
std::string saveData(const maxq30::Core& core, const std::string& fileName);

} // namespace board
