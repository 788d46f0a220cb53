// The USB adapter, with the calls of the USB library answered here: the linker takes these before the
// library's own.
#include "maxq30/FakeDevice.h"
#include "maxq30/jtag/MAXQ30TetherTargetInterface.h"
#include "maxq30/jtag/USBDeviceList.h"
#include "maxq30/jtag/UsbTetherDataLink.h"
#include "maxq30/jtag/maxqd.h"
#include "maxq30/jtag/maxqd_tether_usb.h"
#include "project/PropertyValue.h"
#include "support/HException.h"
#include "target/FakeTarget.h"

#include <cstring>
#include <usb.h>

struct usb_dev_handle {
    struct usb_device* device;
};

namespace {

// One bus of devices, and the traffic of the one that is open.
struct Bus {
    struct Device {
        unsigned short vendor, product;
        std::string serial;
        bool opens = true;
    };
    explicit Bus(std::vector<Device> list) : devices(std::move(list)), entries(devices.size())
    {
        current = this;
        endpoints[0].bEndpointAddress = 0x83;
        endpoints[1].bEndpointAddress = 0x04;
        endpoints[2].bEndpointAddress = 0x85;
        setting.bNumEndpoints = 3;
        setting.endpoint = endpoints;
        interface.num_altsetting = 1;
        interface.altsetting = &setting;
        configuration.bConfigurationValue = 7;
        configuration.bNumInterfaces = 1;
        configuration.interface = &interface;
        for (size_t i = 0; i < devices.size(); ++i) {
            entries[i] = {};
            entries[i].descriptor.idVendor = devices[i].vendor;
            entries[i].descriptor.idProduct = devices[i].product;
            entries[i].descriptor.iSerialNumber = devices[i].serial.empty() ? 0 : 1;
            entries[i].descriptor.iProduct = 2;
            entries[i].config = &configuration;
            entries[i].next = i + 1 < devices.size() ? &entries[i + 1] : nullptr;
        }
        bus.devices = entries.empty() ? nullptr : entries.data();
    }
    ~Bus() { EXPECT_EQ(openHandles, 0) << "devices left open"; }

    const Device& of(usb_dev_handle* handle) const
    {
        return devices[size_t(handle->device - entries.data())];
    }
    std::string take() { return std::exchange(log, {}); }

    std::vector<Device> devices;
    std::vector<struct usb_device> entries;
    struct usb_bus bus = {};
    struct usb_endpoint_descriptor endpoints[3] = {};
    struct usb_interface_descriptor setting = {};
    struct usb_interface interface = {};
    struct usb_config_descriptor configuration = {};
    int openHandles = 0;
    int refuseConfiguration = 0, refuseClaim = 0;
    std::string log;     // of transfers: endpoint, direction, bytes or count, time-out
    std::string answers; // bytes to be read
    int writeResult = 0; // instead of the count: below 0 an error, above 0 bytes taken too few
    static Bus* current;
};
Bus* Bus::current;

std::string hex(const char* bytes, int count)
{
    std::string text;
    char two[3];
    for (int i = 0; i < count && i < 8; ++i) {
        snprintf(two, sizeof two, "%02x", static_cast<unsigned char>(bytes[i]));
        text += two;
    }
    return count > 8 ? text + ".." + std::to_string(count) : text;
}

std::string failureWithHint(const std::function<void()>& body)
{
    try {
        body();
    } catch (const HException& failure) {
        return failure.message() + (failure.hint().empty() ? "" : " / " + failure.hint());
    }
    return "no failure";
}

const std::vector<Bus::Device> OneTether = {{0x1234, 0x3030, "other"}, {0x1209, 0x3030, "T1"}};

constexpr char SessionStart[] = "w4:f8 w4:f8 w4:f9 w4:f9 w4:f9 w4:fa w4:80 ";

} // namespace

