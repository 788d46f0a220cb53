#include "loadfile/FileBytes.h"

#include "loadfile/limits.h"
#include "support/HException.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Closes the descriptor on every way out.
struct Descriptor {
    int fd;
    ~Descriptor()
    {
        if (fd >= 0)
            close(fd);
    }
};

[[noreturn]] void fail(const char* what, const char* name, const char* reason)
{
    HException failure(std::string(what) + name);
    failure.setHint(reason);
    throw failure;
}

} // namespace

void FileBytes::Free::operator()(unsigned char* p) const
{
    free(p);
}

FileBytes::FileBytes(const char* name)
{
    Descriptor file{open(name, O_RDONLY | O_CLOEXEC)};
    if (file.fd < 0)
        fail("cannot open ", name, strerror(errno));
    struct stat status;
    if (fstat(file.fd, &status) != 0)
        fail("cannot read ", name, strerror(errno));
    bool sizeKnown = S_ISREG(status.st_mode);
    size_t expected = sizeKnown ? size_t(status.st_size) : 65536;
    if (expected > LoadFileLimits::MaxFileSize)
        fail("cannot read ", name, "The file is larger than 1 GiB");
    m_bytes.reset(static_cast<unsigned char*>(malloc(std::max<size_t>(expected, 1))));
    if (!m_bytes)
        fail("cannot read ", name, strerror(ENOMEM));
    for (;;) {
        if (m_size == expected) {
            if (sizeKnown)
                return;
            expected *= 2;
            if (expected > LoadFileLimits::MaxFileSize)
                fail("cannot read ", name, "The file is larger than 1 GiB");
            unsigned char* grown = static_cast<unsigned char*>(realloc(m_bytes.get(), expected));
            if (!grown)
                fail("cannot read ", name, strerror(ENOMEM));
            (void)m_bytes.release();
            m_bytes.reset(grown);
        }
        ssize_t got = read(file.fd, m_bytes.get() + m_size, expected - m_size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            fail("cannot read ", name, strerror(errno));
        if (got == 0) {
            if (sizeKnown)
                fail("cannot read ", name, "The file became shorter while it was read");
            return;
        }
        m_size += size_t(got);
    }
}
