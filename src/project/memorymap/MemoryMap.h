// The description of a board's memory: segments, the sections placed in them, registers and their bit
// fields. A map may use every preprocessor element, and `<Import filename="..."/>` at top level takes
// over the elements of another map.
#pragma once

#include "project/memorymap/MemoryMapElement.h"
#include "project/xml/XMLNode.h"
#include "project/xml/XMLPP2.h"

#include <QDateTime>
#include <QList>

#include <utility>

class MemoryMap : public XMLPP2 {
public:
    MemoryMap() : XMLPP2(false) {}

    // The file macros (setFileMacros) in the name, and in those of imported maps, are expanded; `macros` are
    // items name=value joined by ";". False when the file does not load (see errorText()); what else is wrong
    // stands in warnings().
    bool load(const QString& file, const QString& macros, bool expand);
    bool loadFromString(const QString& text);
    // Writes the map as it is now, with the preprocessor elements resolved.
    bool store(const QString& file);

    MemoryMapElement* getRoot() const { return static_cast<MemoryMapElement*>(root()); }
    // At any depth; null when there is none.
    MemoryMapElement* getSegment(const QString& name) const;
    // The segments at top level; with `recursive` at any depth.
    QList<MemoryMapElement*> getSegments(bool recursive) const;
    // The sections in an element; with `recursive` at any depth below it.
    QList<MemoryMapElement*> getSections(const MemoryMapElement* element, bool recursive) const;
    void getElements(const MemoryMapElement* element, QList<MemoryMapElement*>& list) const; // its children
    QList<MemoryMapElement*> getAllElements() const;
    // A null element stands for the root.
    QList<MemoryMapElement*> getElementsOfType(const MemoryMapElement* element,
                                               MemoryMapElement::ElementType type, bool recursive) const;
    MemoryMapElement* getNamedElementOfType(const MemoryMapElement* element, const QString& name,
                                            MemoryMapElement::ElementType type) const;

    // The file cannot be written.
    bool isReadOnly() const;
    // The memory of an element is, by its own `access` or the nearest one around it.
    bool isReadOnly(MemoryMapElement* element) const;
    // No file that the map was made from changed since the load.
    bool upToDate() const;
    // A deep copy in the pool of this map, with addresses.
    MemoryMapElement* clone(MemoryMapElement* element);

    const QString& fileName() const { return m_fileName; }
    const QStringList& warnings() const { return m_warnings; }

    XMLElement* mkXMLElement(const char* tagName) override { return new MemoryMapElement(tagName); }

protected:
    void error(const QString& message) override { warning(message); }
    void warning(const QString& message) { m_warnings.append(message); }

private:
    bool load1(const QString& file, const QString& macros, bool expand);
    void processImports(XMLElement* root, const QString& file, bool expand, unsigned depth);
    void fixupAddresses(MemoryMapElement* top, uint32_t base);
    void recordTimes();

    QString m_fileName;
    Macros m_given; // what load() was handed; every imported file starts with it
    QList<std::pair<QString, QDateTime>> m_times;
    QStringList m_warnings;
};
