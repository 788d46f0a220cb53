#include "project/xml/XMLParser.h"

#include "project/xml/XMLDocument.h"
#include "project/xml/limits.h"
#include "support/Pool.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace {

enum CharacterClass : uint8_t { Space = 1, NameStart = 2, NamePart = 4 };

constexpr std::array<uint8_t, 256> makeClasses()
{
    std::array<uint8_t, 256> classes{};
    for (unsigned char c : {' ', '\t', '\n', '\r', '\f', '\v'})
        classes[c] = Space;
    for (unsigned c = 'a'; c <= 'z'; ++c)
        classes[c] = classes[c - 'a' + 'A'] = NameStart | NamePart;
    for (unsigned c = '0'; c <= '9'; ++c)
        classes[c] = NamePart;
    classes['_'] = NameStart | NamePart;
    return classes;
}

constexpr std::array<uint8_t, 256> Classes = makeClasses();

bool is(char c, CharacterClass wanted)
{
    return Classes[uint8_t(c)] & wanted;
}

// Appends a character reference: a byte up to 255, UTF-8 above. False when it names no character.
bool putReference(std::string_view digits, int radix, char*& out)
{
    uint32_t code = 0;
    if (digits.empty())
        return false;
    for (char c : digits) {
        int digit = c >= '0' && c <= '9'                 ? c - '0'
                    : (c | 32) >= 'a' && (c | 32) <= 'f' ? (c | 32) - 'a' + 10
                                                         : 99;
        if (digit >= radix)
            return false;
        code = code * uint32_t(radix) + uint32_t(digit);
        if (code > 0x10FFFF)
            return false;
    }
    if (code == 0)
        return false; // would end the text
    if (code < 0x100) {
        *out++ = char(code);
    } else if (code < 0x800) {
        *out++ = char(0xC0 | code >> 6);
        *out++ = char(0x80 | (code & 63));
    } else if (code < 0x10000) {
        *out++ = char(0xE0 | code >> 12);
        *out++ = char(0x80 | (code >> 6 & 63));
        *out++ = char(0x80 | (code & 63));
    } else {
        *out++ = char(0xF0 | code >> 18);
        *out++ = char(0x80 | (code >> 12 & 63));
        *out++ = char(0x80 | (code >> 6 & 63));
        *out++ = char(0x80 | (code & 63));
    }
    return true;
}

// Expands the entity at the start of `text`, which begins with "&". Answers its length, or 0 when it
// is none and the "&" stands for itself. What comes out is never longer than what went in.
size_t putEntity(std::string_view text, char*& out)
{
    struct Entity {
        std::string_view text;
        char character;
    };
    static constexpr Entity Entities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&quot;", '"'}};
    for (const Entity& entity : Entities) {
        if (text.starts_with(entity.text)) {
            *out++ = entity.character;
            return entity.text.size();
        }
    }
    if (!text.starts_with("&#"))
        return 0;
    size_t semicolon = text.substr(0, 32).find(';');
    if (semicolon == std::string_view::npos)
        return 0;
    bool hexadecimal = text[2] == 'x';
    size_t start = hexadecimal ? 3 : 2;
    if (!putReference(text.substr(start, semicolon - start), hexadecimal ? 16 : 10, out))
        return 0;
    return semicolon + 1;
}

} // namespace

const char* XMLParser::statusText(Status status)
{
    switch (status) {
    case Success: return "";
    case BadTagName: return "bad tagName";
    case TagNameMismatch: return "tagName mismatch";
    case UnexpectedEnd: return "unexpected end of file";
    case SeveralRoots: return "more than one root element";
    case TooDeep: return "elements nest more than 1000 deep";
    }
    return "";
}

static_assert(XMLLimits::ElementDepth == 1000, "the text of TooDeep names the limit");

XMLElement* XMLParser::parse(XMLDocument* document, const char* text)
{
    m_document = document;
    m_at = text;
    m_end = text + strlen(text);
    m_line = 1;
    m_status = Success;
    m_root = nullptr;
    m_open.clear();
    for (;;) {
        skipSpace();
        if (m_at == m_end)
            break;
        if (*m_at != '<')
            textData();
        else if (!markup())
            return m_root;
    }
    if (!m_open.empty())
        fail(TagNameMismatch);
    return m_root;
}

