#include "maxq30/sim/SimulatedTrace.h"

void SimulatedTrace::add(const Entry& entry, unsigned limit)
{
    while (!m_entries.empty() && m_entries.size() >= limit) {
        m_entries.pop_front();
        if (m_cursor)
            --m_cursor;
    }
    m_entries.push_back(entry);
}

void SimulatedTrace::clear()
{
    m_entries.clear();
    m_cursor = 0;
}

bool ExecutionCounts::setRange(uint32_t base, uint32_t size)
{
    free();
    if (size > MaximumSize)
        return false;
    m_counts.reset(static_cast<unsigned*>(std::calloc(size ? size : 1, sizeof(unsigned))));
    if (!m_counts)
        return false;
    m_base = base;
    m_size = size;
    return true;
}

void ExecutionCounts::free()
{
    m_counts.reset();
    m_size = m_cursor = 0;
}

void ExecutionCounts::reset()
{
    // Only what was used is written, so that the rest stays without memory.
    for (uint32_t i = 0; i < m_size; ++i)
        if (m_counts[i])
            m_counts[i] = 0;
    m_cursor = 0;
}

bool ExecutionCounts::next(unsigned& address, unsigned& count)
{
    while (m_cursor < m_size && !m_counts[m_cursor])
        ++m_cursor;
    if (m_cursor >= m_size)
        return false;
    address = m_base + m_cursor;
    count = m_counts[m_cursor++];
    return true;
}
