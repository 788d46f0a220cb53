// What the debugger finds in an executable: lines, scopes, types, variables.
#include "support/HString.h"
#include "tools/kvas/Sources.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

namespace {

class DebugInfo : public Sources {
protected:
    // "file:line" of the instruction at an address, "" for none.
    std::string lineAt(uint32_t address) const
    {
        for (ZOFFSection* s : module->sections()) {
            ZOFFInsn* insn = s->sectionKind() == ZOFFSection::Code ? s->findInsnAt(address) : nullptr;
            if (!insn || !insn->locus())
                continue;
            std::string file = insn->locus()->file()->fileName()->c_str();
            return file.substr(file.rfind('/') + 1) + ":" + std::to_string(insn->locus()->line());
        }
        return "";
    }
    // Of instructions of one word, one behind the other.
    void expectLines(uint32_t address, std::initializer_list<const char*> lines) const
    {
        for (const char* line : lines) {
            EXPECT_EQ(lineAt(address), line) << address;
            address += 2;
        }
    }
};

} // namespace

TEST_F(DebugInfo, LinesAreThoseOfTheSourceOrOfAnotherFile)
{
    load({".CODE\nNOP\n\nx: NOP ; four\nNOP\n.LINE \"prog.c\", 10\nNOP\nNOP\n.LINE 12\nNOP\n.NOLINE\nNOP\n"
          ".LINE\nDB 1, 2\n.DATA\nDB 1\n.CODE\nNOP\n"});
    expectLines(0, {"source1.s:2", "source1.s:4", "source1.s:5", "prog.c:10", "prog.c:10", "prog.c:12", "",
                    "source1.s:14", "source1.s:18"});
    EXPECT_EQ(section("data")->findInsnAt(0)->locus(), nullptr);
}

TEST_F(DebugInfo, LineOfAnotherFileGoesOnBehindAnOrigin)
{
    load({".CODE\n.LINE \"prog.c\", 7\nNOP\nORG 0x40\nx: NOP\nNOP\n.NOLINE\nNOP\nORG 0x80\nNOP\n"});
    EXPECT_EQ(lineAt(0), "prog.c:7");
    expectLines(0x40, {"prog.c:7", "prog.c:7", ""});
    EXPECT_EQ(lineAt(0x80), "");
}

TEST_F(DebugInfo, LinesHoldInEverySectionAndEndWithTheirFile)
{
    // Given outside of code, then in two sections by turns; the same line twice is two statements.
    load({".DATA\n.LINE \"p.c\", 7\nDB 1\n.CODE\nNOP\n.SECTION fast, CODE\nORG 0x100\nNOP\n.LINE "
          "8\nNOP\n.CODE\n"
          "NOP\n.LINE 8\nNOP\n.SECTION fast\n.LINE\nNOP\n.CODE\nNOP\n.DATA\n.NOLINE\nDB 1\n.CODE\nNOP\n"
          ".SECTION fast\nNOP\n.LINE \"p.c\", 9\nNOP\n",
          ".NOLINE\n.CODE\nNOP\n.SECTION fast, CODE\nNOP\n", ".CODE\nNOP\n"});
    expectLines(0, {"p.c:7", "p.c:8", "p.c:8", "source1.s:19", "", "", "source3.s:2"});
    expectLines(0x100, {"p.c:7", "p.c:8", "source1.s:17", "", "p.c:9", ""});
    EXPECT_NE(section("code")->findInsnAt(2)->locus(), section("code")->findInsnAt(4)->locus());
    EXPECT_EQ(link({".LINE \"p.c\", 1\n", ".LINE 2\n"}),
              "source2.s:1:7: error: the first .LINE names a file\n");
}

TEST_F(DebugInfo, LinesWithinWhatIsDroppedHoldBehindIt)
{
    load({".CODE\n.LINE \"p.c\", 1\nNOP\nLINKIF 0\n.LINE 2\nNOP\nENDLINKIF\nNOP\nLINKIF 0\n.NOLINE\nNOP\n"
          "ENDLINKIF\nNOP\n"});
    expectLines(0, {"p.c:1", "p.c:2", ""});
}

