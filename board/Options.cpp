#include "board/Options.h"
#include "sim/Parameters.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace board {

namespace {

// Longest text that the device and the adapter tell about themselves.
constexpr size_t LongestText = 250;

bool number(const std::string& text, uint64_t maximum, auto& result)
{
    std::optional<uint64_t> value = parseNumber(text);
    if (!value || *value > maximum)
        return false;
    result = static_cast<std::remove_reference_t<decltype(result)>>(*value);
    return true;
}

bool text(const std::string& value, std::string& result)
{
    for (unsigned char c : value)
        if (c < 0x20 || c == 0x7F)
            return false;
    result = value;
    return value.size() <= LongestText;
}

bool fileName(const std::string& value, std::string& result)
{
    result = value;
    return !value.empty();
}

// Sizes are those of the simulator library: decimal or hexadecimal, with K or M.
bool memorySize(const std::string& value, uint32_t& result)
{
    maxq30::Parameters parameters;
    std::string error;
    if (value.find_first_of(" ,;=\"") != std::string::npos || !parameters.parse("code=" + value, error))
        return false;
    result = parameters.codeBytes;
    return true;
}

bool image(const std::string& value, std::vector<Image>& images)
{
    Image image{value};
    if (size_t at = value.rfind('@'); at != std::string::npos) {
        if (!number(value.substr(at + 1), 0xFFFFFF, image.address))
            return false;
        image.fileName = value.substr(0, at);
        image.atAddress = true;
    }
    images.push_back(image);
    return !image.fileName.empty();
}

bool families(const std::string& value, Settings& settings)
{
    settings.variableLoad = value == "variable" || value == "both";
    settings.fixedLoad = value == "fixed" || value == "both";
    return settings.variableLoad || settings.fixedLoad || value == "none";
}

bool romVersion(const std::string& value, Settings& settings)
{
    size_t point = value.find('.');
    return point != std::string::npos && number(value.substr(0, point), 255, settings.romMajor) &&
           number(value.substr(point + 1), 99, settings.romMinor);
}

bool fault(const std::string& value, Options& options)
{
    Settings& settings = options.settings;
    if (value == "unpowered" || value == "unpowered=0" || value == "unpowered=1") {
        settings.stuckTDO = value.back() == '1';
        return true;
    }
    if (value == "no-bootloader") {
        settings.bootloaderStarts = false;
        return true;
    }
    if (value == "locked") {
        settings.locked = true;
        return true;
    }
    if (value.starts_with("dead=")) {
        std::string range = value.substr(5);
        size_t dash = range.find('-');
        Settings::Range cells;
        if (!number(range.substr(0, dash), 0xFFFFFF, cells.first))
            return false;
        cells.last = cells.first;
        if (dash != std::string::npos && !number(range.substr(dash + 1), 0xFFFFFF, cells.last))
            return false;
        settings.deadCells.push_back(cells);
        return cells.first <= cells.last;
    }
    std::optional<Fault> linkFault = Fault::parse(value);
    if (linkFault)
        options.faults.push_back(*linkFault);
    return linkFault.has_value();
}

// For a message of one line.
std::string printable(std::string text)
{
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = '?';
    return text;
}

using Text = const std::string&;

// One row makes an option: how it is read and what the help says.
struct Row {
    const char* name;
    const char* argument; // null for a switch
    bool (*take)(Options& options, Text value);
    const char* help;
};

constexpr Row OptionRows[] = {
    {"usb", "SOCKET", [](Options& o, Text v) { return fileName(v, o.usbSocket); },
     "serve the USB adapter on this Unix socket instead of the serial\n"
     "one on a pseudo-terminal"},
    {"once", nullptr, [](Options& o, Text) { return o.once = true; }, "end when the first host has gone"},
    {"families", "KIND", [](Options& o, Text v) { return families(v, o.settings); },
     "loads that the bootloader knows: variable, fixed, both (default)\n"
     "or none"},
    {"fixed-code", "WORDS", [](Options& o, Text v) { return number(v, 255, o.settings.fixedCodeWords); },
     "words that a fixed load writes to code memory (32)"},
    {"fixed-data", "WORDS", [](Options& o, Text v) { return number(v, 255, o.settings.fixedDataWords); },
     "the same for data memory (32)"},
    {"device-id", "TEXT", [](Options& o, Text v) { return text(v, o.settings.deviceId); },
     "what the bootloader calls the device"},
    {"rom-version", "M.NN", [](Options& o, Text v) { return romVersion(v, o.settings); },
     "version of the bootloader (1.00)"},
    {"boot-scans", "N", [](Options& o, Text v) { return number(v, 1'000'000, o.settings.bootScans); },
     "scans that the bootloader refuses while it starts (3)"},
    {"load-scans", "N", [](Options& o, Text v) { return number(v, 1'000'000, o.settings.loadScans); },
     "scans that it refuses after each load (2); adapters give up\n"
     "after 10"},
    {"erase-scans", "N", [](Options& o, Text v) { return number(v, 1'000'000, o.settings.eraseScans); },
     "scans that it refuses after an erase (6)"},
    {"erase-time", "MS",
     [](Options& o, Text v) { return number(v, 1'000'000, o.settings.eraseMilliseconds); },
     "milliseconds for which an adapter waits for an erase (0)"},
    {"code-size", "SIZE", [](Options& o, Text v) { return memorySize(v, o.settings.codeBytes); },
     "bytes of code memory, with K or M behind the number (64K)"},
    {"data-size", "SIZE", [](Options& o, Text v) { return memorySize(v, o.settings.dataBytes); },
     "bytes of data memory (64K)"},
    {"image", "FILE[@ADDRESS]", [](Options& o, Text v) { return image(v, o.codeImages); },
     "put a file into the code memory first: Intel Hex, or binary,\n"
     "which goes to ADDRESS; may be repeated"},
    {"data-image", "FILE[@ADDRESS]", [](Options& o, Text v) { return image(v, o.dataImages); },
     "put a binary file into the data memory first; may be repeated"},
    {"save-code", "FILE", [](Options& o, Text v) { return fileName(v, o.saveCode); },
     "write the code memory to FILE at the end, as binary"},
    {"save-data", "FILE", [](Options& o, Text v) { return fileName(v, o.saveData); },
     "the same with the data memory"},
    {"log", "FILE", [](Options& o, Text v) { return fileName(v, o.log); }, "write all transfers to FILE"},
    {"serial-number", "TEXT", [](Options& o, Text v) { return text(v, o.serialNumber); },
     "of the USB adapter (VB000001)"},
    {"product", "TEXT", [](Options& o, Text v) { return text(v, o.product); }, "name of the USB adapter"},
    {"fault", "FAULT", [](Options& o, Text v) { return fault(v, o); },
     "break something, see below; may be repeated"},
    {"help", nullptr, [](Options& o, Text) { return o.help = true; }, "this text"},
};

constexpr size_t HelpColumn = 30;

} // namespace

