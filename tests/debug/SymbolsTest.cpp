// The index over an executable: lines, symbols, scopes, types.
#include "debug/symbols/SourceAddressMapping.h"
#include "debug/symbols/SymbolicDebug.h"
#include "support/HString.h"
#include "support/Path.h"
#include "tests/tools/kvas/Sources.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSymbol.h"

namespace {

class Symbols : public Sources {
protected:
    void index(std::initializer_list<std::string> texts)
    {
        load(texts);
        if (module)
            symbols = std::make_unique<SymbolicDebug>(Path("test.kvx"), module);
    }
    // "line start+length" of the statement around an address, "" for none.
    std::string statement(uint32_t address) const
    {
        const HString* file = nullptr;
        int line = 0;
        uint32_t start = 0, length = 0;
        bool known = symbols->sourceMap().AddressToSource(address, file, line);
        EXPECT_EQ(symbols->sourceMap().AddressToRange(address, start, length), known);
        if (!known)
            return "";
        std::string name = file->c_str();
        return name.substr(name.rfind('/') + 1) + ":" + std::to_string(line) + " " + std::to_string(start) +
               "+" + std::to_string(length);
    }
    const char* nameOf(const ZOFFSymbol* symbol) const { return symbol ? symbol->name()->c_str() : "none"; }