TEST_F(DebugInfo, FunctionsBlocksAndTheirVariables)
{
    load({".TYPE int, INT(4)\n.CODE\n.PUBLIC f\nNOP\n.FUNC f, FRAME=8\n.SAVED A[4], A[15]\n"
          ".PARAM a, int, A[4]\n.PARAM p, PTR(int), SP + 8\n.RESULT int, A[0]\nNOP\n.BLOCK\n"
          ".LOCAL a, UNSIGNED(1), BP - 4\nPUSH A[4]\n.ADJUST -4\nCALL f\n.ENDBLOCK\nRET\n.ENDFUNC\n"
          ".DATA\ng: .SPACE 4\n.VAR g, int\n.DECL g, \"prog.c\", 7\n"});
    ASSERT_EQ(module->children().size(), 1u);
    ZOFFScope* function = module->children()[0];
    EXPECT_EQ(function->scopeKind(), ZOFFTag::ScopeFunction);
    EXPECT_EQ(function->start()->evaluate().value, 2);
    EXPECT_EQ(function->end()->evaluate().value, 10);
    ASSERT_EQ(function->functionSymbol(), symbol("f"));
    auto* type = static_cast<ZOFFFunctionType*>(symbol("f")->type());
    EXPECT_EQ(type->frameSize(), 8);
    EXPECT_EQ(type->savedRegisters(), 0x8010);
    EXPECT_STREQ(type->getName()->c_str(), "(int, int*)->(int)");
    ASSERT_EQ(function->children().size(), 1u);
    ZOFFScope* block = function->children()[0];
    EXPECT_EQ(block->scopeKind(), ZOFFTag::ScopeBlock);
    EXPECT_EQ(block->start()->evaluate().value, 4);
    EXPECT_EQ(block->end()->evaluate().value, 8);

    auto* outer = static_cast<ZOFFSymbol*>(function->symbols().at(HString::intern("a")));
    auto* inner = static_cast<ZOFFSymbol*>(block->symbols().at(HString::intern("a")));
    EXPECT_EQ(outer->value()->kind(), ZOFFKind::RegisterExpr);
    ASSERT_EQ(inner->value()->kind(), ZOFFKind::BinaryExpr);
    auto* place = static_cast<ZOFFBinaryExpr*>(inner->value());
    EXPECT_EQ(unsigned(place->op()), 0x5Eu);
    EXPECT_EQ(static_cast<ZOFFRegisterExpr*>(place->left())->registerNumber(), 14);
    EXPECT_EQ(place->right()->evaluate().value, -4);

    ZOFFSection* code = section("code");
    EXPECT_EQ(code->findInsnAt(4)->stackAdjust(), 0);
    EXPECT_EQ(code->findInsnAt(6)->stackAdjust(), -4);
    EXPECT_EQ(valueOf("g"), 0);
    EXPECT_EQ(symbol("g")->evaluate().section, section("data"));
    EXPECT_EQ(symbol("g")->locus()->line(), 7);
    EXPECT_EQ(symbol("f")->locus()->line(), 5);
}

TEST_F(DebugInfo, TypesAsTheDebuggerPrintsThem)
{
    struct {
        const char* type;
        const char* printed;
        int size;
    } cases[] = {
        {"CHAR(1)", "UNSIGNED(1)", 1},
        {"INT(2)", "INT(2)", 2},
        {"UNSIGNED(8)", "UNSIGNED(8)", 8},
        {"FLOAT(8)", "FLOAT(8)", 8},
        {"VOID", "VOID", 0},
        {"PTR(INT(2))", "INT(2)*", 4},
        {"WPTR(FLOAT(4), 2)", "FLOAT(4)*", 2},
        {"ARRAY(ARRAY(INT(2), 3), 4)", "INT(2)[3][4]", 24},
        {"COUNTED(UNSIGNED(1), INT(2), 9)", "UNSIGNED(1)::[INT(2)]", 2},
        {"PTR(FUNCTION(INT(4), PTR(VOID) -> INT(2)))", "(INT(4), VOID*)->(INT(2))*", 4},
        {"PTR(CODE(INT(4)))", "INT(4)*", 4},
        {"STRUCT node", "node", 9},
        {"MEMBER(STRUCT node)", "node::()", 0},
    };
    std::string source = ".STRUCT node\n.FIELD next, PTR(STRUCT node)\n.FIELD low, UNSIGNED(1), 32, 3\n"
                         ".FIELD high, UNSIGNED(1), 35, 5\n.FIELD tail, INT(4)\n.STATIC shared, INT(4), v0\n"
                         ".ENDSTRUCT\n.DATA\n";
    for (size_t i = 0; i < std::size(cases); ++i) {
        std::string name = "v" + std::to_string(i);
        source += name + ": .SPACE 24\n.VAR " + name + ", " + cases[i].type + "\n";
    }
    load({source});
    for (size_t i = 0; i < std::size(cases); ++i) {
        std::string name = "v" + std::to_string(i);
        EXPECT_EQ(typeOf(name.c_str()), cases[i].printed);
        EXPECT_EQ(symbol(name.c_str())->type()->size(), cases[i].size) << cases[i].type;
    }
    EXPECT_EQ(static_cast<ZOFFPtrType*>(symbol("v6")->type())->representation(), ZOFFTag::WordPtr);
    EXPECT_EQ(static_cast<ZOFFPtrType*>(symbol("v5")->type())->representation(), ZOFFTag::BytePtr);
    ZOFFType* node = symbol("v11")->type();
    ASSERT_TRUE(node->isStruc());
    auto* next = node->findField(HString::intern("next"));
    EXPECT_EQ(static_cast<ZOFFPtrType*>(next->type())->target(), node);
    auto* high = static_cast<ZOFFDynamicField*>(node->findField(HString::intern("high")));
    EXPECT_EQ(high->bitOffset(), 35);
    EXPECT_EQ(high->bitSize(), 5);
    EXPECT_EQ(static_cast<ZOFFDynamicField*>(node->findField(HString::intern("tail")))->bitOffset(), 40);
    EXPECT_TRUE(node->findField(HString::intern("shared"))->isStatic());
}

