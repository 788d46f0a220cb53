// The devices on the machine's USB busses, as far as they can be told apart.
#pragma once

#include <string>
#include <vector>

struct USBDevice {
    unsigned short vendor = 0;
    unsigned short product = 0;
    // Empty when the device has none, or could not be opened to ask.
    std::string serialNumber;
    std::string description;
};

class USBDeviceList : public std::vector<USBDevice> {
public:
    static USBDeviceList enumerateDevices();
    USBDeviceList findById(int vendor, int product) const;
    USBDeviceList findBySerial(const std::string& serialNumber) const;
    USBDeviceList& operator+=(const USBDeviceList& other);
};
