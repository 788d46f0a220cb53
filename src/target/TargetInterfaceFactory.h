// The targets that this tool knows, by class name, short name and description.
#pragma once

#include <vector>

class TargetInterface;

struct TargetInterfaceInfo {
    const char* className;
    const char* shortName; // what -target takes; may be null
    const char* description;
    const char* name() const { return shortName ? shortName : className; }
};

class TargetInterfaceFactory {
public:
    virtual ~TargetInterfaceFactory() = default;

    // Made on first use and never destroyed; defined one floor up, where the targets are.
    static TargetInterfaceFactory* instance();

    // A new target, owned by the caller, by exact class name; null for any other name.
    virtual TargetInterface* create(const char* name);
    // Null when no row has that short name.
    const char* classnameFromShortname(const char* shortName) const;
    const std::vector<TargetInterfaceInfo>& targets() const { return m_targets; }

protected:
    std::vector<TargetInterfaceInfo> m_targets;
};
