// The parts of the debug adapter that know no program: framing, arguments, and what users write into the
// fields of a breakpoint.
#include "driver/dap/ClientFormat.h"
#include "driver/dap/HitCondition.h"
#include "driver/dap/LogText.h"
#include "driver/dap/MemoryReference.h"
#include "driver/dap/MessageReader.h"
#include "driver/dap/References.h"
#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/dap/limits.h"
#include "support/Failure.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace {

std::string framed(const std::string& json)
{
    return "Content-Length: " + std::to_string(json.size()) + "\r\n\r\n" + json;
}

// What comes out of a stream that comes in pieces of so many bytes: messages, and faults behind a "!".
std::vector<std::string> read(const std::string& stream, size_t piece)
{
    MessageReader reader;
    std::vector<std::string> items;
    for (size_t at = 0; at < stream.size(); at += piece) {
        reader.add(std::string_view(stream).substr(at, piece));
        while (auto item = reader.next())
            items.push_back(item->fault ? std::string("!") + item->fault : item->json.toStdString());
    }
    return items;
}

} // namespace

TEST(DapProtocol, MessagesAreFoundHoweverTheStreamIsCut)
{
    std::string stream = framed("{\"a\":1}") + "content-length:2\r\nContent-Type: x\r\n\r\n{}" + framed("") +
                         "rubbish\r\n\r\nmore Content-Length Content-Length: 3\r\n\r\n[1]" +
                         "Content-Length: -3\r\n\r\n" + framed("{\"b\":2}");
    std::vector<std::string> expected = {"{\"a\":1}", "{}",
                                         "",          "!a message's header has a line without a colon",
                                         "[1]",       "!a message's Content-Length is not one number",
                                         "{\"b\":2}"};
    for (size_t piece : {size_t(1), size_t(2), size_t(7), size_t(31), stream.size()})
        EXPECT_EQ(read(stream, piece), expected) << piece;
}

TEST(DapProtocol, LengthsAndHeadersThatAreTooLongDoNotStopTheStream)
{
    for (const char* length : {"16777217", "999999999999", "9999999999999999999999", "0x10", "1 2", ""}) {
        std::vector<std::string> items =
            read("Content-Length: " + std::string(length) + "\r\n\r\n" + framed("{}"), 1000);
        ASSERT_EQ(items.size(), 2u) << length;
        EXPECT_EQ(items[0][0], '!');
        EXPECT_EQ(items[1], "{}");
    }
    std::string noise;
    for (int i = 0; i < 200000; ++i)
        noise += "Content-Length";
    EXPECT_EQ(read(noise + framed("{}"), 65536).back(), "{}") << "and within a time that grows linearly";
}

TEST(DapProtocol, ArgumentsOfWrongTypesAreToldWithTheirWay)
{
    QJsonObject json =
        QJsonDocument::fromJson(R"({"a":{"n":1e300,"f":1,"t":[1],"o":[{},3]},"big":4294967296})").object();
    RequestArguments inner = RequestArguments(json).object("a");
    EXPECT_EQ(failureOf([&] { inner.number("n"); }), "argument \"a.n\" must be a whole number");
    EXPECT_EQ(failureOf([&] { inner.flag("f", true); }), "argument \"a.f\" must be true or false");
    EXPECT_EQ(failureOf([&] { inner.text("t"); }), "argument \"a.t\" must be a text");
    EXPECT_EQ(failureOf([&] { inner.texts("t"); }), "argument \"a.t\" must be a list of texts");
    EXPECT_EQ(failureOf([&] { inner.objects("o"); }), "argument \"a.o\" must be a list of objects");
    EXPECT_EQ(failureOf([&] { inner.text("missing"); }), "argument \"a.missing\" is missing");
    EXPECT_EQ(failureOf([&] { RequestArguments(json).count("big"); }), "argument \"big\" is out of range");
}

