// The macros that hold for the whole process: the system macros, kept here, and the global macros, which a
// user keeps in the settings.
#pragma once

#include "project/xml/MacroText.h"

class EnvironmentSettings;
class Path;

class MacroSystem : public MacroText {
public:
    MacroSystem();

    // Where the user's macros are kept; not owned, null for nowhere.
    void setSettings(EnvironmentSettings* settings) { m_settings = settings; }

    // An empty text when there is no such macro.
    QString systemMacro(const QString& name) const;
    const Macros& systemMacros() const { return m_system; }
    void setSystemMacro(const QString& name, const QString& value);
    void setSystemMacroPath(const QString& name, const Path& path);

    // The user's macros; with the flag, laid over the system macros. Without settings there are none.
    Macros globalMacros(bool withSystem) const;
    QString globalMacro(const QString& name) const;
    // An empty value removes the macro. Throws HException when there are no settings to keep it in.
    void setGlobalMacro(const QString& name, const QString& value);

private:
    Macros m_system;
    EnvironmentSettings* m_settings = nullptr;
};

extern MacroSystem macroSystem;
