// What the tool remembers between runs: the user's settings file below $(BenchUserDir), a second file
// for transient state, and the environment properties, whose values live in the two.
#pragma once

#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "project/Settings.h"

#include <QHash>
#include <QObject>

#include <memory>
#include <vector>

class QTimer;

// A property whose value lives in a settings file under the class's save name.
class EnvironmentPropertyValue : public PropertyValue {
public:
    EnvironmentPropertyValue(PropertyClass* propertyClass, Settings* settings)
        : PropertyValue(propertyClass), m_settings(settings)
    {
    }
    // True when nothing is stored, so that the default shows.
    bool inherited() const override;
    void setPropertyValue(const QString& text) override;
    QString propertyValue() const override;

private:
    Settings* m_settings;
};

class EnvironmentSettings : public QObject {
    Q_OBJECT

public:
    // Loads both files. The save timer runs when there is an event loop to run it.
    EnvironmentSettings();
    // Saves.
    ~EnvironmentSettings() override;

    // Makes the entries that the tool reads:
    //   Environment/Macros/Global Macros             string list, empty
    //   Environment/Size Display Unit                0 (kB), 1 (KB) or 2 (kiB)
    //   Environment/Debugger/Maximum Backtrace Calls number
    void createEntries();

    // The stored text, or the class's default.
    QString readSetting(const PropertyClass* propertyClass) const;
    void writeSetting(const PropertyClass* propertyClass, const QString& value);
    void removeSetting(const PropertyClass* propertyClass);
    void saveSettings();

    // The property of a save name, or null. A registered value stays the caller's; a name that is
    // registered again takes the new value.
    PropertyValue* findProperty(const QString& name) const;
    void registerProperty(const QString& name, PropertyValue* value);

    // The text behind MacroSystem::globalMacros().
    QString globalMacros() const;
    void setGlobalMacros(const QString& text);

    Settings& userSettings() { return m_user; }
    Settings& transientSettings() { return m_transient; }

private:
    void addEntry(std::unique_ptr<PropertyClass> propertyClass);
    Settings& settingsFor(const PropertyClass* propertyClass);

    Settings m_user;
    Settings m_transient;
    QTimer* m_timer;
    QHash<QString, PropertyValue*> m_registry;
    std::vector<std::unique_ptr<PropertyClass>> m_classes;
    std::vector<std::unique_ptr<PropertyValue>> m_values;
};

// Null until main makes it.
extern EnvironmentSettings* environment;
