// The one road to standard output. A closed pipe or a full disk ends the session with one message
// instead of being noticed by nobody.
#pragma once

#include <QString>
#include <string_view>

namespace StandardOutput {

// Writes and flushes. Throws HException "cannot write to standard output: REASON" once; what is
// written after that is dropped.
void write(std::string_view text);
void write(const QString& text);

// Whether the first failure was a reader that went away.
bool pipeClosed();

} // namespace StandardOutput
