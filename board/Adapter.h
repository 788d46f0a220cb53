// An adapter between the host's link and the pins of a device.
#pragma once

#include <cstdint>
#include <vector>

namespace board {

class Adapter {
public:
    virtual ~Adapter() = default;

    // As after power-up: a host has gone, or a new one has come. The device keeps its state.
    virtual void restart() = 0;
    // Takes a byte from the host and appends what the adapter answers to it.
    virtual void receive(uint8_t byte, std::vector<uint8_t>& answer) = 0;
};

} // namespace board
