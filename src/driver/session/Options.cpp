#include "driver/session/Options.h"

#include "driver/session/Reporter.h"
#include "driver/session/SessionFace.h"
#include "loadfile/LoadFileFactory.h"
#include "support/Numbers.h"
#include "target/TargetInterfaceFactory.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <iostream>

namespace {

using Row = Options::Row;

QString fromWord(const char* word)
{
    return QString::fromLocal8Bit(word);
}

template <class... Cases> struct Overloaded : Cases... {
    using Cases::operator()...;
};

} // namespace

std::span<const Row> Options::table()
{
    static constexpr const char *Target = "Target", *Files = "Load files", *Project = "Projects",
                                *Work = "Download", *Run = "Running and debugging", *Output = "Output";
    static const Row rows[] = {
        {"-break", "'symbol'", "Stop at symbol", Run, &Options::breakSymbol},
        {"-config", "'config'", "Use build configuration 'config'", Project, &Options::configuration},
        {"-dap", nullptr, "Debug a program from an editor, on standard input and output", Run,
         Row::Flag{&Options::dap, true}, false},
        {"-debug", nullptr, "Do debugging", Run, Row::Flag{&Options::debug, true}},
        {"-filetype", "'type'", "Specify the load file type", Files, &Options::fileType},
        {"-help", nullptr, "Print options help", Output, Row::Flag{&Options::help, true}},
        {"-listfiletypes", nullptr, "List all the supported file types", Files, &Options::listFileTypes},
        {"-listprops", nullptr, "List target properties of selected target", Target,
         Row::Flag{&Options::listProperties, true}},
        {"-listtargets", nullptr, "List all the supported target interfaces", Target, &Options::listTargets},
        {"-loadaddress", "'address'", "Specify the address at which to load the load file", Files,
         &Options::setLoadAddress},
        {"-nodisconnect", nullptr, "Do not disconnect target interface when finished", Target,
         Row::Flag{&Options::disconnect, false}},
        {"-nodownload", nullptr, "Do not carry out download", Work, Row::Flag{&Options::download, false}},
        {"-noverify", nullptr, "Do not carry out verification of download", Work,
         Row::Flag{&Options::verify, false}},
        {"-packagesdir", "'directory'", "Set $(PackagesDir) to be 'directory'", Project,
         &Options::packagesDirectory},
        {"-project", "'name'", "Use project 'name' contained within solution file", Project,
         &Options::projectName},
        {"-quiet", nullptr, "Do not output any progress messages", Output, Row::Flag{&Options::quiet, true}},
        {"-script", "'file'", "Load 'file' containing debug commands", Run, &Options::scriptFile},
        {"-serve", nullptr, "Serve Anvil debug I/O operations", Run, Row::Flag{&Options::serve, true}},
        {"-setprop", "'prop'='val'", "Set a target property 'prop' to 'val'", Target,
         &Options::propertySettings},
        {"-solution", "'file'", "Use Anvil solution file 'file'", Project, &Options::solutionFile},
        {"-benchdir", "'directory'", "Set $(BenchDir) to be 'directory'", Project, &Options::benchDirectory,
         true, 24},
        {"-target", "'target'", "The target interface to use", Target, &Options::targetName},
        {"-templatesfile", "'name'", "Get project templates from file 'name'", Project,
         &Options::templatesFile},
        {"-verbose", nullptr, "Produce verbose output", Output, Row::Flag{&Options::verbose, true}},
        {"-BenchDir", "'directory'", "Set $(BenchDir) to be 'directory'", Project, &Options::benchDirectory,
         false},
        {"-entry", "'address'", "Start a file without an entry point at an address or a symbol", Run,
         &Options::setEntry, false},
        {"-dryrun", nullptr, "Say what would be done, and touch no target", Work,
         Row::Flag{&Options::dryRun, true}, false},
        {"-erase", nullptr, "Erase all memory of the target, and end", Work, Row::Flag{&Options::erase, true},
         false},
        {"-nodifferential", nullptr, "Program every page, also those that hold their data already", Work,
         Row::Flag{&Options::differentialDownload, false}, false},
        {"-progress", "'form'", "Show progress as 'bar', as 'lines' or not at all ('none')", Output,
         &Options::setProgress, false},
        {"-reset", nullptr, "Reset the target, and end", Work, Row::Flag{&Options::reset, true}, false},
        {"-strict", nullptr, "End with status 2, before anything is touched, when an option is wrong", Output,
         Row::Flag{&Options::strict, true}, false},
        {"-listoptions", nullptr, "List the options for other programs: name, argument, group and help",
         Output, &Options::listOptions, false},
        {"-h", nullptr, "Print options help", Output, Row::Flag{&Options::help, true}, false},
        {"--help", nullptr, "Print options help", Output, Row::Flag{&Options::help, true}, false},
        {"--version", nullptr, "Print the version", Output, Row::Flag{&Options::version, true}, false},
    };
    return rows;
}

