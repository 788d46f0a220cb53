// The script object TargetInterface: every function, from a script.
#include "script/engine/ESContext.h"
#include "script/native/ESLibrary.h"
#include "support/HException.h"
#include "support/TempDir.h"
#include "target/FakeTarget.h"

namespace {

struct ScriptObject : ::testing::Test {
    FakeHelpers helpers;
    FakeTarget target{&helpers};
    ESContext context;

    void SetUp() override
    {
        ESLibrary::mkexec(nullptr, &context);
        target.installScriptObject(&context);
    }
    // The value as text, or what it failed with.
    std::string run(const std::string& text)
    {
        try {
            ESCompletion completion = context.eval(QString::fromStdString(text));
            if (completion.type == ESCompletion::Thrown)
                return "thrown: " + completion.text.toStdString();
            return context.toString(completion.value).toStdString();
        } catch (const HException& e) {
            return "failed: " + e.message();
        }
    }
};

} // namespace

TEST_F(ScriptObject, MemoryInAllWidths)
{
    EXPECT_EQ(run("TargetInterface.pokeByte(0x10, 0x1FF); TargetInterface.peekByte(0x10)"), "255");
    EXPECT_EQ(run("TargetInterface.pokeUint16(0x10, 0x12345); TargetInterface.peekUint16(0x10)"), "9029");
    EXPECT_EQ(run("TargetInterface.pokeUint32(0x10, 0xFFFFFFFF); TargetInterface.peekUint32(0x10)"),
              "4294967295");
    EXPECT_EQ(run("TargetInterface.pokeUint32(0x10, -2); TargetInterface.peekUint32(0x10)"), "4294967294");
    EXPECT_EQ(run("TargetInterface.pokeBytes(0x20, [1, 2, 257]); TargetInterface.peekBytes(0x20, 3)"),
              "1,2,1");
    EXPECT_EQ(
        run("TargetInterface.pokeMultUint16(0x20, [1, 65537]); TargetInterface.peekMultUint16(0x20, 2)"),
        "1,1");
    EXPECT_EQ(
        run("TargetInterface.pokeMultUint32(0x20, [7, 0x80000000]); TargetInterface.peekMultUint32(0x20, 2)"),
        "7,2147483648");
    EXPECT_EQ(run("TargetInterface.peekBytes(0x20, 0).length"), "0");
    EXPECT_EQ(run("typeof TargetInterface.pokeByte(0, 0)"), "undefined");
    EXPECT_EQ(run("TargetInterface.pokeBytes.length + TargetInterface.reset.length * 10"), "3");
}

TEST_F(ScriptObject, FailuresEndTheScript)
{
    EXPECT_EQ(run("TargetInterface.peekByte(0x10000)"), "failed: outside the fake memory");
    EXPECT_EQ(run("TargetInterface.peekBytes(0, 0xFFFFFFFF)"),
              "failed: 4294967295 elements are more than a script can read at once");
    EXPECT_EQ(run("TargetInterface.pokeBytes(0, 5)").substr(0, 8), "thrown: ");
    EXPECT_EQ(run("TargetInterface.error('x')"), "failed: x");
    EXPECT_EQ(helpers.messages, "error: x\n");
    EXPECT_EQ(run("1 + 1"), "2");                        // the context is usable
    EXPECT_EQ(run("TargetInterface.peekByte()"), "255"); // a missing argument is 0
}

TEST_F(ScriptObject, TargetAndHost)
{
    TempDir dir;
    std::string file = dir.write("a.bin", std::string("\x01\x00\xFF", 3));
    EXPECT_EQ(run("TargetInterface.readBinary('" + file + "')"), "1,0,255");
    EXPECT_EQ(run("TargetInterface.readBinary('/none')"), "undefined");
    run("TargetInterface.reset(); TargetInterface.go(); TargetInterface.delay(1); "
        "TargetInterface.message('hello')");
    EXPECT_EQ(target.calls, "reset go ");
    EXPECT_EQ(helpers.messages, "hello\n");
    run("TargetInterface.setDeviceTypeProperty('XYZ')");
    EXPECT_EQ(target.deviceId(), QString("XYZ"));
    run("TargetInterface.eraseBytes(0x10, 4)");
    EXPECT_EQ(target.code.log, "[erase(0,100) ]");
    target.code.failAt = 0;
    EXPECT_EQ(run("TargetInterface.eraseBytes(0x10, 4)"), "failed: link lost");
    EXPECT_EQ(target.code.log.back(), ']');
}
