// The bulk endpoints of a USB JTAG adapter as a byte link. Failures are thrown as HException, with the USB
// library's own words as the hint.
#pragma once

#include "maxq30/jtag/HDataLink.h"
#include "maxq30/jtag/USBDeviceList.h"

#include <memory>

// What the adapter says when it is asked who it is.
constexpr unsigned short TetherVendor = 0x1209;
constexpr unsigned short TetherProduct = 0x3030;

class UsbTetherDataLink : public HDataLink {
public:
    // Opens the first device with these ids and this serial number, and claims its first interface.
    explicit UsbTetherDataLink(const USBDevice& device);
    ~UsbTetherDataLink() override;

    // One bulk transfer each, of at most `count` bytes; fewer may have moved.
    int read(unsigned char* buffer, int count) override;
    int write(const unsigned char* buffer, int count) override;
    // read and write without a throw: a negative result is the library's error.
    int readNoThrow(unsigned char* buffer, int count);
    int writeNoThrow(const unsigned char* buffer, int count);

    void reenumerateMe();     // resets the device, which then comes up anew
    void init(const char*) {} // the device needs nothing further

private:
    struct Handle;
    static std::unique_ptr<Handle> createUsbTetherDeviceHandle(const USBDevice& wanted);

    unsigned long m_timeout = 1000; // milliseconds
    std::unique_ptr<Handle> m_handle;
};
