// The templates from which a project of a solution is filled when it names one.
//
//   <projects>
//     <configuration name="Debug" inherited_configurations="MAXQ30"> properties </configuration>
//     <project name="Program" project_type="Executable" configurations="Debug;Release">
//       <property name="build_output_directory" value="out" configuration="Debug"/>
//       <propertygroup name="Core" value="Small"/>
//       <folder name="Source" filter="c;h"> <file source="$(TargetsDir)/crt0.s" expand="yes"/> </folder>
//     </project>
//   </projects>
//
// What the solution file says about a project stands; a template only adds to it.
#pragma once

#include "project/MacroSystem.h"
#include "project/ProjectElement.h"
#include "project/ProjectSystem.h"
#include "project/PropertyValueGroups.h"
#include "project/xml/XMLNode.h"
#include "project/xml/XMLPP2.h"

#include <QHash>

// The file named by -templatesfile; empty when there was none.
extern QString templatesFile;
// That file, or the project_templates.xml of $(TargetsDir), with system macros expanded.
QString projectTemplatesFile(const MacroSystem& macros);

class ProjectTemplates : public XMLPP2 {
public:
    // The projects stay the caller's.
    explicit ProjectTemplates(ProjectSystem& projects);

    // A file that is missing leaves the list empty. Throws SolutionLoadError for one that is not XML.
    void loadTemplates(const QString& file);

    // The `project` element of that name, or the shared `configuration` element; null when there is none.
    XMLElement* findTemplate(const QString& name) const { return m_projects.value(name); }
    XMLElement* findConfiguration(const QString& name) const { return m_configurations.value(name); }
    QStringList listTemplates() const { return m_names; }

    // Fills a project: its type, its configurations (which are made on the solution too), settings,
    // property groups, folders and files.
    void createProjectFromTemplate(ProjectElement* solution, ProjectElement* project, XMLElement* from);
    // The same for the children of any element of a template.
    void createFromTemplate(ProjectElement* element, XMLElement* from);
    // One configuration: on the solution with what it inherits, and the settings in it on the element.
    void createConfiguration(ProjectElement* solution, ProjectElement* element, XMLElement* from);

    // Folders made with a directory, which are still to be filled from it.
    const QList<ProjectElement*>& dynamicFolders() const { return m_dynamicFolders; }
    // What the preprocessor found wrong; a chain to an installation without templates is no fault yet.
    const QStringList& errors() const { return m_errors; }

protected:
    void error(const QString& message) override { m_errors.append(message); }

private:
    void createMaps(XMLElement* root);
    void createProperty(ProjectElement* element, XMLElement* from, const QString& configuration);
    void createPropertyGroup(ProjectElement* element, XMLElement* from, const QString& configuration);
    void createFolder(ProjectElement* parent, XMLElement* from);
    void createFile(ProjectElement* parent, XMLElement* from);
    void setMissing(ProjectElement* element, const QString& name, const QString& value,
                    const QString& configuration);
    QString text(ProjectElement* element, const XMLElement* from, const char* attribute,
                 const QString& configuration);

    ProjectSystem& m_system;
    QHash<QString, XMLElement*> m_projects;
    QHash<QString, XMLElement*> m_configurations;
    QStringList m_names;
    QStringList m_errors;
    QList<ProjectElement*> m_dynamicFolders;
    PropertyValueGroups m_groups;
};
