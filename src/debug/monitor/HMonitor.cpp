#include "debug/monitor/HMonitor.h"

HMonitor::HMonitor(int capabilities, const char* name, TargetInterfaceHelperFunctions* helpers)
    : ZOFFTargetInterface(capabilities, name, helpers)
{
}
