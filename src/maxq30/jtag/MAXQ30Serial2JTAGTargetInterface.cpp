#include "maxq30/jtag/MAXQ30Serial2JTAGTargetInterface.h"

#include "maxq30/jtag/maxq_serial2jtag.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "support/HException.h"
#include "target/download/TargetInterfaceHelperFunctions.h"

MAXQ30Serial2JTAGTargetInterface::MAXQ30Serial2JTAGTargetInterface(TargetInterfaceHelperFunctions* helpers)
    : MAXQ30JTAGTargetInterface("Maxim Serial JTAG Adapter", helpers),
      m_portNameClass("portName", PropertyClass::String, "COM1", QString(), "Connection", "Port Name",
                      "The name of the serial port connected to the MAXQJTAG interface board."),
      m_portName(&m_portNameClass)
{
}

void MAXQ30Serial2JTAGTargetInterface::connect(bool reset)
{
    checkSettings();
    closeLink();
    MAXQD_initSerial2JTAGDriver(&m_driver);
    QByteArray port = m_portName.toString().toLatin1();
    try {
        if (!m_driver.open(&m_driver, port.data(), 0, nullptr))
            throw HException("Cannot open target interface");
    } catch (HException& failure) {
        failure.setHint("The serial port is \"" + port.toStdString() +
                        "\"; -setprop \"Port Name=PORT\" names another.");
        throw;
    }
    MAXQ30JTAGTargetInterface::connect(reset);
}

void MAXQ30Serial2JTAGTargetInterface::getProperties(PropertyValueList& list)
{
    list.appendUnique(&m_portName);
    MAXQ30JTAGTargetInterface::getProperties(list);
}
