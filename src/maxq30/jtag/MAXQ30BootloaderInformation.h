// What a device's bootloader reported of itself, and the properties that show it to a user.
#pragma once

#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "target/TargetInterfacePropertyValue.h"

#include <cstdint>
#include <deque>

// The reports as they come from the bootloader; 0 where nothing was reported.
struct BootloaderReport {
    uint16_t supportedCommands = 0; // bit n: command family n
    unsigned fixedCodeLength = 0;   // words that a Fixed command writes to code memory
    unsigned fixedDataLength = 0;   // words that a Fixed command writes to data memory
    unsigned romVersionMinor = 0;
    unsigned romVersionMajor = 0;
    unsigned codeSize = 0; // the last word address
    unsigned dataSize = 0;

    bool supports(int family) const { return supportedCommands >> family & 1; }
};

class MAXQ30BootloaderInformation {
public:
    // Command families, each with a fixed-length counterpart.
    enum Family {
        VariableLoad = 1,
        VariableDump,
        VariableCRC,
        VariableVerify,
        VariableLoadAndVerify,
        VariableErase,
        FixedLoad = 9,
        FixedDump,
        FixedCRC,
        FixedVerify,
        FixedLoadAndVerify,
        FixedErase,
    };

    MAXQ30BootloaderInformation();

    void set(const BootloaderReport& report);
    void forget() { m_report.supportedCommands = 0; }
    bool known() const { return m_report.supportedCommands != 0; }
    const BootloaderReport& report() const { return m_report; }
    // In the order in which they are listed.
    void getProperties(PropertyValueList& list);
    // The text of a property, by its name.
    QString text(const char* name) const;
    // "Supported" or "Not Supported".
    QString supported(int family) const;

private:
    struct Row;
    struct Entry {
        explicit Entry(const Row& row);
        const Row& row;
        PropertyClass propertyClass;
        TargetInterfacePropertyValue value;
    };
    static const Row Rows[];

    BootloaderReport m_report;
    std::deque<Entry> m_entries;
};
