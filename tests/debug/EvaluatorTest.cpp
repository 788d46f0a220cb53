// Expressions and displays over the symbols and types of an assembled program.
#include "debug/FakeProgram.h"
#include "support/Failure.h"
#include "tools/kvas/Sources.h"

namespace {

constexpr char Program[] =
    ".TYPE int, INT(4)\n.TYPE char, CHAR(1)\n.TYPE word, UNSIGNED(2)\n"
    ".STRUCT point\n.FIELD x, INT(2)\n.FIELD y, INT(2)\n"
    ".FIELD low, UNSIGNED(1), 32, 3\n.FIELD high, UNSIGNED(1), 35, 5\n"
    ".FIELD wide, UNSIGNED(4), 64, 12\n.FIELD next, PTR(STRUCT point), 96, 32\n"
    ".STATIC origin, STRUCT point, zero\n.ENDSTRUCT\n"
    ".CODE\nNOP\n.FUNC main\n"
    ".PARAM argument, int, A[4]\n.LOCAL local, int, SP + 8\n.LOCAL base, int, A[5] - 4\n"
    " NOP\n.BLOCK\n.LOCAL local, INT(1), A[6]\n NOP\n.ENDBLOCK\n RET\n.ENDFUNC\n"
    "text: DB \"flash\", 0\n.VAR text, CODE(ARRAY(char, 6))\n"
    ".DATA\nORG 0x1000\nzero:\npt: .SPACE 16\n.VAR pt, STRUCT point\n" // 1000
    "table: .SPACE 16\n.VAR table, ARRAY(int, 4)\n"                    // 1010
    "count: .SPACE 4\n.VAR count, int\n"                               // 1020
    "real: .SPACE 4\n.VAR real, FLOAT(4)\n"                            // 1024
    "wide: .SPACE 8\n.VAR wide, FLOAT(8)\n"                            // 1028
    "str: .SPACE 4\n.VAR str, PTR(char)\n"                             // 1030
    "ptr: .SPACE 4\n.VAR ptr, PTR(STRUCT point)\n"                     // 1034
    "wptr: .SPACE 4\n.VAR wptr, WPTR(int)\n"                           // 1038
    "cptr: .SPACE 4\n.VAR cptr, PTR(CODE(char))\n"                     // 103C
    "grid: .SPACE 12\n.VAR grid, ARRAY(ARRAY(word, 3), 2)\n"           // 1040
    "bytes: .SPACE 8\n.VAR bytes, ARRAY(char, 8)\n"                    // 104C
    "func: .SPACE 4\n.VAR func, PTR(FUNCTION(int -> int))\n"           // 1054
    "plain: .SPACE 4\n"                                                // 1058
    ".PUBLIC size\nsize = 12\n"
    "far: .VAR far, int\n";

class Evaluator : public Sources {
protected:
    Evaluator()
    {
        load({Program});
        if (!module)
            return;
        symbols = std::make_unique<SymbolicDebug>(Path("test.kvx"), module);
        program = std::make_unique<FakeProgram>(*symbols);
        section("code")->computeSectionMetrics();
        program->code.resize(size_t(section("code")->getSize()));
        section("code")->dump(program->code.size(), program->code.data());
    }
    ~Evaluator() override { EXPECT_EQ(program ? program->openBlocks() : 0, 0u); }

    void poke(uint32_t address, std::initializer_list<unsigned> bytes)
    {
        for (unsigned byte : bytes)
            program->data[address++ - FakeProgram::DataStart] = uint8_t(byte);
    }
    void poke32(uint32_t address, uint32_t value)
    {
        Endian::packUINT32(program->data.data(), address - FakeProgram::DataStart, value, Endian::Little);
    }
    uint32_t peek32(uint32_t address)
    {
        return Endian::unpackUINT32(program->data.data(), address - FakeProgram::DataStart, Endian::Little);
    }
    // The value of an expression, or what it fails with.
    std::string value(const char* text, int radix = 10)
    {
        try {
            ExpressionType result = program->parseAndEvaluate(QString::fromUtf8(text));
            result.evaluate();
            return result.toStr(radix, false, false, nullptr).toStdString();
        } catch (const ParserException& e) {
            return e.message();
        }
    }
    // The place that an expression names.
    std::string place(const char* text)
    {
        try {
            return program->parseAndEvaluate(QString::fromUtf8(text))
                .toStr(10, false, false, nullptr)
                .toStdString();
        } catch (const ParserException& e) {
            return e.message();
        }
    }
    std::string shown(const char* text)
    {
        builder.text.clear();
        try {
            program->formatExpression(QString::fromUtf8(text), QStringLiteral("v"), &builder);
        } catch (const ParserException& e) {
            return e.message();
        }
        if (!builder.text.empty())
            builder.text.pop_back();
        return builder.text;
    }
    struct Case {
        const char* text;
        const char* expected;
    };

