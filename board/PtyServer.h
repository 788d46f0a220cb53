// Serves a link on a pseudo-terminal, as a serial port would be served. Hosts may come and go; when the
// last one has closed the port, the adapter wakes up anew, which stands for the pulse on the DTR line that
// a pseudo-terminal does not have.
#pragma once

#include "board/Device.h"
#include "board/Link.h"
#include "board/Serving.h"

#include <string>

namespace board {

class PtyServer {
public:
    // Makes the port. Throws ServingError.
    PtyServer();

    const std::string& portName() const { return m_name; }

    // Until `stop` becomes readable, the cable is pulled, or with `once` the first host has gone. The
    // port is gone then. Throws ServingError.
    void serve(Link& link, Device& device, int stop, bool once);

private:
    void takeEvents(Link& link);
    void endSession(Link& link);
    bool isHungUp() const;
    // False when there was nothing.
    bool receive(Link& link);
    void send(Link& link);

    FileDescriptor m_master;
    FileDescriptor m_watch; // tells who opens and closes the port
    std::string m_name;
    int m_hosts = 0; // that have the port open
    bool m_hostHasGone = false;
    bool m_full = false; // the host does not fetch what it is sent
};

} // namespace board
