// The target "Tether Pro": a device behind the USB adapter, the first one found.
#pragma once

#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "target/TargetInterfacePropertyValue.h"
#include "target/download/TargetInterfaceHelperFunctions.h"

class MAXQ30TetherTargetInterface : public MAXQ30JTAGTargetInterface {
public:
    explicit MAXQ30TetherTargetInterface(TargetInterfaceHelperFunctions* helpers);

    void connect(bool reset) override;
    void getProperties(PropertyValueList& list) override;

private:
    PropertyClass m_jtagDividerClass;
    TargetInterfacePropertyValue m_jtagDivider;
};
