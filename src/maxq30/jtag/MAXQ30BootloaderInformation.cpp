#include "maxq30/jtag/MAXQ30BootloaderInformation.h"

#include "project/PropertyValue.h"

#include <cstring>

using Report = BootloaderReport;
using Information = MAXQ30BootloaderInformation;

namespace {

QString sizeText(unsigned bytes, unsigned reported)
{
    return reported ? QStringLiteral("%1 bytes").arg(bytes) : QStringLiteral("Not Reported");
}

// A memory's size is reported as its last word address.
QString memoryText(unsigned lastWord)
{
    return sizeText(2 * lastWord + 2, lastWord);
}

QString commandsText(const Report& r)
{
    return QString::asprintf("0x%04x", r.supportedCommands);
}

QString versionText(const Report& r)
{
    return QString::asprintf("%u.%02u", r.romVersionMajor, r.romVersionMinor);
}

} // namespace

// A row without a function shows whether a family is supported.
struct Information::Row {
    const char* name;
    const char* title;
    const char* help;
    QString (*text)(const Report&);
    int family = 0;
};

const Information::Row Information::Rows[] = {
    {"supportedCommands", "Supported Commands", "Supported commands bitmap returned by the bootloader.",
     commandsText},
    {"codeSize", "Code Size", "Code size of target device as reported by the bootloader.",
     [](const Report& r) { return memoryText(r.codeSize); }},
    {"dataSize", "Data Size", "Data size of target device as reported by the bootloader.",
     [](const Report& r) { return memoryText(r.dataSize); }},
    {"fixedCodeLength", "Fixed Code Length",
     "The data length Fixed commands support when writing to code memory.",
     [](const Report& r) { return sizeText(r.fixedCodeLength, r.fixedCodeLength); }},
    {"fixedDataLength", "Fixed Data Length",
     "The data length Fixed commands support when writing to data memory.",
     [](const Report& r) { return sizeText(r.fixedDataLength, r.fixedDataLength); }},
    {"variableLengthLoad", "Supported Commands: Load (Variable)",
     "Bootloader supports Family 1 commands (Load, Variable Length).", nullptr, VariableLoad},
    {"variableLengthDump", "Supported Commands: Dump (Variable)",
     "Bootloader supports Family 2 commands (Dump, Variable Length).", nullptr, VariableDump},
    {"variableLengthCRC", "Supported Commands: CRC (Variable)",
     "Bootloader supports Family 3 commands (CRC, Variable Length).", nullptr, VariableCRC},
    {"variableLengthVerify", "Supported Commands: Verify (Variable)",
     "Bootloader supports Family 4 commands (Verify, Variable Length).", nullptr, VariableVerify},
    {"variableLengthLoadAndVerify", "Supported Commands: Load and Verify (Variable)",
     "Bootloader supports Family 5 commands (Load And Verify, Variable Length).", nullptr,
     VariableLoadAndVerify},
    {"variableLengthErase", "Supported Commands: Erase (Variable)",
     "Bootloader supports Family 6 commands (Erase, Variable Length).", nullptr, VariableErase},
    {"fixedLengthLoad", "Supported Commands: Load (Fixed)",
     "Bootloader supports Family 9 commands (Load, Fixed Length).", nullptr, FixedLoad},
    {"fixedLengthDump", "Supported Commands: Dump (Fixed)",
     "Bootloader supports Family A commands (Dump, Fixed Length).", nullptr, FixedDump},
    {"fixedLengthCRC", "Supported Commands: CRC (Fixed)",
     "Bootloader supports Family B commands (CRC, Fixed Length).", nullptr, FixedCRC},
    {"fixedLengthVerify", "Supported Commands: Verify (Fixed)",
     "Bootloader supports Family C commands (Verify, Fixed Length).", nullptr, FixedVerify},
    {"fixedLengthLoadAndVerify", "Supported Commands: Load and Verify (Fixed)",
     "Bootloader supports Family D commands (Load And Verify, Fixed Length).", nullptr, FixedLoadAndVerify},
    {"fixedLengthErase", "Supported Commands: Erase (Fixed)",
     "Bootloader supports Family E commands (Erase, Fixed Length).", nullptr, FixedErase},
    {"romVersion", "ROM Version", "The ROM version number reported by the bootloader.", versionText},
};

Information::Entry::Entry(const Row& from)
    : row(from), propertyClass(QLatin1String(row.name), PropertyClass::String, QString(), QString(),
                               QStringLiteral("Bootloader Information"), QLatin1String(row.title),
                               QLatin1String(row.help)),
      value(&propertyClass)
{
    propertyClass.setReadOnly(true);
}

MAXQ30BootloaderInformation::MAXQ30BootloaderInformation()
{
    for (const Row& row : Rows)
        m_entries.emplace_back(row);
}

void MAXQ30BootloaderInformation::set(const BootloaderReport& report)
{
    m_report = report;
    for (Entry& entry : m_entries)
        entry.value.setPropertyValue(entry.row.text ? entry.row.text(report) : supported(entry.row.family));
}

void MAXQ30BootloaderInformation::getProperties(PropertyValueList& list)
{
    for (Entry& entry : m_entries)
        list.appendUnique(&entry.value);
}

QString MAXQ30BootloaderInformation::text(const char* name) const
{
    for (const Entry& entry : m_entries)
        if (!strcmp(entry.row.name, name))
            return entry.value.propertyValue();
    return {};
}

QString MAXQ30BootloaderInformation::supported(int family) const
{
    return m_report.supports(family) ? QStringLiteral("Supported") : QStringLiteral("Not Supported");
}
