#include "project/ProjectTemplates.h"

#include "project/BuildSystem.h"
#include "project/ProjectElement.h"
#include "project/ProjectSystem.h"
#include "project/PropertyClass.h"
#include "project/SolutionLoadError.h"
#include "project/xml/XMLNode.h"

#include <QFile>
#include <QFileInfo>

QString templatesFile;

namespace {

const QString Common = QStringLiteral("Common");

} // namespace

ProjectTemplates::ProjectTemplates(ProjectSystem& projects)
    : XMLPP2(false), m_system(projects), m_groups(projects.macros())
{
    setFileMacros(projects.macros().systemMacros());
}

void ProjectTemplates::setMissing(ProjectElement* element, const QString& name, const QString& value,
                                  const QString& configuration)
{
    const ProjectElement* place = element->configuration(configuration);
    if (!place || !place->hasAttribute(name))
        m_system.setProperty(element, name, value, configuration);
}

QString projectTemplatesFile(const MacroSystem& macros)
{
    return MacroSystem::replaceMacros(
        macros.systemMacros(),
        templatesFile.isEmpty() ? QStringLiteral("$(TargetsDir)/project_templates.xml") : templatesFile);
}

void ProjectTemplates::loadTemplates(const QString& file)
{
    m_projects.clear();
    m_configurations.clear();
    m_names.clear();
    if (!QFileInfo::exists(file))
        return;
    QByteArray macros = MacroSystem::stringFromStringList(
                            MacroSystem::stringListFromMacros(m_system.macros().globalMacros(true)))
                            .toUtf8();
    // Macros stay as they are written: `expand` on an element says whether they are replaced.
    if (!load(QFile::encodeName(file).constData(), macros.constData(), false))
        throw SolutionLoadError(QFileInfo(file).fileName(), QString::fromUtf8(errorText()), errorLine());
    if (root())
        createMaps(root());
}

void ProjectTemplates::createMaps(XMLElement* root)
{
    for (XMLElement* element = root->firstElement(); element; element = element->nextElement()) {
        QString name = element->attributeText("name");
        if (element->isNamed("project")) {
            if (!m_projects.contains(name))
                m_names.append(name);
            m_projects.insert(name, element);
        } else if (element->isNamed("configuration")) {
            m_configurations.insert(name, element);
        } else if (element->isNamed("configurations")) {
            for (XMLElement* each = element->firstElement(); each; each = each->nextElement())
                if (each->isNamed("configuration"))
                    m_configurations.insert(each->attributeText("name"), each);
        }
    }
}

QString ProjectTemplates::text(ProjectElement* element, const XMLElement* from, const char* attribute,
                               const QString& configuration)
{
    QString value = from->attributeText(attribute);
    if (from->attributeText("expand") != QLatin1String("yes"))
        return value;
    if (BuildSystem* build = m_system.buildSystem())
        return build->replaceMacros(element, value, configuration);
    return MacroSystem::replaceMacros(m_system.macros().globalMacros(true), value);
}

void ProjectTemplates::createProjectFromTemplate(ProjectElement* solution, ProjectElement* project,
                                                 XMLElement* from)
{
    for (const char* attribute : {"project_type", "type"})
        if (from->hasAttribute(attribute))
            setMissing(project, QStringLiteral("project_type"), from->attributeText(attribute), Common);
    // Property groups that the template chooses from come from the file that project and template name.
    for (XMLElement* each = from->firstElement(); each; each = each->nextElement())
        if (each->isNamed("property") &&
            each->attributeText("name") == QLatin1String("property_groups_file_path"))
            createProperty(project, each, Common);
    for (const QString& name : MacroSystem::stringListFromString(from->attributeText("configurations")))
        if (XMLElement* shared = findConfiguration(name))
            createConfiguration(solution, solution, shared);
        else
            solution->makeConfiguration(name);
    createFromTemplate(project, from);
}

