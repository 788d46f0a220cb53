#include "project/StandardBuildSystem.h"

#include "project/BuildProperties.h"
#include "project/ProjectElement.h"
#include "project/ProjectProperties.h"
#include "project/ProjectSystem.h"
#include "project/PropertyClass.h"
#include "support/PlatformConstants.h"

#include <QDir>
#include <QFileInfo>

namespace {

const QString Yes = QStringLiteral("Yes");

const QStringList& knownLoadFileTypes()
{
    static const QStringList types{QStringLiteral("kvx"), QStringLiteral("bin"),   QStringLiteral("ihex"),
                                   QStringLiteral("hex"), QStringLiteral("tihex"), QStringLiteral("srec")};
    return types;
}

QString projectType(const ProjectSystem& projects, const ProjectElement* element,
                    const QString& configuration)
{
    const ProjectElement* project = ProjectSystem::projectContaining(element);
    return project ? projects.settingFor(project, projects.properties()[ProjectProperties::ProjectType],
                                         configuration)
                   : QString();
}

struct ActionOfType {
    QLatin1String type;
    BuildSystem::BuildAction action;
};

constexpr ActionOfType FileActions[] = {
    {QLatin1String("C"), BuildSystem::CompileC},         {QLatin1String("C++"), BuildSystem::CompileCpp},
    {QLatin1String("Forth"), BuildSystem::CompileForth}, {QLatin1String("Basic"), BuildSystem::CompileBasic},
    {QLatin1String("Assembly"), BuildSystem::Assemble},
};

constexpr ActionOfType ProjectActions[] = {
    {QLatin1String("Executable"), BuildSystem::LinkExecutable},
    {QLatin1String("Library"), BuildSystem::MakeLibrary},
    {QLatin1String("Staging"), BuildSystem::Stage},
    {QLatin1String("Combining"), BuildSystem::Combine},
    {QLatin1String("Externally Built Executable"), BuildSystem::ExternalBuild},
};

template <size_t Count> BuildSystem::BuildAction find(const ActionOfType (&table)[Count], const QString& type)
{
    for (const ActionOfType& each : table)
        if (type == each.type)
            return each.action;
    return BuildSystem::NoAction;
}

} // namespace

StandardBuildSystem::StandardBuildSystem(ProjectSystem& projects, const QStringList& loadFileTypes)
    : BuildSystem(projects)
{
    addPropertyClasses(standardBuildProperties());
    auto find = [this](const char* name) { return findPropertyClass(QString::fromLatin1(name)); };
    m_excludeFromBuild = find("build_exclude_from_build");
    m_alwaysRebuild = find("build_always_rebuild");
    m_memoryMapFile = find("linker_memory_map_file");
    m_sectionPlacementFile = find("linker_section_placement_file");
    find("external_load_file_type")
        ->setEnumerates(QStringList{QStringLiteral("Detect")} +
                        (loadFileTypes.isEmpty() ? knownLoadFileTypes() : loadFileTypes));
    find("default_code_section")->setDefault(QString::fromLatin1(Get_DEFAULT_CODE_SECTION_NAME()));
    find("default_data_section")->setDefault(QString::fromLatin1(Get_DEFAULT_DATA_SECTION_NAME()));
    find("default_zeroed_section")->setDefault(QString::fromLatin1(Get_DEFAULT_ZEROED_SECTION_NAME()));
    find("default_const_section")->setDefault(QString::fromLatin1(Get_DEFAULT_CONST_SECTION_NAME()));
    find("default_vector_section")->setDefault(QString::fromLatin1(Get_DEFAULT_VECTORS_SECTION_NAME()));
}

bool StandardBuildSystem::isSet(ProjectElement* element, const PropertyClass* setting,
                                const QString& configuration) const
{
    return projects().settingFor(element, setting, configuration) == Yes;
}

BuildSystem::BuildAction StandardBuildSystem::buildAction(ProjectElement* element,
                                                          const QString& configuration)
{
    if (element->tag() == ProjectElement::Project)
        return find(ProjectActions, projectType(projects(), element, configuration));
    if (element->tag() != ProjectElement::File)
        return NoAction;
    if (isSet(element, m_excludeFromBuild, configuration))
        return ExcludedAction;
    BuildAction ofProject = find(ProjectActions, projectType(projects(), element, configuration));
    if (ofProject == Stage || ofProject == Combine)
        return ofProject;
    return find(FileActions, projects().getFileType(element));
}

