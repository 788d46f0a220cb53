#include "maxq30/jtag/UsbTetherDataLink.h"

#include "maxq30/jtag/UsbBusses.h"
#include "support/HException.h"

namespace {

constexpr unsigned long OpenTimeout = 10000; // milliseconds, once the device is open
constexpr int Interface = 0;
constexpr int DirectionIn = 0x80; // of an endpoint address

[[noreturn]] void fail(const char* text)
{
    HException failure(text);
    if (const char* reason = usb_strerror())
        failure.setHint(reason);
    throw failure;
}

} // namespace

struct UsbTetherDataLink::Handle {
    explicit Handle(UsbHandle&& opened) : handle(std::move(opened)) {}
    ~Handle()
    {
        if (claimed)
            usb_release_interface(handle.get(), Interface);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    // Descriptors come from the device, so each level may be missing.
    void findEndpoints(const struct usb_config_descriptor& configuration)
    {
        if (configuration.bNumInterfaces == 0 || !configuration.interface ||
            configuration.interface->num_altsetting < 1 || !configuration.interface->altsetting)
            return;
        const struct usb_interface_descriptor& setting = *configuration.interface->altsetting;
        bool foundRead = false, foundWrite = false;
        for (int i = 0; setting.endpoint && i < setting.bNumEndpoints; ++i) {
            int address = setting.endpoint[i].bEndpointAddress;
            bool& found = address & DirectionIn ? foundRead : foundWrite;
            if (!found)
                (address & DirectionIn ? readEndpoint : writeEndpoint) = address;
            found = true;
        }
    }

    UsbHandle handle;
    int readEndpoint = 0x81;
    int writeEndpoint = 0x02;
    bool claimed = false;
};

std::unique_ptr<UsbTetherDataLink::Handle>
UsbTetherDataLink::createUsbTetherDeviceHandle(const USBDevice& wanted)
{
    for (struct usb_bus* bus = usbBusses(); bus; bus = bus->next)
        for (struct usb_device* device = bus->devices; device; device = device->next) {
            UsbHandle opened(device);
            if (!opened || device->descriptor.idVendor != wanted.vendor ||
                device->descriptor.idProduct != wanted.product ||
                opened.text(device->descriptor.iSerialNumber) != wanted.serialNumber)
                continue;
            auto handle = std::make_unique<Handle>(std::move(opened));
            if (!device->config)
                throw HException("cannot get USB descriptors");
            if (usb_set_configuration(handle->handle.get(), device->config->bConfigurationValue) < 0)
                fail("cannot set USB configuration");
            if (usb_claim_interface(handle->handle.get(), Interface) < 0)
                fail("cannot claim USB interface");
            handle->claimed = true;
            handle->findEndpoints(*device->config);
            return handle;
        }
    return nullptr;
}

UsbTetherDataLink::UsbTetherDataLink(const USBDevice& device)
{
    usb_init();
    m_handle = createUsbTetherDeviceHandle(device);
    if (!m_handle)
        throw HException("cannot find USB device");
    m_timeout = OpenTimeout;
}

UsbTetherDataLink::~UsbTetherDataLink() = default;

int UsbTetherDataLink::read(unsigned char* buffer, int count)
{
    int moved = readNoThrow(buffer, count);
    if (moved < 0)
        fail("read operation failed");
    return moved;
}

int UsbTetherDataLink::write(const unsigned char* buffer, int count)
{
    int moved = writeNoThrow(buffer, count);
    if (moved < 0)
        fail("write operation failed");
    return moved;
}

int UsbTetherDataLink::readNoThrow(unsigned char* buffer, int count)
{
    return usb_bulk_read(m_handle->handle.get(), m_handle->readEndpoint, reinterpret_cast<char*>(buffer),
                         count, int(m_timeout));
}

int UsbTetherDataLink::writeNoThrow(const unsigned char* buffer, int count)
{
    return usb_bulk_write(m_handle->handle.get(), m_handle->writeEndpoint,
                          reinterpret_cast<const char*>(buffer), count, int(m_timeout));
}

void UsbTetherDataLink::reenumerateMe()
{
    usb_reset(m_handle->handle.get());
}
