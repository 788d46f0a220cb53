#include "driver/session/SessionSteps.h"

#include "driver/session/Loader.h"
#include "driver/session/MemoryMapCheck.h"
#include "driver/session/Options.h"
#include "driver/session/SessionFace.h"
#include "loadfile/LoadFileFactory.h"
#include "loadfile/LoadFileInterface.h"
#include "loadfile/LoadFileList.h"
#include "loadfile/LoadFileSections.h"
#include "project/BuildSystem.h"
#include "project/MacroSystem.h"
#include "project/ProjectSystem.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "project/memorymap/MemoryMap.h"
#include "project/memorymap/MemoryMapOpenFiles.h"
#include "support/HException.h"
#include "support/Nearest.h"
#include "support/Numbers.h"
#include "support/Path.h"
#include "target/TargetInterface.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <strings.h>

void SessionSteps::selectTarget()
{
    if (m_options.targetName.isEmpty())
        throw HException("no target interface specified (use -target)");
    m_loader.setTarget(m_options.targetName);
    for (const QString& setting : std::as_const(m_options.propertySettings))
        applyPropertySetting(setting);
}

void SessionSteps::selectFiles()
{
    m_loader.setEnableDifferentialDownload(m_options.differentialDownload);
    if (m_options.loadAddress)
        m_loader.setLoadAddress(*m_options.loadAddress);
    if (!m_options.fileType.isEmpty())
        selectFileType();
    if (!m_options.solutionFile.isEmpty())
        selectProject();
    if (!m_options.erase && !m_options.reset)
        collectLoadFiles();
    checkMemoryMap();
}

void SessionSteps::load()
{
    QElapsedTimer time;
    time.start();
    TargetInterface* target = m_loader.targetInterface();
    target->reset(true, true);
    target->loadBegin();
    try {
        if (m_options.download)
            m_loader.downloadLoadFiles();
        if (m_options.verify)
            m_loader.verifyLoadFiles();
    } catch (...) {
        target->abandonLoad();
        throw;
    }
    target->loadEnd();
    m_loader.tellSummary(m_options.download, m_options.verify, time.elapsed());
}

void SessionSteps::erase()
{
    TargetInterface* target = m_loader.targetInterface();
    target->reset(true, true);
    target->loadBegin();
    try {
        target->eraseAll();
        target->flushMemoryInterfaces();
    } catch (...) {
        target->abandonLoad();
        throw;
    }
    target->loadEnd();
}

QStringList SessionSteps::plan() const
{
    QStringList lines{QStringLiteral("would connect to ") + m_options.targetName};
    if (m_options.erase)
        lines += QStringLiteral("would erase all memory");
    if (m_options.reset)
        lines += QStringLiteral("would reset the target");
    if (!m_options.erase && !m_options.reset) {
        m_loader.checkOverlap();
        TargetInterface* target = m_loader.targetInterface();
        if (m_options.download && target->loaderEraseAll())
            lines += QStringLiteral("would erase all memory");
        for (const LoadFileListItem& item : m_loader.loadFiles().items()) {
            const QString name = Path(item.name).fileName();
            const LoadFileSections& sections = item.file->loadFileSections();
            if (m_options.download && !target->loaderEraseAll())
                lines += QStringLiteral("would erase the memory for ") + name;
            if (m_options.download)
                for (const auto* list : {&sections.sections(), &sections.eeSections()})
                    for (const auto& section : *list)
                        if (section->length() > 0)
                            lines += QStringLiteral("would program %1: %2 bytes at 0x%3")
                                         .arg(name)
                                         .arg(section->length())
                                         .arg(section->address(), 8, 16, QLatin1Char('0'));
            if (m_options.verify)
                lines += QStringLiteral("would verify ") + name;
        }
        const QString entry = entryPoint();
        const char* how = m_options.debug ? "debug" : m_options.serve ? "serve" : "start";
        if (m_loader.loadFiles().items().front().file->hasEntryPoint() ||
            ((m_options.debug || m_options.serve) && !entry.isEmpty()))
            lines += QStringLiteral("would %1 the program at %2").arg(QLatin1String(how), entry);
        else
            lines += QStringLiteral("would reset the target");
    }
    if (m_options.disconnect)
        lines += QStringLiteral("would disconnect");
    return lines;
}

