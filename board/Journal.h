// What passed between the host and the board. Keeps the last transfers, writes all of them to a file
// when one was named, and tells the user, with the transfers that led to it, when the host sends
// something that no board understands.
#pragma once

#include <cstdint>
#include <deque>
#include <fstream>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace board {

class Journal {
public:
    // Complaints go to `complaints`, which may be null and is not owned.
    explicit Journal(std::ostream* complaints = nullptr) : m_stream(complaints) {}

    // False when the file cannot be written.
    bool open(const std::string& fileName);
    // False when something could not be written to the file.
    bool close();

    void fromHost(std::span<const uint8_t> bytes);
    void toHost(std::span<const uint8_t> bytes);
    // Something that happened on the board. Only in the file and among the last transfers.
    void note(std::string_view text);
    // Something that the host should not have done.
    void complain(const std::string& text);

    const std::vector<std::string>& complaints() const { return m_complaints; }

private:
    void transfer(const char* direction, uint64_t& position, std::span<const uint8_t> bytes);
    void line(std::string text);

    std::ostream* m_stream;
    std::ofstream m_file;
    std::deque<std::string> m_last;
    std::vector<std::string> m_complaints;
    uint64_t m_fromHost = 0;
    uint64_t m_toHost = 0;
};

} // namespace board
