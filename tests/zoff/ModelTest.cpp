#include "support/HException.h"
#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

#include <gtest/gtest.h>
#include <limits>

using T = ZOFFTag;

namespace {

// A module to build in.
class ZOFFModel : public ::testing::Test {
protected:
    ~ZOFFModel() override
    {
        Pool::setCurrentPool(m_previous);
        ZOFFModule::destroy(module);
    }
    static ZOFFConstExpr* constant(int64_t value) { return new ZOFFConstExpr(value); }
    ZOFFSymbol* symbol(const char* name, ZOFFExpr* value = nullptr)
    {
        auto* made = new ZOFFSymbol(HString::intern(name));
        made->setValue(value);
        module->addSymbol(made);
        return made;
    }
    static std::string nameOf(const ZOFFType* type) { return std::string(type->getName()->view()); }

    ZOFFModule* module = ZOFFModule::create();

private:
    Pool* m_previous = Pool::setCurrentPool(module->pool());
};

} // namespace

TEST_F(ZOFFModel, OperatorsComputeOnWrappingNumbers)
{
    constexpr int64_t Lowest = std::numeric_limits<int64_t>::min();
    struct {
        T op;
        int64_t left, right, result;
        const char* text;
    } cases[] = {
        {T::Add, std::numeric_limits<int64_t>::max(), 1, Lowest, " + "},
        {T::Sub, Lowest, 1, std::numeric_limits<int64_t>::max(), " - "},
        {T::Mul, Lowest, -1, Lowest, " * "},
        {T::Div, Lowest, -1, Lowest, " / "},
        {T::Div, -7, 2, -3, " / "},
        {T::Mod, Lowest, -1, 0, " % "},
        {T::Mod, -7, 2, -1, " % "},
        {T::And, 12, 10, 8, " & "},
        {T::Or, 12, 10, 14, " | "},
        {T::Xor, 12, 10, 6, " ^ "},
        {T::Shl, 1, 63, Lowest, " << "},
        {T::Shl, 1, 64, 0, " << "},
        {T::Shl, 1, -1, 0, " << "},
        {T::Shr, -1, 60, 15, " >> "},
        {T::Shr, -1, 64, 0, " >> "},
        {T::Ashr, -16, 2, -4, " ASHR "},
        {T::Ashr, -16, 1000, -1, " ASHR "},
        {T::Eq, 1, 1, 1, " == "},
        {T::Ne, 1, 1, 0, " != "},
        {T::Gt, 1, -1, 1, " > "},
        {T::Lt, 1, -1, 0, " < "},
        {T::Ge, -1, -1, 1, " >= "},
        {T::Le, 1, -1, 0, " <= "},
        {T::LogAnd, 2, 4, 1, " && "},
        {T::LogOr, 0, 0, 0, " || "},
        {T::WordAddress, -3, 99, -2, " ?? "},
        {T::OtherOperator, 5, 6, 5, " ?? "},
    };
    for (auto& [op, left, right, result, text] : cases) {
        ZOFFExpr* folded = ZOFFBinaryExpr::make(op, constant(left), constant(right));
        ASSERT_EQ(folded->kind(), ZOFFKind::ConstExpr) << text;
        EXPECT_EQ(static_cast<ZOFFConstExpr*>(folded)->value(), result) << left << text << right;
        EXPECT_STREQ(ZOFFBinaryExpr::operatorText(op), text);
    }
    ZOFFExpr* divided = ZOFFBinaryExpr::make(T::Div, constant(1), constant(0));
    EXPECT_EQ(divided->evaluate().message, "division by zero");
    EXPECT_EQ(ZOFFBinaryExpr::make(T::Mod, constant(1), constant(0))->evaluate().message, "modulus by zero");
    // No short circuit.
    EXPECT_TRUE(ZOFFBinaryExpr::make(T::LogAnd, constant(0), divided)->evaluate().unresolved);
    EXPECT_TRUE(ZOFFBinaryExpr::make(T::LogOr, constant(1), divided)->evaluate().unresolved);
}

