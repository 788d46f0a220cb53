#include "maxq30/jtag/MAXQ30TetherTargetInterface.h"

#include "maxq30/jtag/USBDeviceList.h"
#include "maxq30/jtag/UsbTetherDataLink.h"
#include "maxq30/jtag/maxqd_tether_usb.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "support/HException.h"
#include "target/download/TargetInterfaceHelperFunctions.h"

MAXQ30TetherTargetInterface::MAXQ30TetherTargetInterface(TargetInterfaceHelperFunctions* helpers)
    : MAXQ30JTAGTargetInterface("Tether Pro", helpers),
      m_jtagDividerClass("jtagDivider", PropertyClass::IntegerRange, "1", QString(), "JTAG",
                         "JTAG Clock Divider", "The amount to divide the JTAG clock frequency."),
      m_jtagDivider(&m_jtagDividerClass)
{
    m_jtagDividerClass.setRange(1, 255);
}

void MAXQ30TetherTargetInterface::connect(bool reset)
{
    checkSettings();
    unsigned flags = unsigned(checkedInteger(m_jtagDivider)) << 8 & 0xFF00;
    closeLink();
    MAXQD_initTetherUSBDriver(&m_driver);
    USBDeviceList tethers = USBDeviceList::enumerateDevices().findById(TetherVendor, TetherProduct);
    if (tethers.empty())
        throw HException("No USB Tethers are connected");
    if (!m_driver.open(&m_driver, &tethers.front(), flags, nullptr))
        throw HException("Cannot open target interface");
    MAXQ30JTAGTargetInterface::connect(reset);
}

void MAXQ30TetherTargetInterface::getProperties(PropertyValueList& list)
{
    list.appendUnique(&m_jtagDivider);
    MAXQ30JTAGTargetInterface::getProperties(list);
}
