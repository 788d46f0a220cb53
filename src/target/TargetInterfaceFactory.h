// Makes targets by name. The factory in use knows those of the tool.
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

    // The factory in use, which is the program's to install before it asks for a target: it stands one
    // floor up, where the targets are.
    static TargetInterfaceFactory* instance();
    static void install(TargetInterfaceFactory& factory);

    // A new target, owned by the caller, by exact class name; null for any other name.
    virtual TargetInterface* create(const char* name);
    // Null when no row has that short name.
    const char* classnameFromShortname(const char* shortName) const;
    const std::vector<TargetInterfaceInfo>& targets() const { return m_targets; }

protected:
    std::vector<TargetInterfaceInfo> m_targets;
};