TEST(DapProtocol, HitConditionsHoldForTheHitsTheyName)
{
    struct {
        const char* text;
        std::vector<uint64_t> hits; // of the first six
    } cases[] = {{"", {1, 2, 3, 4, 5, 6}}, {"2", {2}},
                 {" == 3 ", {3}},          {"=4", {4}},
                 {">= 5", {5, 6}},         {"> 5", {6}},
                 {"<3", {1, 2}},           {"<= 1", {1}},
                 {"% 2", {2, 4, 6}},       {"%1", {1, 2, 3, 4, 5, 6}}};
    for (const auto& [text, hits] : cases) {
        HitCondition condition{QString::fromLatin1(text)};
        std::vector<uint64_t> held;
        for (uint64_t hit = 1; hit <= 6; ++hit)
            if (condition.holds(hit))
                held.push_back(hit);
        EXPECT_EQ(held, hits) << text;
    }
    for (const char* text : {"% 0", ">=", "-1", "+1", "2 3", "x", ">> 1", "99999999999999999999"})
        EXPECT_THROW(HitCondition(QString::fromLatin1(text)), RequestFailure) << text;
}

TEST(DapProtocol, LogTextsReplaceWhatStandsInBraces)
{
    auto shown = [](const char* text) {
        return LogText(QString::fromLatin1(text))
            .expanded(
                [](const QString& expression) { return QLatin1Char('<') + expression + QLatin1Char('>'); })
            .toStdString();
    };
    EXPECT_EQ(shown("a{b}c{ d }"), "a<b>c<d>");
    EXPECT_EQ(shown("\\{x\\} \\n {a\\}"), "{x} \\n <a\\>");
    EXPECT_EQ(shown("{(struct { int x; })y}"), "<(struct { int x; })y>");
    for (const char* text : {"{", "}", "{}", "{ }", "a{b", "a}b", "{{x}"})
        EXPECT_THROW(LogText(QString::fromLatin1(text)), RequestFailure) << text;
}

TEST(DapProtocol, PathsAreMappedAtTheEndsOfTheirParts)
{
    QJsonObject uris{{"pathFormat", "uri"}, {"linesStartAt1", false}};
    ClientFormat client{RequestArguments(uris)};
    client.sourceMap.add("/build/src/", "/home/me/my project");
    client.sourceMap.add("/build", "/other");
    EXPECT_EQ(client.path("/build/src/a.s").toStdString(), "file:///home/me/my%20project/a.s");
    EXPECT_EQ(client.pathFrom("file:///home/me/my%20project/a.s").toStdString(), "/build/src/a.s");
    EXPECT_EQ(client.path("/build/srcs/a.s").toStdString(), "file:///other/srcs/a.s");
    EXPECT_EQ(client.pathFrom("file:///home/me/my%20project2/a.s").toStdString(), "/home/me/my project2/a.s");
    EXPECT_EQ(client.lineFrom(client.line(7)), 7);
    EXPECT_EQ(client.line(7), 6);
}

TEST(DapProtocol, AddressesStayInsideOfMemory)
{
    EXPECT_EQ(MemoryReference("code:0x10", 6).address, 0x16u);
    EXPECT_EQ(MemoryReference("4294967295", 0).address, 0xFFFFFFFFu);
    for (auto [text, offset] :
         {std::pair("0xffffffff", 1LL), std::pair("0", -1LL), std::pair("0x100000000", 0LL),
          std::pair("0", 1LL << 53), std::pair("", 0LL), std::pair("1x", 0LL)})
        EXPECT_THROW(MemoryReference(QString::fromLatin1(text), offset), RequestFailure) << text;
}

TEST(DapProtocol, ReferencesDieAndAreKnownToBeDead)
{
    References<int> references;
    int first = references.add(7);
    EXPECT_EQ(references.at(first), 7);
    references.clear();
    int second = references.add(8);
    EXPECT_NE(first, second);
    EXPECT_EQ(failureOf([&] { references.at(first); }), "the reference is from before the program went on");
    EXPECT_EQ(failureOf([&] { references.at(second + 1); }), "unknown reference");
    EXPECT_EQ(failureOf([&] { references.at(0); }), "unknown reference");
    for (int i = 1; i < DapLimits::References; ++i)
        ASSERT_NE(references.add(i), 0);
    EXPECT_EQ(references.add(0), 0) << "no more than the limit";
}
