// The option table of the command line, its handlers, and the texts that list things: usage, targets,
// file types, properties.

#include "driver/System.h"
#include "driver/session/Release.h"
#include "driver/session/StandardOutput.h"
#include "loadfile/LoadFileFactory.h"
#include "project/ProjectTemplates.h"
#include "support/Numbers.h"
#include "target/TargetInterfaceFactory.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace {

QString fromWord(const char* word)
{
    return QString::fromLocal8Bit(word);
}

} // namespace

// Rows stand in the order of the usage text; a null usage line is left out of it.
struct System::OptionRow {
    const char* text;
    bool hasArgument; // the next word
    void (System::*handler)(const char* option, const char* value);
    const char* usage;
};

const System::OptionRow System::g_options[] = {
    {"-break", true, &System::breakOption, "  -break 'symbol'          Stop at symbol\n"},
    {"-config", true, &System::configOption, "  -config 'config'         Use build configuration 'config'\n"},
    {"-debug", false, &System::debugOption, "  -debug                   Do debugging\n"},
    {"-filetype", true, &System::fileTypeOption, "  -filetype 'type'         Specify the load file type\n"},
    {"-help", false, &System::helpOption, "  -help                    Print options help\n"},
    {"-listfiletypes", false, &System::listFileTypesOption,
     "  -listfiletypes           List all the supported file types\n"},
    {"-listprops", false, &System::listTargetPropertiesOption,
     "  -listprops               List target properties of selected target\n"},
    {"-listtargets", false, &System::listTargetsOption,
     "  -listtargets             List all the supported target interfaces\n"},
    {"-loadaddress", true, &System::loadAddressOption,
     "  -loadaddress 'address'   Specify the address at which to load the load file\n"},
    {"-nodisconnect", false, &System::noDisconnectOption,
     "  -nodisconnect            Do not disconnect target interface when finished\n"},
    {"-nodownload", false, &System::noDownloadOption,
     "  -nodownload              Do not carry out download\n"},
    {"-noverify", false, &System::noVerifyOption,
     "  -noverify                Do not carry out verification of download\n"},
    {"-packagesdir", true, &System::onPackagesDirOption,
     "  -packagesdir 'directory' Set $(PackagesDir) to be 'directory'\n"},
    {"-project", true, &System::projectOption,
     "  -project 'name'          Use project 'name' contained within solution file\n"},
    {"-quiet", false, &System::quietOption,
     "  -quiet                   Do not output any progress messages\n"},
    {"-script", true, &System::scriptOption,
     "  -script 'file'           Load 'file' containing debug commands\n"},
    {"-serve", false, &System::serveOption, "  -serve                   Serve Anvil debug I/O operations\n"},
    {"-setprop", true, &System::targetPropertyOption,
     "  -setprop 'prop'='val'    Set a target property 'prop' to 'val'\n"},
    {"-solution", true, &System::solutionOption,
     "  -solution 'file'         Use Anvil solution file 'file'\n"},
    {"-benchdir", true, &System::onBenchDirOption,
     "  -benchdir 'directory'   Set $(BenchDir) to be 'directory'\n"},
    {"-target", true, &System::targetOption, "  -target 'target'         The target interface to use\n"},
    {"-templatesfile", true, &System::onProjectTemplatesFileOption,
     "  -templatesfile 'name'    Get project templates from file 'name'\n"},
    {"-verbose", false, &System::verboseOption, "  -verbose                 Produce verbose output\n"},
    {"-BenchDir", true, &System::onBenchDirOption, nullptr},
    {"-entry", true, &System::entryOption, nullptr},
    {"-nodifferential", false, &System::noDifferentialOption, nullptr},
};

System::System()
{
    for (const OptionRow& row : g_options)
        if (row.hasArgument)
            onOptionGetArgAndCall(row.text, false, row.handler);
        else
            onOptionCall(row.text, row.handler);
    scriptSystem = &m_scriptSystem;
    m_console.installScriptObject(m_scriptSystem.context());
    m_wscript.installScriptObject(m_scriptSystem.context());
}

void System::onArgument(const char* word)
{
    (m_serve ? m_targetArguments : m_loadFileNames).append(fromWord(word));
}

void System::targetOption(const char*, const char* value)
{
    m_targetName = fromWord(value);
}

void System::targetPropertyOption(const char*, const char* value)
{
    m_propertySettings.append(fromWord(value));
}

void System::listTargetPropertiesOption(const char*, const char*)
{
    m_listProperties = true;
}

void System::noDownloadOption(const char*, const char*)
{
    m_download = false;
}

void System::noVerifyOption(const char*, const char*)
{
    m_verify = false;
}

void System::noDifferentialOption(const char*, const char*)
{
    m_loader.setEnableDifferentialDownload(false);
}

void System::noDisconnectOption(const char*, const char*)
{
    m_disconnect = false;
}

