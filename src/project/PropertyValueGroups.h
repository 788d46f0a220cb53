// Property groups: a file of enumerations, each entry of which stands for many settings. To choose an
// entry is to set them all.
#pragma once

#include "project/MacroSystem.h"
#include "project/ProjectPropertyValue.h"
#include "project/PropertyClass.h"
#include "project/xml/XMLNode.h"
#include "project/xml/XMLPP2.h"

#include <QDateTime>

#include <map>
#include <memory>

// One setting of an entry. An empty configuration means that in which the entry is chosen.
struct PropertyGroupSetting {
    QString name;
    QString value;
    QString configuration;
};

struct PropertyGroupEntry {
    QString name;
    QList<PropertyGroupSetting> settings;
};

// An Enumeration made from a `group` element.
class PropertyValueGroupClass : public PropertyClass {
public:
    explicit PropertyValueGroupClass(const QString& name);

    // Takes descriptions and entries from the element; also when the file has changed.
    void read(const XMLElement* group);
    const QList<PropertyGroupEntry>& entries() const { return m_entries; }
    // Null when there is no such entry.
    const PropertyGroupEntry* getGroupEntry(const QString& name) const;

private:
    QList<PropertyGroupEntry> m_entries;
};

// The document behind the groups.
class PropertyValueGroupFile : public XMLPP2 {
public:
    PropertyValueGroupFile() : XMLPP2(false) {}
    const QStringList& errors() const { return m_errors; }

protected:
    void error(const QString& message) override { m_errors.append(message); }

private:
    QStringList m_errors;
};

class PropertyValueGroups {
public:
    // The macros, for the file's preprocessor, stay the caller's.
    explicit PropertyValueGroups(const MacroSystem& macros) : m_macros(macros) {}

    // An empty name stands for no file. Throws HException when the file does not load.
    void setGroupFile(const QString& file);
    // "None" when there is no file.
    const QString& groupFile() const { return m_file; }
    // The file has the time at which it was read.
    bool isUpToDate() const;

    // Both read the file again when it changed. Null when there is none of that name. A class lives
    // as long as this object, also when the file no longer has it.
    PropertyValueGroupClass* getGroupClass(const QString& name);
    const PropertyGroupEntry* getGroupEntry(const QString& groupName, const QString& entryName);

private:
    void read();

    const MacroSystem& m_macros;
    QString m_file = QStringLiteral("None");
    QDateTime m_time;
    std::map<QString, std::unique_ptr<PropertyValueGroupClass>> m_classes;
    QStringList m_current; // the names in the file as it is now
};

class PropertyValueGroupValue : public ProjectPropertyValue {
public:
    PropertyValueGroupValue(ProjectSystem& projects, PropertyValueGroupClass* groupClass,
                            const QString& configuration, ProjectElement* element)
        : ProjectPropertyValue(projects, groupClass, configuration, element), m_group(groupClass)
    {
    }

    // Removes what the old entry set, then applies the settings of the new one.
    void setPropertyValue(const QString& entry) override;

    // What the chosen entry says: the value of a setting for a configuration (null when it says
    // nothing), and the names of the settings for it. An entry's setting without a configuration
    // counts for all.
    QString getTaggedValue(const QString& name, const QString& configuration) const;
    QStringList getTaggedNames(const QString& configuration) const;

private:
    QString target(const PropertyGroupSetting& setting) const;
    PropertyValueGroupClass* m_group;
};
