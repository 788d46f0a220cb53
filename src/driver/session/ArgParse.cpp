#include "driver/session/ArgParse.h"

#include "support/Nearest.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>

namespace {

constexpr int MaximumDepth = 100;
// Two files that name each other twice would otherwise open 2^100 files before the depth ends it.
constexpr int MaximumIndirectFiles = 10000;
constexpr int LineBuffer = 1024;
constexpr size_t MaximumWordsInLine = 256;

struct CloseFile {
    void operator()(FILE* file) const { fclose(file); }
};

} // namespace

std::ostream& ArgParse::error()
{
    ++m_errors;
    return m_reporter.stream << m_reporter.program << ": error: ";
}

void ArgParse::parse(int count, char** words)
{
    for (int i = 0; i < count; ++i) {
        const char* word = words[i];
        auto found = m_options.find(word);
        const char* value = nullptr;
        if (found != m_options.end()) {
            if (found->second.argument == Argument::Separate) {
                if (i + 1 == count) {
                    error() << "expected argument for option " << found->first << "\n";
                    return;
                }
                value = words[++i];
            } else if (found->second.argument == Argument::Attached) {
                value = word + found->first.size();
            }
        } else {
            for (found = m_options.begin(); found != m_options.end(); ++found)
                if (found->second.argument == Argument::Attached &&
                    strncmp(word, found->first.c_str(), found->first.size()) == 0) {
                    value = word + found->first.size();
                    break;
                }
        }
        if (found != m_options.end())
            found->second.handler(found->first.c_str(), value);
        else if (*word == '@')
            parseArgsFromIndirectFile(word + 1);
        else if (*word == '-')
            unknownOption(word);
        else
            onArgument(word);
    }
}

void ArgParse::unknownOption(const char* word)
{
    error() << "unrecognised option " << word << "\n";
    QStringList known;
    for (const auto& [text, option] : m_options)
        known.append(QString::fromLocal8Bit(text));
    std::sort(known.begin(), known.end());
    QString meant = nearestName(QString::fromLocal8Bit(word), known);
    if (!meant.isEmpty())
        m_reporter.stream << "did you mean " << meant.toLocal8Bit().constData() << "?\n";
}

std::vector<std::string> ArgParse::argifyLine(const char* file, int line, const char* text)
{
    std::vector<std::string> words;
    const char* at = text;
    for (;;) {
        while (*at == ' ')
            ++at;
        if (*at == 0 || *at == '\n')
            return words;
        if (words.size() == MaximumWordsInLine) {
            error() << "too many words in indirect file " << file << "(" << line << ")\n";
            return {};
        }
        const char* start = at;
        if (*at == '"') {
            start = ++at;
            while (*at != '"') {
                if (*at == 0 || *at == '\n') {
                    error() << "unterminated string in indirect file " << file << "(" << line << ")\n";
                    return {};
                }
                ++at;
            }
            words.emplace_back(start, at);
            ++at;
        } else {
            while (*at && *at != ' ' && *at != '\n')
                ++at;
            words.emplace_back(start, at);
        }
    }
}

void ArgParse::parseArgsFromIndirectFile(const char* file)
{
    if (m_depth == MaximumDepth || m_indirectFiles == MaximumIndirectFiles) {
        error() << "too many indirect files\n";
        return;
    }
    std::unique_ptr<FILE, CloseFile> stream(fopen(file, "r"));
    if (!stream) {
        error() << "can't open indirect file " << file << ": " << strerror(errno) << "\n";
        return;
    }
    ++m_indirectFiles;
    ++m_depth;
    char buffer[LineBuffer];
    for (int line = 1; fgets(buffer, sizeof buffer, stream.get()); ++line) {
        if (buffer[0] == '#')
            continue;
        std::vector<std::string> words = argifyLine(file, line, buffer);
        std::vector<char*> pointers;
        for (std::string& word : words)
            pointers.push_back(word.data());
        if (!pointers.empty())
            parse(int(pointers.size()), pointers.data());
    }
    // A directory opens like a file, and only the first read tells.
    if (ferror(stream.get()))
        error() << "can't open indirect file " << file << ": " << strerror(errno) << "\n";
    --m_depth;
}
