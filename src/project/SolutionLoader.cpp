#include "project/SolutionLoader.h"

#include "project/MacroSystem.h"
#include "project/ProjectElement.h"
#include "project/ProjectTemplates.h"
#include "project/SolutionLoadError.h"
#include "project/limits.h"
#include "project/xml/XMLDocument.h"
#include "support/Path.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstring>
#include <optional>

namespace {

constexpr char DocumentType[] = "Anvil_Project_File";
const QString TemplateName = QStringLiteral("template_name");

// What may stand below what; anything else in a solution file is passed over.
std::optional<ProjectElement::Tag> childTag(ProjectElement::Tag parent, const XMLElement* child)
{
    using enum ProjectElement::Tag;
    if (parent == Solution && child->isNamed("project"))
        return Project;
    if ((parent == Project || parent == Folder) && child->isNamed("folder"))
        return Folder;
    if ((parent == Project || parent == Folder) && child->isNamed("file"))
        return File;
    if (parent != Configuration && child->isNamed("configuration"))
        return Configuration;
    return {};
}

} // namespace

std::unique_ptr<ProjectElement> SolutionLoader::load(const QString& path)
{
    auto solution = std::make_unique<ProjectElement>(ProjectElement::Solution, nullptr);
    loadProjectFile(path, QDir::currentPath(), solution.get(), 0);
    m_system.m_projects.clear();
    return solution;
}

// The name as it stands, else below the directory, else what the handler says.
QString SolutionLoader::locate(const QString& name, const QString& directory)
{
    if (QFileInfo::exists(name))
        return name;
    QString below = QDir(directory).filePath(name);
    if (!name.isEmpty() && QFileInfo::exists(below))
        return below;
    QString other = m_files ? m_files->fileNotFound(name) : QString();
    if (!other.isEmpty() && QFileInfo::exists(other))
        return other;
    throw SolutionLoadError(QFileInfo(name).fileName(), QStringLiteral(" does not exist"));
}

void SolutionLoader::loadProjectFile(const QString& name, const QString& directory, ProjectElement* solution,
                                     unsigned depth)
{
    QFileInfo file(locate(name, directory));
    QString fileName = file.fileName();
    if (!file.isFile() || !file.isReadable())
        throw SolutionLoadError(fileName, QStringLiteral(" cannot access"));
    QString canonical = file.canonicalFilePath();
    if (m_system.haveSolution() || m_loaded.contains(canonical))
        throw SolutionLoadError(fileName, QStringLiteral(" solution already loaded"));
    if (depth > ProjectLimits::ImportDepth)
        throw SolutionLoadError(
            fileName, QStringLiteral(" is imported more than %1 deep").arg(ProjectLimits::ImportDepth));
    m_loaded.append(canonical);
    solution->setPath(Path(file.absoluteFilePath()));
    solution->setFileTime(file.lastModified());
    {
        XMLDocument document(false);
        if (!document.load(QFile::encodeName(file.filePath()).constData()))
            throw SolutionLoadError(fileName, QString::fromUtf8(document.errorText()), document.errorLine());
        const char* type = document.documentType();
        if (!type || strcmp(type, DocumentType) != 0 || !document.root() ||
            !document.root()->isNamed("solution"))
            throw SolutionLoadError(fileName, QStringLiteral(" not a solution file"));
        domToElement(file.absolutePath(), document.root(), solution, depth);
    }
    const QString version = QStringLiteral("version");
    if (solution->attribute(version) != QLatin1String("2")) {
        m_system.munge(solution);
        solution->setAttribute(version, QStringLiteral("2"));
    }
}

// The recursion is bounded by the depth of an XML document, and by that of imports.
void SolutionLoader::domToElement(const QString& directory, const XMLElement* from, ProjectElement* element,
                                  unsigned depth)
{
    element->setAttributesFrom(from);
    if (element->tag() == ProjectElement::Project && element->hasAttribute(TemplateName))
        m_templated.append(element);
    if (element->tag() == ProjectElement::Folder && element->hasAttribute(QStringLiteral("path")))
        m_dynamicFolders.append(element);
    for (const XMLElement* child = from->firstElement(); child; child = child->nextElement()) {
        if (element->tag() == ProjectElement::Solution && child->isNamed("import")) {
            QString name = child->attributeText("file_name");
            ProjectElement* imported = element->appendChild(ProjectElement::Solution);
            loadProjectFile(MacroSystem::replaceMacros(m_system.macros().globalMacros(true), name), directory,
                            imported, depth + 1);
            imported->setAttribute(QStringLiteral("file_name"), name);
            continue;
        }
        std::optional<ProjectElement::Tag> tag = childTag(element->tag(), child);
        if (!tag)
            continue;
        // Two configurations of one name at one node are one.
        ProjectElement* made = *tag == ProjectElement::Configuration
                                   ? element->makeConfiguration(child->attributeText("Name"))
                                   : element->appendChild(*tag);
        domToElement(directory, child, made, depth);
    }
}

void SolutionLoader::applyTemplates(ProjectElement* solution)
{
    if (m_templated.isEmpty())
        return;
    QString fileName = solution->path().fileName();
    ProjectTemplates templates(m_system);
    templates.loadTemplates(projectTemplatesFile(m_system.macros()));
    for (ProjectElement* project : m_templated) {
        QString name = project->attribute(TemplateName);
        if (name.isEmpty())
            throw SolutionLoadError(QString(),
                                    QLatin1String("no template for project ") + project->getName());
        XMLElement* found = templates.findTemplate(name);
        if (!found && m_templates)
            found = templates.findTemplate(m_templates->templateNotFound(name));
        if (!found) {
            SolutionLoadError failure(fileName, QStringLiteral(" project template not found"));
            // A list that did not load is the likely reason.
            if (!templates.errors().isEmpty())
                failure.setHint(templates.errors().first().toStdString());
            throw failure;
        }
        templates.createProjectFromTemplate(ProjectSystem::solutionContaining(project), project, found);
        project->removeAttribute(TemplateName);
    }
    for (ProjectElement* folder : templates.dynamicFolders())
        m_dynamicFolders.append(folder);
}
