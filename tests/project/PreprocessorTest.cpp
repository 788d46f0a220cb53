#include "project/xml/MacroText.h"
#include "project/xml/XMLNode.h"
#include "project/xml/XMLPP2.h"
#include "support/HException.h"
#include "support/TempDir.h"

#include <QStringList>

namespace {

class Document : public XMLPP2 {
public:
    Document() : XMLPP2(false) {}
    QStringList errors;

protected:
    void error(const QString& message) override { errors.append(message); }
};

std::string dump(const XMLNode* node)
{
    const XMLElement* element = node->asElement();
    if (!element)
        return {};
    std::string text = element->tagName();
    for (const XMLAttribute* each = element->getAttributeList(); each; each = each->next)
        text += std::string(" ") + each->name + "=" + each->value;
    std::string children;
    for (const XMLElement* child = element->firstElement(); child; child = child->nextElement())
        children += (children.empty() ? "" : ",") + dump(child);
    return children.empty() ? text : text + "(" + children + ")";
}

class Preprocessor : public testing::Test {
protected:
    // The tree below the root, or the messages.
    std::string run(const std::string& body, const char* macros = "", bool expand = false)
    {
        std::string file = directory.write("main.xml", "<r>" + body + "</r>");
        Document document;
        document.setFileMacros(fileMacros);
        if (!document.load(file.c_str(), macros, expand))
            return document.errorText();
        if (!document.errors.isEmpty())
            return document.errors.join(QLatin1Char('|'))
                .replace(QString::fromStdString(directory.path()), "DIR")
                .toStdString();
        return dump(document.root());
    }
    TempDir directory;
    MacroText::Macros fileMacros;
};

} // namespace

