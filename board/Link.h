// The cable between host and adapter, with what is wrong with it: bytes go in when the host has sent
// them, and come out when the host may see them. Times are milliseconds on any clock that does not go
// back.
#pragma once

#include "board/Adapter.h"
#include "board/Device.h"
#include "board/Faults.h"
#include "board/Journal.h"
#include "board/limits.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace board {

class Link {
public:
    // Nothing is owned.
    Link(Device& device, Adapter& adapter, Journal& journal, Faults faults);

    // The host went away, or a new one came: what it has not fetched is lost.
    void restart();
    void fromHost(std::span<const uint8_t> bytes, int64_t now);

    // So much waits to be fetched that the host is not to send more.
    bool isFull() const { return m_out.size() > limits::Backlog; }

    // At most `maximum` bytes that the host may see now. They stay until they are dropped from the front.
    std::vector<uint8_t> ready(int64_t now, size_t maximum) const;
    void drop(size_t count);
    // When more can be seen, if anything is still on its way.
    std::optional<int64_t> nextTime(int64_t now) const;

    // The cable has been pulled: nothing more goes in.
    bool isCut() const { return m_cut; }

private:
    struct TimedByte {
        uint8_t byte;
        int64_t time;
    };

    // False when the byte does not get through.
    bool pass(bool fromHost, uint64_t position, uint8_t& byte);
    void delay(int64_t milliseconds);

    Device& m_device;
    Adapter& m_adapter;
    Journal& m_journal;
    const Faults m_faults;
    std::deque<TimedByte> m_out;
    uint64_t m_inPosition = 0;
    uint64_t m_outPosition = 0;
    int64_t m_now = 0;
    int64_t m_notBefore = 0;
    bool m_cut = false;
};

} // namespace board
