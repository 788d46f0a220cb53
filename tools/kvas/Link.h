// From sources to an executable in one call.
#pragma once

#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Layout.h"

#include <string>
#include <utility>
#include <vector>

namespace kvas {

struct Job {
    std::vector<std::string> sources;
    std::vector<std::string> directories; // of include files and libraries
    std::vector<std::pair<std::string, int64_t>> definitions;
    std::string moduleName;
    Placement placement;
};

// The bytes of the executable; empty when faults were reported.
std::string link(const Job& job, Diagnostics& diagnostics);

} // namespace kvas