TEST_F(Preprocessor, ConditionsKeepOrDropTheirChildren)
{
    struct Case {
        const char* body;
        const char* macros;
        const char* expected;
    };
    const Case cases[] = {
        {"<if a=\"x,y\"><k/><l/></if><m/>", "a=y", "r(k,l,m)"},
        {"<if a=\"x,y\"><k/></if>", "", "r"},
        {"<if a=\"x,\"><k/></if>", "", "r(k)"},
        {"<ifnot a=\"x\"><k/></ifnot>", "", "r(k)"},
        {"<ifnot a=\"x,y\"><k/></ifnot>", "a=x", "r"},
        {"<ifdef name=\"a\"><k/></ifdef><ifndef name=\"a\"><l/></ifndef>", "a=", "r(k)"},
        {"<ifdef name=\"a\"><k/></ifdef><ifndef name=\"a\"><l/></ifndef>", "", "r(l)"},
        {"<define name=\"a\" value=\"1\"/><if a=\"1\"><k/></if>", "", "r(k)"},
        {"<if b=\"1\"><define name=\"a\" value=\"1\"/></if><ifdef name=\"a\"><k/></ifdef>", "", "r"},
        {"<if b=\"1\"><define name=\"a\" value=\"1\"/></if><ifdef name=\"a\"><k/></ifdef>", "b=1", "r(k)"},
        {"<p><define name=\"a\" value=\"1\"/></p><ifdef name=\"a\"><k/></ifdef>", "", "r(p,k)"},
        {"<p><if a=\"1\"><if b=\"2\"><k/></if><l/></if></p>", "a=1;b=2", "r(p(k,l))"},
        {"<switch name=\"a\"><case value=\"1\"><k/></case><case value=\"2,3\"><l/><m/></case>"
         "<default><n/></default></switch><o/>",
         "a=3", "r(l,m,o)"},
        {"<switch name=\"a\"><case value=\"1\"><k/></case><default><n/></default></switch>", "", "r(n)"},
        {"<switch name=\"a\"><default><n/></default><case value=\"1\"><k/></case></switch>", "a=1", "r(n)"},
        {"<switch name=\"a\"><case value=\"1\"><k/></case></switch>", "a=2", "r"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(run(each.body, each.macros), each.expected) << each.body;
}

TEST_F(Preprocessor, ForCopiesItsChildren)
{
    const std::pair<const char*, const char*> cases[] = {
        {"<for index=\"i\" start=\"8\" end=\"0xC\" incr=\"2\"><p n=\"$(i)\" h=\"$(i_hex)\" "
         "a=\"$(i_alpha)\"/></for>",
         "r(p n=8 h=0x8 a=I,p n=10 h=0xA a=K)"},
        {"<for index=\"i\" start=\"1\" end=\"3\" incr=\"1\" mul=\"16\" add=\"0x100\"><p a=\"$(i_ap)\" "
         "h=\"$(i_ap_hex)\"/></for>",
         "r(p a=272 h=0x110,p a=288 h=0x120)"},
        {"<for index=\"i\" start=\"4\" end=\"4\" incr=\"1\"><p/></for>", "r"},
        {"<for index=\"i\" start=\"4\" end=\"3\" incr=\"1\"><p/></for>", "r"},
        {"<for index=\"i\" start=\"0\" end=\"2\" incr=\"1\"><for index=\"j\" start=\"$(i)\" end=\"2\" "
         "incr=\"1\">"
         "<p n=\"$(i)$(j)\"/></for></for>",
         "r(p n=00,p n=01,p n=11)"},
        {"<for index=\"i\" start=\"0\" end=\"3\" incr=\"1\"><if i=\"1\"><p/></if></for>", "r(p)"},
        // What a round defines ends with it.
        {"<for index=\"i\" start=\"0\" end=\"3\" incr=\"1\"><ifndef name=\"d\"><p/></ifndef>"
         "<define name=\"d\" value=\"1\"/></for><ifdef name=\"d\"><q/></ifdef>",
         "r(p,p,p)"},
        {"<a/><for index=\"i\" start=\"0\" end=\"1\" incr=\"1\"><p><q v=\"$(i)$(k)\"/></p></for><b/>",
         "r(a,p(q v=0$(k)),b)"},
        // The last round ends at the top of the number range instead of starting over.
        {"<for index=\"i\" start=\"0xFFFFFFFE\" end=\"0xFFFFFFFF\" incr=\"16\"><p/></for>", "r(p)"},
    };
    for (const auto& [body, expected] : cases)
        EXPECT_EQ(run(body), expected) << body;
    EXPECT_EQ(
        run("<for index=\"i\" start=\"0\" end=\"1\" incr=\"1\" add=\"$(base)\"><p a=\"$(i_ap)\"/></for>",
            "base=7"),
        "r(p a=7)");
}

TEST_F(Preprocessor, ExpansionIsDoneWhenAskedFor)
{
    EXPECT_EQ(run("<p v=\"$(a)\"/>", "a=1"), "r(p v=$(a))");
    EXPECT_EQ(run("<p v=\"$(a)\"><q w=\"$(b:2)\"/></p>", "a=1", true), "r(p v=1(q w=2))");
    EXPECT_EQ(run("<define name=\"b\" value=\"$(a)$(a)\"/><p v=\"$(b)\"/>", "a=1", true), "r(p v=11)");
}

TEST_F(Preprocessor, IncludesTakeTheirPlace)
{
    directory.write("sub/root.xml", "<s x=\"$(a)\"><t/></s>");
    directory.write("sub/envelope.xml", "<envelope><t a=\"$(a)\"/><if a=\"1\"><u/></if></envelope>");
    directory.write("sub/nested.xml", "<envelope><include filename=\"root.xml\"/></envelope>");
    directory.write("sub/define.xml", "<envelope><define name=\"d\" value=\"1\"/></envelope>");
    const std::string i = "<include filename=\"sub/";
    EXPECT_EQ(run(i + "root.xml\"/><b/>"), "r(s x=$(a)(t),b)");
    EXPECT_EQ(run(i + "root.xml\" no_root=\"1\"/><b/>"), "r(t,b)");
    EXPECT_EQ(run(i + "envelope.xml\"/>", "a=1"), "r(t a=$(a),u)");
    EXPECT_EQ(run(i + "envelope.xml\" expand_macros=\"1\"/>", "a=1", true), "r(t a=1,u)");
    EXPECT_EQ(run(i + "envelope.xml\" macros=\"a=\n1;b=2\"/>", "a=9"), "r(t a=1,u)");
    directory.write("sub/late.xml", "<envelope><define name=\"k\" value=\"7\"/><t a=\"$(k)\"/></envelope>");
    EXPECT_EQ(run(i + "late.xml\" macros=\"x=1\"/>"), "r(t a=7)") << "macros of its own turn expansion on";
    EXPECT_EQ(run(i + "late.xml\"/>"), "r(t a=$(k))");
    EXPECT_EQ(run(i + "nested.xml\"/>"), "r(s x=$(a)(t))") << "the directory of the including file counts";
    EXPECT_EQ(run(i + "define.xml\"/><ifdef name=\"d\"><k/></ifdef>"), "r(k)");
    fileMacros = {{QStringLiteral("TestDir"), QString::fromStdString(directory / "sub")}};
    EXPECT_EQ(run("<include filename=\"$(TestDir)/root.xml\"/>"), "r(s x=$(a)(t))");
}

TEST_F(Preprocessor, FaultsAreToldAndTheElementDropped)
{
    directory.write("empty.xml", "");
    directory.write("bad.xml", "<a>\n</b>");
    const std::string prefix = "XmlPP::processConditionals(): ";
    const std::pair<const char*, const char*> cases[] = {
        {"<if><k/></if>", "one condition required for <if[not]>"},
        {"<ifnot a=\"1\" b=\"1\"/>", "one condition required for <if[not]>"},
        {"<define name=\"a\"/>", "missing name and/or value in <define>"},
        {"<include/>", "missing filename in <include>"},
        {"<include filename=\"empty.xml\"/>", "error: include file 'DIR/empty.xml' is empty"},
        {"<include filename=\"bad.xml\"/>", "error \"tagName mismatch\" in include file DIR/bad.xml line:2"},
        {"<include filename=\"none.xml\"/>",
         "error \"couldn't read DIR/none.xml\" in include file DIR/none.xml line:0"},
        {"<for index=\"i\" start=\"0\" end=\"1\"/>", "<for index=\"i\" start=\"0\" end=\"32\" incr=\"1\">"},
        {"<for index=\"i\" start=\"0\" end=\"1\" incr=\"0\"/>",
         "<for index=\"i\" start=\"0\" end=\"32\" incr=\"1\">"},
    };
    for (const auto& [body, expected] : cases)
        EXPECT_EQ(run(body), prefix + expected) << body;
    // Processing goes on behind the element.
    Document document;
    ASSERT_TRUE(document.load(directory.write("m.xml", "<r><if/><define/><k/></r>").c_str(), "", false));
    EXPECT_EQ(document.errors.size(), 2);
    EXPECT_EQ(dump(document.root()), "r(k)");
}

TEST_F(Preprocessor, WorkWithoutEndIsStopped)
{
    directory.write("main.xml", "");
    const std::string prefix = "XmlPP::processConditionals(): ";
    EXPECT_EQ(run("<include filename=\"main.xml\"/>"), prefix + "include files nest more than 100 deep");
    EXPECT_EQ(run("<include filename=\"main.xml\"/><include filename=\"main.xml\"/>"),
              prefix + "include files nest more than 100 deep");
    directory.write("leaf.xml", "<x/>");
    std::string many;
    for (int i = 0; i < 1100; ++i)
        many += "<include filename=\"leaf.xml\"/>";
    EXPECT_EQ(run(many), prefix + "more than 1000 include files");
    std::string body = "<p/>";
    for (int i = 0; i < 6; ++i)
        body = "<for index=\"i\" start=\"0\" end=\"1000\" incr=\"1\">" + body + "</for>";
    EXPECT_EQ(run(body), prefix + "<for> makes more than 200000 rounds");
    EXPECT_EQ(run("<for index=\"i\" start=\"0\" end=\"0xFFFFFFFF\" incr=\"1\"/>"),
              prefix + "<for> makes more than 200000 rounds");
    std::string tall = "<x v=\"" + std::string(100000, 'v') + "\"/>";
    std::string wide;
    for (int i = 0; i < 10; ++i)
        wide += "<x v=\"$(a)" + std::string(1000, 'v') + "\"/>";
    EXPECT_EQ(run("<for index=\"i\" start=\"0\" end=\"100000\" incr=\"1\">" + wide + "</for>", "a=1"),
              prefix + "the document grows beyond 134217728 bytes");
    std::string defines;
    for (int i = 0; i < 10000; ++i)
        defines += "<define name=\"m" + std::to_string(i) + "\" value=\"\"/>";
    const std::string rounds = "<for index=\"i\" start=\"0\" end=\"100000\" incr=\"1\">";
    EXPECT_EQ(run(defines + rounds + "</for>"), "r");
    EXPECT_EQ(run(defines + rounds + "<define name=\"x\" value=\"1\"/></for>"),
              prefix + "the document grows beyond 134217728 bytes");
    std::string growing;
    for (int i = 0; i < 40; ++i)
        growing += "<define name=\"a\" value=\"$(a)$(a)\"/>";
    EXPECT_THROW(run(growing, "a=x", true), HException);
    // A tree that files make deeper than one file may be.
    std::string open;
    std::string close;
    for (int i = 0; i < 300; ++i) {
        open += "<e>";
        close += "</e>";
    }
    EXPECT_EQ(run(open + "<include filename=\"main.xml\"/>" + close),
              prefix + "elements nest more than 1000 deep");
}
