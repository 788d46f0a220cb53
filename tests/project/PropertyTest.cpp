#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "project/xml/XMLDocument.h"

#include <QtGlobal>
#include <gtest/gtest.h>

namespace {

QStringList g_warnings;

// Collects what goes to the Qt warning channel.
class Warnings {
public:
    Warnings()
    {
        g_warnings.clear();
        m_previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { g_warnings.append(text); });
    }
    ~Warnings() { qInstallMessageHandler(m_previous); }
    QStringList take() { return std::exchange(g_warnings, {}); }

private:
    QtMessageHandler m_previous;
};

PropertyClass make(PropertyClass::Type type)
{
    return PropertyClass("n", type, QString("d"), "p", "g", "s", "l");
}

} // namespace

TEST(PropertyValue, Conversions)
{
    PropertyClass boolean("b", PropertyClass::Boolean, QString(), "", "", "", "");
    PropertyClass enumeration("e", PropertyClass::Enumeration, QStringList{"None", "Some", "All"}, "", "", "",
                              "");
    PropertyClass integer("i", PropertyClass::Integer, QString(), "", "", "", "");
    for (const char* text : {"Yes", "TRUE", "1", "yes", "true"})
        EXPECT_TRUE(SimplePropertyValue(&boolean, text).toBool()) << text;
    for (const char* text : {"no", "", "2", "No", "on"})
        EXPECT_FALSE(SimplePropertyValue(&boolean, text).toBool()) << text;
    EXPECT_TRUE(SimplePropertyValue(&enumeration, "Some").toBool());
    EXPECT_FALSE(SimplePropertyValue(&enumeration, "All").toBool());
    const std::pair<const char*, int> numbers[] = {{"0x10", 16},       {"-5", -5},        {"", 0},
                                                   {"abc", 0},         {"12x", 0},        {"0xFFFFFFFF", -1},
                                                   {"0x100000000", 0}, {"99999999999", 0}};
    for (const auto& [text, expected] : numbers)
        EXPECT_EQ(SimplePropertyValue(&integer, text).toInt(), expected) << text;
    EXPECT_EQ(SimplePropertyValue(&enumeration, "All").toInt(), 2);
    EXPECT_EQ(SimplePropertyValue(&enumeration, "0x7").toInt(), 7);
    EXPECT_EQ(SimplePropertyValue(&integer, "a;;b").toStringList(true), (QStringList{"a", "", "b"}));
    EXPECT_EQ(SimplePropertyValue(&integer, "#ff8000").toColor(), (PropertyColor{255, 128, 0}));
    EXPECT_EQ(SimplePropertyValue(&integer, "red").toColor(), PropertyColor{});
    EXPECT_EQ(SimplePropertyValue(&enumeration).toString(), "None") << "the first text is the default";
}

TEST(PropertyValue, SettingGoesByTheClass)
{
    Warnings warnings;
    PropertyClass hex = PropertyClass("h", PropertyClass::IntegerHex, QString(), "", "", "", "");
    PropertyClass enumeration("e", PropertyClass::Enumeration, QStringList{"None", "Some", "All"}, "", "", "",
                              "");
    PropertyClass boolean("b", PropertyClass::Boolean, QString(), "", "", "", "");
    PropertyClass text("s", PropertyClass::String, QString("def"), "", "", "", "");
    SimplePropertyValue value(&enumeration);
    value.setValue(2);
    EXPECT_EQ(value.toString(), "All");
    EXPECT_TRUE(warnings.take().isEmpty());
    for (int outside : {3, -1})
        value.setValue(outside);
    EXPECT_EQ(value.toString(), "All");
    EXPECT_EQ(warnings.take(),
              QStringList(2, "PropertyValue::setValue(int): Setting an enumeration to a value "
                             "which isn't in its enumerates"));
    value.setValue(true);
    EXPECT_EQ(warnings.take(), QStringList("PropertyValue::setValue(int): Setting a non-Boolean property"));
    SimplePropertyValue string(&text);
    string.setValue(1);
    EXPECT_EQ(warnings.take(), QStringList("PropertyValue::setValue(int): Setting a non-integer property"));
    EXPECT_EQ(string.toString(), "def");
    string.setValue("literal"); // text, not a truth
    EXPECT_EQ(string.toString(), "literal");
    string.setValue(QStringList{"a;b", "c"});
    EXPECT_EQ(string.toString(), "a\\;b;c");
    string.setValue(QRect(1, 2, 3, 4));
    EXPECT_EQ(string.toRect(), QRect(1, 2, 3, 4));
    string.setValue(PropertyFont{"Mono", 9, true, false});
    EXPECT_EQ(string.toFont({}), (PropertyFont{"Mono", 9, true, false}));
    string.setValue(PropertyColor{1, 2, 254});
    EXPECT_EQ(string.toString(), "#0102fe");
    EXPECT_EQ(string.toFont({"Else", 1}).family, "Else");
    string.setToDefault();
    EXPECT_EQ(string.toString(), "def");
    SimplePropertyValue number(&hex);
    number.setValue(0xABC);
    EXPECT_EQ(number.toString(), "0xabc");
    SimplePropertyValue flag(&boolean);
    flag.setValue(true);
    EXPECT_EQ(flag.toString(), "Yes");
    flag.setValue(false);
    EXPECT_EQ(flag.toString(), "No");
}

