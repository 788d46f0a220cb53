#include "project/ProjectSystem.h"

#include "project/BuildSystem.h"
#include "project/ElementWalk.h"
#include "project/FileTypes.h"
#include "project/MacroSystem.h"
#include "project/PropertyClass.h"
#include "project/SolutionLoader.h"
#include "support/Path.h"
#include "support/PlatformConstants.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

ProjectSystem* projectSystem = nullptr;

ProjectSystem::ProjectSystem(MacroSystem& macros) : m_macros(macros) {}

ProjectSystem::~ProjectSystem() = default;

void ProjectSystem::loadSolution(const QString& path, ProjectFileNotFoundErrorHandler* files,
                                 TemplateNotFoundErrorHandler* templates)
{
    SolutionLoader loader(*this, files, templates);
    std::unique_ptr<ProjectElement> solution = loader.load(path);
    m_solution = std::move(solution);
    try {
        loader.applyTemplates(m_solution.get());
        updateInheritenceMap(m_solution.get());
        updateProjectList();
        updateFilePaths(m_solution.get());
        for (ProjectElement* folder : loader.dynamicFolders())
            populateDynamicFolder(folder);
    } catch (...) {
        closeSolution();
        throw;
    }
    m_solution->clearModified();
    ElementWalk elements(m_solution.get());
    while (ProjectElement* element = elements.next()) {
        element->clearModified();
        for (const auto& [name, configuration] : element->configurations())
            configuration->clearModified();
    }
    for (const auto& [name, configuration] : m_solution->configurations())
        configuration->clearModified();
    Q_EMIT solutionLoaded();
}

void ProjectSystem::closeSolution()
{
    m_projects.clear();
    m_solution.reset();
}

QString ProjectSystem::solutionFilePath() const
{
    return m_solution ? m_solution->path().osPathQString() : QString();
}

QString ProjectSystem::solutionDirectory() const
{
    return m_solution ? m_solution->path().dirPath(true) : QString();
}

namespace {

void collectProjects(const ProjectElement* solution, QMap<QString, ProjectElement*>& projects)
{
    for (const auto& child : solution->children()) {
        if (child->tag() == ProjectElement::Solution) {
            collectProjects(child.get(), projects);
        } else if (child->tag() == ProjectElement::Project) {
            QString name = child->getName();
            if (!projects.contains(name))
                projects.insert(name, child.get());
        }
    }
}

} // namespace

void ProjectSystem::updateProjectList()
{
    m_projects.clear();
    if (m_solution)
        collectProjects(m_solution.get(), m_projects);
}

QMap<QString, ProjectElement*> ProjectSystem::solutionProjects(ProjectElement* solution) const
{
    if (!solution || solution == m_solution.get())
        return m_projects;
    QMap<QString, ProjectElement*> projects;
    collectProjects(solution, projects);
    return projects;
}

ProjectElement* ProjectSystem::findProject(ProjectElement* solution, const QString& name) const
{
    return solutionProjects(solution).value(name);
}

ProjectElement* ProjectSystem::createSolution(const QString& path)
{
    closeSolution();
    m_solution = std::make_unique<ProjectElement>(ProjectElement::Solution, nullptr);
    QFileInfo info(path);
    m_solution->setPath(Path(info.absoluteFilePath()));
    m_solution->setAttribute(QStringLiteral("Name"), info.completeBaseName());
    m_solution->setAttribute(QStringLiteral("version"), QStringLiteral("2"));
    m_solution->makeConfiguration(QStringLiteral("Common"));
    return m_solution.get();
}

ProjectElement* ProjectSystem::createProject(ProjectElement* solution, const QString& name,
                                             const QString& projectType)
{
    ProjectElement* project = solution->appendChild(ProjectElement::Project);
    project->setAttribute(QStringLiteral("Name"), name);
    setProperty(project, m_properties[ProjectProperties::ProjectType]->saveName(), projectType,
                QStringLiteral("Common"));
    appendDefaultProjectValues(project);
    updateProjectList();
    return project;
}

QString ProjectSystem::defaultFileLocation(ProjectElement* element)
{
    const ProjectElement* folder = element;
    while (folder && folder->tag() != ProjectElement::Folder)
        folder = folder->parent();
    QString directory = getProjectDirectory(element);
    QString dynamic = folder ? folder->attribute(QStringLiteral("path")) : QString();
    return dynamic.isEmpty() ? directory : QDir(directory).filePath(dynamic);
}

