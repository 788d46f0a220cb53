// The text form of a document's tree, appended to a byte array.
#pragma once

#include "project/xml/XMLNode.h"

#include <QByteArray>
#include <string_view>

class XMLWriter {
public:
    // `indent` is the number of blanks for each depth.
    XMLWriter(QByteArray& out, unsigned indent) : m_out(out), m_indent(indent) {}

    // The node and all below it, each element on a line of its own. Inside an element that holds
    // text nothing is put on new lines, since blanks there would be text too.
    void write(const XMLNode* node);

    // A text with "&", quotation marks, "<", ">" and what is not printable as entities.
    static void escape(QByteArray& out, std::string_view text);

private:
    bool open(const XMLNode* node);
    void close(const XMLNode* node);
    void lineFor(const XMLNode* node, unsigned depth);
    static bool holdsText(const XMLNode* node);

    QByteArray& m_out;
    unsigned m_indent;
    unsigned m_depth = 0;
    const XMLNode* m_inline = nullptr; // the outermost open element that holds text
};