    std::unique_ptr<SymbolicDebug> symbols;
    std::unique_ptr<FakeProgram> program;
    TextBuilder builder;
};

} // namespace

TEST_F(Evaluator, NamesStandForPlaces)
{
    program->pc = symbols->findFunctionSymbol(2) ? 2 : 0;
    program->registers[FakeProgram::StackPointer] = 0x1100;
    program->registers[5 << 4 | 9] = 0x1200;
    for (const Case& c : {Case{"count", "0x00001020"},
                          {"size", "0x0000000c"},
                          {"main", "0x00000002"},
                          {"plain", "0x00001058"},
                          {"argument", "A4"},
                          {"local", "0x00001108"},
                          {"base", "0x000011fc"},
                          {"@A3", "A3"},
                          {"@B1", "B1"},
                          {"@SP", "SP"},
                          {"text", "0x00000008"},
                          {"none", "none symbol not found"},
                          {"@X", "no such register"},
                          {"a::b", ":: not supported"},
                          {"pt.a::b", ":: not supported"}})
        EXPECT_EQ(place(c.text), c.expected) << c.text;
    program->adjustment = -4;
    EXPECT_EQ(place("local"), "0x0000110c");
    EXPECT_EQ(place("base"), "0x000011fc") << "only SP moves within a frame";
    program->pc = 4;
    EXPECT_EQ(place("local"), "A6") << "the inner one";

    program->beginEvaluation();
    program->parseAndEvaluate("count + 1");
    EXPECT_EQ(program->lastSymbol(), symbols->findModuleSymbol("count"));
    EXPECT_FALSE(program->hadSideEffect());
    program->parseAndEvaluate("count = 1");
    EXPECT_TRUE(program->hadSideEffect());
    program->beginEvaluation();
    EXPECT_EQ(program->lastSymbol(), nullptr);
}

TEST_F(Evaluator, ReadsWhatStandsThere)
{
    poke(0x1000, {0xFE, 0xFF, 3, 0, 0x2D, 0, 0, 0, 0x34, 0x12, 0, 0, 0, 0x10, 0, 0});
    poke32(0x1018, 77);
    poke32(0x1024, 0x40200000);
    poke(0x1028, {0, 0, 0, 0, 0, 0, 0xF8, 0xBF});
    poke32(0x1034, 0x1000);
    poke32(0x1038, 0x1010 / 4);
    poke32(0x103C, 8);
    poke(0x104C, {0xC1, 'b', 0});
    program->registers[1 << 4 | 2] = 0xABCD;
    program->registers[2 << 4 | 2] = 0x1234;
    program->registers[3 << 4 | 9] = 0x89ABCDEF;
    for (const Case& c : {Case{"pt.x", "-2"},
                          {"pt.y", "3"},
                          {"pt.low", "5"},
                          {"pt.high", "5"},
                          {"pt.wide", "564"},
                          {"ptr->next->y", "3"},
                          {"ptr.x", "-2"},
                          {"(*ptr).x", "-2"},
                          {"ptr[0].y", "3"},
                          {"table[2]", "77"},
                          {"table[1 + 1] * 2", "154"},
                          {"*table", "0"},
                          {"*wptr", "0"},
                          {"wptr[2]", "77"},
                          {"text[1]", "108"},
                          {"cptr[4]", "104"},
                          {"*cptr", "102"},
                          {"bytes[0]", "193"},
                          {"real", "2.5"},
                          {"wide", "-1.5"},
                          {"size + 1", "13"},
                          {"&table[2] - &table[0]", "8"},
                          {"*&pt.y", "3"},
                          {"*&text[2]", "97"},
                          {"&count", "4128"},
                          {"sizeof(pt)", "16"},
                          {"sizeof(pt.low)", "1"},
                          {"sizeof(table)", "16"},
                          {"sizeof(&pt)", "4"},
                          {"@B1", "43981"},
                          {"@B0[1]", "43981"},
                          {"@A3 & 0xFF", "239"},
                          {"plain", "4184"},
                          // casts
                          {"(char)@A3 + 1", "240"},
                          {"((char)@A3) + 1", "240"},
                          {"(short)-1", "-1"},
                          {"(unsigned short)0x12345", "9029"},
                          {"((char[4])0x104D)[0]", "98"},
                          {"((struct { char a; int b; char : 4; char c : 4; })0x12345678).a", "120"},
                          {"((short*)&table)[4]", "77"},
                          {"((struct {int p; int q;}*)&table)[1].p", "77"},
                          {"((register 4 lo 0 8 hi 8 8 top 28 4;)@A3).top", "8"},
                          {"((register 4 lo 0 8 hi 8 8;)@A3).hi + ((register 4 lo 0 8;)@A3).lo", "444"},
                          {"((long long)@B1) & 0xFFFFFFFF", "305441741"},
                          // what there is not
                          {"pt", "can't decode non simple type"},
                          {"pt.none", "unknown field"},
                          {"pt.origin", "unknown field"},
                          {"count.x", "not a struct type"},
                          {"count[0]", "not an array type"},
                          {"&@A3", "can't take address of register/constant"},
                          {"&size", "can't take address of register/constant"},
                          {"size = 1", "can't update a constant"},
                          {"@A0[9]", "no such register"},
                          {"table[2147483647 * 2]", "index out of range"},
                          {"table[-2000000000]", "index out of range"},
                          {"table[1000]", "cannot read 0x00001fb0"},
                          {"*(int*)0x20", "cannot read 0x00000020"},
                          {"(char[1.5])0x1000", "bad index type"},
                          {"main(1)", "function calling not implemented"}})
        EXPECT_EQ(value(c.text), c.expected) << c.text;
}

