// The parser behind XMLDocument: one pass over zero-terminated bytes, with no recursion. Nodes are
// made in the current pool; the time is linear in the size of the text.
#pragma once

#include "project/xml/XMLNode.h"

#include <string_view>
#include <unordered_map>
#include <vector>

class XMLDocument;

class XMLParser {
public:
    enum Status {
        Success = 0,
        BadTagName = 1,      // another character where a name is needed
        TagNameMismatch = 2, // an end tag that does not belong to the open element
        UnexpectedEnd = 3,   // the text ends inside markup
        SeveralRoots = 4,    // a second element beside the root
        TooDeep = 5,         // more elements inside each other than the limit
    };

    // Appends what it reads to the document and answers the root element (null when there is none).
    XMLElement* parse(XMLDocument* document, const char* text);

    Status status() const { return m_status; }
    unsigned line() const { return m_line; }
    static const char* statusText(Status status);

private:
    bool markup();
    bool processingInstruction();
    bool comment();
    bool cdata();
    bool doctype();
    bool endTag();
    bool startTag();
    bool attributes(XMLElement* element, bool& closed);
    void addAttribute(XMLElement* element, std::string_view name, const char* value);
    void textData();

    void skipSpace();
    std::string_view name();
    const char* find(std::string_view text);
    void advanceTo(const char* end);
    bool literal(std::string_view text);
    bool fail(Status status);
    const char* expand(std::string_view text, bool dropCarriageReturns);

    XMLDocument* m_document = nullptr;
    const char* m_at = nullptr;
    const char* m_end = nullptr;
    unsigned m_line = 1;
    Status m_status = Success;
    XMLElement* m_root = nullptr;
    std::vector<XMLElement*> m_open;

    // For elements with many attributes, so that finding a repeated name stays linear.
    unsigned m_attributeCount = 0;
    std::unordered_map<std::string_view, XMLAttribute*> m_attributeIndex;
};