void SessionSteps::applyPropertySetting(const QString& setting)
{
    qsizetype equals = setting.indexOf(QLatin1Char('='));
    if (equals <= 0 || equals + 1 == setting.size())
        throw HException("format for option should be \"-setprop PROPERTY=VALUE\"");
    QString name = setting.left(equals);
    PropertyValueList properties(false);
    m_loader.targetInterface()->getProperties(properties);
    for (PropertyValue* property : properties)
        if (property->propertyClass()->shortDescription() == name) {
            property->setValue(setting.mid(equals + 1));
            return;
        }
    HException failure(QLatin1String("unknown property: ") + name);
    QStringList names;
    for (PropertyValue* property : properties)
        names.append(property->propertyClass()->shortDescription());
    const QString meant = nearestName(name, names);
    if (!meant.isEmpty())
        failure.setHint("did you mean \"" + meant.toStdString() + "\"?");
    throw failure;
}

void SessionSteps::selectFileType()
{
    QByteArray wanted = m_options.fileType.toLocal8Bit();
    for (const LoadFileTypeInfo& type : LoadFileFactory::instance()->types())
        if (strcasecmp(type.name, wanted.constData()) == 0) {
            m_loader.setFiletype(type.name);
            return;
        }
    throw HException(QStringLiteral("unknown file type \"%1\"").arg(m_options.fileType));
}

void SessionSteps::selectProject()
{
    projectSystem->loadSolution(QFileInfo(m_options.solutionFile).absoluteFilePath(), nullptr, nullptr);
    const QMap<QString, ProjectElement*> projects = projectSystem->solutionProjects(nullptr);
    QString list =
        QStringLiteral("\n\nProjects in \"%1\":\n").arg(QFileInfo(m_options.solutionFile).fileName());
    for (auto project = projects.begin(); project != projects.end(); ++project)
        list += QLatin1String("\n  ") + project.key();
    if (m_options.projectName.isEmpty())
        throw HException(QLatin1String("no project specified (use -project)") + list);
    if (!projectSystem->haveSolution())
        throw HException("no solution specified (use -solution)");

    const QString given = m_options.projectName.simplified();
    for (auto project = projects.begin(); project != projects.end(); ++project)
        if (project.key().simplified() == given)
            m_options.projectName = project.key();
    m_activeProject = projectSystem->findProject(projectSystem->solutionElement(), m_options.projectName);
    if (!m_activeProject)
        throw HException(QStringLiteral("invalid project \"%1\"").arg(m_options.projectName) + list);

    QStringList configurations;
    projectSystem->configurations(m_activeProject, configurations, 4);
    list = QStringLiteral("\n\nBuild configurations for \"%1\":\n\n  ").arg(m_options.projectName) +
           configurations.join(QLatin1String("\n  "));
    if (m_options.configuration.isEmpty())
        throw HException(QLatin1String("no build configuration specified (use -config)") + list);
    if (!configurations.contains(m_options.configuration))
        throw HException(QStringLiteral("invalid build configuration \"%1\"").arg(m_options.configuration) +
                         list);
}

// The simulator refuses by itself what the map has no memory for; a board takes it, and its user hears of it
// before anything is erased.
void SessionSteps::checkMemoryMap()
{
    QString file;
    if (!m_activeProject ||
        !buildSystem->useMemoryMapFileForLink(m_activeProject, m_options.configuration, file))
        return;
    const MemoryMap* map = MemoryMapOpenFiles::getMemoryMapFile(file, macroSystem.globalMacros(true));
    if (!map)
        return;
    QStringList warnings = memoryMapFaults(*map);
    if (m_options.download && !m_loader.simulated())
        warnings += outsideMemoryMap(*map, m_loader.loadFiles());
    for (const QString& warning : std::as_const(warnings))
        m_loader.face().warning(warning);
}

void SessionSteps::collectLoadFiles()
{
    if (!projectSystem->haveSolution() || !m_options.loadFileNames.isEmpty()) {
        for (const QString& name : std::as_const(m_options.loadFileNames))
            m_loader.addLoadFile(name);
        return;
    }
    m_loader.addLoadFile(buildSystem->output(m_activeProject, m_options.configuration, true));
    const PropertyClass* additional =
        buildSystem->findPropertyClass(QStringLiteral("debug_additional_load_files"));
    QString files = buildSystem->settingForExpanded(m_activeProject, additional, m_options.configuration);
    for (const QString& name : files.split(QLatin1Char(';'), Qt::SkipEmptyParts))
        m_loader.addLoadFile(name);
}

// Where the program begins, as the debugger takes it; empty when nobody says. A number from the command
// line is in hexadecimal already.
QString SessionSteps::entryPoint() const
{
    LoadFileInterface* first = m_loader.loadFiles().items().front().file;
    if (first->hasEntryPoint())
        return toHexString(uint32_t(first->entryPoint()));
    if (!m_options.entry.isEmpty() || !m_activeProject)
        return m_options.entry;
    const PropertyClass* symbol = buildSystem->findPropertyClass(QStringLiteral("debug_entry_point_symbol"));
    return buildSystem->settingForExpanded(m_activeProject, symbol, m_options.configuration);
}
