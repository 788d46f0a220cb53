#include "target/download/TargetInterfaceHelperFunctions.h"

#include "support/Installed.h"

namespace {
constinit Installed<TargetInterfaceHelperFunctions> g_helpers("the session's TargetInterfaceHelperFunctions");
}

TargetInterfaceHelperFunctions* targetInterfaceHelperFunctions()
{
    return &g_helpers.get();
}

void installTargetInterfaceHelperFunctions(TargetInterfaceHelperFunctions& helpers)
{
    g_helpers.install(helpers);
}
