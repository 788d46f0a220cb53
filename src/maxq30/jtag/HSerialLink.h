// A serial port as a byte link: 8 data bits, no parity, one stop bit, no flow control, raw. The port is
// locked while it is open, and its terminal attributes are put back when it is closed. No call waits
// without an end, also when the port hangs up.
#pragma once

#include "maxq30/jtag/HDataLink.h"

#include <memory>

class HSerialLink : public HDataLink {
public:
    // What the lines of this system use.
    enum Parity { NoParity };
    enum StopBits { OneStopBit };

    // The port is a path; data bits are always 8. The usual speeds from 9600 to 115200 baud are turned into
    // the system's, any other value is handed to it as it stands. Throws HException with the reason.
    HSerialLink(const char* port, unsigned int baud, unsigned int dataBits, Parity parity, StopBits stopBits);
    ~HSerialLink() override;

    // Waits up to the time-out for each byte; returns fewer when one did not come in time, or when the port
    // hung up.
    int read(unsigned char* buffer, int count) override;
    // Comes back when the bytes have left; returns fewer when the port failed or took none for a second.
    int write(const unsigned char* buffer, int count) override;
    // Discards input and output.
    void purge() override;
    void setTimeout(unsigned long milliseconds) override { m_timeout = milliseconds; }
    unsigned long timeout() const { return m_timeout; }

    // A port without modem lines, such as a pseudo-terminal, has nothing to set.
    void setDTR(bool on);
    void flush(); // waits until output has left
    void setBaudrate(unsigned int rate);

private:
    struct Port;
    std::unique_ptr<Port> m_port;
    unsigned long m_timeout = 1000; // milliseconds
};