TEST_F(ZOFFModel, SumsOfConstantsFold)
{
    auto* a = new ZOFFSymbolExpr(symbol("a", constant(100)));
    ZOFFExpr* sum = ZOFFBinaryExpr::make(T::Add, a, constant(4));
    EXPECT_EQ(ZOFFBinaryExpr::make(T::Add, sum, constant(5))->printString(), "a + 9");
    EXPECT_EQ(ZOFFBinaryExpr::make(T::Add, constant(5), sum)->printString(), "a + 9");
    EXPECT_EQ(ZOFFBinaryExpr::make(T::Sub, sum, constant(5))->printString(), "(a + 4) - 5");
    EXPECT_EQ(ZOFFBinaryExpr::make(T::Sub, sum, constant(5))->evaluate().value, 99);
    EXPECT_TRUE(sum->equals(ZOFFBinaryExpr::make(T::Add, new ZOFFSymbolExpr(a->symbol()), constant(4))));
    EXPECT_FALSE(sum->equals(ZOFFBinaryExpr::make(T::Add, a, constant(3))));

    // As deep as a file may go, on either side.
    ZOFFExpr* left = a;
    ZOFFExpr* right = a;
    for (int i = 1; i < 10'000; ++i) {
        left = ZOFFBinaryExpr::make(T::Sub, left, constant(1));
        right = ZOFFBinaryExpr::make(T::Sub, constant(1), right);
    }
    EXPECT_EQ(left->evaluate().value, 100 - 9'999);
    EXPECT_EQ(right->evaluate().value, 1 - 100);
    EXPECT_TRUE(left->equals(left));
    EXPECT_GT(right->printString().size(), 9'999u);
    EXPECT_THROW(ZOFFBinaryExpr::make(T::Sub, left, constant(1)), HException);
}

TEST_F(ZOFFModel, ValuesKnowTheirSection)
{
    auto* text = new ZOFFSection(HString::intern(".text"));
    auto* marker = new ZOFFMarker;
    EXPECT_EQ((new ZOFFMarkerExpr(marker))->evaluate().message, "forward reference to label");
    marker->setPC(0x20);
    text->addInsn(marker);
    auto at = [marker] { return new ZOFFMarkerExpr(marker); };
    auto sectionOf = [](T op, ZOFFExpr* left, ZOFFExpr* right) {
        return ZOFFBinaryExpr::make(op, left, right)->evaluate().section;
    };
    EXPECT_EQ(sectionOf(T::Add, constant(1), at()), text);
    EXPECT_EQ(sectionOf(T::Sub, at(), constant(1)), text);
    EXPECT_EQ(sectionOf(T::Sub, at(), at()), nullptr);
    EXPECT_EQ(sectionOf(T::Mul, at(), constant(1)), text);
    EXPECT_EQ(sectionOf(T::Mul, constant(1), at()), nullptr);
    EXPECT_EQ(sectionOf(T::Shl, at(), constant(1)), nullptr);
    EXPECT_EQ(sectionOf(T::WordAddress, at(), constant(0)), text);
    ZOFFSymbol* label = symbol("label", at());
    label->setCodeletIndex(3);
    label->setPatchable(9);
    ZOFFEvaluation value = ZOFFBinaryExpr::make(T::Add, new ZOFFSymbolExpr(label), constant(2))->evaluate();
    EXPECT_EQ(value.value, 0x22);
    EXPECT_EQ(value.codeletIndex, 3);
    EXPECT_TRUE(value.patchable);
}

TEST_F(ZOFFModel, NamesAndScopesAreOneShot)
{
    auto* first = new ZOFFScope(T::ScopeBlock);
    auto* second = new ZOFFScope(T::ScopeBlock);
    ZOFFSymbol* x = symbol("x");
    x->setScope(first);
    x->setScope(second);
    EXPECT_EQ(x->scope(), first);
    EXPECT_TRUE(second->symbols().empty());
    ZOFFSymbol* other = symbol("x");
    other->setScope(first);
    EXPECT_EQ(first->symbols().at(x->name()), other);
}

TEST_F(ZOFFModel, SectionsMeasureWhatIsPlaced)
{
    auto* section = new ZOFFSection(HString::intern(".data"));
    section->addInsn(new ZOFFMarker);
    section->computeSectionMetrics();
    EXPECT_EQ(section->lowestAddress(), ZOFFSection::UnknownAddress);
    EXPECT_EQ(section->getSize(), 0);
    auto place = [section](ZOFFInsn* insn, long pc) {
        insn->setPC(pc);
        section->addInsn(insn);
        return insn;
    };
    ZOFFInsn* unplaced = place(new ZOFFFillInsn(7, 0xEE), -1);
    section->forgetMetrics();
    EXPECT_EQ(section->getSize(), 7); // the sum, while nothing has an address
    ZOFFInsn* fill = place(new ZOFFFillInsn(3, 0x155), 0x21);
    section->newFragment();
    ZOFFInsn* align = place(new ZOFFAlignInsn(4), 0x1E);
    auto* bytes = new ZOFFDefBytesInsn(constant(0x12345), 3);
    bytes->encode();
    place(bytes, 0x10);
    EXPECT_EQ(section->getSize(), 7); // computed once
    section->forgetMetrics();
    EXPECT_EQ(section->getSize(), 0x24 - 0x10);
    EXPECT_EQ(section->accumulatedSize(), 7 + 3 + 2 + 3);
    EXPECT_EQ(section->findInsnAt(0x21), fill);
    EXPECT_EQ(section->findInsnAt(0x22), nullptr);
    EXPECT_EQ(section->findInsnInRange(0x23), fill);
    EXPECT_EQ(section->findInsnInRange(0x1F), align);
    EXPECT_EQ(section->findInsnInRange(0xFFFFFFFF), unplaced);
    uint8_t dumped[0x14];
    memset(dumped, 0xCC, sizeof dumped);
    section->dump(0x12, dumped);
    EXPECT_EQ(dumped[0], 0x45);
    EXPECT_EQ(dumped[2], 0x01);
    EXPECT_EQ(dumped[3], 0xCC);
    EXPECT_EQ(dumped[0xF], 0);
    EXPECT_EQ(dumped[0x11], 0x55);
    EXPECT_EQ(dumped[0x12], 0xCC); // beyond the size

    EXPECT_EQ(bytes->printString(), "\tDC3\t74565");
    auto* aligned = new ZOFFAlignInsn(4);
    EXPECT_EQ(aligned->length(), 0);
    aligned->setPC(8);
    EXPECT_EQ(aligned->length(), 0);
    auto* none = new ZOFFAlignInsn(0);
    none->setPC(3);
    EXPECT_EQ(none->length(), 0);

    // Bytes beyond the first eight move to the pool, in order.
    std::string all;
    for (int i = 0; i < 40; ++i) {
        std::string part(size_t(i % 5), char(i));
        bytes->appendBytes(part);
        all += part;
    }
    EXPECT_EQ(std::string(bytes->bytes().begin() + 3, bytes->bytes().end()), all);
}

TEST_F(ZOFFModel, TypesPrintTheirNames)
{
    auto* integer = new ZOFFSimpleType(T::Int, 2);
    auto* character = new ZOFFSimpleType(T::Char, 1);
    auto* pointer = new ZOFFPtrType(2);
    EXPECT_EQ(nameOf(pointer), "*");
    pointer->setTarget(character);
    auto* array = new ZOFFArrayType(pointer, 3);
    auto* function = new ZOFFFunctionType(0, 0, 0);
    ZOFFSymbol* parameter = symbol("n");
    parameter->setType(integer);
    function->addInParameter(parameter);
    function->addInParameter(parameter);
    auto* empty = new ZOFFStrucType(0);
    auto* struc = new ZOFFStrucType(8);
    struc->addField(new ZOFFDynamicField(HString::intern("a"), 0, 16, integer));
    struc->addField(new ZOFFStaticField(HString::intern("b"), constant(1), array));
    EXPECT_EQ(nameOf(integer), "INT(2)");
    EXPECT_EQ(nameOf(character), "UNSIGNED(1)");
    EXPECT_EQ(nameOf(new ZOFFFloatType(4)), "FLOAT(4)");
    EXPECT_EQ(nameOf(new ZOFFUntypedType(0)), "VOID");
    EXPECT_EQ(nameOf(array), "UNSIGNED(1)*[3]");
    EXPECT_EQ(array->size(), 6);
    EXPECT_EQ(nameOf(new ZOFFCountedArrayType(character, integer, 9)), "UNSIGNED(1)::[INT(2)]");
    EXPECT_EQ(nameOf(function), "(INT(2), INT(2))");
    auto* member = new ZOFFMemberFunctionType(empty);
    member->addOutParameter(parameter);
    EXPECT_EQ(nameOf(member), "{  }::()->(INT(2))");
    EXPECT_TRUE(member->isFunction());
    EXPECT_EQ(nameOf(empty), "{  }");
    EXPECT_EQ(nameOf(struc), "{ INT(2) a; UNSIGNED(1)*[3] b;  }");
    EXPECT_EQ(struc->findField(HString::intern("b")), struc->fields()[1]);
    EXPECT_EQ(struc->findField(HString::intern("c")), nullptr);
    EXPECT_EQ(array->findField(HString::intern("b")), nullptr);
    auto* qualified = new ZOFFQualifiedType(array, T::CodeSpace);
    EXPECT_EQ(nameOf(qualified), "UNSIGNED(1)*[3]");
    EXPECT_EQ(qualified->size(), 6);
    EXPECT_EQ(qualified->getElementType(), nullptr);
    EXPECT_FALSE(qualified->isArray());
    integer->setName(HString::intern("int"));
    EXPECT_EQ(nameOf(integer), "int");
}

TEST_F(ZOFFModel, TypeNamesEnd)
{
    // A list: whichever name is asked for first, each type's own is the same.
    auto* node = new ZOFFStrucType(4);
    auto* link = new ZOFFPtrType(2);
    link->setTarget(node);
    node->addField(new ZOFFDynamicField(HString::intern("next"), 0, 16, link));
    EXPECT_EQ(nameOf(node), "{ {...}* next;  }");
    EXPECT_EQ(nameOf(link), "{ {...}* next;  }*");

    auto* function = new ZOFFFunctionType(0, 0, 0);
    auto* callback = new ZOFFPtrType(2);
    callback->setTarget(function);
    ZOFFSymbol* parameter = symbol("f");
    parameter->setType(callback);
    function->addInParameter(parameter);
    EXPECT_EQ(nameOf(function), "((...)*)");

    // Each structure holds the one before twice: a name of 2^60 parts.
    ZOFFType* inner = new ZOFFSimpleType(T::Int, 0);
    for (int i = 0; i < 60; ++i) {
        auto* outer = new ZOFFStrucType(0);
        outer->addField(new ZOFFDynamicField(HString::intern("a"), 0, 0, inner));
        outer->addField(new ZOFFDynamicField(HString::intern("b"), 0, 0, inner));
        inner = outer;
    }
    EXPECT_LT(nameOf(inner).size(), 400'000u);
    ZOFFType* deep = new ZOFFSimpleType(T::Int, 1);
    for (int i = 0; i < 9'000; ++i)
        deep = new ZOFFArrayType(deep, 1);
    EXPECT_NE(nameOf(deep).find("...[1]"), std::string::npos);
}
