// One load of a solution: reads the file and those that it imports into a tree, and remembers the
// projects that are to be filled from a template and the folders that are to be filled from a
// directory. Throws SolutionLoadError.
#pragma once

#include "project/ProjectElement.h"
#include "project/ProjectSystem.h"

#include <memory>

class XMLElement;

class SolutionLoader {
public:
    SolutionLoader(ProjectSystem& system, ProjectFileNotFoundErrorHandler* files,
                   TemplateNotFoundErrorHandler* templates)
        : m_system(system), m_files(files), m_templates(templates)
    {
    }

    // The tree.
    std::unique_ptr<ProjectElement> load(const QString& path);
    void applyTemplates(ProjectElement* solution);
    const QList<ProjectElement*>& dynamicFolders() const { return m_dynamicFolders; }

private:
    void loadProjectFile(const QString& name, const QString& directory, ProjectElement* solution,
                         unsigned depth);
    QString locate(const QString& name, const QString& directory);
    void domToElement(const QString& directory, const XMLElement* from, ProjectElement* element,
                      unsigned depth);

    ProjectSystem& m_system;
    ProjectFileNotFoundErrorHandler* m_files;
    TemplateNotFoundErrorHandler* m_templates;
    QStringList m_loaded; // canonical paths, in the order of loading
    QList<ProjectElement*> m_templated;
    QList<ProjectElement*> m_dynamicFolders;
};
