// Errors in sources, gathered with their places and printed as FILE:LINE:COLUMN: error: TEXT.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kvas {

// A place in a source. Lines and columns count from 1; line 0 means the file as a whole.
struct Place {
    uint32_t file = 0;
    uint32_t line = 0;
    uint32_t column = 0;
};

// An error in the current line. The assembler catches it, reports it with file and line, and goes on
// with the next line.
struct SyntaxError {
    uint32_t column;
    std::string text;
};

// Nothing further can be done: too many errors, or a limit of the whole run was reached.
struct GaveUp {};

class Diagnostics {
public:
    // Throws GaveUp when limits::Errors are there.
    void error(const Place& place, std::string_view text);
    bool failed() const { return !m_errors.empty(); }
    size_t count() const { return m_errors.size(); }

    // Files get their numbers from here.
    uint32_t addFile(std::string_view name);
    const std::string& fileName(uint32_t file) const { return m_files[file]; }

    // All errors, a line each.
    std::string text() const;

private:
    struct Error {
        Place place;
        std::string text;
    };
    std::vector<std::string> m_files;
    std::vector<Error> m_errors;
};

} // namespace kvas
