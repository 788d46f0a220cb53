#include "board/PtyServer.h"

#include "board/Device.h"
#include "board/Link.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <termios.h>

namespace board {

namespace {
constexpr size_t Chunk = 4096;
}

PtyServer::PtyServer() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK))
{
    char name[128];
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0 ||
        ptsname_r(m_master, name, sizeof name) != 0)
        throw ServingError::fromErrno("cannot make a pseudo-terminal");
    m_name = name;
    // The attributes stay for the hosts to come. From here on the port is hung up until one opens it.
    FileDescriptor slave(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios attributes;
    if (slave < 0 || tcgetattr(slave, &attributes) != 0)
        throw ServingError::fromErrno("cannot open " + m_name);
    cfmakeraw(&attributes);
    cfsetspeed(&attributes, B115200);
    if (tcsetattr(slave, TCSANOW, &attributes) != 0)
        throw ServingError::fromErrno("cannot set up " + m_name);
    slave.close();
    m_watch = FileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (m_watch < 0 || inotify_add_watch(m_watch, name, IN_OPEN | IN_CLOSE) < 0)
        throw ServingError::fromErrno("cannot watch " + m_name);
}

void PtyServer::serve(Link& link, Device& device, int stop, bool once)
{
    while (!link.isCut() && !(once && m_hostHasGone)) {
        int64_t now = milliseconds();
        bool something = !link.ready(now, 1).empty();
        std::vector<pollfd> fds = {{stop, POLLIN, 0}, {m_watch, POLLIN, 0}};
        if (m_hosts) // a port that is hung up is always ready
            fds.push_back(
                {m_master, short((link.isFull() ? 0 : POLLIN) | (something && m_full ? POLLOUT : 0)), 0});
        waitOrRun(fds, link.nextTime(now), device);
        short master = m_hosts ? fds[2].revents : short(0);
        if (master & POLLIN)
            receive(link);
        if (fds[0].revents)
            break;
        if (master & POLLOUT)
            m_full = false;
        send(link);
        if (fds[1].revents)
            takeEvents(link);
        else if ((master & POLLHUP) && !(master & POLLIN))
            endSession(link);
    }
    m_master.close();
}

// Equal events that follow each other come as one, so the count can be too low while several hosts have
// the port open. When it falls to zero without a hang-up, either somebody still has it, or the next host
// was quick, which its event behind this one tells.
void PtyServer::takeEvents(Link& link)
{
    std::vector<bool> opened;
    alignas(inotify_event) char buffer[4096];
    for (ssize_t got; (got = read(m_watch, buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < got;) {
            inotify_event event;
            std::memcpy(&event, buffer + at, sizeof event);
            at += ssize_t(sizeof event + event.len);
            if (event.mask & (IN_OPEN | IN_CLOSE))
                opened.push_back(event.mask & IN_OPEN);
        }
    }
    for (auto event = opened.begin(); event != opened.end(); ++event) {
        if (*event)
            ++m_hosts;
        else if (m_hosts > 1)
            --m_hosts;
        else if (m_hosts && (isHungUp() || std::find(event, opened.end(), true) != opened.end()))
            endSession(link);
    }
}

// What the host sent before it closed the port still counts; what it did not fetch goes with it.
void PtyServer::endSession(Link& link)
{
    while (receive(link))
        ;
    link.restart();
    tcflush(m_master, TCOFLUSH);
    m_full = false;
    m_hostHasGone = true;
    m_hosts = 0;
}

bool PtyServer::isHungUp() const
{
    pollfd master{m_master, 0, 0};
    return poll(&master, 1, 0) > 0 && (master.revents & POLLHUP);
}

bool PtyServer::receive(Link& link)
{
    uint8_t buffer[Chunk];
    ssize_t got = read(m_master, buffer, sizeof buffer);
    if (got > 0)
        link.fromHost({buffer, size_t(got)}, milliseconds());
    else if (got < 0 && errno != EAGAIN && errno != EINTR && errno != EIO) // EIO: hung up
        throw ServingError::fromErrno("cannot read from " + m_name);
    return got > 0;
}

void PtyServer::send(Link& link)
{
    while (!m_full) {
        std::vector<uint8_t> bytes = link.ready(milliseconds(), Chunk);
        if (bytes.empty())
            return;
        ssize_t put = write(m_master, bytes.data(), bytes.size());
        if (put > 0)
            link.drop(size_t(put));
        else if (errno == EAGAIN || errno == EIO)
            m_full = true;
        else if (errno != EINTR)
            throw ServingError::fromErrno("cannot write to " + m_name);
    }
}

} // namespace board
