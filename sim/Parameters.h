// The parameter text of the simulator library: words such as "code=128K data=0x2000 trace=run.txt",
// separated by blanks, commas or semicolons, in any order.
#pragma once

#include "sim/limits.h"

#include <string>
#include <string_view>

namespace maxq30 {

struct Parameters {
    uint32_t codeBytes = limits::DefaultCode;
    uint32_t dataBytes = limits::DefaultData;
    std::string traceFile; // empty for none

    // False, with a text for people, when the parameter text cannot be understood.
    bool parse(std::string_view text, std::string& error);
};

} // namespace maxq30
