// A file that is there as a whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace kvas {

// Writes beside `name` and renames; a device or a pipe is written itself. Throws std::runtime_error with a
// text for the user; then `name` is as it was.
void writeOutput(const std::string& name, std::string_view bytes);

} // namespace kvas
