#pragma once

#include <algorithm>
#include <cstdint>

// Instructions a second, in millions: the best of the rounds that were noted.
struct Rate {
    double best = 0;
    void note(uint64_t instructions, double seconds)
    {
        best = std::max(best, double(instructions) / seconds / 1e6);
    }
};

// Runs the program once more and answers the better rate. A rate of 0 stays when there is no program.
Rate simavrRate(const char* elfFile, Rate best);
