#include "target/TargetInterfaceFactory.h"

#include "support/Installed.h"

#include <cstring>

namespace {
constinit Installed<TargetInterfaceFactory> g_factory("the TargetInterfaceFactory");
}

TargetInterfaceFactory* TargetInterfaceFactory::instance()
{
    return &g_factory.get();
}

void TargetInterfaceFactory::install(TargetInterfaceFactory& factory)
{
    g_factory.install(factory);
}

// The base knows no class of target, whatever the name.
TargetInterface* TargetInterfaceFactory::create(const char*)
{
    return nullptr;
}

const char* TargetInterfaceFactory::classnameFromShortname(const char* shortName) const
{
    for (const TargetInterfaceInfo& target : m_targets)
        if (target.shortName && strcmp(target.shortName, shortName) == 0)
            return target.className;
    return nullptr;
}
