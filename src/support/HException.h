// The application exception: a complete English text and nothing else. Every failure of the tool
// that is not a script error is thrown as an HException, by value, and caught by reference.
#pragma once

#include <QString>
#include <string>
#include <string_view>

class HException {
public:
    explicit HException(std::string_view message) : m_message(message) { ++m_count; }
    explicit HException(const char* message) : HException(std::string_view(message)) {}
    explicit HException(const QString& message) : m_message(message.toStdString()) { ++m_count; }
    HException(const HException& other) : m_message(other.m_message), m_hint(other.m_hint) { ++m_count; }
    HException& operator=(const HException&) = default;
    virtual ~HException() { --m_count; }

    // The text, in UTF-8. It may hold "<p>" and tags, which whoever prints it removes.
    const std::string& message() const { return m_message; }
    QString text() const { return QString::fromStdString(m_message); }

    // Adds to the end of the text, for a catcher that knows more of the place (a line number).
    void append(std::string_view text) { m_message += text; }

    // What a user can make of it or should try, printed on a line of its own behind the text, which
    // stays as it is. Empty when there is nothing to add.
    const std::string& hint() const { return m_hint; }
    HException& setHint(std::string_view hint)
    {
        m_hint = hint;
        return *this;
    }

    // Number of live instances; a test can see with it that none leaks.
    static int count() { return m_count; }

private:
    std::string m_message;
    std::string m_hint;
    static int m_count;
};
