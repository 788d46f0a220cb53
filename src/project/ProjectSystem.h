// A solution file in memory: a tree of ProjectElements with settings held by configuration elements.
// Configurations inherit from each other, and every node from its parents.
#pragma once

#include "project/ProjectElement.h"
#include "project/ProjectProperties.h"
#include "project/PropertyClass.h"
#include "project/PropertyInheritance.h"
#include "support/Path.h"

#include <QObject>

#include <memory>

class BuildSystem;
class MacroSystem;
class PropertyClassList;
class ProjectTemplates;

// Asked when a solution file or an imported one is missing.
class ProjectFileNotFoundErrorHandler {
public:
    virtual ~ProjectFileNotFoundErrorHandler() = default;
    // The file to take instead; an empty text gives up.
    virtual QString fileNotFound(const QString& file) = 0;
};

// Asked when a project names an unknown template.
class TemplateNotFoundErrorHandler {
public:
    virtual ~TemplateNotFoundErrorHandler() = default;
    // The template to take instead; an empty text gives up.
    virtual QString templateNotFound(const QString& templateName) = 0;
};

class ProjectSystem : public QObject {
    Q_OBJECT

public:
    // The macros stay the caller's.
    explicit ProjectSystem(MacroSystem& macros);
    ~ProjectSystem() override;

    MacroSystem& macros() const { return m_macros; }
    // The vocabulary of settings, which the build system brings; null when there is none.
    BuildSystem* buildSystem() const { return m_buildSystem; }
    void setBuildSystem(BuildSystem* buildSystem) { m_buildSystem = buildSystem; }

    // An empty solution with a Common configuration, to be saved as that file; it becomes the solution.
    virtual ProjectElement* createSolution(const QString& path);
    // A new project with the values of appendDefaultProjectValues().
    virtual ProjectElement* createProject(ProjectElement* solution, const QString& name,
                                          const QString& projectType);
    // The settings that mean something for a node.
    virtual void applicableSettingsFor(ProjectElement* element, PropertyClassList& list);
    // The directory in which new files of a node go.
    virtual QString defaultFileLocation(ProjectElement* element);
    // The kind of a file: `file_type`, or else by extension; an empty text when neither tells.
    virtual QString getFileType(ProjectElement* file);
    // Extensions come without the dot.
    virtual QString objectFileExtension() const = 0;
    virtual QString libraryFileExtension() const = 0;
    virtual QString executableFileExtension() const = 0;
    // Brings a solution of an older version into the form of today, before its version is set.
    virtual void munge(ProjectElement* solution);
    virtual void appendCCompilerProperties(ProjectElement* element, PropertyClassList& list) = 0;
    virtual void appendCppCompilerProperties(ProjectElement* element, PropertyClassList& list) = 0;
    virtual void appendAssemblerProperties(ProjectElement* element, PropertyClassList& list) = 0;
    virtual void appendLinkerProperties(ProjectElement* element, PropertyClassList& list) = 0;
    virtual void appendArchiverProperties(ProjectElement* element, PropertyClassList& list) = 0;
    virtual void appendDefaultProjectValues(ProjectElement* project) = 0;
    virtual void appendProjectProperties(ProjectElement* element, PropertyClassList& list);
    virtual void appendSolutionProperties(ProjectElement* element, PropertyClassList& list);
    virtual void appendTargetProperties(ProjectElement* element, PropertyClassList& list) = 0;
    virtual QString assemblyCodeFileExtension() const = 0;

    // Throws SolutionLoadError; nothing is loaded then. The handlers may be null. One solution can be
    // loaded at a time.
    void loadSolution(const QString& path, ProjectFileNotFoundErrorHandler* files,
                      TemplateNotFoundErrorHandler* templates);
    void closeSolution();
    // Writes the solution file, or that of one (imported) solution. Throws HException.
    void save();
    void saveProjectFile(ProjectElement* solution);

    bool haveSolution() const { return m_solution != nullptr; }
    ProjectElement* solutionElement() const { return m_solution.get(); }
    // Absolute; empty without a solution.
    QString solutionFilePath() const;
    QString solutionDirectory() const;

    // By name, with the imported solutions; null stands for the whole solution. Of two projects with one
    // name the first counts.
    QMap<QString, ProjectElement*> solutionProjects(ProjectElement* solution) const;
    // Exact, descending into imported solutions; null when there is none.
    ProjectElement* findProject(ProjectElement* solution, const QString& name) const;