bool XMLParser::fail(Status status)
{
    m_status = status;
    return false;
}

void XMLParser::skipSpace()
{
    while (is(*m_at, Space)) {
        m_line += *m_at == '\n';
        ++m_at;
    }
}

// The name at the cursor; empty when there is none.
std::string_view XMLParser::name()
{
    const char* start = m_at;
    if (is(*m_at, NameStart))
        do
            ++m_at;
        while (is(*m_at, NamePart));
    return {start, size_t(m_at - start)};
}

// Steps over a fixed text, when it stands at the cursor.
bool XMLParser::literal(std::string_view text)
{
    if (size_t(m_end - m_at) < text.size() || memcmp(m_at, text.data(), text.size()) != 0)
        return false;
    m_at += text.size();
    return true;
}

// Where a text comes next, or null.
const char* XMLParser::find(std::string_view text)
{
    size_t at = std::string_view(m_at, size_t(m_end - m_at)).find(text);
    return at == std::string_view::npos ? nullptr : m_at + at;
}

// Moves the cursor forward, counting lines.
void XMLParser::advanceTo(const char* end)
{
    m_line += unsigned(std::count(m_at, end, '\n'));
    m_at = end;
}

bool XMLParser::markup()
{
    switch (m_at[1]) {
    case '?': m_at += 2; return processingInstruction();
    case '!':
        if (literal("<!--"))
            return comment();
        if (literal("<![CDATA["))
            return cdata();
        if (literal("<!DOCTYPE"))
            return doctype();
        return fail(BadTagName);
    case '/': m_at += 2; return endTag();
    default: ++m_at; return startTag();
    }
}

bool XMLParser::processingInstruction()
{
    std::string_view target = name();
    const char* end = find("?>");
    if (!end)
        return fail(UnexpectedEnd);
    // "xml-something" is another instruction: the name must end here.
    if (target == "xml" && (is(*m_at, Space) || m_at == end)) {
        while (m_at < end) {
            skipSpace();
            std::string_view attribute = name();
            if (attribute.empty() || *m_at != '=' || m_at[1] != '"')
                break;
            m_at += 2;
            const char* quote = find("\"");
            if (!quote || quote > end)
                break;
            const char* value = expand({m_at, size_t(quote - m_at)}, false);
            if (attribute == "version")
                m_document->m_version = value;
            else if (attribute == "encoding")
                m_document->m_encoding = value;
            m_at = quote + 1;
        }
    }
    if (m_at < end)
        advanceTo(end);
    m_at = end + 2;
    return true;
}

bool XMLParser::comment()
{
    const char* end = find("-->");
    if (!end)
        return fail(UnexpectedEnd);
    XMLNode* parent = m_open.empty() ? static_cast<XMLNode*>(m_document) : m_open.back();
    parent->appendChild(new XMLComment(XMLNode::mkString(m_at, unsigned(end - m_at))));
    advanceTo(end);
    m_at += 3;
    return true;
}

bool XMLParser::cdata()
{
    const char* end = find("]]>");
    if (!end)
        return fail(UnexpectedEnd);
    if (!m_open.empty())
        m_open.back()->appendChild(new XMLCDATASection(XMLNode::mkString(m_at, unsigned(end - m_at))));
    advanceTo(end);
    m_at += 3;
    return true;
}

bool XMLParser::doctype()
{
    skipSpace();
    std::string_view type = name();
    if (type.empty())
        return fail(BadTagName);
    const char* end = find(">");
    if (!end)
        return fail(UnexpectedEnd);
    m_document->m_documentType = XMLNode::mkString(type.data(), unsigned(type.size()));
    advanceTo(end);
    ++m_at;
    return true;
}

bool XMLParser::endTag()
{
    std::string_view tag = name();
    if (tag.empty())
        return fail(BadTagName);
    if (m_open.empty() || !m_open.back()->isNamed(tag))
        return fail(TagNameMismatch);
    skipSpace();
    if (*m_at != '>')
        return fail(m_at == m_end ? UnexpectedEnd : BadTagName);
    ++m_at;
    m_open.pop_back();
    return true;
}

