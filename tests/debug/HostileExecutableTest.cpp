// Executables that lie: whatever the symbols, scopes, types and lines say, the debugger comes to an end.
#include "debug/evaluation/ExpressionContext.h"
#include "debug/evaluation/VariableListBuilder.h"
#include "support/HException.h"
#include "support/Path.h"
#include "tests/debug/DebuggerFixture.h"
#include "tests/debug/FakeProgram.h"

#include <random>

namespace {

constexpr char Program[] =
    ".TYPE int, INT(4)\n.STRUCT node\n.FIELD next, PTR(STRUCT node)\n.FIELD low, UNSIGNED(1), 32, 3\n"
    ".FIELD high, UNSIGNED(1), 35, 5\n.FIELD name, ARRAY(CHAR(1), 6)\n.ENDSTRUCT\n"
    ".PUBLIC start, _dbgCntrlWord, _dbgCommWord, _RAM_Start_Address, _RAM_Size, list\n"
    "_RAM_Start_Address = 0\n_RAM_Size = 0x1000\n.CODE\n"
    "start: MOVE SP, #0x800\n MOVE A[0], #3\n CALL down\n.end: JUMP .end\n"
    ".FUNC down, FRAME=4, SAVED=0x70\n.PARAM depth, int, A[0]\n.LOCAL here, int, SP + 4\n"
    " PUSH A[4]\n.ADJUST -4\n SUB #1\n JUMP Z, .out\n.BLOCK\n.LOCAL here, PTR(int), A[4]\n CALL "
    "down\n.ENDBLOCK\n"
    ".out: POP A[4]\n.ADJUST 0\n RET\n.ENDFUNC\n"
    ".DATA\n.ALIGN 4\n_dbgCntrlWord: .SPACE 4\n_dbgCommWord: .SPACE 4\nlist: .SPACE 16\n.VAR list, STRUCT "
    "node\n"
    "table: .SPACE 24\n.VAR table, ARRAY(ARRAY(int, 3), 2)\n.DECL table, \"program.s\", 3\n";

class HostileExecutable : public Debugger {
protected:
    // What a session may do with a program, a failure for each step.
    void session()
    {
        auto attempt = [this](auto&& step) {
            try {
                step();
            } catch (const HException&) {
                ++failures;
            }
        };
        TextBuilder builder;
        builder.pointers = VariableListBuilder::PointerObject;
        builder.limit = 20;
        attempt([&] { subject.start("start", true); });
        attempt([&] { wait(); });
        for (int line : {12, 15, 19, 20, 23})
            attempt([&] { breakAt(line, 1); });
        for (const char* text :
             {"list", "table[1][2] == 4", "list.high == 3", "down", "!list", "here", "*list.next"})
            attempt([&] { subject.setBreakpoint({}, text, QString(), 0, true, true, QString(), QString()); });
        for (int i = 0; i < 6; ++i) {
            attempt([&] {
                i % 3 == 0 ? subject.go() : i % 3 == 1 ? subject.stepinto(false) : subject.stepover(false);
            });
            attempt([&] {
                for (int polls = 0; polls < 3 && !subject.isStopped(); ++polls)
                    ;
                subject.stop();
                subject.isStopped();
            });
            attempt([&] {
                for (unsigned n = 0; n < subject.numcalls(); ++n) {
                    line(n);
                    subject.getParameters(subject.getFrame(n), &builder);
                    subject.getLocalVariables(subject.getFrame(n), &builder);
                }
            });
            attempt([&] { subject.getGlobalVariables(subject.getFrame(0), &builder); });
            attempt([&] { subject.stepout(subject.getFrame(1)); });
            attempt([&] { subject.stop(), subject.isStopped(); });
        }
        QStringList text;
        attempt([&] { subject.locateDisassembly(0), subject.getDisassemblyText(text); });
        for (const QString& file : subject.sourceFileNames(QString::fromStdString(executable)))
            attempt([&] { subject.lineNumbers(QString::fromStdString(executable), Path(file)); });
        seen += builder.text.size() + size_t(text.size());
        subject.clear();
    }

    int failures = 0;
    size_t seen = 0;
};

} // namespace

TEST_F(HostileExecutable, EverySessionComesToAnEnd)
{
    program(Program, false);
    target.triggers = {"Execute", "Read", "Write", "Read/Write"};
    session();
    EXPECT_GT(seen, 1000u);
    EXPECT_LT(failures, 10);
    std::string whole = bytes;
    std::minstd_rand random(1);
    int loaded = 0;
    for (int round = 0; round < 300; ++round) {
        std::string mutated = whole;
        for (unsigned change = random() % 2 + 1; change > 0; --change)
            mutated[random() % mutated.size()] = char(random() % 2 ? random() : random() % 0x70);
        subject.unloadSymbols(Path());
        executable = dir.write("mutated" + std::to_string(round) + ".kvx", mutated);
        try {
            subject.loadSymbols(Path(executable), 0);
        } catch (const HException&) {
            continue;
        }
        ++loaded;
        session();
        EXPECT_TRUE(target.breakpoints.empty()) << round;
    }
    EXPECT_GT(loaded, 20);
}
