#include "maxq30/sim/SimulatedTrace.h"

#include <algorithm>
#include <limits>

namespace {

constexpr unsigned FetchedWords = 4096;

} // namespace

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
    if (m_processor)
        m_processor->resetCounts();
    rewind();
}

void ExecutionCounts::setProcessor(MAXQSIMRunner* processor)
{
    m_processor = processor;
    rewind();
}

void ExecutionCounts::rewind()
{
    m_cursor = 0;
    m_fetched.clear();
}

unsigned ExecutionCounts::count(uint32_t offset)
{
    uint32_t address = m_base + offset;
    if (!m_processor || address % 2)
        return m_counts[offset];
    if (m_fetched.empty() || (address - m_fetchedFrom) / 2 >= FetchedWords) {
        m_fetched.resize(FetchedWords);
        m_fetchedFrom = address;
        m_processor->readCounts(address, FetchedWords, m_fetched.data());
    }
    unsigned long long sum = m_counts[offset] + m_fetched[(address - m_fetchedFrom) / 2].executed;
    return unsigned(std::min<unsigned long long>(sum, std::numeric_limits<unsigned>::max()));
}

bool ExecutionCounts::next(unsigned& address, unsigned& count)
{
    for (; m_cursor < m_size; ++m_cursor)
        if (unsigned executed = this->count(m_cursor)) {
            address = m_base + m_cursor++;
            count = executed;
            return true;
        }
    return false;
}
