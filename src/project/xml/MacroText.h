// Expansion of `$(Name)` and `$(Name:default)` references in texts, and tables of macros as text.
//
// Expansion: a name is looked up in the given table, then among the date and time macros. A value is
// inserted as it stands. An unknown name gives the default, and without a default the reference stays
// as it was written. The text is scanned again only when a reference held a "$" inside.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

class MacroText {
public:
    using Macros = QMap<QString, QString>;

    // Throws HException, naming the macro, when the text keeps growing or changing (limits.h).
    static QString replaceMacros(const Macros& macros, const QString& text);
    // Date and time at the moment of the call; false for any other name.
    static bool dynamicMacro(const QString& name, QString& value);
    // The names of the date and time macros with their formats, for listings.
    static Macros dynamicMacros();

    // Between tables and lists of `name=value`.
    static Macros macrosFromStringList(const QStringList& list);
    static QStringList stringListFromMacros(const Macros& macros);
    static void overwriteMacros(Macros& base, const Macros& over);

    // Between lists and texts with the items joined by ";". A "\" protects the character behind it.
    static QStringList stringListFromString(const QString& text, bool keepEmpty = false);
    static QString stringFromStringList(const QStringList& list);
    static QString escape(const QString& text);
};
