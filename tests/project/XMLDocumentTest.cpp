#include "project/xml/XMLDocument.h"
#include "project/xml/XMLNode.h"
#include "project/xml/XMLWriter.h"
#include "support/Pool.h"
#include "support/TempDir.h"

#include <QString>

namespace {

// A tree on one line: tag, attributes and children, texts in quotes.
std::string dump(const XMLNode* node)
{
    if (node->kind() == XMLNode::Kind::Data)
        return std::string("'") + static_cast<const XMLData*>(node)->data() + "'";
    if (node->kind() == XMLNode::Kind::CDATASection)
        return std::string("[") + static_cast<const XMLData*>(node)->data() + "]";
    if (node->kind() == XMLNode::Kind::Comment)
        return std::string("!") + static_cast<const XMLData*>(node)->data() + "!";
    const XMLElement* element = node->asElement();
    std::string text = element->tagName();
    for (const XMLAttribute* each = element->getAttributeList(); each; each = each->next)
        text += std::string(" ") + each->name + "=" + each->value;
    std::string children;
    for (const XMLNode* child = node->firstChild(); child; child = child->nextSibling())
        children += (children.empty() ? "" : ",") + dump(child);
    return children.empty() ? text : text + "(" + children + ")";
}

std::string parsed(const char* text, bool keepText)
{
    XMLDocument document(keepText);
    if (!document.loadFromString(text))
        return std::string(document.errorText()) + " at " + std::to_string(document.errorLine());
    return document.root() ? dump(document.root()) : "empty";
}

struct Case {
    const char* text;
    const char* expected;
    bool keepText = false;
};

} // namespace

TEST(XMLDocument, ReadsWhatTheFilesHold)
{
    const Case cases[] = {
        {"<a/>", "a"},
        {" \n<?xml version=\"1.0\"?><!DOCTYPE d><a b=\"1\" c = \"2\"><d/><e></e></a>\n", "a b=1 c=2(d,e)"},
        {"<a>text</a>", "a"},
        {"<a>text</a>", "a('text')", true},
        {"<a> one <b/> two\r\n three </a>", "a('one ',b,'two\n three ')", true},
        {"<a>&#65;&#x41;&lt;&gt;&amp;&apos;&quot;&unknown; & &#; &#x110000; &#0;</a>",
         "a('AA<>&'\"&unknown; & &#; &#x110000; &#0;')", true},
        {"<a>&#x20ac;&#xe9;</a>", "a('\xe2\x82\xac\xe9')", true},
        {"<a b=\"x&quot;y<z>\n\"/>", "a b=x\"y<z>\n"},
        {"<a><!-- <b> --><![CDATA[<c>&amp;]]></a>", "a(! <b> !,[<c>&amp;])"},
        {"<a b=\"1\" c=\"2\" b=\"3\"/>", "a b=3 c=2"},
        {"<?php <a> ?><a/>", "a"},
        {"<?xml-stylesheet version=\"9\"?><a/>", "a"},
        {"<_a1 _b2=\"\"/>", "_a1 _b2="},
        {"", "empty"},
        {"no markup at all", "empty"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(parsed(each.text, each.keepText), each.expected) << each.text;
}

TEST(XMLDocument, TellsFaultAndLine)
{
    const Case cases[] = {
        {"<a b='1'/>", "bad tagName at 1"},
        {"<a\nb=1/>", "bad tagName at 2"},
        {"<a b/>", "bad tagName at 1"},
        {"<1a/>", "bad tagName at 1"},
        {"<a>\n< b/></a>", "bad tagName at 2"},
        {"<a-b/>", "bad tagName at 1"},
        {"<a></a x>", "bad tagName at 1"},
        {"<!ELEMENT a>", "bad tagName at 1"},
        {"<a>\n\n</b>", "tagName mismatch at 3"},
        {"<a/>\n</a>", "tagName mismatch at 2"},
        {"<a>\n<b>\n", "tagName mismatch at 3"},
        {"<a b=\"1\n\n", "unexpected end of file at 1"},
        {"<a", "unexpected end of file at 1"},
        {"<a><!-- \n", "unexpected end of file at 1"},
        {"<a><![CDATA[", "unexpected end of file at 1"},
        {"<?xml ", "unexpected end of file at 1"},
        {"<!DOCTYPE a", "unexpected end of file at 1"},
        {"<a/>\n<b/>", "more than one root element at 2"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(parsed(each.text, false), each.expected) << each.text;
}

TEST(XMLDocument, DeclarationAndDoctypeAreKept)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.loadFromString(
        "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<!DOCTYPE Anvil_Project_File SYSTEM x>\n<a/>"));
    EXPECT_STREQ(document.version(), "1.0");
    EXPECT_STREQ(document.encoding(), "iso-8859-1");
    EXPECT_STREQ(document.documentType(), "Anvil_Project_File");
    // A second load starts from nothing.
    ASSERT_TRUE(document.loadFromString("<b/>"));
    EXPECT_EQ(document.version(), nullptr);
    EXPECT_EQ(document.documentType(), nullptr);
    EXPECT_EQ(document.firstChild(), document.lastChild());
}

TEST(XMLDocument, HostileInputEndsInTextNotInACrash)
{
    std::string deep;
    for (int i = 0; i < 1000000; ++i)
        deep += "<a>";
    EXPECT_EQ(parsed(deep.c_str(), true), "elements nest more than 1000 deep at 1");
    std::string thousand;
    for (int i = 0; i < 1000; ++i)
        thousand += "<a>";
    for (int i = 0; i < 1000; ++i)
        thousand += "</a>";
    XMLDocument document(false);
    EXPECT_TRUE(document.loadFromString(thousand.c_str()));
    EXPECT_GT(document.toBytes(1).size(), 7000);
    // Quadratic work would take minutes here.
    std::string wide = "<a";
    for (int i = 0; i < 300000; ++i)
        wide += " b" + std::to_string(i) + "=\"\"";
    EXPECT_TRUE(document.loadFromString((wide + " b7=\"x\"/>").c_str()));
    EXPECT_STREQ(document.root()->attribute("b7"), "x");
    EXPECT_TRUE(document.loadFromString(("<a>" + std::string(500000, '&') + "</a>").c_str()));
    std::string brackets(500000, '<');
    EXPECT_EQ(parsed(brackets.c_str(), false), "bad tagName at 1");
}

TEST(XMLDocument, AttributesKeepTheirOrder)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.loadFromString("<a b=\"1\" c=\"2\" d=\"3\"/>"));
    CurrentPool current(&document.pool());
    XMLElement* a = document.root();
    a->setAttribute("b", "x");
    a->setAttribute("e", "y");
    EXPECT_EQ(dump(a), "a b=x c=2 d=3 e=y");
    a->removeAttribute("e");
    a->removeAttribute("c");
    a->removeAttribute("nothing");
    a->setAttribute("f", "z");
    EXPECT_EQ(dump(a), "a b=x d=3 f=z");
    EXPECT_FALSE(a->hasAttribute("c"));
    EXPECT_EQ(a->attribute("c"), nullptr);
    EXPECT_TRUE(a->attributeText("c").isNull());
}