TEST_F(Evaluator, AssignsThroughExpressions)
{
    poke(0x1004, {0xFF});
    EXPECT_EQ(value("pt.low = 2"), "2");
    EXPECT_EQ(program->data[4], 0xFA);
    EXPECT_EQ(value("pt.wide = 0xABC"), "2748");
    EXPECT_EQ(value("table[3] += 5"), "5");
    EXPECT_EQ(value("++table[3]"), "6");
    EXPECT_EQ(peek32(0x101C), 6u);
    EXPECT_EQ(value("real = 3"), "3");
    EXPECT_EQ(peek32(0x1024), 0x40400000u);
    EXPECT_EQ(value("count = 0x1FF"), "511");
    EXPECT_EQ(value("bytes[1] = 0x1FF"), "255") << "what was written is read back";
    EXPECT_EQ(value("@B1 = 0x12345"), "9029");
    EXPECT_EQ(value("((long long)@B1) = 0x7BCDEF01"), "2077093633");
    EXPECT_EQ(program->registers[1 << 4 | 2], 0xEF01u);
    EXPECT_EQ(program->registers[2 << 4 | 2], 0x7BCDu);
    EXPECT_EQ(value("((register 4 lo 0 8 hi 8 8;)@A1).hi = 0x55"), "85");
    EXPECT_EQ(program->registers[1 << 4 | 9], 0x5500u);
    EXPECT_EQ(value("ptr = &pt"), "4096");
    EXPECT_EQ(value("pt = 1"), "can't encode non simple type");
    EXPECT_EQ(value("count = \"1\""), "can't encode non simple type");
    EXPECT_EQ(value("text[0] = 1"), "cannot write 0x00000008");
    EXPECT_EQ(value("*((int*)0x20) = 1"), "cannot read 0x00000020");
    program->assignExpression("table[0]", ExpressionType(9LL, 4));
    program->assignExpression("1 + 1", ExpressionType(9LL, 4));
    program->assignExpression("", ExpressionType(9LL, 4));
    EXPECT_EQ(peek32(0x1010), 9u);
}

