#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "support/HException.h"
#include "support/HString.h"
#include "tests/zoff/Records.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

#include <gtest/gtest.h>

using T = ZOFFTag;

namespace {

ModulePtr readBytes(std::string_view bytes, bool keepLoci = true, bool quick = false)
{
    ZOFFMAXQ30Reader reader(BytesInput(bytes).span(), keepLoci);
    return ModulePtr(quick ? reader.readFileQuickly(false) : reader.readFile(false));
}

ModulePtr read(const Records& records, bool keepLoci = true)
{
    return readBytes(records.file(), keepLoci);
}

std::string errorOf(std::string_view bytes)
{
    try {
        readBytes(bytes);
        return {};
    } catch (const HException& failure) {
        return failure.message();
    }
}

std::string errorOf(const Records& records)
{
    return errorOf(records.file());
}

ZOFFSymbol* symbolNamed(const ModulePtr& module, const char* name)
{
    for (ZOFFSymbol* symbol : module->allSymbols())
        if (symbol->name() == HString::intern(name))
            return symbol;
    return nullptr;
}

std::vector<ZOFFInsn*> itemsOf(const ModulePtr& module)
{
    std::vector<ZOFFInsn*> items;
    for (ZOFFSection* section : module->sections())
        section->find([&](ZOFFInsn* insn) {
            items.push_back(insn);
            return false;
        });
    return items;
}

Records base()
{
    Records records;
    records.module();
    return records;
}

Records inSection()
{
    Records records = base();
    records.section(".text");
    return records;
}

// A program with something of everything.
Records sample()
{
    Records r = base();
    r.text("libc").tag(T::Library).text("key").text("value").tags({T::Attribute, T::EndOfInfo});
    r.text("main.c").tag(T::MkFilename).lit(1).tag(T::MkAlias);
    r.lit(2).tag(T::Int).lit(2).tag(T::MkAlias);
    r.lit(2).tag(T::ForwardType).keep(3).alias(2).tags({T::Ptr, T::WordPtr});
    r.lit(4).tag(T::Struc).text("x").lit(0).lit(16).alias(2).tag(T::DynamicField);
    r.text("p").lit(16).lit(16).alias(3).tag(T::DynamicField).text("pair").tag(T::SetName).keep(4).drop();
    r.lit(1).lit(6).lit(12).tag(T::Function).text("n").tag(T::MkSymbol).keep(6).alias(2).tag(T::SetType);
    r.alias(6).tag(T::ParamIn).lit(5).tag(T::MkAlias);
    r.text("_main").tag(T::MkSymbol).alias(1).lit(7).tag(T::SymbolLocus).keep(7).keep(8);
    r.lit(1).tags({T::MarkerRef, T::SymbolDef}).alias(8).alias(5).tag(T::SetType).alias(8).tag(T::Public);
    r.alias(0).lit(1).tag(T::MarkerRef).lit(2).tags({T::MarkerRef, T::ScopeFunction});
    r.alias(6).tag(T::SetScope).alias(8).tag(T::SetFctSymbol);
    r.section(".text").tag(T::Break).pc(0x100);
    r.tag(T::Null).lit(1).tag(T::MarkerDef);
    r.alias(1).lit(10).tag(T::Locus).insn(0x100, 0xDA3A).insn(0x102, 0x3D08);
    r.alias(1).lit(11).tag(T::Locus).lit(-4).tag(T::AdjustStack).insn(0x104, 0x8C0D);
    r.pc(0x106).tag(T::Null).lit(2).tag(T::MarkerDef);
    r.section(".init", 0x80001).pc(0x200).text(".text").tag(T::Init);
    return r;
}

} // namespace

TEST(ZOFFReader, NumbersHaveTheirEncodings)
{
    EXPECT_EQ(readBytes(""), nullptr);
    std::string bytes;
    for (int64_t value : {7, 8, 0x123})
        Records::encode(bytes, value);
    EXPECT_EQ(bytes, std::string("\x07\x08\x01\x08\x08\x02\x01\x23", 8));

    Records r = base();
    r.text("a").tag(T::MkSymbol).raw(8).raw(0).tag(T::SymbolDef); // no bytes at all: 0
    r.text("b").tag(T::MkSymbol).lit(-2).tag(T::SymbolDef);
    r.text("c").tag(T::MkSymbol).raw(8).raw(9);
    for (int i = 0; i < 9; ++i)
        r.raw(i == 0 ? 0xFF : i); // nine bytes: the first is shifted out
    r.tag(T::SymbolDef);
    ModulePtr module = read(r);
    EXPECT_EQ(symbolNamed(module, "a")->evaluate().value, 0);
    EXPECT_EQ(symbolNamed(module, "b")->evaluate().value, -2);
    EXPECT_EQ(symbolNamed(module, "c")->evaluate().value, 0x0102030405060708);
}

