#include "ScriptFixture.h"

#include "script/host/BuiltinScript.h"
#include "script/host/ESQObject.h"
#include "support/Failure.h"

#include <gtest/gtest.h>

class Lamp : public ESQObject {
    Q_OBJECT
    Q_PROPERTY(int level MEMBER m_level)
    Q_PROPERTY(uint mask MEMBER m_mask)
    Q_PROPERTY(bool on MEMBER m_on)
    Q_PROPERTY(QStringList names MEMBER m_names)
    Q_PROPERTY(QString title MEMBER m_title)
    Q_PROPERTY(Color color MEMBER m_color)
public:
    enum Color { Red, Green };
    Q_ENUM(Color)

    ESObject* installScriptObject(ESContext* context) override
    {
        ESObject* object = ESQObject::installScriptObject(context);
        biinst(context, object, {"blink", "Lamp.prototype.blink", 2, false, FirstFreeId},
               context->functionPrototype(), this);
        biinst(context, object, {"fail", "Lamp.prototype.fail", 0, false, FirstFreeId + 1},
               context->functionPrototype(), this);
        biinst(context, object, {"unknown", "Lamp.prototype.unknown", 1, false, 99},
               context->functionPrototype(), this);
        return object;
    }
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override
    {
        if (function->builtinId() == FirstFreeId)
            argv[0] = ESValue(context->ToNumber(biarg(argc, argv, 0)) *
                              (biarg(argc, argv, 1).isUndefined() ? 1 : 2));
        else if (function->builtinId() == FirstFreeId + 1)
            throw HException("lamp broken");
        else
            ESQObject::call(context, function, self, argc, argv);
    }

private:
    int m_level = 3;
    uint m_mask = 4;
    bool m_on = true;
    QStringList m_names{"x"};
    QString m_title = "t";
    Color m_color = Red;
};

namespace {

} // namespace

