// A library to preload in front of libusb 0.1: the calls that lead to a USB adapter end at a board that
// is served on a Unix socket. VBOARD_USB names the sockets, separated by commas; each that answers is an
// adapter on the one bus that there is. Without it there are none. As with the library that it stands
// for, calls come from one thread.
#include "board/UsbSocket.h"
#include "board/limits.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include <usb.h>

namespace usb = board::usb;

namespace {

std::string lastError;

// A negative error number of the system is the result of a call that failed.
int failed(int error)
{
    lastError = std::strerror(error);
    return -error;
}

int connectTo(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return failed(ENAMETOOLONG);
    std::memcpy(address.sun_path, path.data(), path.size());
    int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd >= 0 && connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return fd;
    int error = errno;
    if (fd >= 0)
        close(fd);
    return failed(error);
}

enum StringIndex : uint8_t { ProductString = 1, SerialNumberString = 2 };

// A device with its descriptors, which point into it: one that is in the list stays where it is.
struct Adapter {
    explicit Adapter(const std::string& socketPath, unsigned number) : path(socketPath)
    {
        endpoints[0].bEndpointAddress = usb::ReadEndpoint;
        endpoints[1].bEndpointAddress = usb::WriteEndpoint;
        for (usb_endpoint_descriptor& endpoint : endpoints) {
            endpoint.bLength = USB_DT_ENDPOINT_SIZE;
            endpoint.bDescriptorType = USB_DT_ENDPOINT;
            endpoint.bmAttributes = USB_ENDPOINT_TYPE_BULK;
            endpoint.wMaxPacketSize = 64;
        }
        setting.bLength = USB_DT_INTERFACE_SIZE;
        setting.bDescriptorType = USB_DT_INTERFACE;
        setting.bNumEndpoints = 2;
        setting.bInterfaceClass = USB_CLASS_VENDOR_SPEC;
        setting.endpoint = endpoints;
        interface.altsetting = &setting;
        interface.num_altsetting = 1;
        configuration.bLength = USB_DT_CONFIG_SIZE;
        configuration.bDescriptorType = USB_DT_CONFIG;
        configuration.wTotalLength = USB_DT_CONFIG_SIZE + USB_DT_INTERFACE_SIZE + 2 * USB_DT_ENDPOINT_SIZE;
        configuration.bNumInterfaces = 1;
        configuration.bConfigurationValue = 1;
        configuration.interface = &interface;
        device.descriptor.bLength = USB_DT_DEVICE_SIZE;
        device.descriptor.bDescriptorType = USB_DT_DEVICE;
        device.descriptor.bcdUSB = 0x0200;
        device.descriptor.bDeviceClass = USB_CLASS_PER_INTERFACE;
        device.descriptor.bMaxPacketSize0 = 64;
        device.descriptor.idVendor = usb::Vendor;
        device.descriptor.idProduct = usb::Product;
        device.descriptor.iProduct = ProductString;
        device.descriptor.iSerialNumber = SerialNumberString;
        device.descriptor.bNumConfigurations = 1;
        device.config = &configuration;
        device.devnum = uint8_t(number);
        std::snprintf(device.filename, sizeof device.filename, "%03u", number);
    }
    Adapter(const Adapter&) = delete;
    Adapter& operator=(const Adapter&) = delete;

    std::string path;
    bool present = true;
    usb_endpoint_descriptor endpoints[2]{};
    usb_interface_descriptor setting{};
    usb_interface interface {
    };
    usb_config_descriptor configuration{};
    struct usb_device device {};
};

struct Bus {
    Bus() { std::strcpy(bus.dirname, "001"); }
    usb_bus bus{};
    std::list<Adapter> adapters; // also those that are gone: a caller may still hold them
};

Bus& theBus()
{
    static Bus bus;
    return bus;
}

std::vector<std::string> socketPaths()
{
    std::vector<std::string> paths;
    const char* names = std::getenv("VBOARD_USB");
    for (std::string rest = names ? names : ""; !rest.empty();) {
        size_t comma = rest.find(',');
        if (comma != 0)
            paths.push_back(rest.substr(0, comma));
        rest.erase(0, comma == std::string::npos ? comma : comma + 1);
    }
    return paths;
}

void chain(Bus& bus)
{
    bus.bus.devices = nullptr;
    struct usb_device* last = nullptr;
    for (const std::string& path : socketPaths()) {
        for (Adapter& adapter : bus.adapters) {
            if (adapter.path != path || !adapter.present)
                continue;
            adapter.device.bus = &bus.bus;
            adapter.device.prev = last;
            adapter.device.next = nullptr;
            (last ? last->next : bus.bus.devices) = &adapter.device;
            last = &adapter.device;
        }
    }
}

} // namespace

struct usb_dev_handle {
    int socket = -1;
    bool claimed = false;

    // One exchange. Answers the result, and puts the data behind it into `answer`.
    int exchange(usb::Request request, const char* data, size_t length, int timeout,
                 std::vector<char>& answer);
    int exchange(usb::Request request)
    {
        std::vector<char> nothing;
        return exchange(request, nullptr, 0, board::limits::SocketGrace, nothing);
    }
    int gone(int error)
    {
        if (socket >= 0)
            close(socket);
        socket = -1;
        return failed(error);
    }
};

