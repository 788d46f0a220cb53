#include "project/BuildSystem.h"

#include "project/BuildProperties.h"
#include "project/ProjectProperties.h"
#include "project/ProjectSystem.h"
#include "support/Path.h"

#include <QDir>
#include <QFileInfo>

BuildSystem* buildSystem = nullptr;

BuildSystem::BuildSystem(ProjectSystem& projects) : m_projects(projects)
{
    projects.setBuildSystem(this);
    addPropertyClasses(commonBuildProperties());
    m_executableFileName = addPropertyClass(ExecutableFileNameProperty);
    m_libraryFileName = addPropertyClass(LibraryFileNameProperty);
    auto find = [this](const char* name) { return findPropertyClass(QString::fromLatin1(name)); };
    m_intermediateDirectory = find("build_intermediate_directory");
    m_outputDirectory = find("build_output_directory");
    m_rootOutputDirectory = find("build_root_output_directory");
    m_objectFileName = find("build_object_file_name");
    m_stageOutput = find("stage_output_filepath");
    m_combineOutput = find("combine_output_filepath");
}

PropertyClass* BuildSystem::addPropertyClass(std::unique_ptr<PropertyClass> propertyClass)
{
    PropertyClass* added = propertyClass.get();
    m_owned.push_back(std::move(propertyClass));
    if (!m_classes.contains(added->saveName()))
        m_classes.insert(added->saveName(), added);
    return added;
}

PropertyClass* BuildSystem::addPropertyClass(const BuildProperty& row)
{
    QString name = QString::fromLatin1(row.saveName);
    QString page = QString::fromLatin1(row.page);
    QString title = titleOfSetting(name);
    QStringList texts = QString::fromLatin1(row.enumerates).split(u';', Qt::SkipEmptyParts);
    auto made = texts.isEmpty()
                    ? std::make_unique<PropertyClass>(name, row.type, QString::fromLatin1(row.otherwise),
                                                      page, page, title, QString())
                    : std::make_unique<PropertyClass>(name, row.type, texts, page, page, title, QString());
    made->setRange(row.minimum, row.maximum);
    made->setSuffix(QString::fromLatin1(row.suffix));
    made->setReadOnly(row.readOnly);
    return addPropertyClass(std::move(made));
}

PropertyClass* BuildSystem::findPropertyClass(const QString& saveName) const
{
    return m_classes.value(saveName);
}

QList<PropertyClass*> BuildSystem::pageClasses(const QString& page) const
{
    QList<PropertyClass*> list;
    for (PropertyClass* each : m_classes)
        if (each->page() == page)
            list.append(each);
    return list;
}

QString BuildSystem::expanded(const Macros& macros, ProjectElement* element,
                              const PropertyClass* propertyClass, const QString& configuration) const
{
    return MacroSystem::replaceMacros(macros, m_projects.settingFor(element, propertyClass, configuration));
}

QString BuildSystem::settingForExpanded(ProjectElement* element, const PropertyClass* propertyClass,
                                        const QString& configuration)
{
    QString text = m_projects.settingFor(element, propertyClass, configuration);
    return text.contains(u'$') ? replaceMacros(element, text, configuration) : text;
}

QStringList BuildSystem::stringListSetting(const QString& prefix, ProjectElement* element,
                                           const PropertyClass* propertyClass, const QString& configuration)
{
    QStringList list = replaceStringListMacros(
        element,
        MacroSystem::stringListFromString(m_projects.settingFor(element, propertyClass, configuration)),
        configuration);
    for (QString& item : list)
        item.prepend(prefix);
    return list;
}

namespace {

void insert(MacroSystem::Macros& macros, const char* name, const QString& value)
{
    macros.insert(QString::fromLatin1(name), value);
}

} // namespace

