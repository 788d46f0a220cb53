#include "board/Serving.h"

#include "board/limits.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>

namespace board {

ServingError ServingError::fromErrno(const std::string& what)
{
    return ServingError(what + ": " + std::strerror(errno));
}

int64_t milliseconds()
{
    using namespace std::chrono;
    return duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void waitOrRun(std::vector<pollfd>& fds, std::optional<int64_t> until, Device& device)
{
    int timeout = -1;
    if (device.isExecuting()) {
        device.run(limits::SliceSteps);
        timeout = 0;
    } else if (until) {
        timeout = int(std::clamp<int64_t>(*until - milliseconds(), 0, INT_MAX));
    }
    for (pollfd& fd : fds)
        fd.revents = 0;
    if (poll(fds.data(), nfds_t(fds.size()), timeout) < 0 && errno != EINTR)
        throw ServingError::fromErrno("cannot wait for the host");
}

} // namespace board
