#include "driver/System.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/dap/DapServer.h"
#include "driver/session/Hints.h"
#include "driver/session/Interrupt.h"
#include "driver/session/Release.h"
#include "driver/terminal/StandardOutput.h"
#include "loadfile/LoadFileInterface.h"
#include "project/BuildSystem.h"
#include "project/MacroSystem.h"
#include "project/PackageSystem.h"
#include "project/ProjectSystem.h"
#include "project/ProjectTemplates.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "support/HException.h"
#include "support/PlatformConstants.h"
#include "support/QTx.h"
#include "target/TargetInterface.h"

#include <QFileInfo>

#include <cstdio>
#include <iostream>
#include <unistd.h>

namespace {

constexpr int OptionErrorStatus = 2;

System* g_system = nullptr;

} // namespace

System* System::instance()
{
    if (!g_system)
        g_system = new System;
    return g_system;
}

void System::destroy()
{
    delete g_system;
    g_system = nullptr;
}

System::System() : m_options(*report, m_face)
{
    scriptSystem = &m_scriptSystem;
    m_debugCommands.installScriptObject(m_scriptSystem.context());
    m_console.installScriptObject(m_scriptSystem.context());
    m_wscript.installScriptObject(m_scriptSystem.context());
}

System::~System()
{
    scriptSystem = nullptr;
}

int System::exec(int argc, char** argv)
{
    m_exitStatus = 0;
    m_run.setDebugger(debugger);
    m_options.benchDirectory = QTx::rootDirectory();
    m_options.parse(argc - 1, argv + 1);
    if (m_options.strict && m_options.errors() > 0)
        return OptionErrorStatus;
    m_loader.setVerbosity(m_options.quiet, m_options.verbose);
    if (m_options.progress == QLatin1String("lines"))
        m_terminalFace.setProgress(TerminalFace::Progress::Lines);
    else if (m_options.progress == QLatin1String("none"))
        m_terminalFace.setProgress(TerminalFace::Progress::None);
    if (!m_options.templatesFile.isEmpty())
        templatesFile = m_options.templatesFile;

    setupDefaultSystemMacros(macroSystem, m_options.benchDirectory);
    setupPackages();
    macroSystem.setSystemMacro(QStringLiteral("Platform"), QString::fromLatin1(Get_PLATFORM()).toLower());
    if (argc <= 1 || m_options.help) {
        printUsage();
        return m_exitStatus;
    }
    if (m_options.version) {
        StandardOutput::write(RELEASE_version(m_programName) + QLatin1Char('\n'));
        return m_exitStatus;
    }
    if (m_options.dap)
        return runAdapter();
    try {
        return execUnderstood();
    } catch (HException& failure) {
        addHint(failure);
        throw;
    }
}

int System::execUnderstood()
{
    m_steps.selectTarget();
    if (m_options.listProperties) {
        listProperties();
        return m_exitStatus;
    }
    m_loader.targetInterface()->installScriptObject(m_scriptSystem.context());
    m_steps.selectFiles();
    if (m_loader.loadFiles().isEmpty() && !m_options.erase && !m_options.reset)
        return m_exitStatus;
    if (m_options.dryRun) {
        StandardOutput::write(m_steps.plan().join(QLatin1Char('\n')) + QLatin1Char('\n'));
        return m_exitStatus;
    }
    if (!goesOnAllTheSame())
        return OptionErrorStatus;
    return runSession();
}

// A home that is missing or may not be written costs only what is generated there; a directory that the user
// has named must do.
void System::setupPackages()
{
    const bool named = !m_options.packagesDirectory.isEmpty();
    PackageSystem::setupPackageMacros(macroSystem, named ? m_options.packagesDirectory
                                                         : QStringLiteral("$(BenchUserDir)/packages"));
    try {
        if (!named && !QTx::haveHome())
            throw HException(QLatin1String("cannot create ") +
                             macroSystem.systemMacro(QStringLiteral("TargetsDir")) +
                             QLatin1String("/frequencies.xml"));
        PackageSystem::createPackageFiles(macroSystem);
    } catch (const HException& failure) {
        if (named)
            throw;
        m_face.warning(failure.text());
    }
}

// How a device was left that does not forget it.
QString System::deviceState() const
{
    return m_loader.simulated() ? QString() : m_loader.deviceState();
}

