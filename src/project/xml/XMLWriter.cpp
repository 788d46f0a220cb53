#include "project/xml/XMLWriter.h"

#include <cstdio>

void XMLWriter::escape(QByteArray& out, std::string_view text)
{
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '"': out += "&quot;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        default:
            if (c >= ' ' && c <= '~') {
                out += c;
            } else {
                char reference[16];
                snprintf(reference, sizeof reference, "&#x%x;", unsigned(uint8_t(c)));
                out += reference;
            }
        }
    }
}

bool XMLWriter::holdsText(const XMLNode* node)
{
    for (const XMLNode* child = node->firstChild(); child; child = child->nextSibling())
        if (child->kind() == XMLNode::Kind::Data || child->kind() == XMLNode::Kind::CDATASection)
            return true;
    return false;
}

// Walks by the links of the tree, so the depth of a document costs no stack.
void XMLWriter::write(const XMLNode* top)
{
    const XMLNode* node = top;
    for (;;) {
        if (open(node)) {
            ++m_depth;
            node = node->firstChild();
            continue;
        }
        while (node != top && !node->nextSibling()) {
            node = node->parent();
            --m_depth;
            close(node);
        }
        if (node == top)
            return;
        node = node->nextSibling();
    }
}

void XMLWriter::lineFor(const XMLNode* node, unsigned depth)
{
    if (m_inline && m_inline != node)
        return;
    if (!m_out.isEmpty() && !m_out.endsWith('\n'))
        m_out += '\n';
    m_out.append(qsizetype(depth) * m_indent, ' ');
}

// Writes a node's start; true when children follow.
bool XMLWriter::open(const XMLNode* node)
{
    switch (node->kind()) {
    case XMLNode::Kind::Document: return false;
    case XMLNode::Kind::Data: escape(m_out, static_cast<const XMLData*>(node)->data()); return false;
    case XMLNode::Kind::Comment:
        lineFor(node, m_depth);
        m_out.append("<!--").append(static_cast<const XMLData*>(node)->data()).append("-->");
        return false;
    case XMLNode::Kind::CDATASection:
        m_out.append("<![CDATA[").append(static_cast<const XMLData*>(node)->data()).append("]]>");
        return false;
    case XMLNode::Kind::Element: break;
    }
    const auto* element = static_cast<const XMLElement*>(node);
    lineFor(node, m_depth);
    m_out.append('<').append(element->tagName());
    for (const XMLAttribute* attribute = element->getAttributeList(); attribute;
         attribute = attribute->next) {
        m_out.append(' ').append(attribute->name).append("=\"");
        escape(m_out, attribute->value);
        m_out += '"';
    }
    if (!element->firstChild()) {
        m_out += "/>";
        return false;
    }
    m_out += '>';
    if (!m_inline && holdsText(element))
        m_inline = element;
    return true;
}

void XMLWriter::close(const XMLNode* node)
{
    if (m_inline == node)
        m_inline = nullptr; // the end tag follows the text at once
    else
        lineFor(node, m_depth);
    m_out.append("</").append(static_cast<const XMLElement*>(node)->tagName()).append('>');
}
