#include "board/Link.h"

#include <algorithm>
#include <utility>

namespace board {

Link::Link(Device& device, Adapter& adapter, Journal& journal, Faults faults)
    : m_device(device), m_adapter(adapter), m_journal(journal), m_faults(std::move(faults))
{
}

void Link::restart()
{
    m_out.clear();
    m_adapter.restart();
}

void Link::fromHost(std::span<const uint8_t> bytes, int64_t now)
{
    if (m_cut)
        return;
    m_now = now;
    m_journal.fromHost(bytes);
    std::vector<uint8_t> answers;
    for (uint8_t byte : bytes) {
        if (!pass(true, m_inPosition++, byte)) {
            if (m_cut)
                return;
            continue;
        }
        std::vector<uint8_t> answer;
        m_adapter.receive(byte, answer);
        if (unsigned milliseconds = m_device.takeErasingTime())
            delay(milliseconds);
        m_journal.toHost(answer);
        for (uint8_t out : answer) {
            if (pass(false, m_outPosition++, out))
                m_out.push_back({out, std::max(m_now, m_notBefore)});
            else if (m_cut)
                return;
        }
    }
}

std::vector<uint8_t> Link::ready(int64_t now, size_t maximum) const
{
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < m_out.size() && i < maximum && m_out[i].time <= now; ++i)
        bytes.push_back(m_out[i].byte);
    return bytes;
}

void Link::drop(size_t count)
{
    m_out.erase(m_out.begin(), m_out.begin() + ptrdiff_t(count));
}

std::optional<int64_t> Link::nextTime(int64_t now) const
{
    // Times never fall along the queue.
    auto later = std::upper_bound(m_out.begin(), m_out.end(), now,
                                  [](int64_t time, const TimedByte& byte) { return time < byte.time; });
    if (later == m_out.end())
        return std::nullopt;
    return later->time;
}

bool Link::pass(bool fromHost, uint64_t position, uint8_t& byte)
{
    bool through = true;
    for (const Fault& fault : m_faults) {
        if (fault.fromHost != fromHost || fault.position != position)
            continue;
        switch (fault.kind) {
        case Fault::Kind::Cut:
            m_journal.note("fault: the cable is pulled");
            m_cut = true;
            return false;
        case Fault::Kind::Drop:
            m_journal.note("fault: byte " + std::to_string(position) + " is lost");
            through = false;
            break;
        case Fault::Kind::Change:
            m_journal.note("fault: byte " + std::to_string(position) + " is changed");
            byte = fault.value ? uint8_t(*fault.value) : uint8_t(~byte);
            break;
        case Fault::Kind::Late:
            m_journal.note("fault: byte " + std::to_string(position) + " is late");
            delay(*fault.value);
            break;
        }
    }
    return through;
}

void Link::delay(int64_t milliseconds)
{
    m_notBefore = std::max(m_notBefore, m_now) + milliseconds;
}

} // namespace board
