#include "board/UsbServer.h"

#include "board/Device.h"
#include "board/Link.h"
#include "board/limits.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace board {

namespace {

sockaddr_un addressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw ServingError("the name of the socket is longer than " +
                           std::to_string(sizeof address.sun_path - 1) + " characters");
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

// Nobody answers there any more.
bool isLeftOver(const sockaddr_un& address)
{
    FileDescriptor probe(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    return probe >= 0 && connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
           errno == ECONNREFUSED;
}

} // namespace

UsbServer::UsbServer(std::string path, std::string serialNumber, std::string product)
    : m_path(std::move(path)), m_serialNumber(std::move(serialNumber)), m_product(std::move(product)),
      m_listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    sockaddr_un address = addressOf(m_path);
    if (m_listener < 0)
        throw ServingError::fromErrno("cannot make a socket");
    auto bindIt = [&] {
        return bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    };
    if (!bindIt() && !(errno == EADDRINUSE && isLeftOver(address) && unlink(m_path.c_str()) == 0 && bindIt()))
        throw ServingError::fromErrno("cannot make the socket " + m_path);
    if (listen(m_listener, int(limits::UsbConnections)) != 0) {
        ServingError error = ServingError::fromErrno("cannot listen on " + m_path);
        unlink(m_path.c_str());
        throw error;
    }
}

UsbServer::~UsbServer()
{
    unlink(m_path.c_str());
}

void UsbServer::serve(Link& link, Device& device, int stop, bool once)
{
    while (!link.isCut() && !(once && m_hostHasGone)) {
        int64_t now = milliseconds();
        std::optional<int64_t> until = link.nextTime(now);
        std::vector<pollfd> fds = {{stop, POLLIN, 0}, {m_listener, POLLIN, 0}};
        for (const Connection& connection : m_connections) {
            fds.push_back({connection.socket, POLLIN, 0});
            if (connection.reading && connection.readUntil)
                until = std::min(until.value_or(*connection.readUntil), *connection.readUntil);
        }
        waitOrRun(fds, until, device);
        if (fds[0].revents)
            return;
        auto connection = m_connections.begin();
        for (size_t i = 2; i < fds.size(); ++i) {
            bool keep = !fds[i].revents || receive(*connection, link);
            if (keep && connection->reading)
                finishRead(*connection, link);
            if (keep) {
                ++connection;
                continue;
            }
            if (m_owner == &*connection) {
                m_owner = nullptr;
                m_hostHasGone = true;
                link.restart();
            }
            connection = m_connections.erase(connection);
        }
        if (fds[1].revents)
            accept();
    }
}

void UsbServer::accept()
{
    FileDescriptor socket(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket < 0 || m_connections.size() >= limits::UsbConnections)
        return;
    m_connections.emplace_back().socket = std::move(socket);
}

bool UsbServer::receive(Connection& connection, Link& link)
{
    std::vector<uint8_t> message(sizeof(usb::RequestHeader) + limits::BulkTransfer + 1);
    ssize_t got = recv(connection.socket, message.data(), message.size(), 0);
    if (got < 0)
        return errno == EAGAIN || errno == EINTR;
    usb::RequestHeader header;
    if (size_t(got) < sizeof header || size_t(got) == message.size())
        return false;
    std::memcpy(&header, message.data(), sizeof header);
    std::span<const uint8_t> data(message.data() + sizeof header, size_t(got) - sizeof header);
    if (connection.reading || header.length > limits::BulkTransfer ||
        (header.request == usb::Request::Write && header.length != data.size()))
        return false;
    request(connection, header, data, link);
    return true;
}

void UsbServer::request(Connection& connection, const usb::RequestHeader& header,
                        std::span<const uint8_t> data, Link& link)
{
    bool owns = m_owner == &connection;
    switch (header.request) {
    case usb::Request::Describe: {
        std::string text = m_serialNumber + '\0' + m_product + '\0';
        return respond(connection, int32_t(text.size()),
                       {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    }
    case usb::Request::Claim:
        if (m_owner && !owns)
            return respond(connection, -EBUSY);
        m_owner = &connection;
        link.restart();
        return respond(connection, 0);
    case usb::Request::Release:
        if (owns) {
            m_owner = nullptr;
            m_hostHasGone = true;
            link.restart();
        }
        return respond(connection, owns ? 0 : -EINVAL);
    case usb::Request::Write:
        if (!owns || link.isFull())
            return respond(connection, owns ? -ETIMEDOUT : -EINVAL);
        link.fromHost(data, milliseconds());
        // A cable that is pulled meanwhile answers nothing more.
        return link.isCut() ? void() : respond(connection, int32_t(data.size()));
    case usb::Request::Read:
        if (!owns)
            return respond(connection, -EINVAL);
        connection.reading = true;
        connection.readLength = header.length;
        connection.readUntil = header.timeout ? std::optional(milliseconds() + header.timeout) : std::nullopt;
        return;
    case usb::Request::Reset:
        if (owns)
            link.restart();
        return respond(connection, owns ? 0 : -EINVAL);
    }
    respond(connection, -ENOSYS);
}

// A transfer ends when it is full, or short when the adapter has nothing more to send.
void UsbServer::finishRead(Connection& connection, Link& link)
{
    int64_t now = milliseconds();
    std::vector<uint8_t> bytes = link.ready(now, connection.readLength);
    bool late = connection.readUntil && now >= *connection.readUntil;
    if (bytes.size() < connection.readLength && !late && (bytes.empty() || link.nextTime(now)))
        return;
    connection.reading = false;
    link.drop(bytes.size());
    respond(connection, bytes.empty() && connection.readLength ? -ETIMEDOUT : int32_t(bytes.size()), bytes);
}

void UsbServer::respond(Connection& connection, int32_t result, std::span<const uint8_t> data)
{
    usb::ResponseHeader header{result};
    std::vector<uint8_t> message(sizeof header + data.size());
    std::memcpy(message.data(), &header, sizeof header);
    std::copy(data.begin(), data.end(), message.begin() + sizeof header);
    // A host that has gone is noticed when its connection is read.
    send(connection.socket, message.data(), message.size(), MSG_NOSIGNAL);
}

} // namespace board