extern "C" {
void usb_init(void) {}
int usb_find_busses(void)
{
    return Bus::current->devices.empty() ? 0 : 1;
}
int usb_find_devices(void)
{
    return int(Bus::current->devices.size());
}
struct usb_bus* usb_get_busses(void)
{
    return &Bus::current->bus;
}
usb_dev_handle* usb_open(struct usb_device* device)
{
    usb_dev_handle handle{device};
    if (!Bus::current->of(&handle).opens)
        return nullptr;
    ++Bus::current->openHandles;
    return new usb_dev_handle(handle);
}
int usb_close(usb_dev_handle* handle)
{
    --Bus::current->openHandles;
    delete handle;
    return 0;
}
int usb_get_string_simple(usb_dev_handle* handle, int index, char* buffer, size_t size)
{
    std::string text = index == 1 ? Bus::current->of(handle).serial : "Tether";
    if (text == "mute")
        return -1;
    EXPECT_EQ(size, 256u);
    strncpy(buffer, text.c_str(), size);
    return int(text.size());
}
int usb_set_configuration(usb_dev_handle*, int configuration)
{
    EXPECT_EQ(configuration, 7);
    return Bus::current->refuseConfiguration;
}
int usb_claim_interface(usb_dev_handle*, int interface)
{
    EXPECT_EQ(interface, 0);
    return Bus::current->refuseClaim;
}
int usb_release_interface(usb_dev_handle*, int)
{
    Bus::current->log += "release ";
    return 0;
}
int usb_reset(usb_dev_handle*)
{
    Bus::current->log += "reset ";
    return 0;
}
char* usb_strerror(void)
{
    static char text[] = "No such device";
    return text;
}
int usb_bulk_write(usb_dev_handle*, int endpoint, const char* bytes, int count, int timeout)
{
    EXPECT_EQ(timeout, 10000);
    Bus::current->log += "w" + std::to_string(endpoint) + ":" + hex(bytes, count) + " ";
    return Bus::current->writeResult < 0 ? Bus::current->writeResult : count - Bus::current->writeResult;
}
int usb_bulk_read(usb_dev_handle*, int endpoint, char* bytes, int count, int timeout)
{
    EXPECT_EQ(timeout, 10000);
    EXPECT_EQ(endpoint, 0x83);
    std::string& answers = Bus::current->answers;
    int moved = std::min(count, int(answers.size()));
    memcpy(bytes, answers.data(), size_t(moved));
    answers.erase(0, size_t(moved));
    Bus::current->log += "r" + std::to_string(count) + " ";
    return moved;
}
} // extern "C"

TEST(USBDeviceList, FindsDevicesByIdAndSerialNumber)
{
    Bus bus({{0x1209, 0x3030, "A"}, {0x1209, 0x3030, ""}, {0x1209, 0x3030, "C", false}, {0x1, 0x2, "mute"}});
    USBDeviceList all = USBDeviceList::enumerateDevices();
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[0].serialNumber, "A");
    EXPECT_EQ(all[0].description, "Tether");
    EXPECT_EQ(all[2].serialNumber, "") << "a device that cannot be opened is listed without texts";
    EXPECT_EQ(all[2].description, "");
    EXPECT_EQ(all[3].serialNumber, "");
    USBDeviceList tethers = all.findById(0x1209, 0x3030);
    EXPECT_EQ(tethers.size(), 3u);
    EXPECT_EQ(tethers.findBySerial("A").size(), 1u);
    EXPECT_EQ(tethers.findBySerial("").size(), 2u);
    tethers += tethers;
    EXPECT_EQ(tethers.size(), 6u);
    EXPECT_EQ(tethers[3].serialNumber, "A");
}

TEST(USBLink, OpensTheWantedDeviceAndLetsGoOfIt)
{
    Bus bus({{0x1209, 0x3030, "A"}, {0x1209, 0x3030, ""}});
    {
        UsbTetherDataLink link({0x1209, 0x3030, "", ""});
        link.reenumerateMe();
        EXPECT_EQ(bus.openHandles, 1);
    }
    EXPECT_EQ(bus.take(), "reset release ");
    EXPECT_EQ(failureWithHint([] {
                  UsbTetherDataLink link({0x1209, 0x3030, "B", ""});
              }),
              "cannot find USB device");
    bus.refuseClaim = -16;
    EXPECT_EQ(failureWithHint([] {
                  UsbTetherDataLink link({0x1209, 0x3030, "A", ""});
              }),
              "cannot claim USB interface / No such device");
    bus.refuseConfiguration = -16;
    EXPECT_EQ(failureWithHint([] {
                  UsbTetherDataLink link({0x1209, 0x3030, "A", ""});
              }),
              "cannot set USB configuration / No such device");
    bus.entries[0].config = nullptr;
    EXPECT_EQ(failureWithHint([] {
                  UsbTetherDataLink link({0x1209, 0x3030, "A", ""});
              }),
              "cannot get USB descriptors");
    EXPECT_EQ(bus.take(), "") << "an interface that was not claimed is not released";
}

