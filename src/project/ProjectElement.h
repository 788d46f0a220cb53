// A node of the solution tree: the solution, a project, a folder, a file or a configuration. Its
// attributes are the settings by save name, and `Name`. A node owns what stands below it.
#pragma once

#include "project/ConfigurationInheritance.h"
#include "support/Path.h"

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <vector>

class XMLElement;

class ProjectElement {
public:
    enum Tag { Solution, Project, Folder, File, Configuration };

    ProjectElement(Tag tag, ProjectElement* parent) : m_parent(parent), m_tag(tag) {}
    ProjectElement(const ProjectElement&) = delete;
    ProjectElement& operator=(const ProjectElement&) = delete;
    ~ProjectElement();

    Tag tag() const { return m_tag; }
    // Null at the solution.
    ProjectElement* parent() { return m_parent; }
    const ProjectElement* parent() const { return m_parent; }
    // Folders, files, projects and imported solutions, in the order of the file.
    const std::vector<std::unique_ptr<ProjectElement>>& children() const { return m_children; }
    const std::map<QString, std::unique_ptr<ProjectElement>>& configurations() const
    {
        return m_configurations;
    }

    // The new child is owned by this node.
    ProjectElement* appendChild(Tag tag);
    void removeChild(ProjectElement* child);
    // The configuration of that name, made when it is missing.
    ProjectElement* makeConfiguration(const QString& name);
    ProjectElement* configuration(const QString& name) const; // null when there is none
    void removeConfiguration(const QString& name);

    // The attribute `Name`; for a file without one the last part of `file_name`; "<NULL>" otherwise.
    QString getName() const;

    const QMap<QString, QString>& attributes() const { return m_attributes; }
    bool hasAttribute(const QString& name) const { return m_attributes.contains(name); }
    // A null string when there is no such attribute.
    QString attribute(const QString& name) const { return m_attributes.value(name); }
    void setAttribute(const QString& name, const QString& value);
    void removeAttribute(const QString& name);
    void setAttributesFrom(const XMLElement* element);
    // Writes the attributes to an element of an XML document whose pool is the current one.
    void getAttributesFrom(XMLElement* element) const;

    // A file's place in the file system, and that of a solution's file.
    const Path& path() const { return m_path; }
    void setPath(const Path& path) { m_path = path; }

    // Made by filling a dynamic folder, so not written to the solution file.
    bool generated() const { return m_generated; }
    void setGenerated(bool on) { m_generated = on; }

    // When an attribute was last changed since the solution was loaded; an invalid time when it was
    // not. An element counts as modified when any of its attributes was.
    QDateTime modified(const QString& name) const;
    bool isModified() const { return m_edits && !m_edits->times.isEmpty(); }
    void clearModified();

    // A transaction keeps a copy of the attributes; to roll back is to take them from the copy. A
    // second start inside a transaction changes nothing.
    void startTransaction();
    void commitTransaction();
    void rollbackTransaction();

    // On a solution.
    ConfigurationInheritance& inheritance() { return m_inheritance; }
    const ConfigurationInheritance& inheritance() const { return m_inheritance; }
    const QDateTime& fileTime() const { return m_fileTime; } // of a solution's file at its loading
    void setFileTime(const QDateTime& time) { m_fileTime = time; }

    static const char* tagName(Tag tag);

private:
    // Only what is edited carries this: a loaded solution has many nodes and no edits.
    struct Edits {
        QMap<QString, QDateTime> times;
        std::unique_ptr<QMap<QString, QString>> before;
    };
    Edits& edits();

    ProjectElement* m_parent;
    Tag m_tag;
    bool m_generated = false;
    QMap<QString, QString> m_attributes;
    std::vector<std::unique_ptr<ProjectElement>> m_children;
    std::map<QString, std::unique_ptr<ProjectElement>> m_configurations;
    Path m_path;
    std::unique_ptr<Edits> m_edits;
    ConfigurationInheritance m_inheritance;
    QDateTime m_fileTime;
};
