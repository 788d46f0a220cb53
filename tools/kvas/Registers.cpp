#include "tools/kvas/Registers.h"

#include <string>
#include <unordered_map>

namespace kvas {

namespace {

constexpr unsigned PushDestination = 13;
constexpr unsigned NulDestination = 40;
constexpr unsigned PopSource = 13;

constexpr unsigned number(unsigned module, unsigned index)
{
    return index << 4 | module;
}

struct Name {
    unsigned module, index;
    const char* text;
};

constexpr Name names[] = {
    {8, 0, "AP"},
    {8, 1, "APC"},
    {8, 4, "PSF"},
    {8, 5, "IC"},
    {8, 6, "IMR"},
    {8, 8, "SC"},
    {8, 9, "IPR0"},
    {8, 10, "IPR1"},
    {8, 11, "IIR"},
    {8, 14, "CKCN"},
    {8, 15, "WDCN"},
    {10, 0, "ACC"},
    {10, 1, "A[AP]"},
    {13, 0, "@SP++"},
    {13, 1, "SP"},
    {13, 2, "IV"},
    {13, 6, "LC[0]"},
    {13, 7, "LC[1]"},
    {13, 8, "@SPI++"},
    {14, 0, "BP"},
    {14, 1, "@BP[OFFS++].B"},
    {14, 2, "@BP[OFFS--].B"},
    {14, 3, "OFFS"},
    {14, 4, "@BP[OFFS++].W"},
    {14, 5, "@BP[OFFS--].W"},
    {14, 6, "@BP[OFFS++].L"},
    {14, 7, "@BP[OFFS--].L"},
    {14, 8, "@BP[OFFS].B"},
    {14, 9, "@BP[OFFS].W"},
    {14, 10, "@BP[OFFS].L"},
    {14, 11, "FP"},
};

// Both data pointers, in the order of their indexes.
constexpr const char* pointerForms[] = {"@DP[?].B",   "@DP[?].B++", "@DP[?].B--", "DP[?]",    "@DP[?].W++",
                                        "@DP[?].W--", "@DP[?].L++", "@DP[?].L--", "@DP[?].W", "@DP[?].L"};

const std::unordered_map<std::string_view, unsigned>& table()
{
    static const auto* map = [] {
        auto* result = new std::unordered_map<std::string_view, unsigned>;
        auto add = [&](const std::string& text, unsigned module, unsigned index) {
            result->emplace(*new std::string(text), number(module, index));
        };
        for (const Name& name : names)
            add(name.text, name.module, name.index);
        for (unsigned i = 0; i < 16; ++i)
            add("A[" + std::to_string(i) + "]", 9, i);
        for (unsigned i = 0; i < 8; ++i)
            add("PFX[" + std::to_string(i) + "]", 11, i);
        for (unsigned pointer = 0; pointer < 2; ++pointer) {
            unsigned index = pointer * unsigned(std::size(pointerForms));
            for (std::string form : pointerForms) {
                form[form.find('?')] = char('0' + pointer);
                add(form, 15, index++);
            }
        }
        return result;
    }();
    return *map;
}

// "M8[2]": any register by module and index.
std::optional<unsigned> numbered(std::string_view name)
{
    if (name.size() < 5 || name[0] != 'M' || name.back() != ']')
        return {};
    size_t open = name.find('[');
    auto decimal = [](std::string_view digits, unsigned limit) -> std::optional<unsigned> {
        if (digits.empty() || digits.size() > 2)
            return {};
        unsigned value = 0;
        for (char c : digits) {
            if (c < '0' || c > '9')
                return {};
            value = value * 10 + unsigned(c - '0');
        }
        return value < limit ? std::optional(value) : std::nullopt;
    };
    if (open == std::string_view::npos)
        return {};
    auto module = decimal(name.substr(1, open - 1), 16);
    auto index = decimal(name.substr(open + 1, name.size() - open - 2), 32);
    return module && index ? std::optional(number(*module, *index)) : std::nullopt;
}

} // namespace

std::optional<unsigned> sourceRegister(std::string_view name)
{
    if (auto found = table().find(name); found != table().end())
        return found->second;
    return numbered(name);
}

std::optional<unsigned> destinationRegister(std::string_view name)
{
    if (name == "@--SP")
        return PushDestination;
    if (name == "NUL")
        return NulDestination;
    if (auto found = table().find(name); found != table().end())
        return found->second == PopSource ? std::nullopt : std::optional(found->second);
    return numbered(name);
}

bool isRegisterName(std::string_view name)
{
    return name == "NUL" || sourceRegister(name);
}

} // namespace kvas
