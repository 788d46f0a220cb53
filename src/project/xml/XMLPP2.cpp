#include "project/xml/XMLPP2.h"

#include "project/xml/XMLNode.h"
#include "project/xml/limits.h"
#include "support/Pool.h"

#include <QFile>
#include <QFileInfo>

#include <cstdlib>
#include <cstring>

namespace {

// The wording of the messages since the first days of the language, whatever class issues them.
QString message(const char* text)
{
    return QLatin1String("XmlPP::processConditionals(): ") + QString::fromUtf8(text);
}

// A file read on behalf of another document.
class Material : public XMLDocument {
public:
    explicit Material(XMLDocument& host) : XMLDocument(host) {}
    size_t size() const { return sourceSize(); }
};

uint32_t number(const QString& text)
{
    return uint32_t(strtoul(text.toLatin1().constData(), nullptr, 0));
}

} // namespace

bool XMLPP2::load(const char* path, const char* macros, bool expand)
{
    QString file = QFile::decodeName(path);
    beginLoad(file, MacroText::macrosFromStringList(
                        MacroText::stringListFromString(QString::fromUtf8(macros ? macros : ""))));
    if (!XMLDocument::load(path))
        return false;
    if (root())
        process(root(), {file, expand, 0, 0}, m_macros);
    return true;
}

void XMLPP2::beginLoad(const QString& file, const Macros& macros)
{
    m_macros = macros;
    m_files = QStringList(file);
    m_stopped = false;
    m_includes = m_rounds = 0;
    m_produced = 0;
}

void XMLPP2::processConditionals(XMLNode* parent, const QString& file, const Macros& macros, bool expand)
{
    m_macros = macros;
    process(parent, {file, expand, 0, 0}, m_macros);
}

void XMLPP2::expandAttributeMacros(XMLElement* element, const Macros& macros)
{
    CurrentPool current(&pool());
    for (XMLAttribute* attribute = element->getAttributeList(); attribute; attribute = attribute->next) {
        if (!strchr(attribute->value, '$'))
            continue;
        QByteArray value = MacroText::replaceMacros(macros, xmlText(attribute->value)).toUtf8();
        attribute->value = XMLNode::mkString(value.constData(), unsigned(value.size()));
        produced(size_t(value.size()));
    }
}

// The depth of what is copied is that of one parsed file, which bounds the recursion.
XMLElement* XMLPP2::copyElementAndExpandAttributeMacros(XMLElement* element, const Macros& macros)
{
    CurrentPool current(&pool());
    XMLElement* copy = mkXMLElement(element->tagName()); // tag names and texts stay shared in the pool
    produced(sizeof *element);
    for (XMLAttribute* attribute = element->getAttributeList(); attribute; attribute = attribute->next) {
        copy->appendAttribute(new XMLAttribute(attribute->name, attribute->value));
        produced(sizeof *attribute);
    }
    expandAttributeMacros(copy, macros);
    for (XMLNode* child = element->firstChild(); child; child = child->nextSibling()) {
        switch (child->kind()) {
        case Kind::Element:
            copy->appendChild(copyElementAndExpandAttributeMacros(child->asElement(), macros));
            break;
        case Kind::Data: copy->appendChild(new XMLData(static_cast<XMLData*>(child)->data())); break;
        case Kind::CDATASection:
            copy->appendChild(new XMLCDATASection(static_cast<XMLData*>(child)->data()));
            break;
        case Kind::Comment:
        case Kind::Document: break;
        }
    }
    return copy;
}

void XMLPP2::process(XMLNode* parent, const Context& context, Macros& macros)
{
    if (context.depth > XMLLimits::ElementDepth) {
        stop(QStringLiteral("elements nest more than %1 deep").arg(XMLLimits::ElementDepth));
        while (parent->firstChild())
            parent->removeChild(parent->firstChild());
        return;
    }
    for (XMLNode* child = parent->firstChild(); child;) {
        XMLNode* next = child->nextSibling();
        if (XMLElement* element = child->asElement())
            processElement(element, context, macros);
        child = next;
    }
}

