#include "tools/kvas/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace kvas {

namespace {

bool writeAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        ssize_t n = write(file, bytes.data(), bytes.size());
        if (n > 0)
            bytes.remove_prefix(size_t(n));
        else if (n == 0 || errno != EINTR)
            return false;
    }
    return true;
}

} // namespace

void writeOutput(const std::string& name, std::string_view bytes)
{
    auto failed = [&] { return std::runtime_error("cannot write " + name + ": " + strerror(errno)); };
    // A device or a pipe is written as it stands: a rename would put a file in its place.
    struct stat there;
    if (stat(name.c_str(), &there) == 0 && !S_ISREG(there.st_mode) && !S_ISDIR(there.st_mode)) {
        int device = open(name.c_str(), O_WRONLY | O_CLOEXEC);
        if (device < 0)
            throw failed();
        bool written = writeAll(device, bytes);
        int why = errno;
        if (close(device) != 0 || !written) {
            errno = written ? errno : why;
            throw failed();
        }
        return;
    }
    // A link stays one: what it leads to is replaced.
    std::error_code isNew;
    std::filesystem::path existing = std::filesystem::canonical(name, isNew);
    std::string target = isNew ? name : existing.string();
    std::string temporary = target + ".XXXXXX";
    int file = mkstemp(temporary.data());
    if (file < 0)
        throw failed();
    bool written = writeAll(file, bytes);
    // mkstemp leaves the file to its owner alone; a result is for everyone, as the user's mask allows.
    mode_t mask = umask(0);
    umask(mask);
    written = written && fchmod(file, 0666 & ~mask) == 0;
    written = close(file) == 0 && written;
    if (!written || rename(temporary.c_str(), target.c_str()) != 0) {
        auto error = failed();
        unlink(temporary.c_str());
        throw error;
    }
}

} // namespace kvas
