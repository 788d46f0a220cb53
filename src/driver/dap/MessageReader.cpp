#include "driver/dap/MessageReader.h"

#include "driver/dap/limits.h"

#include <algorithm>

namespace {

constexpr std::string_view LengthName = "Content-Length";
constexpr std::string_view LineEnd = "\r\n";
constexpr std::string_view HeaderEnd = "\r\n\r\n";
constexpr size_t MaximumDigits = 12; // more than any length, and far from an overflow

bool sameName(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return (x >= 'A' && x <= 'Z' ? x + 32 : x) == (y >= 'A' && y <= 'Z' ? y + 32 : y);
           });
}

} // namespace

void MessageReader::add(std::string_view bytes)
{
    if (m_start > 0) {
        m_buffer.erase(0, m_start);
        m_searched -= std::min(m_searched, m_start);
        m_start = 0;
    }
    m_buffer.append(bytes);
}

// Goes on at the next place where a header may begin, which the end of what has arrived may cut in two.
void MessageReader::skip()
{
    size_t found = m_buffer.find(LengthName, m_start + 1);
    size_t kept = m_buffer.size() - std::min(m_buffer.size(), LengthName.size() - 1);
    m_start = found == std::string::npos ? std::max(m_start + 1, kept) : found;
    m_searching = true;
}

// The length that a header gives.
std::optional<size_t> MessageReader::header(std::string_view text, const char*& fault) const
{
    std::optional<size_t> length;
    while (!text.empty()) {
        size_t end = std::min(text.find(LineEnd), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + LineEnd.size(), text.size()));
        size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            fault = "a message's header has a line without a colon";
            return std::nullopt;
        }
        if (!sameName(line.substr(0, colon), LengthName))
            continue;
        std::string_view digits = line.substr(colon + 1);
        while (!digits.empty() && digits.front() == ' ')
            digits.remove_prefix(1);
        while (!digits.empty() && digits.back() == ' ')
            digits.remove_suffix(1);
        if (length || digits.empty() || digits.size() > MaximumDigits ||
            !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; })) {
            fault = "a message's Content-Length is not one number";
            return std::nullopt;
        }
        size_t value = 0;
        for (char digit : digits)
            value = value * 10 + size_t(digit - '0');
        length = value;
    }
    if (!length)
        fault = "a message's header has no Content-Length";
    else if (*length > DapLimits::MessageBytes)
        fault = "a message is longer than 16 MB";
    return fault ? std::nullopt : length;
}

std::optional<MessageReader::Item> MessageReader::next()
{
    // Noise may hold the field's name a million times, so no byte is searched twice for a header's end.
    while (m_start < m_buffer.size()) {
        size_t from = std::max(m_start, m_searched);
        size_t limit = std::min(m_buffer.size(), m_start + DapLimits::HeaderBytes + HeaderEnd.size());
        size_t end = std::string_view(m_buffer).substr(0, limit).find(HeaderEnd, from);
        const char* fault = nullptr;
        if (end != std::string::npos) {
            m_searched = end;
            if (auto length = header(std::string_view(m_buffer).substr(m_start, end - m_start), fault)) {
                size_t body = end + HeaderEnd.size();
                if (m_buffer.size() - body < *length)
                    return std::nullopt;
                m_start = m_searched = body + *length;
                m_searching = false;
                return Item{QByteArray(m_buffer.data() + body, qsizetype(*length)), nullptr};
            }
        } else {
            m_searched = std::max(from, limit - std::min(limit, HeaderEnd.size() - 1));
            if (m_buffer.size() - m_start <= DapLimits::HeaderBytes)
                return std::nullopt;
            fault = "a message's header is longer than 4096 bytes";
        }
        bool told = m_searching;
        skip();
        if (!told)
            return Item{{}, fault};
    }
    return std::nullopt;
}