void System::serveOption(const char*, const char*)
{
    m_serve = true;
}

void System::debugOption(const char*, const char*)
{
    m_debug = true;
}

void System::scriptOption(const char*, const char* value)
{
    m_scriptFile = fromWord(value);
}

void System::breakOption(const char*, const char* value)
{
    m_breakSymbol = fromWord(value);
}

void System::quietOption(const char*, const char*)
{
    m_quiet = true;
}

void System::verboseOption(const char*, const char*)
{
    m_verbose = true;
}

void System::helpOption(const char*, const char*)
{
    m_help = true;
}

void System::solutionOption(const char*, const char* value)
{
    m_solutionFile = fromWord(value);
}

void System::projectOption(const char*, const char* value)
{
    m_projectName = fromWord(value);
}

void System::configOption(const char*, const char* value)
{
    m_configuration = fromWord(value);
}

void System::fileTypeOption(const char*, const char* value)
{
    m_fileType = fromWord(value);
}

// A number in C notation, or a symbol, which the debugger looks up.
void System::entryOption(const char*, const char* value)
{
    char* end = nullptr;
    errno = 0;
    unsigned long address = strtoul(value, &end, 0);
    if (!isdigit(static_cast<unsigned char>(*value)))
        m_entry = fromWord(value);
    else if (*end != 0 || errno != 0 || address > 0xFFFFFFFFul)
        error() << "invalid entry point " << value << "\n";
    else
        m_entry = toHexString(uint32_t(address));
}

// A text that is no address is refused here; a file that needs one then says what is missing.
void System::loadAddressOption(const char*, const char* value)
{
    char* end = nullptr;
    errno = 0;
    unsigned long address = strtoul(value, &end, 0);
    if (end == value || *end != 0 || errno != 0 || address > 0xFFFFFFFFul)
        error() << "invalid load address " << value << "\n";
    else
        m_loader.setLoadAddress(unsigned(address));
}

void System::onBenchDirOption(const char*, const char* value)
{
    m_benchDirectory = fromWord(value);
}

void System::onPackagesDirOption(const char*, const char* value)
{
    m_packagesDirectory = fromWord(value);
}

void System::onProjectTemplatesFileOption(const char*, const char* value)
{
    templatesFile = fromWord(value);
}

void System::listTargetsOption(const char*, const char*)
{
    QString text = QStringLiteral("Target Interfaces:\n\n");
    for (const TargetInterfaceInfo& target : TargetInterfaceFactory::instance()->targets())
        text += QString::asprintf("  %-21s %s\n", target.name(), target.description);
    StandardOutput::write(text + QLatin1Char('\n'));
}

void System::listFileTypesOption(const char*, const char*)
{
    QString text = QStringLiteral("File Types:\n\n");
    for (const LoadFileTypeInfo& type : LoadFileFactory::instance()->types())
        text += QString::asprintf("  %-21s %s File\n", type.name, type.description);
    StandardOutput::write(text + QLatin1Char('\n'));
}

void System::listProperties()
{
    QString text = QStringLiteral("\"%1\" Properties:\n\n").arg(m_targetName);
    PropertyValueList properties(false);
    m_loader.targetInterface()->getProperties(properties);
    for (PropertyValue* property : properties) {
        const PropertyClass* info = property->propertyClass();
        if (info->readOnly() || !property->visible())
            continue;
        text += QStringLiteral("  Name:        %1\n  Description: %2\n  Value      : %3\n\n")
                    .arg(info->shortDescription(), info->longDescription(), property->toString());
    }
    StandardOutput::write(text);
}

void System::printUsage() const
{
    RELEASE_printVersionToStderr(m_programName.toLocal8Bit().constData());
    fputs("\nUsage: qburn [options] [files...]\n\n"
          "       qburn [options] [files...] -serve [arguments...]\n\nOptions:\n",
          stderr);
    for (const OptionRow& row : g_options)
        if (row.usage)
            fputs(row.usage, stderr);
    fputs("\nExamples\n--------\n\n", stderr);
    const auto& targets = TargetInterfaceFactory::instance()->targets();
    const char* target = targets.empty() ? "'target'" : targets.front().name();
    fprintf(stderr, "  Download a Anvil project using target interface \"%s\":\n\n", target);
    fprintf(stderr, "    qburn -target %s -solution MySolution.kvp -project MyProject -config Debug\n\n",
            target);
    fputs("  Download MyApp.s19 using the target settings from a Anvil project:\n\n", stderr);
    fprintf(stderr,
            "    qburn -target %s -solution MySolution.kvp -project MyProject -config Release MyApp.s19\n\n",
            target);
    if (!targets.empty()) {
        fprintf(stderr, "  Download MyApp.hex using target interface \"%s\":\n\n", target);
        fprintf(stderr, "    qburn -target %s MyApp.hex\n\n", target);
    }
}