Options::Options(Reporter& reporter, SessionFace& face) : ArgParse(reporter), m_face(face)
{
    for (const Row& row : table()) {
        auto handler = std::visit(Overloaded{
                                      [this](Row::Flag flag) -> Handler {
                                          return [this, flag](const char*, const char*) {
                                              this->*flag.member = flag.value;
                                          };
                                      },
                                      [this](QString Options::*member) -> Handler {
                                          return [this, member](const char*, const char* value) {
                                              this->*member = fromWord(value);
                                          };
                                      },
                                      [this](QStringList Options::*member) -> Handler {
                                          return [this, member](const char*, const char* value) {
                                              (this->*member).append(fromWord(value));
                                          };
                                      },
                                      [this](Row::Action action) -> Handler {
                                          return [this, action](const char* option, const char* value) {
                                              (this->*action)(option, value);
                                          };
                                      },
                                  },
                                  row.effect);
        if (row.argument)
            onOptionGetArgAndCall(row.text, false, handler);
        else
            onOptionCall(row.text, handler);
    }
}

void Options::onArgument(const char* word)
{
    (serve ? targetArguments : loadFileNames).append(fromWord(word));
}

// In C notation; nothing, after an error, for any other text.
std::optional<unsigned> Options::number(const char* what, const char* value)
{
    char* end = nullptr;
    errno = 0;
    unsigned long address = strtoul(value, &end, 0);
    if (end != value && *end == 0 && errno == 0 && address <= 0xFFFFFFFFul)
        return unsigned(address);
    error() << "invalid " << what << " " << value << "\n";
    return {};
}

// A number, or a symbol, which the debugger looks up.
void Options::setEntry(const char*, const char* value)
{
    if (!isdigit(static_cast<unsigned char>(*value)))
        entry = fromWord(value);
    else if (auto address = number("entry point", value))
        entry = toHexString(uint32_t(*address));
}

// A text that is no address is refused here; a file that needs one then says what is missing.
void Options::setLoadAddress(const char*, const char* value)
{
    if (auto address = number("load address", value))
        loadAddress = address;
}

void Options::setProgress(const char*, const char* value)
{
    const QString form = fromWord(value);
    if (form == QLatin1String("bar") || form == QLatin1String("lines") || form == QLatin1String("none"))
        progress = form;
    else
        error() << "invalid progress " << value << " (bar, lines or none)\n";
}

// Fields are separated by tabs, so that scripts can make a manual page and the completion of shells of them.
void Options::listOptions(const char*, const char*)
{
    QString text;
    for (const Row& row : table())
        text += QStringLiteral("%1\t%2\t%3\t%4\n")
                    .arg(QLatin1String(row.text), QLatin1String(row.argument ? row.argument : ""),
                         QLatin1String(row.group), QLatin1String(row.help));
    m_face.output(text.toStdString());
}

void Options::listTargets(const char*, const char*)
{
    QString text = QStringLiteral("Target Interfaces:\n\n");
    for (const TargetInterfaceInfo& target : TargetInterfaceFactory::instance()->targets())
        text += QString::asprintf("  %-21s %s\n", target.name(), target.description);
    m_face.output((text + QLatin1Char('\n')).toStdString());
}

void Options::listFileTypes(const char*, const char*)
{
    QString text = QStringLiteral("File Types:\n\n");
    for (const LoadFileTypeInfo& type : LoadFileFactory::instance()->types())
        text += QString::asprintf("  %-21s %s File\n", type.name, type.description);
    m_face.output((text + QLatin1Char('\n')).toStdString());
}

QString Options::usage(bool all)
{
    QString text = QStringLiteral("\nUsage: qburn [options] [files...]\n\n"
                                  "       qburn [options] [files...] -serve [arguments...]\n\nOptions:\n");
    QString further = QStringLiteral("Further options:\n\n");
    for (const Row& row : table()) {
        QString option = QLatin1String(row.text);
        if (row.argument)
            option += QLatin1Char(' ') + QLatin1String(row.argument);
        (row.inUsage ? text : further) += QLatin1String("  ") + option.leftJustified(row.helpColumn) +
                                          QLatin1String(row.help) + QLatin1Char('\n');
    }
    const auto& targets = TargetInterfaceFactory::instance()->targets();
    QLatin1String target(targets.empty() ? "'target'" : targets.front().name());
    text +=
        QStringLiteral(
            "\nExamples\n--------\n\n"
            "  Download a Anvil project using target interface \"%1\":\n\n"
            "    qburn -target %1 -solution MySolution.kvp -project MyProject -config Debug\n\n"
            "  Download MyApp.s19 using the target settings from a Anvil project:\n\n"
            "    qburn -target %1 -solution MySolution.kvp -project MyProject -config Release MyApp.s19\n\n")
            .arg(target);
    if (!targets.empty())
        text += QStringLiteral("  Download MyApp.hex using target interface \"%1\":\n\n"
                               "    qburn -target %1 MyApp.hex\n\n")
                    .arg(target);
    return all ? text + further + QLatin1Char('\n') : text;
}
