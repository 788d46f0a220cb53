// Takes messages out of a stream of bytes: "Content-Length: N", an empty line, and N bytes of JSON each.
// A stream that is no such thing is skipped up to the next header, and told once.
#pragma once

#include <QByteArray>

#include <optional>
#include <string>
#include <string_view>

class MessageReader {
public:
    struct Item {
        QByteArray json;   // the message, or
        const char* fault; // what is wrong with the stream, null for a message
    };

    void add(std::string_view bytes);
    // The next whole message or fault; none while bytes are missing.
    std::optional<Item> next();
    // Whether an end of the stream here cuts a message in two.
    bool unfinished() const { return m_start < m_buffer.size(); }

private:
    void skip();
    std::optional<size_t> header(std::string_view text, const char*& fault) const;

    std::string m_buffer;
    size_t m_start = 0;       // of what has not been handed out
    size_t m_searched = 0;    // no header ends in front of this
    bool m_searching = false; // for a header, after a fault that was told
};