// Earlier versions differ in nothing that is read here, so the base leaves the element as it is; a
// system that knows older spellings translates them.
void ProjectSystem::munge(ProjectElement*) {}

QString ProjectSystem::getFileType(ProjectElement* file)
{
    if (!file || file->tag() != ProjectElement::File)
        return QString();
    const PropertyClass* type = m_properties[ProjectProperties::FileType];
    QString text = file->attribute(type->saveName());
    if (text.isEmpty())
        text = settingFor(file, type, QStringLiteral("Common"));
    if (!text.isEmpty() && text != type->defaultValue())
        return text;
    return fileTypeOfExtension(QFileInfo(file->path().osPathQString()).suffix());
}

QString ProjectSystem::getProjectDirectory(const ProjectElement* element) const
{
    const ProjectElement* solution = solutionContaining(element);
    QString base = solution ? solution->path().dirPath(true) : QString();
    const ProjectElement* project = projectContaining(element);
    if (!project)
        return base;
    QString directory =
        settingFor(project, m_properties[ProjectProperties::ProjectDirectory], QStringLiteral("Common"));
    if (directory.isEmpty())
        return base;
    directory = MacroSystem::replaceMacros(m_macros.globalMacros(true), directory);
    return QDir::cleanPath(QDir(base).absoluteFilePath(directory));
}

Path ProjectSystem::projectDirectoryPath(const ProjectElement* element) const
{
    return Path(getProjectDirectory(element));
}

namespace {

template <typename Element> Element* containing(Element* element, ProjectElement::Tag tag)
{
    while (element && element->tag() != tag)
        element = element->parent();
    return element;
}

} // namespace

ProjectElement* ProjectSystem::projectContaining(ProjectElement* element)
{
    return containing(element, ProjectElement::Project);
}

const ProjectElement* ProjectSystem::projectContaining(const ProjectElement* element)
{
    return containing(element, ProjectElement::Project);
}

ProjectElement* ProjectSystem::solutionContaining(ProjectElement* element)
{
    return containing(element, ProjectElement::Solution);
}

const ProjectElement* ProjectSystem::solutionContaining(const ProjectElement* element)
{
    return containing(element, ProjectElement::Solution);
}

// The tool is built for one platform, which all nodes share.
QString ProjectSystem::platform(const ProjectElement* node) const
{
    QString text = settingFor(node, m_properties[ProjectProperties::Platform], QStringLiteral("Common"));
    return (text.isEmpty() ? QString::fromLatin1(Get_PLATFORM()) : text).toLower();
}

// Every file gets its place: `file_name` against the project directory, with global macros expanded.
void ProjectSystem::updateFilePaths(ProjectElement* element)
{
    const MacroSystem::Macros macros = m_macros.globalMacros(true);
    const ProjectElement* project = nullptr;
    QDir directory;
    ElementWalk elements(element);
    while (ProjectElement* file = elements.next()) {
        if (file->tag() != ProjectElement::File)
            continue;
        const ProjectElement* owner = projectContaining(file);
        if (owner != project || !project) {
            project = owner;
            directory.setPath(getProjectDirectory(file));
        }
        QString name = MacroSystem::replaceMacros(macros, file->attribute(QStringLiteral("file_name")));
        file->setPath(name.isEmpty() ? Path() : Path(directory.absoluteFilePath(name)));
    }
}

// One file element for each file of the directory that passes the filter, sorted by name. An item of
// the filter is an extension, or a pattern when it holds a "*" or "?". A file that stands in the
// folder by itself is not repeated.
void ProjectSystem::populateDynamicFolder(ProjectElement* folder)
{
    QString path =
        MacroSystem::replaceMacros(m_macros.globalMacros(true), folder->attribute(QStringLiteral("path")));
    QDir directory(QDir(getProjectDirectory(folder)).absoluteFilePath(path));
    QStringList patterns;
    const QString filter = folder->attribute(QStringLiteral("filter"));
    for (const QString& item : MacroSystem::stringListFromString(filter))
        patterns.append(item.contains(u'*') || item.contains(u'?') ? item : QLatin1String("*.") + item);
    QSet<QString> present;
    for (const auto& child : folder->children())
        present.insert(child->path().canonicalPathQString());
    const QStringList names = directory.entryList(patterns, QDir::Files, QDir::Name);
    for (const QString& name : names) {
        Path file(directory.absoluteFilePath(name));
        if (present.contains(file.canonicalPathQString()))
            continue;
        ProjectElement* element = folder->appendChild(ProjectElement::File);
        element->setAttribute(QStringLiteral("file_name"), file.osPathQString());
        element->setPath(file);
        element->setGenerated(true);
    }
}