TEST_F(DebugInfo, DeclarationsAndFiguresOfFunctions)
{
    load({".CODE\n.DECL f, \"f.c\", 7\n.DECL v, \"v.c\", 8\n.FUNC f, SAVED=0xFFFC, FRAME=300\nRET\n.ENDFUNC\n"
          ".VAR v, INT(2)\n.LINE \"p.c\", 5\n.FUNC g\n.PARAM x, INT(2), A[1]\n.FRAME 20\n.SAVED A[2]\n.SAVED "
          "A[15]\n"
          ".ADJUST -200\nRET\n.ADJUST 0\nRET\n.ENDFUNC\nv:\n.VAR w, INT(2)\nw = 9\n.SECTION other, CODE\nORG "
          "0x40\n.FUNC h\n.RESULT VOID\n" +
          repeat(".BLOCK\n.ENDBLOCK\n", 100) + repeat(".BLOCK\n", 63) + "NOP\n" + repeat(".ENDBLOCK\n", 63) +
          ".ENDFUNC\n"});
    auto at = [&](const char* name) {
        const ZOFFLocus* locus = symbol(name)->locus();
        std::string file = locus->file()->fileName()->c_str();
        return file.substr(file.rfind('/') + 1) + ":" + std::to_string(locus->line());
    };
    EXPECT_EQ(at("f"), "f.c:7");
    EXPECT_EQ(at("v"), "v.c:8");
    EXPECT_EQ(at("g"), "p.c:5");
    EXPECT_EQ(at("x"), "p.c:5");
    EXPECT_EQ(at("w"), "p.c:5");
    EXPECT_EQ(valueOf("w"), 9); // a constant with a type is a variable at a fixed place
    auto figures = [&](const char* name) {
        auto* type = static_cast<ZOFFFunctionType*>(symbol(name)->type());
        return std::pair(type->frameSize(), type->savedRegisters());
    };
    EXPECT_EQ(figures("f"), std::pair(300, 0xFFFC));
    EXPECT_EQ(figures("g"), std::pair(20, 0x8004));
    EXPECT_EQ(section("code")->findInsnAt(2)->stackAdjust(), -200);
    EXPECT_EQ(section("code")->findInsnAt(4)->stackAdjust(), 0);
    EXPECT_STREQ(symbol("h")->type()->getName()->c_str(), "()->(VOID)");
    EXPECT_EQ(module->children().size(), 3u);
    EXPECT_EQ(module->children()[2]->children().size(), 101u);
    // The module holds the symbols of all, by name.
    EXPECT_NE(module->symbols().find(HString::intern("w")), module->symbols().end());
    EXPECT_EQ(module->symbols().find(HString::intern("x")), module->symbols().end());
}

