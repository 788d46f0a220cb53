// What the debugger finds in an executable: lines, scopes, types, variables.
#include "tests/tools/kvas/Sources.h"

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
};

TEST_F(DebugInfo, LinesAreThoseOfTheSourceOrOfAnotherFile)
{
    load({".CODE\nNOP\n\nx: NOP ; four\nNOP\n.LINE \"prog.c\", 10\nNOP\nNOP\n.LINE 12\nNOP\n.NOLINE\nNOP\n"
          ".LINE\nDB 1, 2\n.DATA\nDB 1\n.CODE\nNOP\n"});
    const char* expected[] = {
        "source1.s:2", "source1.s:4", "source1.s:5", "prog.c:10", "prog.c:10", "prog.c:12", "",
        "source1.s:14"};
    for (uint32_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(lineAt(2 * i), expected[i]) << i;
    EXPECT_EQ(lineAt(16), "source1.s:18");
    EXPECT_EQ(section("data")->findInsnAt(0)->locus(), nullptr);
}

TEST_F(DebugInfo, LineOfAnotherFileGoesOnBehindAnOrigin)
{
    load({".CODE\n.LINE \"prog.c\", 7\nNOP\nORG 0x40\nx: NOP\nNOP\n.NOLINE\nNOP\nORG 0x80\nNOP\n"});
    EXPECT_EQ(lineAt(0), "prog.c:7");
    EXPECT_EQ(lineAt(0x40), "prog.c:7");
    EXPECT_EQ(lineAt(0x42), "prog.c:7");
    EXPECT_EQ(lineAt(0x44), "");
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
    const char* code[] = {"p.c:7", "p.c:8", "p.c:8", "source1.s:19", "", "", "source3.s:2"};
    for (uint32_t i = 0; i < std::size(code); ++i)
        EXPECT_EQ(lineAt(2 * i), code[i]) << i;
    const char* fast[] = {"p.c:7", "p.c:8", "source1.s:17", "", "p.c:9", ""};
    for (uint32_t i = 0; i < std::size(fast); ++i)
        EXPECT_EQ(lineAt(0x100 + 2 * i), fast[i]) << i;
    EXPECT_NE(section("code")->findInsnAt(2)->locus(), section("code")->findInsnAt(4)->locus());
    EXPECT_EQ(link({".LINE \"p.c\", 1\n", ".LINE 2\n"}),
              "source2.s:1:7: error: the first .LINE names a file\n");
}

TEST_F(DebugInfo, LinesWithinWhatIsDroppedHoldBehindIt)
{
    load({".CODE\n.LINE \"p.c\", 1\nNOP\nLINKIF 0\n.LINE 2\nNOP\nENDLINKIF\nNOP\nLINKIF 0\n.NOLINE\nNOP\n"
          "ENDLINKIF\nNOP\n"});
    EXPECT_EQ(lineAt(0), "p.c:1");
    EXPECT_EQ(lineAt(2), "p.c:2");
    EXPECT_EQ(lineAt(4), "");
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

} // namespace
