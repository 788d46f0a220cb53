// The pieces of the USB library that the device list and the link share.
#pragma once

#include <string>
#include <usb.h>
#include <utility>

// An open device, closed at the end.
class UsbHandle {
public:
    // Null inside when the device cannot be opened.
    explicit UsbHandle(struct usb_device* device) : m_handle(usb_open(device)) {}
    UsbHandle(UsbHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    UsbHandle& operator=(UsbHandle&&) = delete;
    ~UsbHandle()
    {
        if (m_handle)
            usb_close(m_handle);
    }
    explicit operator bool() const { return m_handle; }
    usb_dev_handle* get() const { return m_handle; }

    // A text of the device; empty for index 0 and when it does not answer.
    std::string text(int index) const;

private:
    usb_dev_handle* m_handle;
};

// The busses and their devices, looked at anew; null when there are none. usb_init comes first.
struct usb_bus* usbBusses();
