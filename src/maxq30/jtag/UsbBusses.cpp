#include "maxq30/jtag/UsbBusses.h"

#include <algorithm>
#include <cstring>

std::string UsbHandle::text(int index) const
{
    constexpr int MaxText = 256;
    if (index == 0)
        return {};
    char buffer[MaxText] = {};
    int length = usb_get_string_simple(m_handle, index, buffer, sizeof buffer);
    return length > 0 ? std::string(buffer, strnlen(buffer, std::min(length, MaxText))) : std::string();
}

struct usb_bus* usbBusses()
{
    // The library tells how many busses came or went since it was last asked, so the numbers are summed
    // up: below 1 no bus was ever seen.
    static int seen = 0;
    seen += std::max(usb_find_busses(), 0);
    if (seen < 1)
        return nullptr;
    usb_find_devices();
    return usb_get_busses();
}
