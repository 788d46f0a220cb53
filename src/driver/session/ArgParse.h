// A small command-line parser: options with a handler each, plain words, and "@file" words that name
// files of further words. Handlers run while the words are read, in their order. A fault is one line
// on the reporter's stream and does not stop the parse, save that an option without its argument ends
// the list of words that it stands in.
#pragma once

#include "driver/session/Reporter.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

class ArgParse {
public:
    // The reporter is not owned.
    explicit ArgParse(Reporter& reporter) : m_reporter(reporter) {}
    virtual ~ArgParse() = default;

    // A word that is no option.
    virtual void onArgument(const char* argument) = 0;
    // Writes the program name and ": error: " and returns the stream for the rest of the line.
    virtual std::ostream& error();
    // Lines that error() has begun so far.
    unsigned errors() const { return m_errors; }

    void parse(int count, char** words);
    // Splits one line of an indirect file at blanks; a word in double quotes may hold blanks and may
    // be empty. A line with an unterminated string, or with more than 256 words, is an error and has
    // no words.
    std::vector<std::string> argifyLine(const char* file, int line, const char* text);
    void parseArgsFromIndirectFile(const char* file);

protected:
    // A handler gets the option's text and its value, null for an option without argument.
    using Handler = std::function<void(const char* option, const char* value)>;
    enum class Argument { None, Separate, Attached };

    void onOptionCall(const char* option, Handler handler)
    {
        m_options[option] = {Argument::None, std::move(handler)};
    }
    // The argument is the rest of the same word (attached) or the next word. Registering an existing
    // text replaces its record.
    void onOptionGetArgAndCall(const char* option, bool attached, Handler handler)
    {
        m_options[option] = {attached ? Argument::Attached : Argument::Separate, std::move(handler)};
    }

private:
    void unknownOption(const char* word);

    struct Option {
        Argument argument;
        Handler handler;
    };
    // Descending, so that of two options where one begins with the other the longer comes first.
    struct Cstring_greater {
        using is_transparent = void;
        bool operator()(const std::string& a, const std::string& b) const { return a > b; }
        bool operator()(const std::string& a, const char* b) const { return a.compare(b) > 0; }
        bool operator()(const char* a, const std::string& b) const { return b.compare(a) < 0; }
    };

    std::map<std::string, Option, Cstring_greater> m_options;
    int m_depth = 0;         // of indirect files
    int m_indirectFiles = 0; // opened so far
    unsigned m_errors = 0;
    Reporter& m_reporter;
};
