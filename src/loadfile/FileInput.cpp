#include "loadfile/FileInput.h"

#include "loadfile/limits.h"
#include "support/HException.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char TooLarge[] = "The file is larger than 1 GiB";
constexpr size_t FirstPipeBuffer = 65536;

} // namespace

FileInput::FileInput(const char* name) : m_name(name), m_fd(open(name, O_RDONLY | O_CLOEXEC))
{
    if (m_fd < 0) {
        HException failure("cannot open " + m_name);
        failure.setHint(strerror(errno));
        throw failure;
    }
    struct stat status;
    if (fstat(m_fd, &status) == 0 && S_ISREG(status.st_mode)) {
        m_sizeKnown = true;
        m_size = size_t(status.st_size);
    }
}

FileInput::~FileInput()
{
    close(m_fd);
}

void FileInput::fail(const char* reason) const
{
    HException failure("cannot read " + m_name);
    failure.setHint(reason);
    throw failure;
}

size_t FileInput::read(char* buffer, size_t size)
{
    if (m_sizeKnown && m_size > LoadFileLimits::MaxFileSize)
        fail(TooLarge);
    // What is added to the file while it is read belongs to another version of it.
    if (m_sizeKnown)
        size = std::min(size, m_size - m_done);
    if (size == 0)
        return 0;
    ssize_t got;
    do
        got = ::read(m_fd, buffer, size);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        fail(strerror(errno));
    if (got == 0 && m_sizeKnown)
        fail("The file became shorter while it was read");
    m_done += size_t(got);
    if (m_done > LoadFileLimits::MaxFileSize)
        fail(TooLarge);
    return size_t(got);
}

void FileBytes::Free::operator()(unsigned char* p) const
{
    free(p);
}

FileBytes::FileBytes(const char* name)
{
    FileInput file(name);
    size_t capacity = 0;
    for (;;) {
        if (m_size == capacity) {
            size_t wanted =
                capacity ? capacity * 2 : std::min(file.expectedSize(), LoadFileLimits::MaxFileSize) + 1;
            if (!file.expectedSize())
                wanted = std::max(wanted, FirstPipeBuffer);
            auto* grown = static_cast<unsigned char*>(realloc(m_bytes.get(), wanted));
            if (!grown)
                throw std::bad_alloc();
            (void)m_bytes.release();
            m_bytes.reset(grown);
            capacity = wanted;
        }
        size_t got = file.read(reinterpret_cast<char*>(m_bytes.get()) + m_size, capacity - m_size);
        if (got == 0)
            return;
        m_size += got;
    }
}