TEST_F(Evaluator, ShowsEveryKindOfType)
{
    poke(0x1000, {0xFE, 0xFF, 3, 0, 0x2D, 0, 0, 0, 0x34, 0x12, 0, 0, 0, 0x10, 0, 0});
    poke32(0x1010, 1);
    poke32(0x1014, uint32_t(-1));
    poke32(0x1024, 0x40200000);
    poke32(0x1030, 0x104C);
    poke32(0x1034, 0x1000);
    poke32(0x1038, 0x1010 / 4);
    poke32(0x103C, 8);
    poke(0x1040, {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 'h', 'e', 'y', 0});
    poke32(0x1054, 2);
    EXPECT_EQ(shown("pt"), "v{ x=-2 y=3 low=5 high=5 wide=564 next=4096 }");
    EXPECT_EQ(builder.paths.join(u' '), "(pt).x (pt).y (pt).low (pt).high (pt).wide (pt).next");
    for (size_t i = 0; i < builder.markers.size(); ++i) { // a path names what its marker does
        ExpressionType named = program->parseAndEvaluate(builder.paths[qsizetype(i)]);
        EXPECT_TRUE(named.getMarker()->equiv(&builder.markers[i])) << i;
    }
    EXPECT_EQ(shown("pt.high"), "v=5");
    EXPECT_EQ(shown("pt.x"), "v=-2");
    EXPECT_EQ(shown("table"), "v[ v[0]=1 v[1]=-1 v[2]=0 v[3]=0 ]");
    EXPECT_EQ(shown("grid"),
              "v[ v[0][ v[0][0]=1 v[0][1]=2 v[0][2]=3 ] v[1][ v[1][0]=4 v[1][1]=5 v[1][2]=6 ] ]");
    EXPECT_EQ(shown("real"), "v=2.5");
    EXPECT_EQ(shown("str"), "v=hey");
    EXPECT_EQ(shown("cptr"), "v=flash") << "in code memory";
    EXPECT_EQ(shown("wptr"), "v=4112");
    EXPECT_EQ(shown("func"), "v=2");
    EXPECT_EQ(shown("main"), "v=2") << "a function by its address";
    EXPECT_EQ(shown("size * 2"), "v=24");
    EXPECT_EQ(shown(""), "");
    EXPECT_EQ(shown("@A3"), "v=0");
    EXPECT_EQ(shown("(char[3])0x104C"), "v[ v[0]=104 v[1]=101 v[2]=121 ]");
    builder.radix = 16;
    EXPECT_EQ(shown("pt.low"), "v=0x5") << "as wide as its bits";
    program->registers[3 << 4 | 9] = 0x89ABCDEF;
    EXPECT_EQ(shown("(register 4 lo 0 8 top 28 4;)@A3"), "v{ lo=0xef top=0x8 }");
    EXPECT_EQ(shown("(struct { char a; short b; })0x123456"), "v{ a=0x56 b=0x0012 }");

    builder.arrays = VariableListBuilder::ArraySummary;
    EXPECT_EQ(shown("table"), "v=@0x00001010");
    builder.arrays = VariableListBuilder::ArrayNothing;
    EXPECT_EQ(shown("table"), "");
    builder.arrays = VariableListBuilder::ArrayString;
    EXPECT_EQ(shown("bytes"), "v=hey");
    EXPECT_EQ(builder.types.back(), "char *");
    EXPECT_EQ(shown("text"), "v=flash");
    program->registers[3 << 4 | 9] = 0x434241;
    EXPECT_EQ(shown("(char[4])@A3"), "v=ABC");
    builder.structs = VariableListBuilder::StructSummary;
    EXPECT_EQ(shown("pt"), "v=@0x00001000");
}

TEST_F(Evaluator, FollowsPointersAsTheBuilderWants)
{
    poke(0x1000, {0xFE, 0xFF, 3, 0, 0x2D});
    poke32(0x1034, 0x1000);
    poke32(0x1038, 0x1010 / 4);
    poke32(0x1010, 11);
    poke32(0x1014, 12);
    builder.pointers = VariableListBuilder::PointerObject;
    EXPECT_EQ(shown("wptr"), "(*v)=11");
    builder.pointers = VariableListBuilder::PointerArray;
    builder.pointerCount = 2;
    EXPECT_EQ(shown("wptr"), "v[][ [0]=11 [1]=12 ]");
    EXPECT_EQ(builder.paths.back(), "(wptr)[1]");

    builder.pointers = VariableListBuilder::PointerObject;
    poke32(0x100C, 0x2000);
    EXPECT_EQ(shown("ptr"),
              "v{ x=-2 y=3 low=5 high=5 wide=0 next{ x=??? y=??? low=??? high=??? wide=??? next=??? } }");
    poke32(0x100C, 0x1000); // a list that ends in itself
    std::string circle = shown("ptr");
    EXPECT_EQ(std::count(circle.begin(), circle.end(), '{'), std::count(circle.begin(), circle.end(), '}'));
    EXPECT_NE(circle.find("next=... }"), std::string::npos);
}

