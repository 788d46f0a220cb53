#include "debug/symbols/SymbolicDebug.h"
#include "loadfile/LoadFileInterface.h"
#include "loadfile/LoadFileSections.h"
#include "support/AddressRanges.h"
#include "support/HString.h"
#include "support/Path.h"
#include "support/TempDir.h"
#include "target/memory/TargetMemoryInterface.h"
#include "tests/support/Failure.h"
#include "tests/target/FakeTarget.h"
#include "tests/zoff/Records.h"
#include "zoff/ZOFFDebugIndex.h"
#include "zoff/ZOFFLoadFile.h"
#include "zoff/ZOFFLoadFileFactory.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFTargetInterface.h"
#include "zoff/ZOFFfiles.h"

#include <filesystem>
#include <gtest/gtest.h>

using T = ZOFFTag;

namespace {

// An index that only knows its module.
int g_indexes = 0;

ZOFFModule* moduleOf(SymbolicDebug* index)
{
    return *reinterpret_cast<ZOFFModule**>(index);
}

constexpr ZOFFDebugIndex BareIndex = {
    .make =
        [](const Path&, ZOFFModule* module) {
            ++g_indexes;
            return reinterpret_cast<SymbolicDebug*>(new ZOFFModule*(module));
        },
    .destroy =
        [](SymbolicDebug* index) {
            --g_indexes;
            delete reinterpret_cast<ZOFFModule**>(index);
        },
};

Records program()
{
    Records r;
    r.module().section(".text").tag(T::Break).insn(0x10, 0xDA3A).insn(0x12, 0xDA3A);
    r.tag(T::Break).byte(0x14, 0x55);                      // follows on: the same run
    r.tag(T::Null).lit(1).tag(T::MarkerDef).byte(0x16, 1); // a gap of one byte
    r.section(".ram", 2).byte(0x10, 9);                    // not to be loaded
    r.section(".ee", 0x80006).byte(4, 0xEE);
    return r;
}

std::string describe(const LoadFileSections::List& sections)
{
    std::string text;
    for (auto& section : sections) {
        char line[64];
        snprintf(line, sizeof line, "%s %x:", section->name().c_str(), section->address());
        text += line;
        for (uint32_t i = 0; i < section->length(); ++i) {
            snprintf(line, sizeof line, "%02x", section->data(false)[i]);
            text += line;
        }
        text += " ";
    }
    return text;
}

class ModuleTarget : public ZOFFTargetInterface {
public:
    explicit ModuleTarget(FakeHelpers* helpers) : ZOFFTargetInterface(0, "Fake Board", helpers), code(true) {}
    void connect(bool) override {}
    void disconnect() override {}
    bool isConnected() const override { return true; }
    bool isStopped() override { return true; }
    TargetMemoryInterface* codeMemory() override { return &code; }
    TargetMemoryInterface* dataMemory() override { return nullptr; }
    void reset(bool, bool) override {}
    void go() override {}
    void start(bool, unsigned) override {}
    void step() override {}
    void stop() override {}
    void clear() override {}
    FakeMemory code;
};

} // namespace

TEST(ZOFFLoadFile, SectionsAreRunsOfBytes)
{
    TempDir dir;
    std::string path = dir.write("program.kvx", program().file());
    ZOFFLoadFileFactory factory;
    EXPECT_STREQ(factory.detect("foo.kvx.bak"), "kvx");
    LoadFileInterface* file = factory.create(path.c_str(), "kvx");
    EXPECT_FALSE(file->hasEntryPoint());
    EXPECT_TRUE(file->hasLoadAddress());
    EXPECT_TRUE(file->hasSymbols());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(describe(file->loadFileSections().sections()), ".text 10:3ada3ada55 .text 16:01 ");
        EXPECT_EQ(describe(file->loadFileSections().eeSections()), ".ee 4:ee ");
        file->invalidateLoadFileSections(); // built anew, and the EEPROM's not twice
    }
    factory.destroy(file);
    EXPECT_EQ(g_ZOFFfiles.count(), 0u);

    path = dir.write("none.kvx", Records().module().section(".ram", 2).byte(0, 1).file());
    ZOFFLoadFile none{Path(path)};
    EXPECT_TRUE(none.loadFileSections().sections().empty());
}

