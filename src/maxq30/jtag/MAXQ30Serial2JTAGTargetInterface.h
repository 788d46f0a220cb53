// The target "Maxim Serial JTAG Adapter": a device behind the adapter on a serial port.
#pragma once

#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "target/TargetInterfacePropertyValue.h"
#include "target/download/TargetInterfaceHelperFunctions.h"

class MAXQ30Serial2JTAGTargetInterface : public MAXQ30JTAGTargetInterface {
public:
    explicit MAXQ30Serial2JTAGTargetInterface(TargetInterfaceHelperFunctions* helpers);

    void connect(bool reset) override;
    void getProperties(PropertyValueList& list) override;

private:
    PropertyClass m_portNameClass;
    TargetInterfacePropertyValue m_portName;
};