ProjectElement* StandardBuildSystem::findFileOfType(ProjectElement* element, const QString& configuration,
                                                    const QString& type)
{
    ProjectElement* project = ProjectSystem::projectContaining(element);
    for (ProjectElement* file : projects().sourceFiles(project))
        if (projects().getFileType(file) == type && !isSet(file, m_excludeFromBuild, configuration))
            return file;
    return nullptr;
}

bool StandardBuildSystem::useFileForLink(ProjectElement* element, const QString& configuration,
                                         const QString& type, const PropertyClass* setting, QString& result)
{
    result = QString();
    if (ProjectElement* file = findFileOfType(element, configuration, type)) {
        result = file->path().osPathQString();
    } else if (setting) {
        QString text = settingForExpanded(element, setting, configuration);
        if (!text.isEmpty())
            result = QDir::cleanPath(QDir(projects().getProjectDirectory(element)).absoluteFilePath(text));
    }
    return !result.isEmpty() && QFileInfo(result).isFile();
}

bool StandardBuildSystem::useMemoryMapFileForLink(ProjectElement* element, const QString& configuration,
                                                  QString& result)
{
    return useFileForLink(element, configuration, QStringLiteral("Memory Map"), m_memoryMapFile, result);
}

bool StandardBuildSystem::useSectionPlacementFileForLink(ProjectElement* element,
                                                         const QString& configuration, QString& result)
{
    return useFileForLink(element, configuration, QStringLiteral("Section Placement"), m_sectionPlacementFile,
                          result);
}

// No setting names a linker script: it is a file of the project or there is none.
bool StandardBuildSystem::useLinkerScriptFileForLink(ProjectElement* element, const QString& configuration,
                                                     QString& result)
{
    return useFileForLink(element, configuration, QStringLiteral("Linker Script"), nullptr, result);
}

bool StandardBuildSystem::canLoad(ProjectElement* element, const QString& configuration)
{
    BuildAction action = buildAction(element, configuration);
    return action == LinkExecutable || action == ExternalBuild;
}

bool StandardBuildSystem::canCompile(ProjectElement* element, const QString& configuration)
{
    BuildAction action = buildAction(element, configuration);
    return action >= CompileC && action <= Assemble;
}

bool StandardBuildSystem::mustCompile(ProjectElement* element, const QString& configuration)
{
    if (!canCompile(element, configuration))
        return false;
    QFileInfo object(output(element, configuration, true));
    return isSet(element, m_alwaysRebuild, configuration) || !object.exists() ||
           object.lastModified() < QFileInfo(element->path().osPathQString()).lastModified();
}

ZOFFBuildSystem::ZOFFBuildSystem(ProjectSystem& projects, const QStringList& loadFileTypes)
    : StandardBuildSystem(projects, loadFileTypes)
{
    addPropertyClasses(zoffBuildProperties());
    m_hardwareMultiplier = findPropertyClass(QStringLiteral("build_use_hardware_multiplier"));
    m_doubleIsFloat = findPropertyClass(QStringLiteral("double_is_float"));
}

BuildSystem::Macros ZOFFBuildSystem::macros(ProjectElement* node, const QString& configuration)
{
    Macros macros = StandardBuildSystem::macros(node, configuration);
    if (node->tag() == ProjectElement::Project) {
        bool software =
            projects().settingFor(node, m_hardwareMultiplier, configuration) == QLatin1String("No");
        bool singlePrecision = projects().settingFor(node, m_doubleIsFloat, configuration) == Yes;
        macros.insert(QStringLiteral("LibExt"), QString(QLatin1String(software ? "_s" : "_h")) +
                                                    QLatin1Char(singlePrecision ? 'f' : 'd'));
    }
    return macros;
}

MAXQ30BuildSystem::MAXQ30BuildSystem(ProjectSystem& projects, const QStringList& loadFileTypes)
    : ZOFFBuildSystem(projects, loadFileTypes)
{
    addPropertyClasses(maxq30BuildProperties());
}
