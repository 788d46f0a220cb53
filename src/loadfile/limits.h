// The bounds of what a load file may be.
#pragma once

#include <cstddef>
#include <cstdint>

namespace LoadFileLimits {

// A larger file is refused unread: no device of this family has that much memory, and a file named
// by mistake should not fill the host's.
constexpr size_t MaxFileSize = size_t(1) << 30;

// Line buffers: a longer line reads as two. Counted without the closing zero of a C string.
constexpr size_t RecordLine = 529; // Intel Hex, S-Record
constexpr size_t ListingLine = 63; // TI Hex, Hex

// One past the last target address.
constexpr uint64_t AddressSpace = uint64_t(1) << 32;

} // namespace LoadFileLimits