TEST(HostBinding, QtPropertiesAreReadAndWritten)
{
    ScriptWorld world;
    Lamp lamp;
    lamp.installScriptObject(&world.context());
    const char* cases[][2] = {
        {"Lamp.GetProperty('level') + 1", "4"},
        {"Lamp.SetProperty('level', -2.7)", "level"},
        {"Lamp.GetProperty('level')", "-2"},
        {"Lamp.SetProperty('mask', -1); Lamp.GetProperty('mask')", "4294967295"},
        {"typeof Lamp.GetProperty('on')", "boolean"},
        {"Lamp.SetProperty('on', 1); Lamp.GetProperty('on')", "false"},
        {"Lamp.SetProperty('on', 'true'); Lamp.GetProperty('on')", "true"},
        {"Lamp.SetProperty('names', 'a\\n\\nb'); Lamp.GetProperty('names')", "a\nb"},
        {"Lamp.SetProperty('title', 5); Lamp.GetProperty('title') + typeof Lamp.GetProperty('title')",
         "5string"},
        {"Lamp.GetProperty('color')", "Red"},
        {"Lamp.SetProperty('color', 'Green'); Lamp.GetProperty('color')", "Green"},
        {"Lamp.blink(4) + Lamp.blink(4, 1)", "12"},
        {"Lamp.unknown('same')", "same"},
        {"Lamp.GetProperty.length + Lamp.SetProperty.length", "3"},
        {"var s = ''; for (var k in Lamp) s += k; for (k in this) if (k == 'Lamp') s += k; s", ""},
        {"copy = Lamp.blink; copy(2)", "2"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(world.value(c[0]), c[1]) << c[0];
}

TEST(HostBinding, HostExceptionsPassThroughAndPutTheStateBack)
{
    ScriptWorld world;
    Lamp lamp;
    lamp.installScriptObject(&world.context());
    const char* cases[][2] = {
        {"Lamp.GetProperty('absent')", "unknown property: absent"},
        {"Lamp.SetProperty('absent', 1)", "unknown property: absent"},
        {"Lamp.SetProperty('color', 'Blue')", "invalid enum value: Blue"},
        {"Lamp.SetProperty('color', '')", "invalid enum value: "},
        {"with ({}) [1, 2].sort(function() { return Lamp.fail() })", "lamp broken"},
        {"function F() { eval('Lamp.fail()') } new F", "lamp broken"},
    };
    int live = HException::count();
    for (int round = 0; round < 300; ++round) {
        for (const auto& c : cases)
            ASSERT_EQ(failureOf([&] { world.context().eval(c[0]); }), c[1]) << c[0];
    }
    EXPECT_EQ(HException::count(), live);
    EXPECT_EQ(world.value("Lamp.GetProperty('color') + this"), "Red[object global]");
}

TEST(HostBinding, BuiltinScriptIsOneObjectUnderTwoNames)
{
    char first[] = "one", second[] = "zw\xc3\xb6lf";
    char* arguments[] = {first, second};
    ScriptWorld world;
    BuiltinScript script;
    script.install(&world.context(), 2, arguments);
    EXPECT_EQ(world.value("(Script == WScript) + Script.Arguments + Script.Arguments[1].length + Script"),
              "trueone,zw\xc3\xb6lf5[object Object]");
    testing::internal::CaptureStdout();
    EXPECT_EQ(world.value("WScript.Echo('a\xc3\xa4'); Script.Echo(); WScript.Echo(1, 2)"), "undefined");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a\xc3\xa4undefined1");
    biinst(&world.context(), world.context().globalObject(), {"odd", "odd", 0, false, 7},
           world.context().functionPrototype(), &script);
    EXPECT_EQ(world.value("odd()"), "error: line 1: bad signature in BuiltinScript::call");
}

TEST(HostBinding, ArraysCrossToBuffersAndBack)
{
    ScriptWorld world;
    ESContext& context = world.context();
    unsigned count = 9;
    auto bytes = context.toByteArray(context.eval("[1, 256 + 2, -1, '4', 1.9]").value, count);
    ASSERT_EQ(count, 5u);
    EXPECT_EQ(std::vector<int>(bytes.get(), bytes.get() + count), (std::vector<int>{1, 2, 255, 4, 1}));
    auto words = context.toUint16Array(context.eval("var a = [65537]; a[2] = 5; a").value, count);
    EXPECT_EQ(std::vector<int>(words.get(), words.get() + count), (std::vector<int>{1, 0, 5}));
    auto longs = context.toUint32Array(context.eval("[4294967295, -1]").value, count);
    EXPECT_TRUE(longs[0] == 0xFFFFFFFF && longs[1] == 0xFFFFFFFF);
    EXPECT_EQ(context.toWordArray(context.eval("[]").value, count) != nullptr && count == 0, true);
    EXPECT_THROW(context.toByteArray(ESValue(5.0), count), ESException);
    EXPECT_THROW(context.toByteArray(context.eval("new Array(4294967295)").value, count), ESException);

    const unsigned values[] = {7, 0xFFFFFFFF};
    ESObject* array = context.fromWordArray(values, 2);
    context.valinstant(context.globalObject(), ESProperty::DontEnum, ESStringPool::intern("made"), array);
    EXPECT_EQ(world.value("made.push(1) + ':' + made"), "3:7,4294967295,1");
}

TEST(HostBinding, TextOfTheHostActsAsAnyString)
{
    ScriptWorld world;
    ESContext& context = world.context();
    QString text = "abc";
    context.valinstant(context.globalObject(), 0, ESStringPool::intern("host"), ESValue(&text));
    const char* cases[][2] = {
        {"host == 'abc'", "true"},
        {"'abc' == host", "true"},
        {"host + 1", "abc1"},
        {"host.length", "3"},
        {"host.charAt(1)", "b"},
        {"typeof host", "string"},
        {"var o = {}; o[host] = 5; o.abc", "5"},
        {"host < 'abd'", "true"},
        {"host ? 1 : 2", "1"},
        {"switch (host) { case 'abc': 'hit'; x = 1; } x", "1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(world.value(c[0]), c[1]) << c[0];
    EXPECT_TRUE(ESContext::identical(ESValue(&text), ESValue(ESStringPool::intern("abc"))));
    EXPECT_THROW(context.toString(ESValue(6, 0)), ESFatalError);
}

TEST(Objects, SlotsStayWhereTheyAre)
{
    ScriptWorld world;
    ESObject* object = world.context().mkplain();
    for (int i = 0; i < 51; ++i)
        object->append(ESStringPool::intern(QStringLiteral("slot%1").arg(i)), 0, ESValue(i));
    ESString* name = ESStringPool::intern("slot7");
    EXPECT_TRUE(ESContext::deleteProperty(object, name) && ESContext::deleteProperty(object, name));
    EXPECT_EQ(object->slot(8).name(), ESStringPool::intern("slot8"));
    world.context().put(object, name, ESValue(1));
    EXPECT_EQ(object->slotCount(), 51u);
    EXPECT_EQ(object->slot(7).name(), name);
    // Code refers to the slots of the global object, so an empty one stays empty.
    ESObject* global = world.context().globalObject();
    world.value("first = 1; second = 2");
    ESString* gone = ESStringPool::intern("first");
    auto slot = uint32_t(global->find(gone) - global->slots());
    EXPECT_TRUE(ESContext::deleteProperty(global, gone));
    world.context().put(global, gone, ESValue(3));
    EXPECT_FALSE(global->slot(slot).isNamed());
    EXPECT_EQ(world.value("first + second"), "5");

    ESString* fixed = ESStringPool::intern("slot9");
    object->find(fixed)->attributes = ESProperty::ReadOnly | ESProperty::DontDelete;
    world.context().put(object, fixed, ESValue(77));
    EXPECT_EQ(world.context().get(object, fixed).number(), 9);
    EXPECT_FALSE(ESContext::deleteProperty(object, fixed));
    EXPECT_EQ(ESStringPool::number(99), ESStringPool::intern("99"));
    EXPECT_EQ(ESStringPool::number(100), ESStringPool::intern("100"));
    EXPECT_EQ(ESStringPool::number(-5), ESStringPool::intern("-5"));
    EXPECT_EQ(ESStringPool::number(4000000000u), ESStringPool::intern("4000000000"));
    EXPECT_EQ(ESStringPool::get(name->index()), name);
}

TEST(Objects, ContextsShareThePoolAndNothingElse)
{
    ScriptWorld first, second;
    first.value("var x = 1; Array.prototype.mine = 2; function f() { return x }");
    EXPECT_EQ(second.value("typeof x + [].mine"), "undefinedundefined");
    EXPECT_EQ(second.value("var a1, a2, x = 5; x"), "5");
    EXPECT_EQ(first.value("f()"), "1");
}

#include "BindingTest.moc"
#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "support/HException.h"
