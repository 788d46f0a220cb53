// A linked executable as a load file: its sections are made from the instructions of the module.
#pragma once

#include "loadfile/LoadFileInterface.h"
#include "support/Path.h"

#include <memory>

class ZOFFModule;
class ZOFFSection;

class ZOFFLoadFile : public LoadFileInterface {
public:
    // Takes the module from the cache. Throws HException for a file that cannot be read.
    explicit ZOFFLoadFile(const Path& path);
    ~ZOFFLoadFile() override;

    bool hasEntryPoint() const override { return false; }
    void setEntryPoint(unsigned long) override {} // the debugger's symbols know it
    unsigned long entryPoint() override { return 0; }
    bool hasLoadAddress() const override { return true; }
    void setLoadAddress(unsigned long) override {} // the addresses are linked in
    bool hasSymbols() override { return true; }

    ZOFFModule* module() const { return m_module; }

protected:
    // One load section for each run of bytes without a gap, under the section's name; EEPROM sections go
    // to the list of their own. Throws HException for a section that is too large or has bytes without
    // an address.
    bool createLoadFileSections() override;

private:
    void addSection(ZOFFSection* section, int64_t& total);

    ZOFFModule* m_module;
};
