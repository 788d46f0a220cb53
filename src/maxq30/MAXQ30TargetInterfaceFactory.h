// The targets of this tool: the serial and the USB adapter and the simulator.
#pragma once

#include "target/TargetInterfaceFactory.h"

class MAXQ30TargetInterfaceFactory : public TargetInterfaceFactory {
public:
    MAXQ30TargetInterfaceFactory();
    TargetInterface* create(const char* name) override;
};
