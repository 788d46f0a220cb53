#include "project/MacroSystem.h"

#include "project/EnvironmentSettings.h"
#include "support/HException.h"
#include "support/Path.h"

MacroSystem macroSystem;

MacroSystem::MacroSystem() : m_system(dynamicMacros())
{
    m_system.insert(QStringLiteral("HostArch"), QStringLiteral("x86"));
    m_system.insert(QStringLiteral("HostOS"), QStringLiteral("solaris"));
    m_system.insert(QStringLiteral("HostEXE"), QStringLiteral(""));
    m_system.insert(QStringLiteral("HostDLL"), QStringLiteral(".so_solaris_x86"));
}

QString MacroSystem::systemMacro(const QString& name) const
{
    return m_system.value(name, QStringLiteral(""));
}

void MacroSystem::setSystemMacro(const QString& name, const QString& value)
{
    m_system.insert(name, value);
}

void MacroSystem::setSystemMacroPath(const QString& name, const Path& path)
{
    m_system.insert(name, path.osPathQString());
}

MacroSystem::Macros MacroSystem::globalMacros(bool withSystem) const
{
    Macros macros = withSystem ? m_system : Macros();
    if (m_settings)
        overwriteMacros(macros, macrosFromStringList(stringListFromString(m_settings->globalMacros())));
    return macros;
}

QString MacroSystem::globalMacro(const QString& name) const
{
    return globalMacros(true).value(name, QStringLiteral(""));
}

void MacroSystem::setGlobalMacro(const QString& name, const QString& value)
{
    if (!m_settings)
        throw HException("no settings to keep a global macro in");
    Macros macros = globalMacros(false);
    if (value.isEmpty())
        macros.remove(name);
    else
        macros.insert(name, value);
    m_settings->setGlobalMacros(stringFromStringList(stringListFromMacros(macros)));
}