TEST_F(DebugInfo, WhatStandsInTheWrongPlaceIsRefused)
{
    EXPECT_EQ(link({" .BLOCK\n .ENDBLOCK\n .ENDFUNC\n .PARAM x, VOID, 0\n .FRAME 1\n .SAVED A[2]\n .FUNC "
                    "f\n.DATA\n .FUNC "
                    "f\n.CODE\n.FUNC .f\n"}),
              "source1.s:1:8: error: a block stands in a function\n"
              "source1.s:2:11: error: there is no .BLOCK to end\n"
              "source1.s:3:10: error: there is no .FUNC to end\n"
              "source1.s:4:9: error: .PARAM stands in a function\n"
              "source1.s:5:10: error: .FRAME stands in a function\n"
              "source1.s:6:9: error: .SAVED stands in a function\n"
              "source1.s:7:8: error: a function stands in a code section\n"
              "source1.s:9:8: error: a function stands in a code section\n"
              "source1.s:11:7: error: a function's name has no leading dot\n");
    EXPECT_EQ(link({".CODE\n.FUNC f, FRAME=-1\n .FUNC g\n.SAVED A[2], A[1]\n.SAVED IC\n.SAVED M8[2]\n.BLOCK\n"
                    ".LOCAL a, INT(2), SP\n.LOCAL b, INT(2), SP\n.LOCAL a, INT(2), SP\n.LOCAL .c, VOID, "
                    "0\n.ENDFUNC\n"
                    ".ENDBLOCK\n.VAR f, INT(2)\n.FRAME 1 << 31\n.BLOCK\n.BLOCK\n.ENDBLOCK\n"}),
              "source1.s:2:16: error: the frame's size must be from 0 to 2147483647\n"
              "source1.s:3:8: error: a function within a function\n"
              "source1.s:4:14: error: expected A[2] to A[15]\n"
              "source1.s:5:8: error: expected A[2] to A[15]\n"
              "source1.s:6:8: error: expected A[2] to A[15]\n"
              "source1.s:10:8: error: a is already declared in this scope\n"
              "source1.s:11:8: error: a variable's name has no leading dot\n"
              "source1.s:12:9: error: there is no .FUNC to end\n"
              "source1.s:14:6: error: f has a type already\n"
              "source1.s:15:8: error: the frame's size must be from 0 to 2147483647\n"
              "source1.s:16:1: error: the block has no .ENDBLOCK\n");
    EXPECT_EQ(link({".STRUCT a\n.STRUCT b\n.FIELD x, INT(5)\n.FIELD x, FLOAT(2)\n.FIELD x, CHAR(2)\n.FIELD "
                    "x, INT(2), 0, 17\n"
                    ".ENDSTRUCT\n.STRUCT a\n.FIELD x, INT(2)\n.STRUCT c, 3\n.FIELD x, "
                    "INT(4)\n.ENDSTRUCT\n.TYPE t, VOID\n"
                    ".TYPE t, INT(2)\n.TYPE u, PTR(STRUCT gone)\n.TYPE v, ARRAY(STRUCT gone, 2)\n.TYPE w, "
                    "LIST(t)\n.STRUCT d\n"}),
              "source1.s:2:9: error: a structure within a structure\n"
              "source1.s:3:15: error: there is no such type of that size\n"
              "source1.s:4:17: error: there is no such type of that size\n"
              "source1.s:5:16: error: there is no such type of that size\n"
              "source1.s:6:22: error: the size in bits must be from 1 to 16\n"
              "source1.s:8:9: error: the structure a is already defined\n"
              "source1.s:9:8: error: .FIELD stands between .STRUCT and .ENDSTRUCT\n"
              "source1.s:12:11: error: the fields need 4 bytes\n"
              "source1.s:14:7: error: the type t is already defined\n"
              "source1.s:16:10: error: the structure gone is not defined yet\n"
              "source1.s:17:10: error: unknown type LIST\n"
              "source1.s:18:9: error: the structure has no .ENDSTRUCT\n"
              "source1.s:15:25: error: the structure gone is not defined\n"
              "source1.s:18:9: error: the structure d is not defined\n");
}

