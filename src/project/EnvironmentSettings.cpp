#include "project/EnvironmentSettings.h"

#include "project/PackageSystem.h"
#include "support/QTx.h"

#include <QCoreApplication>
#include <QTimer>

EnvironmentSettings* environment = nullptr;

namespace {

constexpr int SaveInterval = 60000; // milliseconds
constexpr char GlobalMacros[] = "Environment/Macros/Global Macros";
constexpr char SizeDisplayUnit[] = "Environment/Size Display Unit";
constexpr char MaximumBacktraceCalls[] = "Environment/Debugger/Maximum Backtrace Calls";

} // namespace

bool EnvironmentPropertyValue::inherited() const
{
    bool found = false;
    m_settings->readEntry(propertyClass()->saveName(), QString(), &found);
    return !found;
}

void EnvironmentPropertyValue::setPropertyValue(const QString& text)
{
    m_settings->writeEntry(propertyClass()->saveName(), text);
}

QString EnvironmentPropertyValue::propertyValue() const
{
    return m_settings->readEntry(propertyClass()->saveName(), propertyClass()->defaultValue());
}

EnvironmentSettings::EnvironmentSettings() : m_timer(new QTimer(this))
{
    m_user.setPath(Path(benchUserDirectory() + QLatin1String("/settings.xml")));
    m_transient.setPath(Path(benchUserDirectory() + QLatin1String("/transient.xml")));
    m_user.load();
    m_transient.load();
    m_timer->setObjectName(QStringLiteral("environment-settings-save-timer"));
    m_timer->setInterval(SaveInterval);
    connect(m_timer, &QTimer::timeout, this, &EnvironmentSettings::saveSettings);
    if (QCoreApplication::instance())
        m_timer->start();
}

EnvironmentSettings::~EnvironmentSettings()
{
    saveSettings();
}

void EnvironmentSettings::createEntries()
{
    auto add = [this](const char* name, PropertyClass::Type type, const char* otherwise, const char* page,
                      const char* title, const char* help) {
        auto text = [](const char* each) { return QString::fromLatin1(each); };
        addEntry(std::make_unique<PropertyClass>(text(name), type, text(otherwise),
                                                 QStringLiteral("Environment"), text(page), text(title),
                                                 text(help)));
    };
    add(GlobalMacros, PropertyClass::StringList, "", "Macros", "Global Macros",
        "Macros that hold in every solution, as name=value.");
    add(SizeDisplayUnit, PropertyClass::Integer, "0", "Display", "Size Display Unit",
        "How sizes are shown: 0 for kB of 1000 bytes, 1 for KB and 2 for kiB of 1024 bytes.");
    add(MaximumBacktraceCalls, PropertyClass::Integer, "100", "Debugger", "Maximum Backtrace Calls",
        "The most calls that a back-trace shows.");
}

void EnvironmentSettings::addEntry(std::unique_ptr<PropertyClass> propertyClass)
{
    m_values.push_back(std::make_unique<EnvironmentPropertyValue>(propertyClass.get(), &m_user));
    registerProperty(propertyClass->saveName(), m_values.back().get());
    m_classes.push_back(std::move(propertyClass));
}

// A value that was registered as transient is kept apart from what the user chose.
Settings& EnvironmentSettings::settingsFor(const PropertyClass* propertyClass)
{
    const PropertyValue* value = findProperty(propertyClass->saveName());
    return value && value->transient() ? m_transient : m_user;
}

QString EnvironmentSettings::readSetting(const PropertyClass* propertyClass) const
{
    const PropertyValue* value = findProperty(propertyClass->saveName());
    const Settings& settings = value && value->transient() ? m_transient : m_user;
    return settings.readEntry(propertyClass->saveName(), propertyClass->defaultValue());
}

void EnvironmentSettings::writeSetting(const PropertyClass* propertyClass, const QString& value)
{
    settingsFor(propertyClass).writeEntry(propertyClass->saveName(), value);
}

void EnvironmentSettings::removeSetting(const PropertyClass* propertyClass)
{
    settingsFor(propertyClass).removeEntry(propertyClass->saveName());
}

void EnvironmentSettings::saveSettings()
{
    if (!QTx::haveHome())
        return;
    m_user.sync();
    m_transient.sync();
}

PropertyValue* EnvironmentSettings::findProperty(const QString& name) const
{
    return m_registry.value(name);
}

void EnvironmentSettings::registerProperty(const QString& name, PropertyValue* value)
{
    m_registry.insert(name, value);
}

QString EnvironmentSettings::globalMacros() const
{
    return m_user.readEntry(QLatin1String(GlobalMacros));
}

void EnvironmentSettings::setGlobalMacros(const QString& text)
{
    m_user.writeEntry(QLatin1String(GlobalMacros), text);
}
