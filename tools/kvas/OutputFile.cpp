#include "tools/kvas/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace kvas {

void writeOutput(const std::string& name, std::string_view bytes)
{
    auto failed = [&] { return std::runtime_error("cannot write " + name + ": " + strerror(errno)); };
    std::string temporary = name + ".XXXXXX";
    int file = mkstemp(temporary.data());
    if (file < 0)
        throw failed();
    bool written = true;
    while (written && !bytes.empty()) {
        ssize_t n = write(file, bytes.data(), bytes.size());
        written = n > 0 || (n < 0 && errno == EINTR);
        if (n > 0)
            bytes.remove_prefix(size_t(n));
    }
    // mkstemp leaves the file to its owner alone; a result is for everyone, as the user's mask allows.
    mode_t mask = umask(0);
    umask(mask);
    written = written && fchmod(file, 0666 & ~mask) == 0;
    written = close(file) == 0 && written;
    if (!written || rename(temporary.c_str(), name.c_str()) != 0) {
        auto error = failed();
        unlink(temporary.c_str());
        throw error;
    }
}

} // namespace kvas