TEST_F(DebugInfo, MemoriesCountsAndStaticFields)
{
    load({".TYPE small, INT(3)\n.TYPE other, small\n.STRUCT s, 12\n.FIELD bit, UNSIGNED(1), 3, 2\n.FIELD "
          "next, UNSIGNED(3)\n"
          ".FIELD first, CHAR(1), 0\n.FIELD last, INT(8), 32\n.STATIC one, INT(4), b + 1\n.ENDSTRUCT\n"
          ".DATA\na: DB 1\nb: DB 1\nc: DB 1\nd: DB 1\ne: DB 1\n"
          ".VAR a, DATA(other)\n.VAR b, CODE(STRUCT s)\n.VAR c, EEPROM(INT(2))\n.VAR d, PERIPHERAL(INT(2))\n"
          ".VAR e, COUNTED(UNSIGNED(2), small, 9)\n"});
    const std::pair<const char*, ZOFFTag> memories[] = {
        {"a", ZOFFTag(0x6A)}, {"b", ZOFFTag(0x6B)}, {"c", ZOFFTag(0x6C)}, {"d", ZOFFTag(0x6D)}};
    for (const auto& [name, tag] : memories) {
        ASSERT_TRUE(symbol(name)->type()->isQualified());
        EXPECT_EQ(static_cast<ZOFFQualifiedType*>(symbol(name)->type())->qualifier(), tag) << name;
    }
    EXPECT_EQ(typeOf("a"), "small");
    EXPECT_EQ(symbol("a")->type()->size(), 3);
    EXPECT_EQ(static_cast<ZOFFCountedArrayType*>(symbol("e")->type())->count(), 9);
    ZOFFType* s = static_cast<ZOFFQualifiedType*>(symbol("b")->type())->baseType();
    EXPECT_EQ(s->size(), 12);
    auto offset = [&](const char* name) {
        return static_cast<ZOFFDynamicField*>(s->findField(HString::intern(name)))->bitOffset();
    };
    EXPECT_EQ(offset("next"), 8);
    EXPECT_EQ(offset("last"), 32);
    auto* one = static_cast<ZOFFStaticField*>(s->findField(HString::intern("one")));
    EXPECT_EQ(one->expr()->evaluate().value, 2);
}

TEST_F(DebugInfo, FunctionsWhoseVariablesLieAtFunctions)
{
    // Each type leads to a symbol, whose place leads to the next function, in a ring.
    std::string source = ".CODE\n";
    constexpr int Count = 20000;
    for (int i = 0; i < Count; ++i)
        source += ".FUNC f" + std::to_string(i) + "\n.PARAM a, INT(4), f" + std::to_string((i + 1) % Count) +
                  "\n.RESULT INT(2), f0 + 2\nRET\n.ENDFUNC\n";
    load({source});
    auto* type = static_cast<ZOFFFunctionType*>(symbol("f7")->type());
    EXPECT_STREQ(type->getName()->c_str(), "(INT(4))->(INT(2))");
    EXPECT_EQ((*type->inParameters().begin())->evaluate().value, 16);
    EXPECT_EQ((*type->outParameters().begin())->evaluate().value, 2);
}

TEST_F(DebugInfo, WhatAnotherFileSaysOfASymbolCounts)
{
    load({".CODE\nNOP\n.CODELET x, 4\n.PATCHABLE x, 5\n.PATCHED x\n.DECL x, \"prog.c\", 7\n.VAR x, INT(2)\n",
          ".PUBLIC x\n.CODE\nx: NOP\n"});
    EXPECT_EQ(symbol("x")->codeletIndex(), 4);
    EXPECT_EQ(symbol("x")->patchValue(), 5);
    EXPECT_TRUE(symbol("x")->patched());
    EXPECT_EQ(typeOf("x"), "INT(2)");
    ASSERT_NE(symbol("x")->locus(), nullptr);
    EXPECT_EQ(symbol("x")->locus()->line(), 7);
}

TEST_F(DebugInfo, ModuleInformationAndWhatIsNotWritten)
{
    dir.write("lib/extra.s", ".PUBLIC extra\n.CODE\nextra: NOP\n.LIBRARY extra\n");
    job.directories = {dir / "lib"};
    load({".LIBRARY extra\n.LIBRARY extra\n.ATTRIBUTE vendor, \"none\"\n.PROTECTED\n.PRIORITY 3\n"
          ".CODE\nx: CALL extra\n.HIDDEN ON\nNOP\n.HIDDEN OFF\nNEWLINE = 10\nMOVE A[0], #NEWLINE\n"
          ".CODELET x, 4\n.PATCHABLE x, 5\n.PATCHED x\n"});
    EXPECT_EQ(module->libraries().size(), 1u);
    EXPECT_STREQ(module->attributes().at(HString::intern("vendor"))->c_str(), "none");
    EXPECT_TRUE(module->isProtected());
    EXPECT_TRUE(module->hasHiddenInsns());
    EXPECT_EQ(module->linkOrderPriority(), 3);
    EXPECT_EQ(symbol("NEWLINE"), nullptr); // its value would be taken for an address
    EXPECT_EQ(symbol("x")->codeletIndex(), 4);
    EXPECT_EQ(symbol("x")->patchValue(), 5);
    EXPECT_TRUE(symbol("x")->patched());
    EXPECT_EQ(section("code")->findInsnAt(0)->printString(), "\tCALL\textra");
}
