// One value of a setting. Values are text underneath; typed access is a conversion, which never fails:
// a text that does not parse gives 0 or false. Values are cheap and made on demand.
#pragma once

#include "project/PropertyClass.h"

#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <cstdint>

// A colour and a font as settings keep them: "#rrggbb", and "family,points,bold,italic" with 0 and 1
// for the flags.
struct PropertyColor {
    uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const PropertyColor&) const = default;
};

struct PropertyFont {
    QString family;
    int points = 0;
    bool bold = false;
    bool italic = false;
    bool operator==(const PropertyFont&) const = default;
};

class PropertyValue {
public:
    explicit PropertyValue(PropertyClass* propertyClass) : m_class(propertyClass) {}
    PropertyValue(const PropertyValue&) = delete;
    PropertyValue& operator=(const PropertyValue&) = delete;
    virtual ~PropertyValue() = default;

    virtual bool readOnly() const;
    // The value comes from somewhere else than where this value writes.
    virtual bool inherited() const { return true; }
    virtual void setPropertyValue(const QString& text) = 0;
    virtual QString propertyValue() const = 0;

    PropertyClass* propertyClass() const { return m_class; } // not owned; may be null
    bool visible() const { return m_visible; }
    void setVisible(bool on) { m_visible = on; }
    bool transient() const { return m_transient; } // not kept from one run to the next
    void setTransient(bool on) { m_transient = on; }
    void setReadOnly(bool on) { m_readOnly = on; }

    QString toString() const { return propertyValue(); }
    // "true", "yes" and "1" in any case, and the second of the enumerates.
    bool toBool() const;
    // For an Enumeration the position of the text; otherwise the number, "0x" being hexadecimal. A
    // number up to 0xFFFFFFFF is taken with its 32 bits.
    int toInt() const;
    QStringList toStringList(bool keepEmpty) const;
    PropertyColor toColor() const;
    PropertyFont toFont(const PropertyFont& otherwise) const;
    QRect toRect() const; // "x,y,width,height"

    // A value that does not fit the class only warns, and changes nothing.
    void setValue(int value);
    void setValue(bool value);
    void setValue(const QString& text) { setPropertyValue(text); }
    void setValue(const char* text) { setPropertyValue(QString::fromUtf8(text)); }
    void setValue(const QStringList& list);
    void setValue(const PropertyColor& color);
    void setValue(const PropertyFont& font);
    void setValue(const QRect& rect);
    void setToDefault();

private:
    QStringList enumerates() const { return m_class ? m_class->enumerates() : QStringList(); }
    PropertyClass::Type type() const { return m_class ? m_class->type() : PropertyClass::Custom; }

    PropertyClass* m_class;
    bool m_visible = true;
    bool m_transient = false;
    bool m_readOnly = false;
};

// Holds the text itself, at first the default of its class.
class SimplePropertyValue : public PropertyValue {
public:
    explicit SimplePropertyValue(PropertyClass* propertyClass)
        : PropertyValue(propertyClass), m_text(propertyClass ? propertyClass->defaultValue() : QString())
    {
    }
    SimplePropertyValue(PropertyClass* propertyClass, const QString& text)
        : PropertyValue(propertyClass), m_text(text)
    {
    }
    bool inherited() const override { return false; }
    void setPropertyValue(const QString& text) override { m_text = text; }
    QString propertyValue() const override { return m_text; }

private:
    QString m_text;
};

class PropertyValueList : public QList<PropertyValue*> {
public:
    // An owning list deletes its entries.
    explicit PropertyValueList(bool owning) : m_owning(owning) {}
    ~PropertyValueList();
    PropertyValueList(const PropertyValueList&) = delete;
    PropertyValueList& operator=(const PropertyValueList&) = delete;

    // The value of this very class, or null.
    PropertyValue* find(const PropertyClass* propertyClass) const;
    // False when the value was not taken, and stays the caller's: its class is listed already, or it
    // has none, which prints a warning.
    bool appendUnique(PropertyValue* value);

private:
    bool m_owning;
};