void XMLPP2::processElement(XMLElement* element, const Context& context, Macros& macros)
{
    if (context.expand)
        expandAttributeMacros(element, macros);
    if (element->isNamed("if") || element->isNamed("ifnot")) {
        const XMLAttribute* condition = element->getAttributeList();
        if (!condition || condition->next) {
            error(message("one condition required for <if[not]>"));
            element->parent()->removeChild(element);
        } else {
            keepOrDrop(element, conditionHolds(element, macros) == element->isNamed("if"), context, macros);
        }
    } else if (element->isNamed("ifdef")) {
        keepOrDrop(element, macros.contains(element->attributeText("name")), context, macros);
    } else if (element->isNamed("ifndef")) {
        keepOrDrop(element, !macros.contains(element->attributeText("name")), context, macros);
    } else if (element->isNamed("define")) {
        define(element, macros);
    } else if (element->isNamed("switch")) {
        choose(element, context, macros);
    } else if (element->isNamed("include")) {
        include(element, context, macros);
    } else if (element->isNamed("for")) {
        repeat(element, context, macros);
    } else if (element->firstChild()) {
        process(element, {context.file, context.expand, context.depth + 1, context.includes}, macros);
    }
}

bool XMLPP2::listHolds(const QString& list, const QString& value)
{
    for (QStringView item : QStringView(list).split(u','))
        if (item == value)
            return true;
    return false;
}

bool XMLPP2::conditionHolds(XMLElement* element, const Macros& macros)
{
    const XMLAttribute* condition = element->getAttributeList();
    return listHolds(xmlText(condition->value), macros.value(xmlText(condition->name), QStringLiteral("")));
}

void XMLPP2::replaceByChildren(XMLElement* element, XMLNode* source)
{
    XMLNode* parent = element->parent();
    parent->reparentChildrenAfter(source, element);
    parent->removeChild(element);
}

void XMLPP2::keepOrDrop(XMLElement* element, bool keep, const Context& context, Macros& macros)
{
    if (!keep) {
        element->parent()->removeChild(element);
        return;
    }
    process(element, {context.file, context.expand, context.depth + 1, context.includes}, macros);
    replaceByChildren(element, element);
}

void XMLPP2::define(XMLElement* element, Macros& macros)
{
    if (element->hasAttribute("name") && element->hasAttribute("value"))
        macros.insert(element->attributeText("name"), element->attributeText("value"));
    else
        error(message("missing name and/or value in <define>"));
    element->parent()->removeChild(element);
}

void XMLPP2::choose(XMLElement* element, const Context& context, Macros& macros)
{
    QString value = macros.value(element->attributeText("name"), QStringLiteral(""));
    XMLElement* kept = element->firstElement();
    for (; kept; kept = kept->nextElement()) {
        if (context.expand)
            expandAttributeMacros(kept, macros);
        if (kept->isNamed("default") || (kept->isNamed("case") && kept->hasAttribute("value") &&
                                         listHolds(kept->attributeText("value"), value)))
            break;
    }
    if (!kept) {
        element->parent()->removeChild(element);
        return;
    }
    process(kept, {context.file, context.expand, context.depth + 1, context.includes}, macros);
    replaceByChildren(element, kept);
}

QString XMLPP2::nameFrom(const QString& file, const QString& name)
{
    if (QFileInfo(name).isAbsolute())
        return name;
    QString directory = QFileInfo(file).path();
    return directory == QLatin1String(".") ? name : directory + u'/' + name;
}

void XMLPP2::stop(const QString& reason)
{
    if (!m_stopped)
        error(QLatin1String("XmlPP::processConditionals(): ") + reason);
    m_stopped = true;
}

void XMLPP2::produced(size_t bytes)
{
    m_produced += bytes;
    if (m_produced > XMLLimits::ProducedBytes)
        stop(QStringLiteral("the document grows beyond %1 bytes").arg(XMLLimits::ProducedBytes));
}

bool XMLPP2::mayNest(unsigned depth)
{
    if (m_stopped)
        return false;
    if (depth >= XMLLimits::IncludeDepth)
        stop(QStringLiteral("include files nest more than %1 deep").arg(XMLLimits::IncludeDepth));
    else if (m_includes >= XMLLimits::Includes)
        stop(QStringLiteral("more than %1 include files").arg(XMLLimits::Includes));
    return !m_stopped;
}

XMLElement* XMLPP2::loadMaterial(const QString& file)
{
    ++m_includes;
    if (!m_files.contains(file))
        m_files.append(file);
    Material material(*this);
    if (!material.load(QFile::encodeName(file).constData())) {
        error(QLatin1String("XmlPP::processConditionals(): error \"") +
              QString::fromUtf8(material.errorText()) + QLatin1String("\" in include file ") + file +
              QLatin1String(" line:") + QString::number(material.errorLine()));
        return nullptr;
    }
    produced(material.size());
    XMLElement* root = material.root();
    if (!root) {
        error(QLatin1String("XmlPP::processConditionals(): error: include file '") + file +
              QLatin1String("' is empty"));
        return nullptr;
    }
    material.removeChild(root);
    return root;
}

