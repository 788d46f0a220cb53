#include "maxq30/jtag/USBDeviceList.h"

#include "maxq30/jtag/UsbBusses.h"

#include <algorithm>
#include <iterator>

USBDeviceList USBDeviceList::enumerateDevices()
{
    USBDeviceList list;
    usb_init();
    for (struct usb_bus* bus = usbBusses(); bus; bus = bus->next)
        for (struct usb_device* device = bus->devices; device; device = device->next) {
            USBDevice entry;
            entry.vendor = device->descriptor.idVendor;
            entry.product = device->descriptor.idProduct;
            if (UsbHandle handle(device); handle) {
                entry.serialNumber = handle.text(device->descriptor.iSerialNumber);
                entry.description = handle.text(device->descriptor.iProduct);
            }
            list.push_back(std::move(entry));
        }
    return list;
}

USBDeviceList USBDeviceList::findById(int vendor, int product) const
{
    USBDeviceList found;
    std::copy_if(begin(), end(), std::back_inserter(found), [=](const USBDevice& device) {
        return device.vendor == vendor && device.product == product;
    });
    return found;
}

USBDeviceList USBDeviceList::findBySerial(const std::string& serialNumber) const
{
    USBDeviceList found;
    std::copy_if(begin(), end(), std::back_inserter(found),
                 [&](const USBDevice& device) { return device.serialNumber == serialNumber; });
    return found;
}

USBDeviceList& USBDeviceList::operator+=(const USBDeviceList& other)
{
    // A list may be appended to itself.
    reserve(size() + other.size());
    for (size_t i = 0, count = other.size(); i < count; ++i)
        push_back(other[i]);
    return *this;
}
