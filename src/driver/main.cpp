// The entry of the tool: makes the objects that live until the process ends, runs the session, and
// prints what stopped it.

#include "debug/symbols/SymbolicDebug.h"
#include "driver/System.h"
#include "driver/session/Reporter.h"
#include "loadfile/LoadFileFactory.h"
#include "maxq30/MAXQ30TargetInterfaceFactory.h"
#include "maxq30/cpu/MAXQ30Debugger.h"
#include "maxq30/cpu/MAXQ30Processor.h"
#include "project/EnvironmentSettings.h"
#include "project/MAXQ30BuildSystem.h"
#include "project/MAXQ30ProjectSystem.h"
#include "project/MacroSystem.h"
#include "project/SolutionLoadError.h"
#include "project/StandardBuildSystem.h"
#include "project/StandardProjectSystem.h"
#include "support/HException.h"
#include "support/QTx.h"
#include "target/TargetInterfaceFactory.h"
#include "target/download/TargetInterfaceHelperFunctions.h"
#include "zoff/ZOFFDebugIndex.h"
#include "zoff/ZOFFLoadFileFactory.h"
#include "zoff/ZOFFProcessor.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace {

// A failure on standard error, and on a line of its own what a user can make of it.
void printFailure(const QString& line, const std::string& hint)
{
    fprintf(stderr, "%s\n\n", line.toLocal8Bit().constData());
    if (!hint.empty())
        fprintf(stderr, "%s\n", QString::fromStdString(hint).toLocal8Bit().constData());
}

QString withoutTags(QString text)
{
    text.replace(QLatin1String("<p>"), QLatin1String("\n"));
    static const QRegularExpression tag(QStringLiteral("<[^>]*>"));
    return text.remove(tag);
}

// A standard stream that the caller has closed would be taken by the next file that is opened.
void openStandardStreams()
{
    while (true) {
        int descriptor = open("/dev/null", O_RDWR);
        if (descriptor > STDERR_FILENO)
            close(descriptor);
        if (descriptor < 0 || descriptor > STDERR_FILENO)
            return;
    }
}

// What lives until the process ends, also after a failure: the system goes first and closes its link, while
// all that it stands on is there.
class Objects {
public:
    Objects() = default;
    ~Objects()
    {
        delete debugger; // knows the target
        debugger = nullptr;
        System::destroy();
        delete buildSystem;
        delete projectSystem;
        macroSystem.setSettings(nullptr);
        delete environment;
        environment = nullptr;
        delete report;
        report = nullptr;
    }
    Objects(const Objects&) = delete;
    Objects& operator=(const Objects&) = delete;

    static void make(const char* program)
    {
        ZOFFProcessor::install(MAXQ30Processor);
        ZOFFDebugIndex::install(SymbolicDebugIndex);
        static ZOFFLoadFileFactory loadFileFactory;
        LoadFileFactory::install(loadFileFactory);
        static MAXQ30TargetInterfaceFactory targetFactory;
        TargetInterfaceFactory::install(targetFactory);
        report = new Reporter{program, std::cerr};
        environment = new EnvironmentSettings;
        environment->createEntries();
        macroSystem.setSettings(environment);
        projectSystem = new MAXQ30ProjectSystem(macroSystem);
        buildSystem = new MAXQ30BuildSystem(*projectSystem, QStringList());
        macroSystem.setSystemMacro(QStringLiteral("Platform"), QStringLiteral("maxq30"));
        installTargetInterfaceHelperFunctions(System::instance()->loader());
        auto* processorDebugger = new MAXQ30Debugger(&System::instance()->loader());
        processorDebugger->setMaximumCalls(
            environment->findProperty(QStringLiteral("Environment/Debugger/Maximum Backtrace Calls"))
                ->toInt());
        debugger = processorDebugger;
        System::instance()->setProgramName(QStringLiteral("Loader"));
    }
};

} // namespace

int main(int argc, char** argv)
{
    openStandardStreams();
    QTx::setApplicationPath(argc > 0 ? argv[0] : "qburn", 1);
    QCoreApplication application(argc, argv);
    Objects objects;
    try {
        Objects::make(argc > 0 ? argv[0] : "qburn");
        return System::instance()->exec(argc, argv);
    } catch (const SolutionLoadError& failure) {
        if (failure.badXML())
            printFailure(
                QLatin1String("load error: bad XML file - ") + failure.fileName(),
                QStringLiteral("%1:%2: %3")
                    .arg(failure.fileName(), QString::number(failure.errorLine()), failure.errorText())
                    .toStdString());
        else
            printFailure(QLatin1String("load error: ") + failure.fileName() + failure.detail(),
                         failure.hint());
    } catch (const HException& failure) {
        printFailure(QLatin1String("error: ") + withoutTags(failure.text()), failure.hint());
    } catch (...) {
        fputs("error: abnormal program termination\n", stderr);
    }
    return 1;
}