    // Which configurations `configurations` lists.
    static constexpr int HiddenConfigurations = 2;
    static constexpr int VisibleConfigurations = 4;
    // Appends the names of the configurations from the element up to the root that are not in the list.
    // Common is never listed as visible, nor what is made for another platform.
    void configurations(const ProjectElement* element, QStringList& list, int mode) const;

    // The value of a setting: from the element up to the solution, at each node in the configuration
    // itself, then those that it inherits, then Common. A StringList adds up all values, joined by ";",
    // any other type takes the first. Without any, the default of the class.
    // Cost: a few lookups for each level of the tree.
    QString settingFor(const ProjectElement* element, const PropertyClass* propertyClass,
                       const QString& configuration,
                       PropertyInheritanceInformation* information = nullptr) const;
    // The name of the first configuration on that way which holds the setting; empty when none does.
    QString configurationUsedFor(const ProjectElement* element, const PropertyClass* propertyClass,
                                 const QString& configuration) const;
    // What the element itself holds or is, for a class that is not stored per configuration.
    QString ownSetting(const ProjectElement* element, const PropertyClass* propertyClass) const;

    // The direct ones, as written at the solution's configuration.
    QStringList getInheritedConfigurations(const ProjectElement* element, const QString& configuration) const;
    void setInheritedConfigurations(ProjectElement* element, const QString& configuration,
                                    const QStringList& inherited);

    // Set or remove a value at an element's configuration; both signal propertiesChanged.
    void setProperty(ProjectElement* element, const QString& name, const QString& value,
                     const QString& configuration);
    void removeProperty(ProjectElement* element, const QString& name, const QString& configuration);

    // `project_directory` against the directory of the solution file; absolute.
    QString getProjectDirectory(const ProjectElement* element) const;
    Path projectDirectoryPath(const ProjectElement* element) const;
    // The node itself or the nearest one above it with that tag; null when there is none.
    static ProjectElement* projectContaining(ProjectElement* element);
    static const ProjectElement* projectContaining(const ProjectElement* element);
    static ProjectElement* solutionContaining(ProjectElement* element);
    static const ProjectElement* solutionContaining(const ProjectElement* element);
    // The platform that a node is for, in lower case.
    QString platform(const ProjectElement* node) const;

    // Files below an element in the order of the tree, with those of dynamic folders.
    QList<ProjectElement*> sourceFiles(ProjectElement* element) const;
    // A file below an element: by name or path; by its `file_name`, or its way from the project
    // directory; by absolute path. Null when there is none.
    ProjectElement* findFile(ProjectElement* element, const QString& name) const;
    ProjectElement* findRelativeFile(ProjectElement* element, const QString& name) const;
    ProjectElement* findAbsoluteFile(ProjectElement* element, const QString& path) const;
    ProjectElement* findFolder(ProjectElement* element, const QString& name) const;
    ProjectElement* findConfiguration(ProjectElement* element, const QString& name) const;
    ProjectElement* findByName(ProjectElement* element, const QString& name) const;

    // By `project_dependencies`; names of unknown projects count for nothing.
    QList<ProjectElement*> dependencies(ProjectElement* project, const QString& configuration) const;
    bool directlyDependsOn(ProjectElement* project, ProjectElement* other,
                           const QString& configuration) const;
    bool dependsOn(ProjectElement* project, ProjectElement* other, const QString& configuration) const;
    // Each project behind those that it depends on; a cycle is cut where it closes. For a project it and
    // what it needs; for a solution, or null, all projects.
    QList<ProjectElement*> buildOrder(ProjectElement* element, const QString& configuration) const;

    const ProjectProperties& properties() const { return m_properties; }

Q_SIGNALS:
    void solutionLoaded();
    void propertiesChanged(ProjectElement* element);

private:
    friend class SolutionLoader;
    void updateProjectList();
    void updateInheritenceMap(ProjectElement* solution);
    void populateDynamicFolder(ProjectElement* folder);
    void updateFilePaths(ProjectElement* element);
    QStringList inheritanceOf(const ProjectElement* element, const QString& configuration) const;

    // Hands each place on the way of a setting to `visit(node, configuration, text)` until it says true.
    template <typename Visit>
    void walk(const ProjectElement* element, const QString& name, const QString& configuration,
              Visit visit) const;

    MacroSystem& m_macros;
    BuildSystem* m_buildSystem = nullptr;
    ProjectProperties m_properties;
    std::unique_ptr<ProjectElement> m_solution;
    QMap<QString, ProjectElement*> m_projects;
};

// Null until main makes it.
extern ProjectSystem* projectSystem;