TEST(USBAdapter, EachOperationHasItsTraffic)
{
    Bus bus(OneTether);
    USBDevice device{0x1209, 0x3030, "T1", ""};
    _maxqd_t maxqd;
    MAXQD_initTetherUSBDriver(&maxqd);
    ASSERT_EQ(maxqd.open(&maxqd, &device, 0x100, nullptr), 1);
    EXPECT_EQ(bus.take(), SessionStart);
    maxqd.trst(&maxqd);
    maxqd.setNRST(&maxqd, 0);
    maxqd.setNRST(&maxqd, 5);
    maxqd.shiftInIR(&maxqd, 2);
    maxqd.setSystemProgrammingBits(&maxqd, 1);
    EXPECT_EQ(bus.take(), "w4:82 w4:8300 w4:8301 w4:8402 w4:8a01 ");

    unsigned char status, bytes[3000] = {};
    bus.answers = "\3>";
    EXPECT_EQ(maxqd.shiftInOutDR(&maxqd, 0x5A, &status), '>');
    EXPECT_EQ(status, 3);
    EXPECT_EQ(bus.take(), "w4:855a r2 ");
    maxqd.multiShiftInDR8(&maxqd, bytes, 3000);
    EXPECT_EQ(bus.take(), "w4:86b80b0000 w4:0000000000000000..1024 w4:0000000000000000..1024 "
                          "w4:0000000000000000..952 ");
    bus.answers = std::string(754, 'm');
    maxqd.multiShiftOutDR8(&maxqd, bytes, 754);
    EXPECT_EQ(bus.take(), "w4:87f2020000 r64 r64 r64 r64 r64 r64 r64 r64 r64 r64 r64 r50 ");
    EXPECT_EQ(bytes[753], 'm');
    bus.answers = "ab";
    maxqd.loaderRead(&maxqd, bytes, 2);
    EXPECT_EQ(bus.take(), "w4:8802000000 r2 ");
    bus.answers = "\7";
    EXPECT_EQ(maxqd.loaderWrite(&maxqd, bytes, 2), 7);
    EXPECT_EQ(bus.take(), "w4:8902000000 w4:6162 r1 ");
    EXPECT_EQ(maxqd.setTimeout(&maxqd, 5), 0u);

    EXPECT_EQ(failureWithHint([&] { maxqd.setTDI(&maxqd, 1); }), "setTDI not implemented");
    EXPECT_EQ(failureWithHint([&] { maxqd.getTDO(&maxqd); }), "getTDO not implemented");

    bus.answers = "\3";
    EXPECT_EQ(failureWithHint([&] { maxqd.shiftInOutDR(&maxqd, 0, &status); }), "read operation failed");
    bus.answers = std::string(65, 'm');
    EXPECT_EQ(failureWithHint([&] { maxqd.multiShiftOutDR8(&maxqd, bytes, 128); }), "read operation failed");
    bus.writeResult = 1;
    EXPECT_EQ(failureWithHint([&] { maxqd.setNRST(&maxqd, 1); }),
              "hardware error: target JTAG adapter data link write timed out");
    bus.writeResult = -19;
    EXPECT_EQ(failureWithHint([&] { maxqd.trst(&maxqd); }), "write operation failed / No such device");
    EXPECT_EQ(maxqd.close(&maxqd), 1);

    // A session that does not start leaves no link.
    EXPECT_EQ(failureWithHint([&] { maxqd.open(&maxqd, &device, 0x100, nullptr); }),
              "write operation failed / No such device");
    EXPECT_EQ(maxqd.link, nullptr);
}

TEST(USBTarget, ConnectsToTheFirstAdapter)
{
    FakeHelpers helpers;
    MAXQ30TetherTargetInterface target(&helpers);
    {
        Bus none({{0x1234, 0x3030, "other"}});
        EXPECT_EQ(failureWithHint([&] { target.connect(true); }), "No USB Tethers are connected");
        EXPECT_EQ(none.take(), "");
    }
    Bus bus({{0x1209, 0x3030, "T1"}, {0x1209, 0x3030, "T2"}});
    PropertyValueList list(false);
    target.getProperties(list);
    ASSERT_EQ(list.first()->propertyClass()->saveName(), "jtagDivider");
    list.first()->setValue(QStringLiteral("0"));
    EXPECT_EQ(failureWithHint([&] { target.connect(true); }),
              "JTAG Clock Divider must be a number from 1 to 255, not \"0\"");
    list.first()->setValue(QStringLiteral("2"));

    // A device that does not answer stays unconnected, and the next try opens the adapter anew.
    bus.answers = std::string(2, 0);
    EXPECT_EQ(failureWithHint([&] { target.connect(true); }).substr(0, 36),
              "The JTAG interface is not responding");
    EXPECT_FALSE(target.isConnected());
    bus.take();
    bus.answers = std::string("\0\xB4\0\x85\0\1\0\xFF", 8);
    target.connect(true);
    EXPECT_TRUE(target.isConnected());
    EXPECT_EQ(bus.take(), std::string("release ") + SessionStart +
                              "w4:82 w4:8407 w4:855a r2 w4:8542 r2 w4:8500 r2 w4:857f r2 ");
    target.disconnect();
    EXPECT_EQ(bus.take(), "release ");
}
