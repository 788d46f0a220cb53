#include "project/memorymap/MemoryMap.h"

#include "project/xml/MacroText.h"
#include "project/xml/XMLDocument.h"
#include "project/xml/XMLNode.h"

#include <QFile>
#include <QFileInfo>

bool MemoryMap::load(const QString& file, const QString& macros, bool expand)
{
    return load1(MacroText::replaceMacros(fileMacros(), file), macros, expand);
}

bool MemoryMap::load1(const QString& file, const QString& macros, bool expand)
{
    m_fileName = file;
    m_warnings.clear();
    m_given = MacroText::macrosFromStringList(MacroText::stringListFromString(macros));
    bool loaded = XMLPP2::load(QFile::encodeName(file).constData(), macros.toUtf8().constData(), expand);
    if (loaded && root()) {
        processImports(root(), file, expand, 0);
        fixupAddresses(getRoot(), 0);
    }
    recordTimes();
    return loaded;
}

bool MemoryMap::loadFromString(const QString& text)
{
    m_fileName = QString();
    m_warnings.clear();
    m_given.clear();
    beginLoad(QString(), m_given);
    bool loaded = XMLDocument::loadFromString(text.toUtf8().constData());
    if (loaded && root()) {
        processConditionals(root(), QString(), m_given, false);
        processImports(root(), QString(), false, 0);
        fixupAddresses(getRoot(), 0);
    }
    m_times.clear();
    return loaded;
}

// The recursion is bounded by the depth to which files may import each other.
void MemoryMap::processImports(XMLElement* root, const QString& file, bool expand, unsigned depth)
{
    for (XMLElement* element = root->firstElement(); element;) {
        XMLElement* next = element->nextElement();
        if (element->isNamed("Import")) {
            XMLElement* imported = nullptr;
            QString name;
            if (!element->hasAttribute("filename")) {
                warning(QStringLiteral("missing filename in <Import>"));
            } else if (mayNest(depth)) {
                name = nameFrom(file,
                                MacroText::replaceMacros(fileMacros(), element->attributeText("filename")));
                imported = loadMaterial(name);
            }
            if (imported) {
                Macros macros = m_given;
                process(imported, {name, expand, 0, depth + 1}, macros);
                processImports(imported, name, expand, depth + 1);
                root->reparentChildrenAfter(imported, element);
            }
            root->removeChild(element);
        }
        element = next;
    }
}

void MemoryMap::fixupAddresses(MemoryMapElement* top, uint32_t base)
{
    if (!top->numbersAreValid())
        warning(QStringLiteral("%1 \"%2\": start or size is no 32-bit number")
                    .arg(QString::fromUtf8(top->tagName()), top->name()));
    base = top->updateAddress(base);
    for (MemoryMapElement* child = top->firstMapElement(); child; child = child->nextMapElement())
        fixupAddresses(child, base);
}

void MemoryMap::recordTimes()
{
    m_times.clear();
    for (const QString& file : files())
        m_times.append({file, QFileInfo(file).lastModified()});
}

bool MemoryMap::upToDate() const
{
    for (const auto& [file, time] : m_times)
        if (QFileInfo(file).lastModified() != time)
            return false;
    return true;
}

bool MemoryMap::store(const QString& file)
{
    return save(QFile::encodeName(file).constData(), 2);
}

void MemoryMap::getElements(const MemoryMapElement* element, QList<MemoryMapElement*>& list) const
{
    for (MemoryMapElement* child = element->firstMapElement(); child; child = child->nextMapElement())
        list.append(child);
}

namespace {

// Calls `visit` for each element below `top` in document order, until it says true.
template <typename Visit> void walk(const MemoryMapElement* top, bool recursive, Visit visit)
{
    XMLNode* node = top ? top->firstElement() : nullptr;
    while (node) {
        auto* element = static_cast<MemoryMapElement*>(node);
        if (visit(element))
            return;
        XMLNode* next = recursive ? node->firstElement() : nullptr;
        while (!next && node != top) {
            next = node->nextElement();
            if (!next)
                node = node->parent();
        }
        node = next;
    }
}

} // namespace

QList<MemoryMapElement*> MemoryMap::getAllElements() const
{
    QList<MemoryMapElement*> list;
    if (getRoot())
        list.append(getRoot());
    walk(getRoot(), true, [&](MemoryMapElement* element) {
        list.append(element);
        return false;
    });
    return list;
}

QList<MemoryMapElement*> MemoryMap::getElementsOfType(const MemoryMapElement* element,
                                                      MemoryMapElement::ElementType type,
                                                      bool recursive) const
{
    QList<MemoryMapElement*> list;
    walk(element ? element : getRoot(), recursive, [&](MemoryMapElement* each) {
        if (each->elementType() == type)
            list.append(each);
        return false;
    });
    return list;
}

MemoryMapElement* MemoryMap::getNamedElementOfType(const MemoryMapElement* element, const QString& name,
                                                   MemoryMapElement::ElementType type) const
{
    MemoryMapElement* found = nullptr;
    walk(element ? element : getRoot(), true, [&](MemoryMapElement* each) {
        if (each->elementType() == type && each->name() == name)
            found = each;
        return found != nullptr;
    });
    return found;
}

MemoryMapElement* MemoryMap::getSegment(const QString& name) const
{
    return getNamedElementOfType(nullptr, name, MemoryMapElement::MemorySegment);
}

QList<MemoryMapElement*> MemoryMap::getSegments(bool recursive) const
{
    return getElementsOfType(nullptr, MemoryMapElement::MemorySegment, recursive);
}

QList<MemoryMapElement*> MemoryMap::getSections(const MemoryMapElement* element, bool recursive) const
{
    return getElementsOfType(element, MemoryMapElement::ProgramSection, recursive);
}

bool MemoryMap::isReadOnly() const
{
    QFileInfo info(m_fileName);
    return info.exists() && !info.isWritable();
}

bool MemoryMap::isReadOnly(MemoryMapElement* element) const
{
    for (XMLNode* node = element; node; node = node->parent()) {
        auto* each = static_cast<MemoryMapElement*>(node->asElement());
        if (each && each->hasAccess())
            return each->isReadOnly();
    }
    return false;
}

MemoryMapElement* MemoryMap::clone(MemoryMapElement* element)
{
    auto* copy = static_cast<MemoryMapElement*>(copyElementAndExpandAttributeMacros(element, Macros()));
    uint32_t base = 0;
    for (XMLNode* node = element->parent(); node; node = node->parent()) {
        auto* around = static_cast<MemoryMapElement*>(node->asElement());
        if (around && around->hasAddress()) {
            base = around->address();
            break;
        }
    }
    fixupAddresses(copy, base);
    return copy;
}
