// The nodes of an XML document. All are pool objects of the document's pool: they are made with `new`
// while that pool is the current one, and go with it. Texts are bytes, zero-terminated.
#pragma once

#include "support/Pool.h"

#include <QString>
#include <cstdint>
#include <string_view>

class XMLElement;

class XMLNode : public PoolObject {
public:
    enum class Kind : uint8_t { Document, Element, Data, Comment, CDATASection };

    XMLNode(const XMLNode&) = delete;
    XMLNode& operator=(const XMLNode&) = delete;
    virtual ~XMLNode() = default;

    // A child that is handed in must have no parent. Each takes constant time.
    virtual void appendChild(XMLNode* child);
    virtual void prependChild(XMLNode* child);
    virtual void removeChild(XMLNode* child);
    virtual void replaceChild(XMLNode* child, XMLNode* replacement);
    // Takes over all children of another node and puts them, in order, behind `after`, which is a
    // child of this node; in front of all when it is null.
    virtual void reparentChildrenAfter(XMLNode* source, XMLNode* after);

    Kind kind() const { return m_kind; }
    XMLNode* parent() const { return m_parent; }
    XMLNode* nextSibling() const { return m_next; }
    XMLNode* previousSibling() const { return m_previous; }
    XMLNode* firstChild() const { return m_first; }
    XMLNode* lastChild() const { return m_last; }

    // The node as an element, or null when it is something else.
    XMLElement* asElement();
    const XMLElement* asElement() const;
    // The first child element, and the next element among the siblings; null at the end.
    XMLElement* firstElement() const;
    XMLElement* nextElement() const;

    // A zero-terminated copy of `length` bytes in the current pool.
    static const char* mkString(const char* text, unsigned length);

protected:
    explicit XMLNode(Kind kind) : m_kind(kind) {}

private:
    void insert(XMLNode* child, XMLNode* after);

    XMLNode* m_parent = nullptr;
    XMLNode* m_next = nullptr;
    XMLNode* m_previous = nullptr;
    XMLNode* m_first = nullptr;
    XMLNode* m_last = nullptr;
    Kind m_kind;
};

// One attribute of an element; the list is in document order.
struct XMLAttribute : PoolObject {
    XMLAttribute(const char* name, const char* value) : name(name), value(value) {}
    const char* name;
    const char* value;
    XMLAttribute* next = nullptr;
};

class XMLElement : public XMLNode {
public:
    // The tag name is kept as it is handed in: it lies in the document's pool, or is a literal.
    explicit XMLElement(const char* tagName) : XMLNode(Kind::Element), m_tagName(tagName) {}

    virtual void setTagName(const char* tagName);
    virtual const char* tagName() const { return m_tagName; }
    // Name and value are copied into the current pool; a name that is there keeps its place.
    virtual void setAttribute(const char* name, const char* value);
    virtual void removeAttribute(const char* name);
    virtual bool hasAttribute(const char* name) const { return find(name); }
    // The value, or null when there is no such attribute.
    virtual const char* attribute(const char* name) const;
    // The first attribute, or null; follow `next` for the others.
    virtual XMLAttribute* getAttributeList() const { return m_attributes; }

    bool isNamed(std::string_view tagName) const { return tagName == m_tagName; }
    // The value as text for people (see xmlText); a null string when the attribute is absent.
    QString attributeText(const char* name) const;
    // Adds an attribute that is known to be new, with name and value already in the pool.
    void appendAttribute(XMLAttribute* attribute);

private:
    XMLAttribute* find(const char* name) const;

    const char* m_tagName;
    XMLAttribute* m_attributes = nullptr;
    XMLAttribute* m_lastAttribute = nullptr;
};

class XMLData : public XMLNode {
public:
    explicit XMLData(const char* text) : XMLData(Kind::Data, text) {}

    // The text is kept as it is handed in.
    virtual void setData(const char* text) { m_text = text; }
    virtual const char* data() const { return m_text; }

protected:
    XMLData(Kind kind, const char* text) : XMLNode(kind), m_text(text) {}

private:
    const char* m_text;
};

class XMLComment : public XMLData {
public:
    explicit XMLComment(const char* text) : XMLData(Kind::Comment, text) {}
};

class XMLCDATASection : public XMLData {
public:
    explicit XMLCDATASection(const char* text) : XMLData(Kind::CDATASection, text) {}
};

inline XMLElement* XMLNode::asElement()
{
    return m_kind == Kind::Element ? static_cast<XMLElement*>(this) : nullptr;
}

inline const XMLElement* XMLNode::asElement() const
{
    return m_kind == Kind::Element ? static_cast<const XMLElement*>(this) : nullptr;
}

// The bytes of a document as text: UTF-8, and Latin-1 when they are not valid UTF-8, which is what
// character references between 128 and 255 leave behind.
QString xmlText(const char* bytes);
