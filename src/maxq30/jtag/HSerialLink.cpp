#include "maxq30/jtag/HSerialLink.h"

#include "support/HException.h"

#include <cassert>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// How long a port may take no byte at all: many times what its largest frame needs on the line.
constexpr unsigned long WriteTimeout = 1000; // milliseconds

[[noreturn]] void fail(const char* what, int error)
{
    char text[160];
    snprintf(text, sizeof text, "%s error %s(%d)", what, strerror(error), error);
    throw HException(text);
}

speed_t speedOf(unsigned int baud)
{
    switch (baud) {
    case 9600: return B9600;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 115200: return B115200;
    default: return baud;
    }
}

void getAttributes(int fd, termios& attributes)
{
    if (tcgetattr(fd, &attributes) != 0)
        fail("tcgetattr", errno);
}

// Sets speed and attributes, with old input discarded.
void setAttributes(int fd, termios& attributes, unsigned int baud)
{
    speed_t speed = speedOf(baud);
    bool known = cfsetispeed(&attributes, speed) == 0 && cfsetospeed(&attributes, speed) == 0;
    int speedError = errno;
    if (tcflush(fd, TCIFLUSH) != 0)
        fail("tcflush", errno);
    if (!known)
        fail("tcsetattr", speedError);
    if (tcsetattr(fd, TCSANOW, &attributes) != 0)
        fail("tcsetattr", errno);
}

void makeRaw(termios& attributes)
{
    attributes.c_iflag = 0;
    attributes.c_oflag = 0;
    attributes.c_lflag = 0;
    attributes.c_cflag &= ~tcflag_t(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS);
    attributes.c_cflag |= CS8 | CREAD | CLOCAL;
    attributes.c_cc[VMIN] = 0;
    attributes.c_cc[VTIME] = 0;
}

// Waits until the port is ready for the events, until the deadline at most. False when it did not get
// ready, or hung up with nothing left to read.
bool waitFor(int fd, short events, Clock::time_point deadline)
{
    for (;;) {
        auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left < 0)
            return false;
        pollfd port = {fd, events, 0};
        int ready = poll(&port, 1, int(left < INT_MAX ? left : INT_MAX));
        if (ready > 0)
            return port.revents & events;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

void drain(int fd)
{
    while (tcdrain(fd) != 0 && errno == EINTR) {
    }
}

} // namespace

struct HSerialLink::Port {
    explicit Port(const char* name) : fd(open(name, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        if (fd < 0)
            fail("open", errno);
    }
    ~Port()
    {
        // What a dead line has not taken would hold up the close.
        if (stuck)
            tcflush(fd, TCOFLUSH);
        if (attributesKnown)
            tcsetattr(fd, TCSANOW, &earlier);
        if (exclusive)
            ioctl(fd, TIOCNXCL);
        close(fd);
    }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    // The lock keeps out those who ask for it, the exclusive mark all others. A pseudo-terminal would keep
    // the mark beyond the death of this process, so only a port with modem lines gets it.
    void lock()
    {
        if (flock(fd, LOCK_EX | LOCK_NB) != 0)
            fail("open", errno == EWOULDBLOCK ? EBUSY : errno);
        int lines;
        exclusive = ioctl(fd, TIOCMGET, &lines) == 0 && ioctl(fd, TIOCEXCL) == 0;
    }

    int fd;
    termios earlier = {};
    bool attributesKnown = false;
    bool exclusive = false;
    bool stuck = false; // bytes were not taken in time
};

HSerialLink::HSerialLink(const char* port, unsigned int baud, [[maybe_unused]] unsigned int dataBits, Parity,
                         StopBits)
    : m_port(std::make_unique<Port>(port))
{
    assert(dataBits == 8);
    termios attributes;
    getAttributes(m_port->fd, attributes);
    m_port->lock();
    m_port->earlier = attributes;
    m_port->attributesKnown = true;
    makeRaw(attributes);
    setAttributes(m_port->fd, attributes, baud);
}

HSerialLink::~HSerialLink() = default;

int HSerialLink::read(unsigned char* buffer, int count)
{
    int got = 0;
    auto timeout = std::chrono::milliseconds(m_timeout);
    Clock::time_point deadline = Clock::now() + timeout;
    bool ready = false;
    while (got < count) {
        ssize_t n = ::read(m_port->fd, buffer + got, size_t(count - got));
        if (n > 0) {
            got += int(n);
            deadline = Clock::now() + timeout; // anew for each byte
            ready = false;
            continue;
        }
        // A port that is ready to be read and has nothing has hung up.
        if (n == 0 ? ready : errno != EAGAIN && errno != EINTR)
            break;
        ready = waitFor(m_port->fd, POLLIN, deadline);
        if (!ready)
            break;
    }
    return got;
}

int HSerialLink::write(const unsigned char* buffer, int count)
{
    int put = 0;
    auto timeout = std::chrono::milliseconds(WriteTimeout);
    Clock::time_point deadline = Clock::now() + timeout;
    while (put < count) {
        ssize_t n = ::write(m_port->fd, buffer + put, size_t(count - put));
        if (n > 0) {
            put += int(n);
            deadline = Clock::now() + timeout;
            continue;
        }
        if (n < 0 && errno != EAGAIN && errno != EINTR)
            return put;
        if (!waitFor(m_port->fd, POLLOUT, deadline)) {
            m_port->stuck = true;
            return put;
        }
    }
    drain(m_port->fd);
    return put;
}

void HSerialLink::purge()
{
    tcflush(m_port->fd, TCIOFLUSH);
}

void HSerialLink::setDTR(bool on)
{
    int lines;
    if (ioctl(m_port->fd, TIOCMGET, &lines) != 0)
        return;
    lines = on ? lines | TIOCM_DTR : lines & ~TIOCM_DTR;
    ioctl(m_port->fd, TIOCMSET, &lines);
}

void HSerialLink::flush()
{
    drain(m_port->fd);
}

void HSerialLink::setBaudrate(unsigned int rate)
{
    termios attributes;
    getAttributes(m_port->fd, attributes);
    setAttributes(m_port->fd, attributes, rate);
}
