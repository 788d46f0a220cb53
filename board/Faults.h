// Faults of the link between host and adapter, each at a position in the stream of bytes of one
// direction, counted from 0 since the board was started.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace board {

struct Fault {
    enum class Kind {
        Cut,    // this byte and everything behind it is lost, in both directions, for good
        Drop,   // this byte is lost
        Change, // this byte is another one
        Late,   // this byte, and all behind it, come later
    };
    Kind kind;
    bool fromHost;     // in the bytes that the host sends, otherwise in the answers
    uint64_t position; // of the byte
    // Change: the new value, or nothing to invert all bits. Late: milliseconds.
    std::optional<uint32_t> value;

    // "cut=N", "drop=N", "change=N", "change=N:VALUE", "late=N:MS", with "in:" before N for the bytes that
    // the host sends and "out:" for the answers. Without, "cut" counts the former and the others the latter.
    // Nothing when the text is none of these.
    static std::optional<Fault> parse(std::string_view text);
};

using Faults = std::vector<Fault>;

// A number, decimal or with 0x hexadecimal, that fits 64 bits; nothing for any other text.
std::optional<uint64_t> parseNumber(std::string_view text);

} // namespace board
