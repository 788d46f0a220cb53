// Comparing target memory with the bytes that it should hold; null bytes stand for zeros.
#pragma once

#include <QString>

#include <algorithm>
#include <cstdint>

class TargetMemoryInterface;

// The one loop over bytes that go in pieces: step(address, rest, data) does the first piece of the rest and
// returns its length, or 0 to end the loop, which then returns false. Null data stay null.
template <class Step>
bool forEachPiece(uint32_t address, uint32_t length, const unsigned char* data, Step&& step)
{
    while (length > 0) {
        uint32_t done = step(address, length, data);
        if (done == 0)
            return false;
        address += done;
        length -= done;
        if (data)
            data += done;
    }
    return true;
}

bool memoryMatches(TargetMemoryInterface& memory, uint32_t address, uint32_t count,
                   const unsigned char* data);
// Where a range that does not match differs first, in words for a user. Never empty.
QString firstDifference(TargetMemoryInterface& memory, uint32_t address, uint32_t count,
                        const unsigned char* data);
