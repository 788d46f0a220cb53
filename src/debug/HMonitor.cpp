#include "debug/HMonitor.h"

HMonitor::HMonitor(int capabilities, const char* name, TargetInterfaceHelperFunctions* helpers)
    : TargetInterface(capabilities, name, helpers)
{
}
