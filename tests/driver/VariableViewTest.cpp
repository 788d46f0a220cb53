// What the two views make of the items of a display.
#include "debug/evaluation/VariableListBuilder.h"
#include "driver/console/JavaScriptVariableView.h"
#include "driver/session/TextVariableView.h"
#include "expression/ExpressionType.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESStringPool.h"
#include "script/native/ESLibrary.h"

#include <gtest/gtest.h>

namespace {

ExpressionType integer(long long value)
{
    return ExpressionType(value, 2);
}

// x=5, table=[1, 2], point={x=3, list=[4]}, name=text.
void show(VariableListBuilder& view)
{
    unsigned count = 2;
    view.addPrimitive("x", "x", integer(5), "int", nullptr);
    view.getArrayEvalMode("table", "int", count);
    auto array = view.beginArray("table", "table", ExpressionType("@0x10", 4), "int[2]", nullptr);
    for (unsigned i = 0; i < count; ++i)
        view.addPrimitive(QString("table[%1]").arg(i), "", integer(i + 1), "int", nullptr);
    view.endArray(array);
    auto object = view.beginObject("point", "point", ExpressionType(0xABULL, 1), "struct point", nullptr);
    view.addPrimitive("x", "(point).x", integer(3), "int", nullptr);
    count = 1;
    view.getArrayEvalMode("list", "int", count);
    array = view.beginArray("list", "(point).list", ExpressionType(), "int[1]", nullptr);
    view.addPrimitive("list[0]", "", integer(4), "int", nullptr);
    view.endArray(array);
    view.endObject(object);
    view.addPrimitive("name", "name", ExpressionType("a\x1b[2J\n", 6), "char *", nullptr);
}

struct Settings {
    int radix = 10;
    unsigned limit = 32;
    bool type = false, name = true, value = true, expand = true, aggregate = false, multiLine = false;
};

std::string shown(const Settings& s)
{
    TextVariableView view(s.radix, s.limit, s.type, s.name, s.value, true, "%g", s.expand, s.aggregate,
                          s.multiLine);
    show(view);
    return view.text().toStdString();
}

} // namespace

TEST(TextVariableView, PartsSwitchOnAndOff)
{
    EXPECT_EQ(shown({}), "x=5, table=[1, 2], point={x=3, list=[4]}, name=a\\u001b[2J\n");
    EXPECT_EQ(shown({.multiLine = true}), "x=5\ntable=[1, 2]\npoint={x=3, list=[4]}\nname=a\\u001b[2J\n");
    EXPECT_EQ(shown({.type = true}), "int x=5, int[2] table=[int 1, int 2], struct point point={int x=3, "
                                     "int[1] list=[int 4]}, char * name=a\\u001b[2J\n");
    EXPECT_EQ(shown({.name = false}), "5, [1, 2], {x=3, list=[4]}, a\\u001b[2J\n");
    EXPECT_EQ(shown({.radix = 16, .aggregate = true}),
              "x=0x0005, table=@0x10[0x0001, 0x0002], point=0xab{x=0x0003, list=[0x0004]}, "
              "name=a\\u001b[2J\n");
    EXPECT_EQ(shown({.expand = false}), "x=5, table=[...], point={...}, name=a\\u001b[2J\n");
}

TEST(TextVariableView, ArraysAreCutAtTheLimit)
{
    EXPECT_EQ(shown({.limit = 1}), "x=5, table=[1,...], point={x=3, list=[4]}, name=a\\u001b[2J\n");
    TextVariableView view(10, 2, false, true, true, true, "%g", true, false, true);
    unsigned outer = 5, inner = 2;
    view.getArrayEvalMode("a", "", outer);
    EXPECT_EQ(outer, 2u);
    view.beginArray("a", "a", ExpressionType(), "", nullptr);
    view.getArrayEvalMode("a[0]", "", inner);
    view.beginArray("a[0]", "", ExpressionType(), "", nullptr);
    view.endArray(2);
    view.endArray(1);
    EXPECT_EQ(view.text(), "a=[[],...]") << "each closes as it was cut";
    view.clear();
    EXPECT_EQ(view.text(), "");
}

TEST(TextVariableView, RadixesThatAreNone)
{
    for (auto [radix, expected] : {std::pair{11, "65534"}, {10, "-2"}, {16, "0xfffe"}, {1, "\\ufffe"}}) {
        TextVariableView view(radix, 0, false, false, true, true, "%g", true, false, true);
        view.addPrimitive("x", "x", integer(-2), "int", nullptr);
        EXPECT_EQ(view.text(), expected);
    }
}

TEST(TextVariableView, FollowsPointersToCharacters)
{
    unsigned count = 0;
    TextVariableView with(16, 0, false, true, true, true, "%g", true, false, true);
    TextVariableView without(16, 0, false, true, true, false, "%g", true, false, true);
    for (auto [type, address, mode] : {std::tuple{"char", 0x10, VariableListBuilder::PointerString},
                                       {"const char", 0x10, VariableListBuilder::PointerString},
                                       {"char", 0, VariableListBuilder::PointerValue},
                                       {"int", 0x10, VariableListBuilder::PointerValue}}) {
        EXPECT_EQ(with.getPointerEvalMode("p", type, uint64_t(address), count), mode) << type;
        EXPECT_EQ(without.getPointerEvalMode("p", type, uint64_t(address), count),
                  VariableListBuilder::PointerValue);
    }
}

TEST(JavaScriptVariableView, BuildsOneValue)
{
    ESContext context;
    ESLibrary::mkexec(nullptr, &context);
    JavaScriptVariableView view;
    view.init(&context);
    EXPECT_TRUE(view.getESValue().isUndefined());
    view.addPrimitive("x", "x", ExpressionType(-5LL, 2), "int", nullptr);
    EXPECT_EQ(view.getESValue().number(), -5);

    for (const auto& [value, expected] : {std::pair{ExpressionType(true), "true"},
                                          {ExpressionType(255ULL, 1), "255"},
                                          {ExpressionType(2.5, 4), "2.5"},
                                          {ExpressionType("text", 4), "text"},
                                          {ExpressionType(), "undefined"}}) {
        view.clear();
        view.addPrimitive("x", "x", value, "", nullptr);
        EXPECT_EQ(context.toString(view.getESValue()), expected);
    }

    view.init(&context);
    auto top = view.beginObject("all", "all", ExpressionType(), "struct", nullptr);
    show(view);
    view.endObject(top);
    context.put(context.globalObject(), ESStringPool::intern("v"), view.getESValue());
    EXPECT_EQ(
        context.toString(context
                             .eval("v.x + ' ' + v.table[0] + v.table[1] + v.point.x + v.point.list[0] + "
                                   "v.name + v.length + v.point.length + v.table.length")
                             .value),
        QString("5 1234a\x1b[2J\n422"));
    EXPECT_EQ(context.toString(context.eval("var n = 0; for (var i in v) ++n; n").value), "4")
        << "the length is not enumerated";
    EXPECT_EQ(context.toString(context.eval("v.table[5] = 1; v.table.length").value), "6") << "an array";
}