std::string Options::parse(const std::vector<std::string>& arguments)
{
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string_view argument = arguments[i];
        if (!argument.starts_with("--"))
            return "unexpected argument '" + printable(arguments[i]) + "'";
        size_t equals = argument.find('=');
        std::string_view name = argument.substr(2, equals == std::string_view::npos ? equals : equals - 2);
        const Row* row = nullptr;
        for (const Row& candidate : OptionRows)
            if (name == candidate.name)
                row = &candidate;
        if (!row)
            return "unknown option '--" + printable(std::string(name)) + "'";
        std::string option = "option '--" + std::string(name) + "'";
        std::string value;
        if (!row->argument) {
            if (equals != std::string_view::npos)
                return option + " takes no value";
        } else if (equals != std::string_view::npos) {
            value = argument.substr(equals + 1);
        } else if (++i < arguments.size()) {
            value = arguments[i];
        } else {
            return option + " needs a value";
        }
        if (!row->take(*this, value))
            return option + ": bad value '" + printable(value) + "'";
    }
    return {};
}

std::string Options::helpText()
{
    std::string help =
        "usage: vboard [OPTION...]\n\n"
        "A virtual MAXQ30 board with a JTAG adapter. Prints the name of the adapter's port as its\n"
        "first line and serves it until it is interrupted.\n\n";
    for (const Row& row : OptionRows) {
        std::string line = std::string("  --") + row.name;
        if (row.argument)
            line += std::string(" ") + row.argument;
        line.resize(std::max(line.size() + 1, HelpColumn), ' ');
        for (const char* c = row.help; *c; ++c) {
            line += *c;
            if (*c == '\n')
                line.append(HelpColumn, ' ');
        }
        help += line + "\n";
    }
    help +=
        "\nfaults:\n"
        "  unpowered[=LEVEL]           the device has no power; TDO is stuck at LEVEL (0)\n"
        "  no-bootloader               the bootloader never starts\n"
        "  locked                      the bootloader refuses erases and loads\n"
        "  dead=ADDRESS[-LAST]         code cells that take no programming\n"
        "  cut=[in:|out:]N             the cable is pulled after N bytes\n"
        "  drop=[in:|out:]N            byte N is lost\n"
        "  change=[in:|out:]N[:VALUE]  byte N becomes VALUE, or has all its bits inverted\n"
        "  late=[in:|out:]N:MS         byte N and all answers behind it come MS milliseconds late\n\n"
        "Positions count from 0 in the bytes from the host (in:) or the answers (out:); cut counts the\n"
        "former when nothing is said, the others the latter. A log tells the positions.\n\n"
        "Status 1 means that the board could not be served, that a file could not be written, or that the\n"
        "host sent something that no adapter or device understands.\n";
    return help;
}

} // namespace board
