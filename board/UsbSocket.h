// Messages between the library of USB calls and the board that plays the adapter, over a Unix socket
// that keeps message boundaries: one request, one response. Both ends are on one machine, so numbers are
// in its own byte order.
#pragma once

#include <cstdint>

namespace board::usb {

constexpr uint16_t Vendor = 0x1209;
constexpr uint16_t Product = 0x3030;
constexpr uint8_t ReadEndpoint = 0x81;
constexpr uint8_t WriteEndpoint = 0x02;

enum class Request : uint32_t {
    Describe, // response data: serial number and product name, each with a 0 behind it
    Claim,
    Release,
    Write, // data behind the header; result: bytes taken
    Read,  // result: bytes that follow
    Reset, // the adapter as after power-up
};

struct RequestHeader {
    Request request;
    uint32_t length;  // of the data behind the header, or to read at most
    uint32_t timeout; // milliseconds to wait for something to read, 0 without end
};

struct ResponseHeader {
    int32_t result; // 0 or a count; negative: an error number of the system
};

} // namespace board::usb
