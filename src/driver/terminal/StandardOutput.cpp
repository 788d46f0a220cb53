#include "driver/terminal/StandardOutput.h"

#include "support/HException.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace StandardOutput {

namespace {

bool g_pipeClosed = false;

} // namespace

void write(std::string_view text)
{
    static bool failed = false;
    if (failed)
        return;
    if (fwrite(text.data(), 1, text.size(), stdout) != text.size() || fflush(stdout) != 0) {
        failed = true;
        g_pipeClosed = errno == EPIPE;
        throw HException(std::string("cannot write to standard output: ") + strerror(errno));
    }
}

void write(const QString& text)
{
    QByteArray bytes = text.toLocal8Bit();
    write(std::string_view(bytes.constData(), size_t(bytes.size())));
}

bool pipeClosed()
{
    return g_pipeClosed;
}

} // namespace StandardOutput