TEST_F(Evaluator, UnreadableItemsDoNotEndADisplay)
{
    poke32(0x1030, 0x9000);
    EXPECT_EQ(shown("str"), "v=???");
    EXPECT_EQ(shown("far"), "v=0");
    EXPECT_EQ(shown("*(int*)0x20"), "v=???");
    EXPECT_EQ(shown("(int[4])0x13F8"), "v[ v[0]=0 v[1]=0 v[2]=??? v[3]=??? ]") << "the end of the memory";
    for (unsigned at = 0x13F0; at < 0x1400; ++at)
        poke(at, {'z'});
    poke32(0x1030, 0x13F0);
    EXPECT_EQ(shown("str"), "v=zzzzzzzzzzzzzzzz...") << "a text that runs out of the memory";
    builder.limit = 2;
    EXPECT_EQ(shown("(char[2000000000])0x104C"), "v[ v[0]=0 v[1]=0 ]");
    EXPECT_EQ(shown("(struct { char a; } [2000000000])0x104C"), "v[ v[0]{ a=0 } v[1]{ a=0 } ]");
    EXPECT_EQ(shown("(char[300000000][300000000])0x1000"), "type is too large");
    EXPECT_EQ(shown("(struct { int a : 2000000000; int b : 2000000000; })0x1000"), "type is too large");
    EXPECT_EQ(shown("(char[-1])0x1000"), "bad index type");
    EXPECT_EQ(shown("(char[1000000])@A3"), "v=???");
    EXPECT_EQ(value("(long long)count"), "0");
}

TEST_F(Evaluator, LargeDisplaysReadInPiecesAndEnd)
{
    program->data.assign(0x40000, 1);
    program->reads = 0;
    shown("(short[100000])0x1000");
    EXPECT_LE(program->reads, 200000 / 1024 + 2);
    EXPECT_EQ(builder.paths.size(), 100'000);
    builder.limit = 8;
    program->reads = program->bytesRead = 0;
    shown("(short[100000])0x1000");
    EXPECT_EQ(program->reads, 1);
    EXPECT_EQ(program->bytesRead, 16) << "no more than is shown";
    program->reads = 0;
    shown("pt");
    EXPECT_EQ(program->reads, 1);

    // A value of up to 1,024 bytes is read at once, a larger one on demand.
    program->reads = 0;
    program->parseAndEvaluate("((char[1024])0x1000)[5] + 0");
    EXPECT_EQ(program->reads, 1);

    builder.limit = 100'000'000;
    builder.paths.clear();
    shown("(char[40000][40000])0x1000");
    EXPECT_LE(builder.paths.size(), 1'000'000);
    EXPECT_EQ(builder.depth, 0);
}

TEST_F(Evaluator, MarkersSortByPlace)
{
    auto marker = [this](const char* text) { return program->parseAndEvaluate(text); };
    auto lt = [](const ExpressionType& a, const ExpressionType& b) {
        return a.getMarker()->lt(b.getMarker());
    };
    EXPECT_TRUE(lt(marker("table[1]"), marker("table[2]")));
    EXPECT_FALSE(lt(marker("table[2]"), marker("table[1]")));
    EXPECT_TRUE(lt(marker("pt"), marker("count")));
    EXPECT_TRUE(lt(marker("count"), marker("@A0"))) << "by kind";
    EXPECT_TRUE(lt(marker("@A1"), marker("@A2")));
    EXPECT_FALSE(lt(marker("@A2"), marker("@A1")));
    EXPECT_TRUE(lt(marker("pt.high"), marker("pt.low"))) << "the upper bits first";
    EXPECT_FALSE(marker("pt").getMarker()->lt(nullptr));
    EXPECT_TRUE(marker("pt.x").equiv(marker("pt.x")));
    EXPECT_FALSE(marker("pt.x").equiv(marker("pt.y")));
    ExpressionType count = marker("count");
    EXPECT_EQ(ExpressionType(count, "A3", 10).toStr(10, false, false, nullptr), "A3");
}
