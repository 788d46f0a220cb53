// The utility ROM: an Intel Hex file whose bytes go to their addresses in the code memory.
#pragma once

#include <string>
#include <string_view>

namespace maxq30 {

class Core;

// A file, or its text. False, with a text for people, when the file cannot be read, a record is
// malformed, a byte lies outside the code memory or the end record is missing. Records before the
// faulty one may have been stored.
bool loadRomFile(Core& core, const std::string& fileName, std::string& error);
bool loadRomText(Core& core, std::string_view text, std::string& error);

} // namespace maxq30
