// What the two ways to serve a board have in common.
#pragma once

#include "board/Device.h"

#include <cstdint>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>
#include <vector>

namespace board {

// Something of the system failed; the text tells what and why.
class ServingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    // With the reason that errno tells.
    static ServingError fromErrno(const std::string& what);
};

// Closes its file descriptor.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1) : m_fd(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~FileDescriptor() { close(); }
    void close()
    {
        if (m_fd >= 0)
            ::close(std::exchange(m_fd, -1));
    }
    operator int() const { return m_fd; }

private:
    int m_fd;
};

int64_t milliseconds();

// Waits for one of `fds` to become ready, but not beyond `until`. While the device's processor has
// something to do, lets it do a little and does not wait.
void waitOrRun(std::vector<pollfd>& fds, std::optional<int64_t> until, Device& device);

} // namespace board