TEST(ZOFFReader, StringsMayTouchTheEndOfThePoolAndNoMore)
{
    auto pooled = [](std::string_view records) {
        std::string file("\x05\x26hello", 7);
        file += std::string("\x0A\x09\x4A\x4F", 4);
        return file + std::string(records);
    };
    EXPECT_EQ(errorOf(pooled(std::string("\x05\x22\x1D\x4F", 4))), "");     // empty text at the end
    EXPECT_EQ(errorOf(pooled(std::string("\x05\x00\x23\x1D\x4F", 5))), ""); // the same with a length
    const char* range = "bad object file: operand value error (constant out of range)";
    EXPECT_EQ(errorOf(pooled("\x06\x22")), range);
    EXPECT_EQ(errorOf(pooled("\x03\x03\x23")), range);
    EXPECT_EQ(errorOf(pooled("\x03\x06\x23")), range);
    EXPECT_EQ(errorOf("\x07\x26hello"), "premature end of ZOFF file");
    EXPECT_EQ(errorOf("\x08\x04\x01"), "premature end of ZOFF file");
    EXPECT_EQ(errorOf("\x08\x04\x01\xFF\xFF\xFF\x26"), range);

    // A second pool replaces the first for what comes behind it.
    ModulePtr module =
        readBytes(pooled(std::string("\x01\x04\x23\x1D\x4F\x02\x26ix\x00\x02\x23\x1D\x4F", 14)));
    EXPECT_NE(symbolNamed(module, "ello"), nullptr);
    EXPECT_NE(symbolNamed(module, "ix"), nullptr);
}

