#include "board/Journal.h"
#include "board/limits.h"

#include <algorithm>

namespace board {

bool Journal::open(const std::string& fileName)
{
    m_file.open(fileName, std::ios::binary | std::ios::trunc);
    return m_file.is_open();
}

bool Journal::close()
{
    if (!m_file.is_open())
        return true;
    m_file.close();
    return !m_file.fail();
}

void Journal::fromHost(std::span<const uint8_t> bytes)
{
    transfer("host ", m_fromHost, bytes);
}

void Journal::toHost(std::span<const uint8_t> bytes)
{
    transfer("board", m_toHost, bytes);
}

void Journal::note(std::string_view text)
{
    line("      " + std::string(text));
}

void Journal::complain(const std::string& text)
{
    if (m_stream && m_complaints.size() < limits::ShownComplaints) {
        *m_stream << "vboard: " << text << "\n";
        for (const std::string& last : m_last)
            *m_stream << "  " << last << "\n";
        if (m_complaints.size() + 1 == limits::ShownComplaints)
            *m_stream << "vboard: what else is unexpected is not shown\n";
        m_stream->flush();
    }
    if (m_complaints.size() < limits::ShownComplaints)
        m_complaints.push_back(text);
    line("      unexpected: " + text);
}

// A line tells the position of its first byte, which is where a fault can be put.
void Journal::transfer(const char* direction, uint64_t& position, std::span<const uint8_t> bytes)
{
    static const char digits[] = "0123456789abcdef";
    if (bytes.empty())
        return;
    std::string text = direction;
    text += " " + std::to_string(position) + ":";
    size_t shown = m_file.is_open() ? bytes.size() : std::min(bytes.size(), limits::ShownBytes);
    for (uint8_t byte : bytes.first(shown)) {
        text += ' ';
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    if (shown < bytes.size())
        text += " ... " + std::to_string(bytes.size()) + " bytes";
    position += bytes.size();
    line(std::move(text));
}

void Journal::line(std::string text)
{
    if (m_file.is_open())
        m_file << text << "\n";
    m_last.push_back(std::move(text));
    if (m_last.size() > limits::RememberedTransfers)
        m_last.pop_front();
}

} // namespace board
