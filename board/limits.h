// Bounds and firmware constants of the virtual board.
#pragma once

#include <cstddef>
#include <cstdint>

namespace board::limits {

constexpr uint32_t DefaultCode = 0x10000;
constexpr uint32_t DefaultData = 0x10000;
constexpr unsigned DefaultFixedWords = 32;

// Scans of one byte to the bootloader before an adapter gives it up.
constexpr unsigned LoaderTries = 10;

// Flow control is seen to work when every load refuses a scan or two.
constexpr unsigned DefaultBootScans = 3;
constexpr unsigned DefaultLoadScans = 2;
constexpr unsigned DefaultEraseScans = 6;

constexpr unsigned CodeBreakpoints = 4;
constexpr unsigned DataBreakpoints = 2;

// The register map of the debug engine: two bytes that tell its length, then the map.
constexpr unsigned MapBytes = 752;
constexpr unsigned MapAnswer = 2 + MapBytes;

// Steps between two looks at the wire, well below a millisecond, and how long a program runs before it
// is looked at whether it only waits. The loop it waits in may be this long.
constexpr uint64_t SliceSteps = 50'000;
constexpr uint64_t FirstIdleLook = 5'000;
constexpr uint64_t LastIdleLook = 5'000'000;
constexpr unsigned IdleLoopSteps = 4'096;

// Transfers that a message about something unexpected shows.
constexpr size_t RememberedTransfers = 16;
// Bytes of one transfer that are written out.
constexpr size_t ShownBytes = 64;
// Messages about something unexpected; a host that has lost its way makes one with each byte.
constexpr size_t ShownComplaints = 10;

// Characters of a line in the serial adapter's text mode.
constexpr size_t TextLine = 80;
// Bytes of one bulk transfer, and of one message on the USB socket.
constexpr size_t BulkTransfer = 0x10000;
// Milliseconds that a host waits for the board's side of the socket beyond its own time-out.
constexpr int SocketGrace = 2'000;
// Connections to one USB socket.
constexpr size_t UsbConnections = 16;
// Answers that a host may ask a USB adapter for in one command.
constexpr uint32_t UsbRead = 0x10000;
// Answers that wait for a host before nothing more is taken from it.
constexpr size_t Backlog = 0x40000;

} // namespace board::limits