int usb_dev_handle::exchange(usb::Request request, const char* data, size_t length, int timeout,
                             std::vector<char>& answer)
{
    if (socket < 0)
        return failed(ENODEV);
    usb::RequestHeader header{request, uint32_t(length), uint32_t(std::max(timeout, 0))};
    std::vector<char> message(sizeof header);
    std::memcpy(message.data(), &header, sizeof header);
    if (data)
        message.insert(message.end(), data, data + length);
    if (send(socket, message.data(), message.size(), MSG_NOSIGNAL) != ssize_t(message.size()))
        return gone(ENODEV);
    // The board keeps the time-out; a board that does not is stuck, and a late answer to this request
    // must not be taken for the answer to another.
    pollfd waiting{socket, POLLIN, 0};
    int ready;
    do
        ready = poll(&waiting, 1, timeout > 0 ? timeout + board::limits::SocketGrace : -1);
    while (ready < 0 && errno == EINTR);
    if (ready <= 0)
        return gone(ETIMEDOUT);
    message.resize(sizeof(usb::ResponseHeader) + board::limits::BulkTransfer);
    ssize_t got = recv(socket, message.data(), message.size(), 0);
    if (got < ssize_t(sizeof(usb::ResponseHeader)))
        return gone(ENODEV);
    usb::ResponseHeader response;
    std::memcpy(&response, message.data(), sizeof response);
    answer.assign(message.begin() + sizeof response, message.begin() + got);
    return response.result < 0 ? failed(-response.result) : response.result;
}

struct usb_bus* usb_busses = nullptr;

extern "C" {

void usb_init(void) {}

void usb_set_debug(int) {}

int usb_find_busses(void)
{
    bool first = !usb_busses;
    usb_busses = &theBus().bus;
    return first ? 1 : 0;
}

int usb_find_devices(void)
{
    Bus& bus = theBus();
    int changes = 0;
    std::vector<std::string> paths = socketPaths();
    for (const std::string& path : paths) {
        auto known = std::find_if(bus.adapters.begin(), bus.adapters.end(),
                                  [&](const Adapter& adapter) { return adapter.path == path; });
        int socket = connectTo(path);
        bool present = socket >= 0;
        if (present)
            close(socket);
        if (known != bus.adapters.end()) {
            changes += known->present != present;
            known->present = present;
        } else if (present) {
            bus.adapters.emplace_back(path, unsigned(bus.adapters.size() + 1));
            ++changes;
        }
    }
    chain(bus);
    return changes;
}

struct usb_bus* usb_get_busses(void)
{
    return usb_busses;
}

usb_dev_handle* usb_open(struct usb_device* device)
{
    for (const Adapter& adapter : theBus().adapters) {
        if (&adapter.device != device)
            continue;
        int socket = connectTo(adapter.path);
        if (socket < 0)
            return nullptr;
        auto* handle = new usb_dev_handle;
        handle->socket = socket;
        return handle;
    }
    failed(ENODEV);
    return nullptr;
}

int usb_close(usb_dev_handle* dev)
{
    if (dev->socket >= 0)
        close(dev->socket);
    delete dev;
    return 0;
}

int usb_get_string_simple(usb_dev_handle* dev, int index, char* buf, size_t buflen)
{
    std::vector<char> texts;
    int result = dev->exchange(usb::Request::Describe, nullptr, 0, board::limits::SocketGrace, texts);
    if (result < 0)
        return result;
    texts.push_back(0);
    texts.push_back(0);
    const char* text = texts.data();
    if (index == ProductString)
        text += std::strlen(text) + 1;
    else if (index != SerialNumberString)
        return failed(EINVAL);
    if (!buflen)
        return failed(EINVAL);
    size_t count = std::min(std::strlen(text), buflen - 1);
    std::memcpy(buf, text, count);
    buf[count] = 0;
    return int(count);
}

int usb_set_configuration(usb_dev_handle* dev, int configuration)
{
    if (dev->socket < 0)
        return failed(ENODEV);
    return configuration == 1 ? 0 : failed(EINVAL);
}

int usb_claim_interface(usb_dev_handle* dev, int interface)
{
    if (interface != 0)
        return failed(EINVAL);
    int result = dev->exchange(usb::Request::Claim);
    dev->claimed = result >= 0;
    return result;
}

int usb_release_interface(usb_dev_handle* dev, int interface)
{
    if (interface != 0 || !dev->claimed)
        return failed(EINVAL);
    dev->claimed = false;
    return dev->exchange(usb::Request::Release);
}

int usb_set_altinterface(usb_dev_handle* dev, int alternate)
{
    if (dev->socket < 0)
        return failed(ENODEV);
    return alternate == 0 ? 0 : failed(EINVAL);
}

int usb_bulk_write(usb_dev_handle* dev, int ep, const char* bytes, int size, int timeout)
{
    if (ep != usb::WriteEndpoint || !dev->claimed || size < 0)
        return failed(EINVAL);
    std::vector<char> nothing;
    int written = 0;
    do {
        size_t piece = std::min(size_t(size - written), board::limits::BulkTransfer);
        int result = dev->exchange(usb::Request::Write, bytes + written, piece, timeout, nothing);
        if (result < 0)
            return result;
        written += result;
    } while (written < size);
    return written;
}

int usb_bulk_read(usb_dev_handle* dev, int ep, char* bytes, int size, int timeout)
{
    if (ep != usb::ReadEndpoint || !dev->claimed || size < 0)
        return failed(EINVAL);
    int total = 0;
    while (total < size) {
        size_t piece = std::min(size_t(size - total), board::limits::BulkTransfer);
        std::vector<char> data;
        int result = dev->exchange(usb::Request::Read, nullptr, piece, timeout, data);
        if (result < 0)
            return total ? total : result;
        size_t count = std::min(data.size(), piece);
        std::copy_n(data.begin(), count, bytes + total);
        total += int(count);
        if (count < piece)
            break;
    }
    return total;
}

int usb_reset(usb_dev_handle* dev)
{
    return dev->exchange(usb::Request::Reset);
}

char* usb_strerror(void)
{
    return lastError.data();
}

} // extern "C"