// A word that was not understood may have been the one that keeps a board from being erased. The simulator
// has nothing to lose, and without a terminal there is nobody to ask.
bool System::goesOnAllTheSame() const
{
    if (m_options.errors() == 0 || m_loader.simulated() || !isatty(STDIN_FILENO) || !isatty(STDERR_FILENO))
        return true;
    fputs("go on all the same? [y/N] ", stderr);
    char reply[16] = {};
    return fgets(reply, sizeof reply, stdin) && (*reply == 'y' || *reply == 'Y');
}

void System::execScript(const QString& text)
{
    m_scriptSystem.execute(text, true);
}

void System::execScriptFile(const Path& file)
{
    std::optional<QString> script = QTx::readText(file.osPathQString());
    if (!script)
        throw HException(QStringLiteral("cannot open script file \"%1\"").arg(file.osPathQString()));
    m_scriptSystem.setSourceName(file.fileName());
    execScript(*script + QLatin1Char('\n'));
}

void System::listProperties()
{
    QString text = QStringLiteral("\"%1\" Properties:\n\n").arg(m_options.targetName);
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
    fputs(Options::usage(m_options.help).toLocal8Bit().constData(), stderr);
}

// Whatever writes to standard output by itself would break the protocol, so it gets standard error.
int System::runAdapter()
{
    int output = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    Adapter::Session session{
        m_loader,
        m_options,
        m_steps,
        m_run,
        m_face,
        [this] { m_loader.targetInterface()->installScriptObject(m_scriptSystem.context()); },
        [this](const QString& text) { execScript(text); }};
    int status = DapServer::run(session, STDIN_FILENO, output);
    m_face.setFace(m_terminalFace);
    close(output);
    return status;
}

int System::runSession()
{
    Interrupt interrupt;
    TargetInterface* target = m_loader.targetInterface();
    QObject::connect(&interrupt, &Interrupt::interrupted, this, &System::onInterrupt);
    try {
        m_loader.connectTarget(m_steps.activeProject(), m_options.configuration);
        if (m_options.erase)
            m_steps.erase();
        if (m_options.reset)
            m_loader.resetTarget();
        if (!m_options.erase && !m_options.reset) {
            m_steps.load();
            Interrupt::check();
            startProgram();
        }
        Interrupt::check();
    } catch (const HException&) {
        m_terminalFace.clearBar();
        // A target that was stopped in the middle of something may well fail in it.
        if (!Interrupt::requested())
            throw;
        endInterrupted();
    } catch (const Interrupted&) {
        m_terminalFace.clearBar();
        endInterrupted();
    }
    if (m_options.disconnect && target->isConnected())
        m_loader.disconnectTarget();
    return m_exitStatus;
}

// Nothing may be thrown into the event loop; what does not stop here ends with the session.
void System::onInterrupt()
{
    if (!Interrupt::requested()) // and dealt with meanwhile
        return;
    if (interruptsCommand()) {
        if (!m_scriptSystem.executing()) // a script notices by itself
            interruptCommand();
        return;
    }
    try {
        if (m_terminal)
            debugger->stop();
        else
            m_loader.targetInterface()->stop();
    } catch (const HException&) {
    }
}

// On lines behind the failure: what to try, and how the device was left.
void System::addHint(HException& failure) const
{
    QStringList lines;
    if (!failure.hint().empty())
        lines += QString::fromStdString(failure.hint());
    if (QString hint = hintFor(failure.text()); !hint.isEmpty())
        lines += hint;
    if (QString state = deviceState(); !state.isEmpty())
        lines += state;
    failure.setHint(lines.join(QLatin1Char('\n')).toStdString());
}

void System::endInterrupted()
{
    report->stream << "interrupted\n";
    if (QString state = deviceState(); !state.isEmpty())
        report->stream << state.toLocal8Bit().constData() << "\n";
    m_exitStatus = Interrupt::ExitStatus;
}

// Sets the program going from the first file's entry point, or lets the target start as it does by
// itself. On the simulator this comes back when the program stops.
void System::startProgram()
{
    TargetInterface* target = m_loader.targetInterface();
    if (m_options.serve || m_options.debug) {
        QString entry = m_steps.entryPoint();
        if (!entry.isEmpty()) {
            run(entry);
            return;
        }
        m_face.warning(QStringLiteral("nothing to %1: the load file has no entry point (use -entry)")
                           .arg(QLatin1String(m_options.debug ? "debug" : "serve")));
    }
    LoadFileInterface* first = m_loader.loadFiles().items().front().file;
    if (!first->hasEntryPoint()) {
        target->reset(false, false);
        return;
    }
    unsigned long entry = first->entryPoint();
    target->start(entry != 0, unsigned(entry));
}
