// Serves a link on a Unix socket to the library of USB calls. Anybody may ask what adapter this is; one
// host at a time may claim it and exchange bulk transfers.
#pragma once

#include "board/Device.h"
#include "board/Link.h"
#include "board/Serving.h"
#include "board/UsbSocket.h"

#include <list>
#include <string>

namespace board {

class UsbServer {
public:
    // Makes the socket; one that is left over from a board that is gone makes room. Throws ServingError.
    UsbServer(std::string path, std::string serialNumber, std::string product);
    ~UsbServer();
    UsbServer(const UsbServer&) = delete;
    UsbServer& operator=(const UsbServer&) = delete;

    // Until `stop` becomes readable, the cable is pulled, or with `once` the host that claimed the adapter
    // has gone. Throws ServingError.
    void serve(Link& link, Device& device, int stop, bool once);

private:
    struct Connection {
        FileDescriptor socket;
        bool reading = false; // a read waits for data
        uint32_t readLength = 0;
        std::optional<int64_t> readUntil;
    };

    void accept();
    // False when the connection is to be closed.
    bool receive(Connection& connection, Link& link);
    void request(Connection& connection, const usb::RequestHeader& header, std::span<const uint8_t> data,
                 Link& link);
    void finishRead(Connection& connection, Link& link);
    void respond(Connection& connection, int32_t result, std::span<const uint8_t> data = {});

    std::string m_path;
    std::string m_serialNumber;
    std::string m_product;
    FileDescriptor m_listener;
    std::list<Connection> m_connections;
    Connection* m_owner = nullptr; // who has claimed the adapter
    bool m_hostHasGone = false;
};

} // namespace board