    std::unique_ptr<SymbolicDebug> symbols;
};

TEST_F(Symbols, LinesAndAddressesBothWays)
{
    index(
        {".CODE\nNOP\n\n MOVE A[0], #0x1234\n.LINE \"prog.c\", 10\nNOP\nx: NOP\n.LINE 3\nNOP\n.LINE 10\nNOP\n"
         ".NOLINE\nNOP\n"});
    // One word at 0, an instruction of two words at 2, line 10 at 6 and 8, line 3 at 10, line 10 again.
    EXPECT_EQ(statement(0), "source1.s:2 0+2");
    EXPECT_EQ(statement(2), "source1.s:4 2+4");
    EXPECT_EQ(statement(4), "") << "inside an instruction";
    EXPECT_EQ(statement(6), statement(8));
    EXPECT_NE(statement(6).find(":10 6+4"), std::string::npos);
    EXPECT_EQ(statement(14), "");
    EXPECT_EQ(statement(1000), "");

    const HString* file = nullptr;
    int line = 0;
    ASSERT_TRUE(symbols->sourceMap().AddressToSource(10, file, line));
    uint32_t address = 0, length = 0;
    EXPECT_TRUE(symbols->sourceMap().SourceToAddress(file, 3, address));
    EXPECT_EQ(address, 10u);
    EXPECT_TRUE(symbols->sourceMap().SourceToAddress(file, 10, address, length));
    EXPECT_EQ(address, 6u);
    EXPECT_EQ(length, 4u);
    EXPECT_FALSE(symbols->sourceMap().SourceToAddress(file, 4, address));
    EXPECT_FALSE(symbols->sourceMap().SourceToAddress(HString::intern("other.c"), 3, address));
    EXPECT_EQ(*symbols->sourceMap().getLineNumbers(file), (SourceAddressMapping::Lines{10, 3, 10}));
    EXPECT_EQ(symbols->sourceMap().getLineNumbers(HString::intern("other.c")), nullptr);
    EXPECT_EQ(symbols->GetInsn(2)->pc(), 2);
    EXPECT_EQ(symbols->GetInsn(4), nullptr);
}

TEST_F(Symbols, StatementEndsWithItsFragment)
{
    index({".CODE\n.LINE \"prog.c\", 10\nNOP\nORG 0x100\nNOP\n"});
    EXPECT_NE(statement(0).find(":10 0+2"), std::string::npos);
}

TEST_F(Symbols, NearestSymbolsByAddress)
{
    index({".PUBLIC f, g\n.CODE\nORG 0x10\n.FUNC f\nNOP\ninner: NOP\n.ENDFUNC\n.FUNC g\nNOP\nNOP\n.ENDFUNC\n"
           ".SECTION data, DATA\nORG 0x8000\nv: .SPACE 4\n"});
    EXPECT_STREQ(nameOf(symbols->findSymbol(0, false)), "none");
    EXPECT_STREQ(nameOf(symbols->findSymbol(0x10, true)), "f");
    EXPECT_STREQ(nameOf(symbols->findSymbol(0x11, true)), "none");
    EXPECT_STREQ(nameOf(symbols->findSymbol(0x11, false)), "f");
    EXPECT_STREQ(nameOf(symbols->findSymbol(0x16, false)), "g");
    EXPECT_STREQ(nameOf(symbols->findSymbol(0x9000, false)), "none") << "behind the last";
    EXPECT_STREQ(nameOf(symbols->findFunctionSymbol(0x12)), "none") << "a label is no function";
    EXPECT_STREQ(nameOf(symbols->findFunctionSymbol(0x16)), "g");
    EXPECT_STREQ(nameOf(symbols->findClosestSymbol(0x12)), "inner");
    EXPECT_STREQ(nameOf(symbols->findClosestSymbol(0x13)), "none");
    EXPECT_STREQ(nameOf(symbols->findDataSymbol(0x8000, true)), "v");
    EXPECT_STREQ(nameOf(symbols->findCodeSymbol(0x8000, true)), "none");
    EXPECT_STREQ(nameOf(symbols->findCodeSymbol(0x14, true)), "g");
    ASSERT_NE(symbols->getSection(0x8002), nullptr);
    EXPECT_STREQ(symbols->getSection(0x8002)->name()->c_str(), "data");
    EXPECT_EQ(symbols->getSection(0x8004), nullptr);
}

TEST_F(Symbols, NamesByScopeDeclarationAndType)
{
    index(
        {".TYPE int, INT(4)\n.STRUCT point, 8\n.FIELD x, int\n.FIELD y, int\n.ENDSTRUCT\n.PUBLIC _count, f\n"
         ".CODE\n.FUNC f\n.PARAM a, int, A[4]\nNOP\n.BLOCK\n.LOCAL a, int, BP - 4\n.LOCAL _b, int, BP - "
         "8\nNOP\n"
         ".ENDBLOCK\nNOP\n.ENDFUNC\n.DATA\n_count: .SPACE 4\n.VAR _count, PTR(PTR(STRUCT point))\n"
         ".DECL _count, \"prog.c\", 7\nlocal: .SPACE 4\n"});
    EXPECT_STREQ(nameOf(symbols->findGlobalSymbol("count")), "_count");
    EXPECT_STREQ(nameOf(symbols->findGlobalSymbol("_count")), "_count");
    EXPECT_STREQ(nameOf(symbols->findGlobalSymbol("local")), "none");
    EXPECT_STREQ(nameOf(symbols->findModuleSymbol("local")), "local");
    ZOFFSymbol* outer = symbols->findScopedSymbol("a", 0);
    ZOFFSymbol* inner = symbols->findScopedSymbol("a", 2);
    ASSERT_TRUE(outer && inner);
    EXPECT_NE(outer, inner);
    EXPECT_EQ(symbols->findScopedSymbol("a", 4), outer);
    EXPECT_STREQ(nameOf(symbols->findScopedSymbol("b", 2)), "_b");
    EXPECT_STREQ(nameOf(symbols->findScopedSymbol("b", 4)), "none");
    EXPECT_EQ(symbols->findScope(0x1000), nullptr);

    const HString* file = symbols->findGlobalSymbol("count")->locus()->file()->fileName();
    EXPECT_STREQ(nameOf(symbols->findDeclaredSymbol("count", file, 7)), "_count");
    EXPECT_STREQ(nameOf(symbols->findDeclaredSymbol("count", file, 0)), "_count");
    EXPECT_STREQ(nameOf(symbols->findDeclaredSymbol("count", file, 8)), "none");
    ASSERT_NE(symbols->findNamedType("point"), nullptr);
    EXPECT_EQ(symbols->findNamedType("point")->size(), 8);
    EXPECT_EQ(symbols->findNamedType("line"), nullptr);
}

} // namespace