void ProjectTemplates::createConfiguration(ProjectElement* solution, ProjectElement* element,
                                           XMLElement* from)
{
    QString name = from->attributeText("name");
    ProjectElement* made = solution->makeConfiguration(name);
    for (const char* attribute : {"inherited_configurations", "hidden", "Platform"})
        if (from->hasAttribute(attribute) && !made->hasAttribute(QLatin1String(attribute)))
            made->setAttribute(QLatin1String(attribute), from->attributeText(attribute));
    for (XMLElement* each = from->firstElement(); each; each = each->nextElement())
        if (each->isNamed("property"))
            createProperty(element, each, name);
        else if (each->isNamed("propertygroup"))
            createPropertyGroup(element, each, name);
}

void ProjectTemplates::createFromTemplate(ProjectElement* element, XMLElement* from)
{
    for (XMLElement* each = from->firstElement(); each; each = each->nextElement()) {
        if (each->isNamed("configuration"))
            createConfiguration(ProjectSystem::solutionContaining(element), element, each);
        else if (each->isNamed("property"))
            createProperty(element, each, Common);
        else if (each->isNamed("propertygroup"))
            createPropertyGroup(element, each, Common);
        else if (each->isNamed("folder"))
            createFolder(element, each);
        else if (each->isNamed("file"))
            createFile(element, each);
    }
}

void ProjectTemplates::createProperty(ProjectElement* element, XMLElement* from, const QString& configuration)
{
    QString in = from->hasAttribute("configuration") ? from->attributeText("configuration") : configuration;
    setMissing(element, from->attributeText("name"), text(element, from, "value", in), in);
}

void ProjectTemplates::createPropertyGroup(ProjectElement* element, XMLElement* from,
                                           const QString& configuration)
{
    QString in = from->hasAttribute("configuration") ? from->attributeText("configuration") : configuration;
    QString name = from->attributeText("name");
    QString value = text(element, from, "value", in);
    BuildSystem* build = m_system.buildSystem();
    const PropertyClass* path =
        build ? build->findPropertyClass(QStringLiteral("property_groups_file_path")) : nullptr;
    if (path)
        m_groups.setGroupFile(build->settingForExpanded(element, path, in));
    if (PropertyValueGroupClass* group = m_groups.getGroupClass(name))
        PropertyValueGroupValue(m_system, group, in, element).setPropertyValue(value);
    else
        setMissing(element, name, value, in);
}

void ProjectTemplates::createFolder(ProjectElement* parent, XMLElement* from)
{
    QString name = text(parent, from, "name", Common);
    ProjectElement* folder = nullptr;
    for (const auto& child : parent->children())
        if (child->tag() == ProjectElement::Folder && child->getName() == name)
            folder = child.get();
    if (!folder) {
        folder = parent->appendChild(ProjectElement::Folder);
        folder->setAttribute(QStringLiteral("Name"), name);
    }
    if (from->hasAttribute("filter") && !folder->hasAttribute(QStringLiteral("filter")))
        folder->setAttribute(QStringLiteral("filter"), text(parent, from, "filter", Common));
    if (from->hasAttribute("source") && !folder->hasAttribute(QStringLiteral("path"))) {
        folder->setAttribute(QStringLiteral("path"), text(parent, from, "source", Common));
        m_dynamicFolders.append(folder);
    }
    createFromTemplate(folder, from);
}

void ProjectTemplates::createFile(ProjectElement* parent, XMLElement* from)
{
    ProjectElement* file = parent->appendChild(ProjectElement::File);
    bool hasSource = from->hasAttribute("source");
    file->setAttribute(QStringLiteral("file_name"),
                       text(parent, from, hasSource ? "source" : "name", Common));
    if (hasSource && from->hasAttribute("name"))
        file->setAttribute(QStringLiteral("Name"), text(parent, from, "name", Common));
    if (from->hasAttribute("filter"))
        file->setAttribute(QStringLiteral("filter"), text(parent, from, "filter", Common));
    createFromTemplate(file, from);
}