QList<ProjectElement*> ProjectSystem::sourceFiles(ProjectElement* element) const
{
    QList<ProjectElement*> files;
    ElementWalk elements(element);
    while (ProjectElement* each = elements.next())
        if (each->tag() == ProjectElement::File)
            files.append(each);
    return files;
}

namespace {

template <typename Wanted> ProjectElement* firstBelow(ProjectElement* element, Wanted wanted)
{
    ElementWalk elements(element);
    while (ProjectElement* each = elements.next())
        if (wanted(each))
            return each;
    return nullptr;
}

bool isFile(const ProjectElement* element)
{
    return element->tag() == ProjectElement::File;
}

} // namespace

ProjectElement* ProjectSystem::findFile(ProjectElement* element, const QString& name) const
{
    return firstBelow(element, [&](const ProjectElement* each) {
        return isFile(each) && (each->getName() == name || each->path().osPathQString() == name);
    });
}

ProjectElement* ProjectSystem::findRelativeFile(ProjectElement* element, const QString& name) const
{
    Path absolute(QDir(getProjectDirectory(element)).absoluteFilePath(name));
    return firstBelow(element, [&](const ProjectElement* each) {
        return isFile(each) &&
               (each->attribute(QStringLiteral("file_name")) == name || each->path() == absolute);
    });
}

ProjectElement* ProjectSystem::findAbsoluteFile(ProjectElement* element, const QString& path) const
{
    Path wanted(path);
    return firstBelow(element,
                      [&](const ProjectElement* each) { return isFile(each) && each->path() == wanted; });
}

ProjectElement* ProjectSystem::findFolder(ProjectElement* element, const QString& name) const
{
    return firstBelow(element, [&](const ProjectElement* each) {
        return each->tag() == ProjectElement::Folder && each->getName() == name;
    });
}

ProjectElement* ProjectSystem::findConfiguration(ProjectElement* element, const QString& name) const
{
    return element ? element->configuration(name) : nullptr;
}

ProjectElement* ProjectSystem::findByName(ProjectElement* element, const QString& name) const
{
    return firstBelow(element, [&](const ProjectElement* each) { return each->getName() == name; });
}

void ProjectSystem::applicableSettingsFor(ProjectElement* element, PropertyClassList& list)
{
    switch (element->tag()) {
    case ProjectElement::Solution: appendSolutionProperties(element, list); [[fallthrough]];
    case ProjectElement::Project:
        appendProjectProperties(element, list);
        appendLinkerProperties(element, list);
        appendArchiverProperties(element, list);
        appendTargetProperties(element, list);
        [[fallthrough]];
    case ProjectElement::Folder:
    case ProjectElement::File:
        if (element->tag() == ProjectElement::File)
            for (auto id : {ProjectProperties::FileName, ProjectProperties::FileType,
                            ProjectProperties::FileCodec, ProjectProperties::FileOpenWith,
                            ProjectProperties::FullPath, ProjectProperties::RelativePath})
                list.appendUnique(m_properties[id]);
        if (element->tag() == ProjectElement::Folder)
            for (auto id : {ProjectProperties::Filter, ProjectProperties::DynamicPath})
                list.appendUnique(m_properties[id]);
        appendCCompilerProperties(element, list);
        appendCppCompilerProperties(element, list);
        appendAssemblerProperties(element, list);
        break;
    case ProjectElement::Configuration:
        list.appendUnique(m_properties[ProjectProperties::InheritedConfigurations]);
        break;
    }
}

void ProjectSystem::appendProjectProperties(ProjectElement*, PropertyClassList& list)
{
    for (auto id :
         {ProjectProperties::NodeName, ProjectProperties::ProjectType, ProjectProperties::ProjectDirectory,
          ProjectProperties::FullProjectDirectory, ProjectProperties::ProjectDependencies,
          ProjectProperties::Macros, ProjectProperties::Platform})
        list.appendUnique(m_properties[id]);
}

void ProjectSystem::appendSolutionProperties(ProjectElement*, PropertyClassList& list)
{
    for (auto id : {ProjectProperties::SolutionFileName, ProjectProperties::DateCreated,
                    ProjectProperties::DateModified, ProjectProperties::BatchBuildConfigurations})
        list.appendUnique(m_properties[id]);
}
