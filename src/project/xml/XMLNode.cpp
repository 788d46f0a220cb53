#include "project/xml/XMLNode.h"

#include <QStringDecoder>

#include <cstring>

void XMLNode::insert(XMLNode* child, XMLNode* after)
{
    child->m_parent = this;
    child->m_previous = after;
    child->m_next = after ? after->m_next : m_first;
    (after ? after->m_next : m_first) = child;
    (child->m_next ? child->m_next->m_previous : m_last) = child;
}

void XMLNode::appendChild(XMLNode* child)
{
    insert(child, m_last);
}

void XMLNode::prependChild(XMLNode* child)
{
    insert(child, nullptr);
}

void XMLNode::removeChild(XMLNode* child)
{
    (child->m_previous ? child->m_previous->m_next : m_first) = child->m_next;
    (child->m_next ? child->m_next->m_previous : m_last) = child->m_previous;
    child->m_parent = child->m_next = child->m_previous = nullptr;
}

void XMLNode::replaceChild(XMLNode* child, XMLNode* replacement)
{
    insert(replacement, child);
    removeChild(child);
}

void XMLNode::reparentChildrenAfter(XMLNode* source, XMLNode* after)
{
    while (XMLNode* child = source->m_first) {
        source->removeChild(child);
        insert(child, after);
        after = child;
    }
}

XMLElement* XMLNode::firstElement() const
{
    XMLNode* node = m_first;
    while (node && node->m_kind != Kind::Element)
        node = node->m_next;
    return static_cast<XMLElement*>(node);
}

XMLElement* XMLNode::nextElement() const
{
    XMLNode* node = m_next;
    while (node && node->m_kind != Kind::Element)
        node = node->m_next;
    return static_cast<XMLElement*>(node);
}

const char* XMLNode::mkString(const char* text, unsigned length)
{
    return Pool::currentPool()->copyString({text, length});
}

XMLAttribute* XMLElement::find(const char* name) const
{
    for (XMLAttribute* attribute = m_attributes; attribute; attribute = attribute->next)
        if (strcmp(attribute->name, name) == 0)
            return attribute;
    return nullptr;
}

void XMLElement::setTagName(const char* tagName)
{
    m_tagName = mkString(tagName, unsigned(strlen(tagName)));
}

void XMLElement::setAttribute(const char* name, const char* value)
{
    const char* copy = mkString(value, unsigned(strlen(value)));
    if (XMLAttribute* attribute = find(name))
        attribute->value = copy;
    else
        appendAttribute(new XMLAttribute(mkString(name, unsigned(strlen(name))), copy));
}

void XMLElement::appendAttribute(XMLAttribute* attribute)
{
    (m_lastAttribute ? m_lastAttribute->next : m_attributes) = attribute;
    m_lastAttribute = attribute;
}

void XMLElement::removeAttribute(const char* name)
{
    XMLAttribute* previous = nullptr;
    for (XMLAttribute* attribute = m_attributes; attribute; attribute = attribute->next) {
        if (strcmp(attribute->name, name) == 0) {
            (previous ? previous->next : m_attributes) = attribute->next;
            if (attribute == m_lastAttribute)
                m_lastAttribute = previous;
            return;
        }
        previous = attribute;
    }
}

const char* XMLElement::attribute(const char* name) const
{
    const XMLAttribute* attribute = find(name);
    return attribute ? attribute->value : nullptr;
}

QString XMLElement::attributeText(const char* name) const
{
    const XMLAttribute* attribute = find(name);
    return attribute ? xmlText(attribute->value) : QString();
}

QString xmlText(const char* bytes)
{
    QByteArrayView view(bytes, qsizetype(strlen(bytes)));
    if (view.isEmpty())
        return QString(QLatin1String("")); // present and empty, unlike an absent attribute
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(view);
    return decoder.hasError() ? QString::fromLatin1(view) : text;
}
