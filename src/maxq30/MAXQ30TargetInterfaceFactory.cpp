#include "maxq30/MAXQ30TargetInterfaceFactory.h"

#include "maxq30/jtag/MAXQ30Serial2JTAGTargetInterface.h"
#include "maxq30/jtag/MAXQ30TetherTargetInterface.h"
#include "maxq30/sim/MAXQ30Simulator.h"
#include "target/TargetInterface.h"
#include "target/download/TargetInterfaceHelperFunctions.h"

#include <cstring>

namespace {

using Make = TargetInterface* (*)(TargetInterfaceHelperFunctions*);

template <class Target> TargetInterface* make(TargetInterfaceHelperFunctions* helpers)
{
    return new Target(helpers);
}

struct Row {
    TargetInterfaceInfo info;
    Make make;
};

const Row Rows[] = {
    {{"MAXQ30Serial2JTAGTargetInterface", "serial_jtag", "MAXQ Serial to JTAG"},
     make<MAXQ30Serial2JTAGTargetInterface>},
    {{"MAXQ30TetherTargetInterface", "usb_th", "Tether Pro"}, make<MAXQ30TetherTargetInterface>},
    {{"MAXQ30Simulator", "sim", "MAXQ30 Core Simulator"}, make<MAXQ30Simulator>},
};

} // namespace

MAXQ30TargetInterfaceFactory::MAXQ30TargetInterfaceFactory()
{
    for (const Row& row : Rows)
        m_targets.push_back(row.info);
}

TargetInterface* MAXQ30TargetInterfaceFactory::create(const char* name)
{
    for (const Row& row : Rows)
        if (strcmp(row.info.className, name) == 0)
            return row.make(targetInterfaceHelperFunctions());
    return nullptr;
}
