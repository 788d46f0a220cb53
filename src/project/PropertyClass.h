// What a setting is: its name in files, its type, its texts and its default. Classes are made at start
// by the systems that own them and never change type.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class XMLElement;

class PropertyClass {
public:
    enum Type {
        Boolean,
        Integer,
        IntegerHex,
        IntegerRange,
        String,
        FileName,
        ProjFileName,
        StringList,
        DirPath,
        DirPathList,
        Enumeration,
        Color,
        Font,
        FixedPitchFont,
        Custom
    };

    // Takes the texts from the text table, under the key and ".page", ".group", ".short", ".long",
    // ".default", ".enumerates", ".suffix", ".minimum" and ".maximum". What is not there stays empty.
    PropertyClass(const QString& key, Type type);
    PropertyClass(const QString& saveName, Type type, const QString& defaultValue, const QString& page,
                  const QString& group, const QString& shortDescription, const QString& longDescription);
    // The first of the enumerates is the default.
    PropertyClass(const QString& saveName, Type type, const QStringList& enumerates, const QString& page,
                  const QString& group, const QString& shortDescription, const QString& longDescription);
    // From the attributes name, type, group, short, long, default, minimum, maximum, enumeration
    // (items joined by ";") and specialvalue. A type that is absent or unknown is Custom.
    explicit PropertyClass(const XMLElement* element);
    virtual ~PropertyClass() = default;
    PropertyClass(const PropertyClass&) = delete;
    PropertyClass& operator=(const PropertyClass&) = delete;

    // The text table of the constructor by key, for whoever describes properties by keys.
    static void setText(const QString& key, const QString& text);

    const QString& saveName() const { return m_saveName; } // the key in files and of a setting
    Type type() const { return m_type; }
    const QString& page() const { return m_page; }              // first level of grouping for display
    const QString& group() const { return m_group; }            // second level
    const QString& shortDescription() const { return m_short; } // the title, by which -setprop finds it
    const QString& longDescription() const { return m_long; }
    const QString& dialogDescription() const { return m_dialog; }
    void setDialogDescription(const QString& text) { m_dialog = text; }
    const QString& defaultValue() const { return m_default; }
    void setDefault(const QString& text) { m_default = text; }
    // Shown in place of the minimum of a number.
    const QString& specialValueText() const { return m_specialValueText; }
    void setSpecialValueText(const QString& text) { m_specialValueText = text; }
    const QString& suffix() const { return m_suffix; } // unit of a number
    void setSuffix(const QString& text) { m_suffix = text; }
    // The permitted texts; a Boolean without texts of its own reports "No", "Yes".
    QStringList enumerates() const;
    void setEnumerates(const QStringList& texts) { m_enumerates = texts; }
    // For IntegerRange.
    int minimum() const { return m_minimum; }
    int maximum() const { return m_maximum; }
    void setRange(int minimum, int maximum);
    bool readOnly() const { return m_readOnly; }
    void setReadOnly(bool on) { m_readOnly = on; }
    // Stored once for each configuration; otherwise once for an element.
    bool perConfiguration() const { return m_perConfiguration; }
    void setPerConfiguration(bool on) { m_perConfiguration = on; }

    // The type of a name such as "IntegerRange"; Custom for any other text.
    static Type typeFromName(const QString& name);

protected:
    void setDescriptions(const QString& page, const QString& group, const QString& shortDescription,
                         const QString& longDescription);

private:
    QString m_saveName;
    Type m_type;
    QString m_page;
    QString m_group;
    QString m_short;
    QString m_long;
    QString m_dialog;
    QString m_default;
    QString m_specialValueText;
    QString m_suffix;
    QStringList m_enumerates;
    int m_minimum = 0;
    int m_maximum = 0;
    bool m_readOnly = false;
    bool m_perConfiguration = true;
};

// Classes that others own.
class PropertyClassList : public QList<PropertyClass*> {
public:
    // Skips a class that is already in the list.
    void appendUnique(PropertyClass* propertyClass)
    {
        if (!contains(propertyClass))
            append(propertyClass);
    }
};
