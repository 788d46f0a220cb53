// The command: kvas [options] SOURCE...
#include "maxq30/cpu/MAXQ30Processor.h"
#include "support/HException.h"
#include "tools/kvas/Cursor.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Dump.h"
#include "tools/kvas/Link.h"
#include "tools/kvas/OutputFile.h"
#include "tools/kvas/Registers.h"
#include "zoff/ZOFFProcessor.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <string_view>

namespace {

constexpr char usage[] =
    "usage: kvas [options] SOURCE.s...\n"
    "       kvas --dump FILE.kvx\n"
    "\n"
    "Assembles the sources and links them into one executable.\n"
    "\n"
    "  -o FILE           the executable; without it the first source's name with .kvx, in the current "
    "folder\n"
    "  --lib DIR         a folder in which include files and libraries are looked for; may be repeated\n"
    "  -D NAME[=VALUE]   a public symbol, 1 without a value\n"
    "  --code ADDRESS    where code begins (0)\n"
    "  --data ADDRESS    where data begins (the value of _RAM_Start_Address, or 0)\n"
    "  --dump FILE       prints sections, symbols, scopes, lines and code of an executable\n"
    "  --help            this text\n";

int fail(const std::string& text)
{
    fprintf(stderr, "kvas: error: %s\n", text.c_str());
    return 1;
}

std::optional<int64_t> parseNumber(std::string_view text)
{
    int64_t value = 0;
    bool hex = text.starts_with("0x") || text.starts_with("0X");
    const char* begin = text.data() + (hex ? 2 : 0);
    const char* end = text.data() + text.size();
    auto [at, fault] = std::from_chars(begin, end, value, hex ? 16 : 10);
    if (fault != std::errc() || at != end || (hex && *begin == '-'))
        return {};
    return value;
}

struct UsageError {
    std::string text;
};

struct Options {
    kvas::Job job;
    std::string output, dump;
    bool help = false;
};

Options parse(int argc, char** argv)
{
    Options options;
    int i = 1;
    auto value = [&](std::string_view option) -> std::string {
        if (++i == argc)
            throw UsageError{std::string(option) + " needs a value"};
        return argv[i];
    };
    auto address = [&](std::string_view option) {
        std::string text = value(option);
        auto number = parseNumber(text);
        if (!number || *number < 0 || *number > 0x7FFFFFFF)
            throw UsageError{"'" + text + "' is no address"};
        return uint32_t(*number);
    };
    for (; i < argc; ++i) {
        std::string_view word = argv[i];
        if (word == "--help") {
            options.help = true;
        } else if (word == "-o") {
            options.output = value(word);
        } else if (word == "--lib") {
            options.job.directories.push_back(value(word));
        } else if (word == "--dump") {
            options.dump = value(word);
        } else if (word == "--code") {
            options.job.placement.code = address(word);
        } else if (word == "--data") {
            options.job.placement.data = address(word);
        } else if (word.starts_with("-D")) {
            std::string text = word == "-D" ? value(word) : std::string(word.substr(2));
            size_t equals = text.find('=');
            auto number =
                equals == std::string::npos ? 1 : parseNumber(std::string_view(text).substr(equals + 1));
            std::string name = text.substr(0, equals);
            if (!number || name.empty() || name.front() == '.' || kvas::Cursor(name).identifier() != name ||
                kvas::isRegisterName(name))
                throw UsageError{"'" + text + "' is no definition"};
            options.job.definitions.emplace_back(name, *number);
        } else if (word.size() > 1 && word[0] == '-') {
            throw UsageError{"unknown option " + std::string(word)};
        } else {
            options.job.sources.emplace_back(word);
        }
    }
    return options;
}

// A full disk shows only when the last text leaves the buffer.
int printed()
{
    if (fflush(stdout) != 0 || ferror(stdout))
        return fail("cannot write to standard output");
    return 0;
}

int assemble(Options& options)
{
    if (options.job.sources.empty())
        throw UsageError{"no source files; kvas --help tells more"};
    std::filesystem::path first(options.job.sources.front());
    if (options.output.empty())
        options.output = first.stem().string() + ".kvx";
    for (const std::string& source : options.job.sources) {
        std::error_code ignored;
        if (std::filesystem::equivalent(source, options.output, ignored))
            throw UsageError{"the output would replace the source " + source};
    }
    options.job.moduleName = std::filesystem::path(options.output).stem().string();

    kvas::Diagnostics diagnostics;
    std::string bytes = kvas::link(options.job, diagnostics);
    if (diagnostics.failed()) {
        fputs(diagnostics.text().c_str(), stderr);
        return 1;
    }
    kvas::writeOutput(options.output, bytes);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    ZOFFProcessor::install(MAXQ30Processor);
    try {
        Options options = parse(argc, argv);
        if (options.help) {
            fputs(usage, stdout);
            return printed();
        }
        if (!options.dump.empty()) {
            if (!options.job.sources.empty())
                throw UsageError{"--dump takes one file and no sources"};
            kvas::dump(options.dump, stdout);
            return printed();
        }
        return assemble(options);
    } catch (const UsageError& error) {
        return fail(error.text);
    } catch (const HException& error) {
        return fail(error.message());
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
