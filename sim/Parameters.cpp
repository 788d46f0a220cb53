#include "sim/Parameters.h"

#include <charconv>
#include <optional>

namespace maxq30 {

namespace {

constexpr std::string_view Separators = " \t\r\n,;";

// Decimal or "0x" hexadecimal, with K or M behind it for units of 1024 or its square.
std::optional<uint32_t> parseSize(std::string_view text)
{
    uint64_t unit = 1;
    if (!text.empty() && (text.back() == 'K' || text.back() == 'k'))
        unit = 1024;
    else if (!text.empty() && (text.back() == 'M' || text.back() == 'm'))
        unit = 1024 * 1024;
    if (unit != 1)
        text.remove_suffix(1);
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    uint32_t value = 0;
    auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (failure != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    uint64_t bytes = value * unit;
    if (bytes < limits::MinimumMemory || bytes > limits::MaximumMemory || bytes % 4)
        return std::nullopt;
    return uint32_t(bytes);
}

// Takes the next word off the text. Double quotes keep separators and are dropped; false when one
// stays open.
bool takeWord(std::string_view& text, std::string& word)
{
    word.clear();
    bool quoted = false;
    size_t i = 0;
    for (; i < text.size() && (quoted || Separators.find(text[i]) == std::string_view::npos); ++i) {
        if (text[i] == '"')
            quoted = !quoted;
        else
            word += text[i];
    }
    text.remove_prefix(i);
    return !quoted;
}

} // namespace

bool Parameters::parse(std::string_view text, std::string& error)
{
    std::string word;
    while (true) {
        size_t start = text.find_first_not_of(Separators);
        if (start == std::string_view::npos)
            return true;
        text.remove_prefix(start);
        if (!takeWord(text, word)) {
            error = "simulator parameter: a quote is not closed";
            return false;
        }
        size_t equals = word.find('=');
        std::string key = word.substr(0, equals);
        std::string value = equals == std::string::npos ? std::string() : word.substr(equals + 1);
        if (key == "code" || key == "data") {
            std::optional<uint32_t> size = parseSize(value);
            if (!size) {
                error = "simulator parameter: bad size in \"" + word + "\"";
                return false;
            }
            (key == "code" ? codeBytes : dataBytes) = *size;
        } else if (key == "trace" && !value.empty()) {
            traceFile = value;
        } else {
            error = "simulator parameter: cannot understand \"" + word + "\"";
            return false;
        }
    }
}

} // namespace maxq30