TEST(ZOFFLoadFile, WhatCannotBeLoadedIsRefused)
{
    TempDir dir;
    auto sectionsOf = [&dir](const Records& records) {
        std::string path = dir.write("bad.kvx", records.file());
        return failureOf([&path] { ZOFFLoadFile(Path(path)).loadFileSections(); });
    };
    Records start;
    start.module().section(".text");
    auto with = [&start](auto change) {
        Records records = start;
        change(records);
        return records;
    };
    EXPECT_EQ(sectionsOf(with([](Records& r) { r.pc(0).lit(0).lit(0x7FFFFFFF).tag(T::Fill); })),
              "bad object file: section .text is too large");
    EXPECT_EQ(sectionsOf(with(
                  [](Records& r) { r.pc(0).lit(0x40000000).tag(T::Space).lit(0x7FFFFFFF).tag(T::Space); })),
              "bad object file: section .text is too large");
    EXPECT_EQ(sectionsOf(with([](Records& r) { r.byte(-1, 1); })),
              "bad object file: section .text has bytes without an address");
    EXPECT_EQ(sectionsOf(with([](Records& r) { r.byte(0x80000000, 1).byte(-8, 1); })), "no failure")
        << "places are unsigned";
    EXPECT_EQ(sectionsOf(with([](Records& r) { r.pc(0xFFFFFFF0).lit(0).lit(0x11).tag(T::Fill); })),
              "bad object file: section .text goes beyond the last address");
    EXPECT_EQ(
        sectionsOf(with([](Records& r) { r.byte(0x7FFFFFFE, 1).pc(0x7FFFFFFF).lit(1).lit(9).tag(T::Fill); })),
        "no failure");
    EXPECT_EQ(sectionsOf(with([](Records& r) { r.drop(); })), "bad object file: reader empty stack");
    EXPECT_EQ(failureOf([] { ZOFFLoadFile(Path("/nowhere/x.kvx")); }), "Can't access /nowhere/x.kvx");
    EXPECT_EQ(sectionsOf(Records()).find("bad object file: no module in "), 0u);
    EXPECT_EQ(g_ZOFFfiles.count(), 0u);
}

TEST(ZOFFfiles, OneFileIsOneModuleUntilItChanges)
{
    TempDir dir;
    std::string path = dir.write("a.kvx", program().file());
    ZOFFModule* first = g_ZOFFfiles.getModule(Path(path));
    EXPECT_EQ(g_ZOFFfiles.getModule(Path(path)), first);
    EXPECT_EQ(g_ZOFFfiles.findOpenFilesInfo(Path(path))->moduleCount, 2);

    auto later = std::filesystem::last_write_time(path) + std::chrono::seconds(2);
    std::filesystem::last_write_time(path, later);
    ZOFFModule* second = g_ZOFFfiles.getModule(Path(path));
    EXPECT_NE(second, first);
    EXPECT_EQ(g_ZOFFfiles.findOpenFilesInfo(Path(path))->moduleCount, 1);
    g_ZOFFfiles.release(second);
    EXPECT_NE(first->findSection(HString::intern(".text")), nullptr); // whole without the other
    g_ZOFFfiles.release(first);
    g_ZOFFfiles.release(first);
    EXPECT_EQ(g_ZOFFfiles.count(), 0u);
    g_ZOFFfiles.release(first); // no longer known: nothing happens
    g_ZOFFfiles.release(static_cast<ZOFFModule*>(nullptr));
}

TEST(ZOFFfiles, TheDebuggersIndexHoldsItsModule)
{
    ZOFFDebugIndex::install(BareIndex);
    TempDir dir;
    std::string path = dir.write("a.kvx", program().file());
    ZOFFModule* module = g_ZOFFfiles.getModule(Path(path));
    SymbolicDebug* debug = g_ZOFFfiles.getSymbolicDebug(Path(path));
    EXPECT_EQ(moduleOf(debug), module);
    EXPECT_EQ(g_ZOFFfiles.getSymbolicDebug(Path(path)), debug);
    g_ZOFFfiles.release(module);
    g_ZOFFfiles.release(debug);
    EXPECT_EQ(g_indexes, 1);
    EXPECT_EQ(g_ZOFFfiles.count(), 1u);
    g_ZOFFfiles.release(debug);
    EXPECT_EQ(g_indexes, 0);
    EXPECT_EQ(g_ZOFFfiles.count(), 0u);
}

TEST(ZOFFTargetInterface, AModuleIsProgrammedInPieces)
{
    TempDir dir;
    ZOFFModule* module = g_ZOFFfiles.getModule(Path(dir.write("a.kvx", program().file())));
    FakeHelpers helpers;
    ModuleTarget target(&helpers);
    target.loadZOFFModule(module);
    EXPECT_EQ(target.code.log, "poke(10,5) poke(16,1) "); // .ee spans a single address, which counts as none
    EXPECT_EQ(target.code.bytes[0x14], 0x55);
    EXPECT_EQ(helpers.log, "Programming 0.0 kB of .text of 6: 0 5 6 ");

    // Checking writes nothing, and a failure is told and thrown on.
    target.code.log.clear();
    target.code.addressRanges().add(0, 0x13, AddressRange::ReadWrite, false);
    EXPECT_EQ(failureOf([&] { target.checkZOFFModuleMemoryExists(module); }),
              "Section .text is too big for target");
    EXPECT_EQ(target.code.log, "");
    EXPECT_EQ(helpers.messages, "Section .text is too big for target@4\n");
    g_ZOFFfiles.release(module);
}
