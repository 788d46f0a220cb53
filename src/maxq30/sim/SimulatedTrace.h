// What a simulated target records of a run: the latest instructions, and how often each was executed.
// Each has a cursor, with which a reader goes through it once.
#pragma once

#include "sim/maxqsim.h"

#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>
#include <vector>

class SimulatedTrace {
public:
    struct Entry {
        unsigned address;
        unsigned data;
        unsigned cycles;
    };

    // Keeps at most `limit` entries, and at least the new one.
    void add(const Entry& entry, unsigned limit);
    void clear();
    void rewind() { m_cursor = 0; }
    // Oldest first; null at the end. Good until the next change.
    const Entry* next() { return m_cursor < m_entries.size() ? &m_entries[m_cursor++] : nullptr; }
    size_t count() const { return m_entries.size(); }

private:
    std::deque<Entry> m_entries;
    size_t m_cursor = 0;
};

// A counter for each byte address of a range. Counters that were never used take no memory. A processor that
// counts by itself is asked as well.
class ExecutionCounts {
public:
    // Ranges up to this many bytes can be counted.
    static constexpr uint32_t MaximumSize = 0x4000000;

    // False, and nothing is counted, when the range is too large for this machine.
    bool setRange(uint32_t base, uint32_t size);
    void free();
    void reset();
    void add(uint32_t address)
    {
        if (address - m_base < m_size)
            ++m_counts[address - m_base];
    }
    // Null when executions are told by `add` alone; not owned.
    void setProcessor(MAXQSIMRunner* processor);
    void rewind();
    // The next address that was executed; false at the end.
    bool next(unsigned& address, unsigned& count);

private:
    unsigned count(uint32_t offset);

    struct Free {
        void operator()(void* p) const { std::free(p); }
    };
    uint32_t m_base = 0;
    uint32_t m_size = 0; // 0 without counters
    uint32_t m_cursor = 0;
    std::unique_ptr<unsigned[], Free> m_counts;
    MAXQSIMRunner* m_processor = nullptr;
    std::vector<MAXQSIMCount> m_fetched; // of the processor, from this address on
    uint32_t m_fetchedFrom = 0;
};
