// Expansion of `$(Name)` and `$(Name:default)` references in texts, and the macros that hold for the
// whole process: the system macros, kept here, and the global macros, which a user keeps in the
// settings.
//
// Expansion: a name is looked up in the given table, then among the date and time macros. A value is
// inserted as it stands. An unknown name gives the default, and without a default the reference stays
// as it was written. The text is scanned again only when a reference held a "$" inside.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

class Path;

class MacroSystem {
public:
    using Macros = QMap<QString, QString>;

    MacroSystem();

    // Throws HException, naming the macro, when the text keeps growing or changing (limits.h).
    static QString replaceMacros(const Macros& macros, const QString& text);
    // Date and time at the moment of the call; false for any other name.
    static bool dynamicMacro(const QString& name, QString& value);

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

    // Between tables and lists of `name=value`.
    static Macros macrosFromStringList(const QStringList& list);
    static QStringList stringListFromMacros(const Macros& macros);
    static void overwriteMacros(Macros& base, const Macros& over);

    // Between lists and texts with the items joined by ";". A "\" protects the character behind it.
    static QStringList stringListFromString(const QString& text, bool keepEmpty = false);
    static QString stringFromStringList(const QStringList& list);
    static QString escape(const QString& text);

private:
    Macros m_system;
};

extern MacroSystem macroSystem;