TEST(ZOFFReader, EveryErrorHasItsWords)
{
    auto operand = [](const char* what) {
        return std::string("bad object file: operand type error (") + what + " expected)";
    };
    struct {
        Records records;
        std::string words;
    } cases[] = {
        {Records().tag(T::Drop), "bad object file: reader empty stack"},
        {Records().lit(1), "bad object file: stack not empty at EOF"},
        {Records().raw(0x72), "bad object file: unknown tag"},
        {Records().raw(0xFF), "bad object file: unknown tag"},
        {Records().raw(0x1E), "bad object file: unknown tag"},
        {Records().raw(0x34), "bad object file: unknown tag"},
        {Records().raw(0x4D), "bad object file: unknown tag"},
        {Records().raw(0x5A), "bad object file: unknown tag"},
        {base().tag(T::Null).lit(1).tag(T::Add), operand("expression")},
        {base().text("x").tag(T::LinkOrderPriority), operand("constant expression")},
        {base().lit(1).tags({T::Null, T::Null, T::ScopeBlock}), operand("scope")},
        {base().lit(1).tag(T::Library), operand("string")},
        {base().lit(1).tag(T::Section), operand("section")},
        {base().tag(T::Null).tag(T::DataSpace), operand("type")},
        {base().tag(T::Null).tag(T::Public), "operand type error: symbol expected"},
        {base().text("s").tag(T::SymbolVal), "operand type error: symbol expected"},
        {inSection().lit(1).lit(1).tag(T::Locus), operand("file")},
        {base().lit(2).tag(T::Int).lit(2).tags({T::Int, T::Ptr}), operand("pointer")},
        {base().lit(2).tag(T::Int).text("f").lit(0).lit(1).lit(1).tags({T::Int, T::DynamicField}),
         operand("structure")},
        {base().lit(2).tag(T::Int).text("f").tags({T::MkSymbol, T::ParamIn}), operand("function type")},
        {inSection().lit(1).lit(1).tag(T::MarkerDef), operand("string")},
        {base().lit(9).tag(T::Alias), "bad object file: alias not defined"},
        {base().lit(4).tag(T::Null).lit(7).tag(T::MkAlias).drop().lit(7).tag(T::Alias),
         "bad object file: alias not defined"}, // a hole
        {base().lit(-1).tag(T::Alias), "bad object file: alias not defined"},
        {base().lit(1).lit(0).tag(T::MkAlias), "bad object file: alias defined more than once"},
        {base().lit(1).tag(T::SetBytes), operand("string")},
        {inSection().text("x").tag(T::SetBytes), "bad object file: no instruction defined"},
        {inSection().lit(1).tag(T::InstrumentationData), "bad object file: no instruction defined"},
        {inSection().lit(1).tag(T::ExtensionWord), "bad object file: no instruction defined"},
        {inSection().lit(1).lit(0).tag(T::DefBytes),
         "bad object file: operand value error (constant out of range)"},
        {inSection().lit(1).lit(5).tag(T::DefBytes),
         "bad object file: operand value error (constant out of range)"},
        {base().tag(T::BytePtr), operand("pointer")},
        {Records().text("s").tag(T::MkSymbol), "bad object file: no defined module"},
        {Records().text("s").tag(T::MkSection), "bad object file: no defined module"},
        {Records().tag(T::Protected), "bad object file: no defined module"},
    };
    for (auto& [records, words] : cases)
        EXPECT_EQ(errorOf(records), words);

    // Numbers of aliases and markers may be larger than a small file has bytes.
    auto numbered = [](int n) {
        Records records = inSection();
        records.lit(1).lit(n).tag(T::MkAlias).tag(T::Null).lit(n).tag(T::MarkerDef);
        return records.text("s").tag(T::MkSymbol).lit(n).tags({T::MarkerRef, T::SymbolDef});
    };
    EXPECT_EQ(errorOf(numbered(65'536)), "");
    EXPECT_EQ(errorOf(numbered(65'537)), "bad object file: operand value error (constant out of range)");

    // The section is asked for before anything is popped.
    for (T tag :
         {T::MarkerDef, T::DefBytes, T::Insn, T::HiddenInsn, T::Fill, T::Align, T::Origin, T::Break, T::Locus,
          T::Space, T::LocalInsn, T::SetFlags, T::Init, T::DefAddr, T::LinkIf, T::EndLinkIf})
        EXPECT_EQ(errorOf(base().tag(tag)), "bad object file: no defined section") << tagName(unsigned(tag));

    Records full = base();
    for (int i = 0; i < 100; ++i)
        full.lit(1);
    EXPECT_EQ(errorOf(full), "bad object file: stack not empty at EOF");
    EXPECT_EQ(errorOf(full.lit(1)), "bad object file: reader stack overflow");
}

TEST(ZOFFReader, AProgramIsReadWhole)
{
    ModulePtr module = read(sample());
    EXPECT_TRUE(module->libraries().contains(HString::intern("libc")));
    EXPECT_EQ(module->attributes().at(HString::intern("key")), HString::intern("value"));
    EXPECT_EQ(module->linkOrderPriority(), 10);

    ZOFFSymbol* main = module->publicSymbols().at(HString::intern("_main"));
    EXPECT_EQ(main->evaluate().value, 0x100);
    EXPECT_EQ(main->evaluate().section->name(), HString::intern(".text"));
    EXPECT_EQ(main->locus()->line(), 7);
    auto* function = static_cast<ZOFFFunctionType*>(main->type());
    ASSERT_TRUE(function->isFunction());
    EXPECT_EQ(function->a(), 1);
    EXPECT_EQ(function->frameSize(), 6);
    EXPECT_EQ(function->savedRegisters(), 12);
    EXPECT_EQ(function->getName()->view(), "(INT(2))");

    ASSERT_EQ(module->children().size(), 1u);
    ZOFFScope* scope = module->children()[0];
    EXPECT_EQ(scope->functionSymbol(), main);
    EXPECT_EQ(scope->start()->evaluate().value, 0x100);
    EXPECT_EQ(scope->end()->evaluate().value, 0x106);
    EXPECT_EQ(scope->symbols().begin()->first, HString::intern("n"));

    std::vector<ZOFFInsn*> items = itemsOf(module);
    ASSERT_EQ(items.size(), 9u); // break, label, locus, two instructions, locus, instruction, label, init
    EXPECT_EQ(items[0]->kind(), ZOFFKind::Break);
    EXPECT_EQ(items[0]->pc(), 0x100);
    EXPECT_EQ(static_cast<ZOFFMarker*>(items[1])->label(), main);
    EXPECT_EQ(items[1]->name(), main->name());
    EXPECT_EQ(items[2]->locus(), items[2]);
    EXPECT_EQ(items[4]->locus(), items[2]);
    EXPECT_EQ(items[6]->locus()->line(), 11);
    EXPECT_EQ(items[4]->stackAdjust(), 0);
    EXPECT_EQ(items[6]->stackAdjust(), -4);
    EXPECT_EQ(items[6]->previous(), items[5]);
    EXPECT_EQ(items[4]->printOpCode(), "083D\t");
    EXPECT_EQ(items[4]->printPC(), "0102");
    EXPECT_EQ(items[4]->printString(), "\tCALL\t0x114");
    EXPECT_TRUE(static_cast<ZOFFMAXQ30Insn*>(items[4])->isCall());
    EXPECT_EQ(items[8]->length(), 6);
    EXPECT_EQ(items[8]->getByte(4), 0x0D);
    EXPECT_EQ(items[8]->getByte(6), 0);

    // Without keepLoci only the first item behind a position refers to it.
    module = read(sample(), false);
    items = itemsOf(module);
    EXPECT_EQ(items[2]->locus(), nullptr);
    EXPECT_EQ(items[3]->locus(), items[2]);
    EXPECT_EQ(items[4]->locus(), nullptr);
}

TEST(ZOFFReader, ALiteralHasOneTypeWhereverItIsReached)
{
    Records r = base();
    r.text("a").tag(T::MkSymbol).lit(5).tag(T::Dup).lit(2).tags({T::Int, T::SetType, T::SymbolDef});
    r.lit(6).lit(1).tag(T::MkAlias).alias(1).lit(4).tags({T::Float, T::SetType});
    r.text("b").tag(T::MkSymbol).alias(1).tag(T::SymbolDef);
    ModulePtr module = read(r);
    ASSERT_NE(symbolNamed(module, "a")->type(), nullptr);
    EXPECT_EQ(symbolNamed(module, "a")->type()->getName()->view(), "INT(2)");
    ASSERT_NE(symbolNamed(module, "b")->type(), nullptr);
    EXPECT_EQ(symbolNamed(module, "b")->type()->getName()->view(), "FLOAT(4)");
    EXPECT_EQ(symbolNamed(module, "b")->evaluate().value, 6);
}

TEST(ZOFFReader, AQuickReadStopsBeforeTheSymbols)
{
    Records r;
    r.tags({T::NullNull, T::Null, T::ScopeModule}).keep(0).text("libm").tags({T::Library, T::EndOfInfo});
    std::string file = r.file() + "\xFF rubbish";
    ModulePtr module = readBytes(file, true, true);
    EXPECT_TRUE(module->libraries().contains(HString::intern("libm")));
    EXPECT_EQ(errorOf(file), "bad object file: unknown tag");
}

TEST(ZOFFReader, RegistersOfTheMachineHoldBetweenRecords)
{
    Records r = inSection();
    r.insn(0x10, 0xDA3A).tag(T::Null).lit(0xDA3A).tag(T::HiddenInsn); // no SETPC: the same place
    r.lit(3).tag(T::InstrumentationData).lit(0x12345).tag(T::ExtensionWord);
    r.lit(5).lit(3).tag(T::Fill).lit(8).tag(T::Align).lit(2).lit(2).tags({T::Add, T::Space});
    r.lit(7)
        .tag(T::Origin)
        .lit(1)
        .tags({T::LinkIf, T::EndLinkIf})
        .lit(9)
        .tag(T::LocalInsn)
        .lit(9)
        .tag(T::DefAddr);
    ModulePtr module = read(r);
    std::vector<ZOFFInsn*> items = itemsOf(module);
    ASSERT_EQ(items.size(), 10u);
    EXPECT_EQ(items[1]->pc(), 0x10);
    EXPECT_TRUE(items[1]->hidden());
    EXPECT_TRUE(module->hasHiddenInsns());
    EXPECT_EQ(items[1]->instrumentationData(), 3);
    EXPECT_EQ(items[1]->extensionWord(), 0x2345);
    std::string texts;
    std::vector<int> lengths;
    for (size_t i = 2; i < items.size(); ++i) {
        texts += items[i]->printString();
        lengths.push_back(items[i]->length());
    }
    EXPECT_EQ(texts,
              "\t.FILL\t3, 5\t.ALIGN\tBYTE[8]\t.SPACE\t4\tORG\t7\tLINKIF\t1\tENDLINKIF\tLOCAL\t @ 9\tDA\t9");
    EXPECT_EQ(lengths, (std::vector{3, 0, 4, 0, 0, 0, 0, 2}));
    EXPECT_EQ(items[2]->getByte(2), 5);
    EXPECT_EQ(errorOf(inSection().lit(1).lit(-1).tag(T::Fill)),
              "bad object file: operand value error (constant out of range)");

    // A library may hold several modules: the first is the root.
    Records two = base();
    two.alias(0).tags({T::NullNull, T::ScopeModule}).drop().text("s").tags({T::MkSymbol, T::Drop});
    module = read(two);
    EXPECT_EQ(module->children()[0]->kind(), ZOFFKind::Module);
    EXPECT_EQ(module->allSymbols().size(), 1u);
}

TEST(ZOFFReader, CirclesAreRefusedOrUnresolved)
{
    Records self = inSection();
    self.text(".text").tag(T::Init);
    EXPECT_EQ(errorOf(self), "bad object file: section .text is filled from itself");
    Records pair = inSection();
    pair.pc(0).text(".b").tag(T::Init).section(".b").pc(9).text(".text").tag(T::Init);
    EXPECT_NE(errorOf(pair).find("is filled from itself"), std::string::npos);
    EXPECT_EQ(errorOf(inSection().text("none").tag(T::Init)), ""); // may lie in another module

    Records pointers = base();
    pointers.lit(2).tag(T::ForwardType).keep(1).lit(2).tag(T::ForwardType).keep(2).tag(T::Ptr);
    EXPECT_EQ(errorOf(pointers), "");
    EXPECT_EQ(errorOf(pointers.alias(2).alias(1).tag(T::Ptr)), "bad object file: pointer to itself");
    EXPECT_EQ(
        errorOf(inSection().tag(T::Null).lit(1).tag(T::MarkerDef).tag(T::Null).lit(1).tag(T::MarkerDef)),
        "bad object file: marker defined more than once");

    Records symbols = base();
    symbols.text("s").tag(T::MkSymbol).keep(1).alias(1).tags({T::SymbolVal, T::SymbolDef});
    symbols.text("u").tag(T::MkSymbol).keep(2).lit(9).tags({T::MarkerRef, T::SymbolDef}).alias(2).drop();
    symbols.text("v").tags({T::MkSymbol, T::Drop});
    ModulePtr module = read(symbols);
    EXPECT_EQ(symbolNamed(module, "s")->evaluate().message, "circular reference to s");
    EXPECT_EQ(symbolNamed(module, "s")->evaluate().message,
              "circular reference to s"); // the guard is down again
    EXPECT_EQ(symbolNamed(module, "u")->evaluate().message, "forward reference to label u");
    EXPECT_EQ(symbolNamed(module, "v")->evaluate().message, "undefined symbol v");
}

TEST(ZOFFReader, NestingIsBounded)
{
    auto repeated = [](Records records, int count, auto step) {
        for (int i = 0; i < count; ++i)
            step(records);
        return errorOf(records.drop());
    };
    Records start = base();
    start.text("s").tags({T::MkSymbol, T::SymbolVal});
    auto deeper = [](Records& r) { r.lit(1).tag(T::Sub); };
    EXPECT_EQ(repeated(start, 9'999, deeper), "");
    EXPECT_EQ(repeated(start, 10'000, deeper), "bad object file: expression nested too deeply");
    // Doubling makes a tree of more nodes than anyone can walk.
    EXPECT_EQ(repeated(start, 64,
                       [](Records& r) {
                           r.tags({T::Dup, T::Mul});
                       }),
              "bad object file: expression too large");
    auto array = [](Records& r) { r.lit(1).tag(T::Array); };
    EXPECT_EQ(repeated(base().lit(1).tag(T::Int), 9'999, array), "");
    EXPECT_EQ(repeated(base().lit(1).tag(T::Int), 10'000, array), "bad object file: types nested too deeply");
    auto scope = [](Records& r) { r.tags({T::NullNull, T::ScopeBlock}); };
    EXPECT_EQ(repeated(base().alias(0), 10'000, scope), "");
    EXPECT_EQ(repeated(base().alias(0), 10'001, scope), "bad object file: scopes nested too deeply");
    EXPECT_EQ(errorOf(base().lit(2).tag(T::Int).lit(0x7FFFFFFF).tag(T::Array)),
              "bad object file: operand value error (constant out of range)");

    // A long chain of pointers cannot be walked again and again.
    Records chained = base();
    chained.lit(1).tag(T::Int).keep(0x100).drop();
    for (int i = 1; i < 9'000; ++i)
        chained.lit(2).tag(T::ForwardType).keep(0x100 + i).alias(0xFF + i).tag(T::Ptr);
    EXPECT_EQ(errorOf(chained), "");
    for (int i = 0; i < 4'000; ++i)
        chained.lit(2).tag(T::ForwardType).alias(0x100 + 8'999).tag(T::Ptr);
    EXPECT_EQ(errorOf(chained), "bad object file: types nested too deeply");

    // Symbols of symbols, each twice the one before: as many steps as a file has none.
    Records chain = base();
    chain.text("s0").tag(T::MkSymbol).keep(1).lit(1).tag(T::SymbolDef);
    for (int i = 1; i < 60; ++i) {
        chain.text("s" + std::to_string(i)).tag(T::MkSymbol).keep(i + 1);
        chain.alias(i).tag(T::SymbolVal).alias(i).tags({T::SymbolVal, T::Add, T::SymbolDef});
    }
    ModulePtr module = read(chain);
    EXPECT_EQ(symbolNamed(module, "s10")->evaluate().value, 1 << 10);
    EXPECT_TRUE(symbolNamed(module, "s59")->evaluate().unresolved);
    EXPECT_EQ(symbolNamed(module, "s10")->evaluate().value, 1 << 10);
}

TEST(ZOFFReader, WhatNoFileCanCarryIsRefused)
{
    const char* range = "bad object file: operand value error (constant out of range)";
    EXPECT_EQ(errorOf(base().lit(1).lit(0xFFFFFF).tag(T::MkAlias)), range);
    EXPECT_EQ(errorOf(base().lit(0xFFFFFF).tag(T::MarkerRef)), range);
    EXPECT_EQ(errorOf(inSection().lit(int64_t(1) << 33).tag(T::SetPC)), range);
    Records code = inSection();
    code.insn(0, 0xDA3A).text(std::string(0xFFFFF, 'x'));
    for (int i = 0; i < 70; ++i)
        code.tags({T::Dup, T::SetBytes});
    EXPECT_EQ(errorOf(code.drop()), "bad object file: too much code");
    Records names = base();
    names.text(std::string(60'000, 'n')).keep(1).drop();
    for (int i = 0; i < 40; ++i)
        names.alias(1).tag(T::Library);
    EXPECT_EQ(errorOf(names), "bad object file: names too long");
    EXPECT_EQ(errorOf(base().text(std::string(65'537, 'n')).tag(T::Library)),
              "bad object file: names too long");
}

TEST(ZOFFReader, CutAndChangedFilesEndInWords)
{
    std::string file = sample().file();
    int refused = 0;
    for (size_t size = 1; size < file.size(); ++size)
        refused += !errorOf(file.substr(0, size)).empty();
    EXPECT_GT(refused, int(file.size()) * 3 / 4);

    unsigned random = 1;
    for (int round = 0; round < 5'000; ++round) {
        std::string changed = file;
        for (int i = 0; i < 3; ++i) {
            random = random * 1664525 + 1013904223;
            changed[(random >> 8) % changed.size()] = char(random >> 24);
        }
        std::string words = errorOf(changed);
        EXPECT_TRUE(words.empty() || words.starts_with("bad object file: ") ||
                    words == "premature end of ZOFF file" || words == "operand type error: symbol expected")
            << words;
    }
    EXPECT_EQ(HException::count(), 0);
}
