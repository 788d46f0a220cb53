// Registers and memory accesses by the names under which disassembly shows them. A number is
// (index << 4) | module.
#pragma once

#include <optional>
#include <string_view>

namespace kvas {

// As a source of a transport, or where a variable lives.
std::optional<unsigned> sourceRegister(std::string_view name);
// As a destination: knows @--SP and NUL besides, and not @SP++.
std::optional<unsigned> destinationRegister(std::string_view name);
// Names that cannot be symbols.
bool isRegisterName(std::string_view name);

} // namespace kvas