void XMLPP2::expandAll(XMLNode* node, const Macros& macros)
{
    for (XMLNode* child = node->firstChild(); child; child = child->nextSibling()) {
        if (XMLElement* element = child->asElement()) {
            expandAttributeMacros(element, macros);
            expandAll(element, macros);
        }
    }
}

void XMLPP2::include(XMLElement* element, const Context& context, Macros& macros)
{
    XMLElement* root = nullptr;
    QString file;
    if (!element->hasAttribute("filename")) {
        error(message("missing filename in <include>"));
    } else if (mayNest(context.includes)) {
        file = nameFrom(context.file,
                        MacroText::replaceMacros(m_fileMacros, element->attributeText("filename")));
        root = loadMaterial(file);
    }
    if (!root || m_stopped) {
        element->parent()->removeChild(element);
        return;
    }
    // The material hangs below an element of its own while it is worked on.
    CurrentPool current(&pool());
    XMLNode* material = root;
    if (!root->isNamed("envelope") && !element->hasAttribute("no_root")) {
        material = new XMLElement("envelope");
        material->appendChild(root);
    }
    Context inside{file, context.expand, context.depth + 1, context.includes + 1};
    if (element->hasAttribute("expand_macros") && context.expand)
        expandAll(material, macros);
    if (element->hasAttribute("macros")) {
        QString text = element->attributeText("macros").remove(u'\n');
        Macros merged = macros;
        MacroText::overwriteMacros(merged,
                                   MacroText::macrosFromStringList(MacroText::stringListFromString(text)));
        inside.expand = true;
        expandAll(material, merged);
        process(material, inside, merged);
    } else {
        process(material, inside, macros);
    }
    replaceByChildren(element, material);
}

void XMLPP2::repeat(XMLElement* element, const Context& context, Macros& macros)
{
    uint32_t incr = number(element->attributeText("incr"));
    if (!element->hasAttribute("index") || !element->hasAttribute("start") || !element->hasAttribute("end") ||
        incr == 0) {
        error(message("<for index=\"i\" start=\"0\" end=\"32\" incr=\"1\">"));
        element->parent()->removeChild(element);
        return;
    }
    QString index = element->attributeText("index");
    auto optional = [&](const char* name, uint32_t otherwise) {
        return element->hasAttribute(name)
                   ? number(MacroText::replaceMacros(macros, element->attributeText(name)))
                   : otherwise;
    };
    uint32_t add = optional("add", 0);
    uint32_t mul = optional("mul", 1);
    uint32_t end = number(element->attributeText("end"));
    CurrentPool current(&pool());
    XMLElement copies("for");
    auto hexadecimal = [](uint32_t value) {
        return QLatin1String("0x") + QString::number(value, 16).toUpper();
    };
    // The rounds share one table; one that defines something pays for a copy of its own.
    Macros table = macros;
    const size_t copyBytes = size_t(table.size()) * sizeof(QString);
    produced(copyBytes);
    for (uint64_t i = number(element->attributeText("start")); i < end; i += incr) {
        if (++m_rounds > XMLLimits::ForRounds)
            stop(QStringLiteral("<for> makes more than %1 rounds").arg(XMLLimits::ForRounds));
        if (m_stopped)
            break;
        uint32_t value = uint32_t(i);
        uint32_t applied = value * mul + add;
        table.insert(index, QString::number(value));
        table.insert(index + QLatin1String("_alpha"), QString(QChar(char16_t('A' + value))));
        table.insert(index + QLatin1String("_hex"), hexadecimal(value));
        table.insert(index + QLatin1String("_ap"), QString::number(applied));
        table.insert(index + QLatin1String("_ap_hex"), hexadecimal(applied));
        XMLElement round("for");
        for (XMLElement* child = element->firstElement(); child; child = child->nextElement())
            round.appendChild(copyElementAndExpandAttributeMacros(child, table));
        Macros inside = table;
        process(&round, {context.file, context.expand, context.depth + 1, context.includes}, inside);
        if (!inside.isSharedWith(table))
            produced(copyBytes);
        copies.reparentChildrenAfter(&round, copies.lastChild());
    }
    replaceByChildren(element, &copies);
}