TEST(PropertyClass, FromElementAndFromTexts)
{
    XMLDocument document(false);
    ASSERT_TRUE(
        document.loadFromString("<p name=\"n\" type=\"IntegerRange\" group=\"g\" short=\"s\" long=\"l\" "
                                "default=\"7\" minimum=\"0x1\" maximum=\"20\" enumeration=\"a;b\" "
                                "specialvalue=\"none\"/>"));
    PropertyClass read(document.root());
    EXPECT_EQ(read.saveName(), "n");
    EXPECT_EQ(read.type(), PropertyClass::IntegerRange);
    EXPECT_EQ(read.minimum(), 1);
    EXPECT_EQ(read.maximum(), 20);
    EXPECT_EQ(read.enumerates(), (QStringList{"a", "b"}));
    EXPECT_EQ(read.specialValueText(), "none");
    EXPECT_EQ(read.defaultValue(), "7");
    EXPECT_TRUE(read.perConfiguration());
    for (const char* type : {"", "Nonsense", "Custom"})
        EXPECT_EQ(PropertyClass::typeFromName(type), PropertyClass::Custom);
    EXPECT_EQ(PropertyClass::typeFromName("FixedPitchFont"), PropertyClass::FixedPitchFont);
    PropertyClass::setText("k.short", "Title");
    PropertyClass::setText("k.enumerates", "x;y");
    PropertyClass::setText("k.maximum", "9");
    PropertyClass keyed("k", PropertyClass::Enumeration);
    EXPECT_EQ(keyed.shortDescription(), "Title");
    EXPECT_EQ(keyed.enumerates(), (QStringList{"x", "y"}));
    EXPECT_EQ(keyed.maximum(), 9);
    EXPECT_TRUE(keyed.longDescription().isEmpty());
    EXPECT_EQ(PropertyClass("b", PropertyClass::Boolean).enumerates(), (QStringList{"No", "Yes"}));
}

TEST(PropertyValueList, OneValueAClass)
{
    Warnings warnings;
    PropertyClass a = make(PropertyClass::String);
    PropertyClass b = make(PropertyClass::String);
    PropertyValueList list(true);
    auto* first = new SimplePropertyValue(&a);
    SimplePropertyValue second(&a);
    EXPECT_TRUE(list.appendUnique(first));
    EXPECT_FALSE(list.appendUnique(&second));
    EXPECT_TRUE(list.appendUnique(new SimplePropertyValue(&b)));
    EXPECT_EQ(list.size(), 2);
    EXPECT_EQ(list.find(&a), first);
    SimplePropertyValue none(nullptr);
    EXPECT_FALSE(list.appendUnique(nullptr));
    EXPECT_FALSE(list.appendUnique(&none));
    EXPECT_EQ(warnings.take(), QStringList(2, "Bad property value in PropertyValueList::appendUnique"));
    PropertyClassList classes;
    classes.appendUnique(&a);
    classes.appendUnique(&a);
    EXPECT_EQ(classes.size(), 1);
}