TEST(XMLDocument, ChildrenAreMovedWithoutLoss)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.loadFromString("<r><a/><b><x/><y/></b><c/></r>"));
    CurrentPool current(&document.pool());
    XMLElement* r = document.root();
    XMLElement* b = r->firstElement()->nextElement();
    r->reparentChildrenAfter(b, b);
    EXPECT_EQ(dump(r), "r(a,b,x,y,c)");
    r->removeChild(b);
    r->prependChild(b);
    r->replaceChild(r->lastChild(), document.mkXMLElement("d"));
    EXPECT_EQ(dump(r), "r(b,a,x,y,d)");
    r->reparentChildrenAfter(document.mkXMLElement("none"), nullptr);
    for (XMLNode* child = r->lastChild(); child; child = child->previousSibling())
        EXPECT_EQ(child->parent(), r);
    r->setTagName("s");
    r->removeChild(r->lastChild());
    r->appendChild(document.mkXMLElement("e"));
    EXPECT_EQ(dump(r), "s(b,a,x,y,e)");
}

TEST(XMLDocument, WhatIsSavedReadsBackTheSame)
{
    TempDir directory;
    std::string file = directory / "x.xml";
    const char* text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE d><!-- top --><a b=\"&lt;&quot;&#10;\">"
        "<c/><d>x &amp; y\xc3\xa9<![CDATA[<raw>]]><e/></d><!-- in --></a>";
    XMLDocument document(true);
    ASSERT_TRUE(document.loadFromString(text));
    ASSERT_TRUE(document.save(file.c_str(), 2));
    EXPECT_EQ(document.toBytes(2),
              "<?xml  version=\"1.0\" encoding=\"UTF-8\" ?>\n<!DOCTYPE d>\n<!-- top -->\n"
              "<a b=\"&lt;&quot;&#xa;\">\n  <c/>\n"
              "  <d>x &amp; y&#xc3;&#xa9;<![CDATA[<raw>]]><e/></d>\n  <!-- in -->\n</a>\n");
    XMLDocument again(true);
    ASSERT_TRUE(again.load(file.c_str()));
    EXPECT_EQ(dump(again.root()), dump(document.root()));
    EXPECT_EQ(again.toBytes(2), document.toBytes(2));
    EXPECT_FALSE(document.save((directory / "no/such/x.xml").c_str(), 2));
    EXPECT_EQ(document.errorText(), "couldn't write " + (directory / "no/such/x.xml"));
}

TEST(XMLDocument, UnreadableFilesAreTold)
{
    TempDir directory;
    XMLDocument document(false);
    for (const std::string& file : {directory / "none.xml", directory.path(), std::string("/dev/zero")}) {
        EXPECT_FALSE(document.load(file.c_str()));
        EXPECT_EQ(document.errorText(), "couldn't read " + file);
    }
    // An error text longer than its buffer is cut.
    EXPECT_FALSE(document.load(std::string(5000, 'x').c_str()));
    EXPECT_EQ(strlen(document.errorText()), 1023u);
}

TEST(XMLDocument, DocumentTypeComesFromTheHeadOfAFile)
{
    TempDir directory;
    auto type = [&](const std::string& text) {
        const char* found = XMLDocument::xmlDocumentType(directory.write("t.xml", text).c_str());
        return std::string(found ? found : "(none)");
    };
    EXPECT_EQ(type("<!DOCTYPE   Anvil_Project_File><a/>"), "Anvil_Project_File");
    EXPECT_EQ(type(std::string(1000, ' ') + "<!DOCTYPE abc>"), "abc");
    EXPECT_EQ(type(std::string(1020, ' ') + "<!DOCTYPE abc>"), "(none)");
    EXPECT_EQ(type("<a/>"), "(none)");
    EXPECT_EQ(type(""), "(none)");
    EXPECT_EQ(XMLDocument::xmlDocumentType((directory / "none").c_str()), nullptr);
}

TEST(XMLDocument, BytesThatAreNoUtf8AreLatin1)
{
    EXPECT_EQ(xmlText("\xc3\xa9"), QString(QChar(0xe9)));
    EXPECT_EQ(xmlText("\xe9"), QString(QChar(0xe9)));
    EXPECT_FALSE(xmlText("").isNull());
}