BuildSystem::Macros BuildSystem::macros(ProjectElement* node, const QString& configuration)
{
    Macros macros = m_projects.macros().globalMacros(true);
    // A list setting comes with the inner entries first, and those shall win.
    const QString own =
        m_projects.settingFor(node, m_projects.properties()[ProjectProperties::Macros], configuration);
    QStringList items = MacroSystem::stringListFromString(own);
    std::reverse(items.begin(), items.end());
    MacroSystem::overwriteMacros(macros, MacroSystem::macrosFromStringList(items));

    QString projectDirectory = m_projects.getProjectDirectory(node);
    const ProjectElement* project = ProjectSystem::projectContaining(node);
    insert(macros, "ProjectNodeName", node->getName());
    insert(macros, "ProjectDir", projectDirectory);
    insert(macros, "ProjectName", project ? project->getName() : QString());
    insert(macros, "Configuration", configuration);
    insert(macros, "Platform", m_projects.platform(node));

    if (const ProjectElement* solution = ProjectSystem::solutionContaining(node)) {
        QFileInfo file(solution->path().osPathQString());
        insert(macros, "SolutionDir", file.absolutePath());
        insert(macros, "SolutionName", file.completeBaseName());
        insert(macros, "SolutionFileName", file.fileName());
        insert(macros, "SolutionPath", file.absoluteFilePath());
        insert(macros, "SolutionExt", file.suffix());
    }
    if (node->tag() == ProjectElement::File && !node->path().isEmpty()) {
        QFileInfo file(node->path().osPathQString());
        insert(macros, "InputDir", file.absolutePath());
        insert(macros, "InputName", file.completeBaseName());
        insert(macros, "InputFileName", file.fileName());
        insert(macros, "InputExt", file.suffix());
        insert(macros, "InputPath", file.absoluteFilePath());
        insert(macros, "RelInputPath", Path::relativeFilePath(projectDirectory, file.absoluteFilePath()));
    }
    insert(macros, "OBJ", u'.' + m_projects.objectFileExtension());
    insert(macros, "EXE", u'.' + m_projects.executableFileExtension());
    insert(macros, "LIB", u'.' + m_projects.libraryFileExtension());
    insert(macros, "PackageExt", QStringLiteral("kvq"));

    auto directory = [&](const PropertyClass* propertyClass) {
        QString text = expanded(macros, node, propertyClass, configuration);
        return text.isEmpty() ? QStringLiteral(".") : text;
    };
    insert(macros, "IntDir", directory(m_intermediateDirectory));
    QString root = expanded(macros, node, m_rootOutputDirectory, configuration);
    insert(macros, "RootOutDir", root);
    QString out = directory(m_outputDirectory);
    insert(macros, "OutDir", out);
    // Both count from the project directory, wherever the process stands.
    QDir base(projectDirectory);
    QString relative;
    if (!Path::relativeDirPath(QDir::cleanPath(base.absoluteFilePath(root)),
                               QDir::cleanPath(base.absoluteFilePath(out)), relative))
        relative = QDir::cleanPath(base.absoluteFilePath(out));
    insert(macros, "RootRelativeOutDir", relative);
    return macros;
}

QString BuildSystem::replaceMacros(ProjectElement* node, const QString& text, const QString& configuration)
{
    return MacroSystem::replaceMacros(macros(node, configuration), text);
}

QStringList BuildSystem::replaceStringListMacros(ProjectElement* node, const QStringList& list,
                                                 const QString& configuration)
{
    const Macros table = macros(node, configuration);
    QStringList result;
    for (const QString& item : list)
        result.append(MacroSystem::replaceMacros(table, item));
    return result;
}

QString BuildSystem::output(ProjectElement* element, const QString& configuration, bool absolute)
{
    return output(buildAction(element, configuration), element, configuration, absolute);
}

QString BuildSystem::output(BuildAction action, ProjectElement* element, const QString& configuration,
                            bool absolute)
{
    const bool isFile = element->tag() == ProjectElement::File;
    const bool isProject = element->tag() == ProjectElement::Project;
    const PropertyClass* setting = nullptr;
    switch (action) {
    case NoAction:
    case ExcludedAction: break;
    case CompileC:
    case CompileCpp:
    case CompileForth:
    case CompileBasic:
    case Assemble: setting = m_objectFileName; break;
    case ExternalBuild: setting = findPropertyClass(QStringLiteral("external_build_file_name")); break;
    case LinkExecutable: setting = m_executableFileName; break;
    case MakeLibrary: setting = m_libraryFileName; break;
    case Stage: setting = isFile ? m_stageOutput : nullptr; break;
    case Combine: setting = isFile || isProject ? m_combineOutput : nullptr; break;
    }
    if (!setting)
        return QStringLiteral("");
    QString text =
        replaceMacros(element, m_projects.settingFor(element, setting, configuration), configuration);
    if (absolute && QFileInfo(text).isRelative() && !text.isEmpty())
        text = m_projects.getProjectDirectory(element) + u'/' + text;
    return text;
}
