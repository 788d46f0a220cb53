// A target that can be programmed from a module itself, for a host that holds one and no load file.
#pragma once

#include "target/TargetInterface.h"

class ZOFFModule;
class ZOFFSection;

class ZOFFTargetInterface : public TargetInterface {
public:
    using TargetInterface::TargetInterface;

    // Writes the sections that go into a load file to code memory.
    virtual void loadZOFFModule(ZOFFModule* module);
    // Throws HException "Section NAME is too big for target" when bytes have no memory.
    void checkZOFFModuleMemoryExists(ZOFFModule* module);

    // With `check` nothing is written; the memory is only asked whether it exists. Failures are reported
    // and then thrown on.
    void programModule(ZOFFModule* module, bool check);
    void programSection(ZOFFSection* section, bool check);
};