bool XMLParser::startTag()
{
    std::string_view tag = name();
    if (tag.empty())
        return fail(BadTagName);
    if (m_open.empty() && m_root)
        return fail(SeveralRoots);
    if (m_open.size() >= XMLLimits::ElementDepth)
        return fail(TooDeep);
    XMLElement* element = m_document->mkXMLElement(XMLNode::mkString(tag.data(), unsigned(tag.size())));
    if (m_open.empty()) {
        m_root = element;
        m_document->appendChild(element);
    } else {
        m_open.back()->appendChild(element);
    }
    bool closed = false;
    if (!attributes(element, closed))
        return false;
    if (!closed)
        m_open.push_back(element);
    return true;
}

bool XMLParser::attributes(XMLElement* element, bool& closed)
{
    m_attributeCount = 0;
    for (;;) {
        skipSpace();
        if (*m_at == '>') {
            ++m_at;
            return true;
        }
        if (*m_at == '/' && m_at[1] == '>') {
            m_at += 2;
            closed = true;
            return true;
        }
        if (m_at == m_end)
            return fail(UnexpectedEnd);
        std::string_view attribute = name();
        if (attribute.empty())
            return fail(BadTagName);
        skipSpace();
        if (*m_at != '=')
            return fail(BadTagName);
        ++m_at;
        skipSpace();
        if (*m_at != '"')
            return fail(BadTagName);
        ++m_at;
        const char* quote = static_cast<const char*>(memchr(m_at, '"', size_t(m_end - m_at)));
        if (!quote)
            return fail(UnexpectedEnd);
        addAttribute(element, attribute, expand({m_at, size_t(quote - m_at)}, false));
        advanceTo(quote);
        ++m_at;
    }
}

// A name that comes twice keeps its first place and takes the last value.
void XMLParser::addAttribute(XMLElement* element, std::string_view name, const char* value)
{
    constexpr unsigned FewAttributes = 16;
    XMLAttribute* known = nullptr;
    if (m_attributeCount < FewAttributes) {
        for (known = element->getAttributeList(); known && name != known->name; known = known->next) {
        }
    } else {
        if (m_attributeCount == FewAttributes) {
            m_attributeIndex.clear();
            for (XMLAttribute* each = element->getAttributeList(); each; each = each->next)
                m_attributeIndex[each->name] = each;
        }
        auto found = m_attributeIndex.find(name);
        known = found == m_attributeIndex.end() ? nullptr : found->second;
    }
    if (known) {
        known->value = value;
        return;
    }
    auto* added = new XMLAttribute(XMLNode::mkString(name.data(), unsigned(name.size())), value);
    element->appendAttribute(added);
    if (m_attributeCount >= FewAttributes)
        m_attributeIndex[added->name] = added;
    ++m_attributeCount;
}

void XMLParser::textData()
{
    const char* end = static_cast<const char*>(memchr(m_at, '<', size_t(m_end - m_at)));
    if (!end)
        end = m_end;
    if (m_document->keepsText() && !m_open.empty())
        m_open.back()->appendChild(new XMLData(expand({m_at, size_t(end - m_at)}, true)));
    advanceTo(end);
}

// A copy in the pool, with entities expanded.
const char* XMLParser::expand(std::string_view text, bool dropCarriageReturns)
{
    if (!memchr(text.data(), '&', text.size()) &&
        !(dropCarriageReturns && memchr(text.data(), '\r', text.size())))
        return XMLNode::mkString(text.data(), unsigned(text.size()));
    char* copy = static_cast<char*>(Pool::currentPool()->allocate(text.size() + 1));
    char* out = copy;
    for (size_t at = 0; at < text.size();) {
        char c = text[at];
        size_t length = c == '&' ? putEntity(text.substr(at), out) : 0;
        if (length == 0) {
            if (c != '\r' || !dropCarriageReturns)
                *out++ = c;
            length = 1;
        }
        at += length;
    }
    *out = 0;
    return copy;
}
