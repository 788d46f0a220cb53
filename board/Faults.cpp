#include "board/Faults.h"

#include <charconv>

namespace board {

std::optional<uint64_t> parseNumber(std::string_view text)
{
    bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    uint64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::optional<Fault> Fault::parse(std::string_view text)
{
    struct Name {
        std::string_view text;
        Kind kind;
        bool fromHost;
        uint64_t largestValue; // 0: takes none
        bool needsValue;
    };
    static constexpr Name names[] = {
        {"cut", Kind::Cut, true, 0, false},
        {"drop", Kind::Drop, false, 0, false},
        {"change", Kind::Change, false, 0xFF, false},
        {"late", Kind::Late, false, 1'000'000, true},
    };
    size_t equals = text.find('=');
    if (equals == std::string_view::npos)
        return std::nullopt;
    for (const Name& name : names) {
        if (text.substr(0, equals) != name.text)
            continue;
        text.remove_prefix(equals + 1);
        Fault fault{name.kind, name.fromHost, 0, std::nullopt};
        if (text.starts_with("in:") || text.starts_with("out:")) {
            fault.fromHost = text[0] == 'i';
            text.remove_prefix(text.find(':') + 1);
        }
        size_t colon = text.find(':');
        std::optional<uint64_t> position = parseNumber(text.substr(0, colon));
        if (!position)
            return std::nullopt;
        fault.position = *position;
        if (colon != std::string_view::npos) {
            std::optional<uint64_t> value = parseNumber(text.substr(colon + 1));
            if (!value || !name.largestValue || *value > name.largestValue)
                return std::nullopt;
            fault.value = uint32_t(*value);
        } else if (name.needsValue) {
            return std::nullopt;
        }
        return fault;
    }
    return std::nullopt;
}

} // namespace board
