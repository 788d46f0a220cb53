// Breakpoints as users write them, and the records that they become.
#include "debug/evaluation/ExpressionContext.h"
#include "debug/monitor/HBreakpoint.h"
#include "debug/run/DebuggerBreakpoint.h"
#include "tests/debug/DebuggerFixture.h"
#include "tests/support/Failure.h"

#include <array>

namespace {

constexpr char Data[] = ".TYPE int, INT(4)\n.TYPE byte, UNSIGNED(1)\n"
                        ".STRUCT point\n.FIELD x, INT(2)\n.FIELD y, INT(2)\n"
                        ".FIELD low, UNSIGNED(1), 32, 3\n.FIELD high, UNSIGNED(1), 35, 5\n.ENDSTRUCT\n"
                        ".PUBLIC start\n.CODE\n.FUNC start\n NOP\nlabel: JUMP start\n.ENDFUNC\n"
                        ".DATA\nORG 0x1000\nx: .SPACE 4\n.VAR x, int\n"     // 1000
                        "y: .SPACE 4\n.VAR y, int\n"                        // 1004
                        "flags: .SPACE 4\n.VAR flags, byte\n"               // 1008
                        "table: .SPACE 16\n.VAR table, ARRAY(int, 4)\n"     // 100C
                        "pt: .SPACE 8\n.VAR pt, STRUCT point\n"             // 101C
                        "p: .SPACE 4\n.VAR p, PTR(STRUCT point)\n"          // 1024
                        "real: .SPACE 4\n.VAR real, FLOAT(4)\n"             // 1028
                        "buffer: .SPACE 20\n.VAR buffer, ARRAY(byte, 20)\n" // 102C
                        "plain: .SPACE 4\nsize = 12\n.PUBLIC size\n";

class BreakpointRecords : public Debugger {
protected:
    BreakpointRecords() { target.triggers = {"Execute", "Read", "Write", "Read/Write"}; }

    DebuggerBreakpoint* set(const char* text, const char* trigger = "")
    {
        return subject.setBreakpoint({}, text, trigger, 0, true, false, QString(), QString());
    }
    // "trigger address+length", "!" for the outside of the range, then comparison, value and mask; the
    // records along the chain one after the other. Or what the expression fails with.
    std::string records(const char* text, const char* trigger = "")
    {
        std::string shown;
        std::string failure = failureOf([&] {
            DebuggerBreakpoint* breakpoint = set(text, trigger);
            for (const HBreakpoint* b = target.breakpoints.back(); b; b = b->next) {
                constexpr std::array<const char*, 6> Comparisons = {"==", ">=", "<=", "!=", "<", ">"};
                char line[80];
                snprintf(line, sizeof line, "%s%s%d %s%x+%u", shown.empty() ? "" : ", ",
                         b->inverted ? "!" : "", b->trigger, b->isRegister ? "@" : "", b->address, b->length);
                shown += line;
                if (b->hasValue) {
                    snprintf(line, sizeof line, " %s%x/%x", Comparisons[size_t(b->comparison)], b->value,
                             b->mask);
                    shown += line;
                }
            }
            subject.clearBreakpoint(breakpoint);
        });
        EXPECT_TRUE(target.breakpoints.empty()) << text;
        return shown.empty() ? failure : shown;
    }
};

} // namespace

TEST_F(BreakpointRecords, PlacesAndConditions)
{
    program(Data, false);
    subject.start("start", true);
    wait();
    struct {
        const char* text;
        const char* records;
    } cases[] = {
        {"x", "2 1000+4"},
        {"start", "0 0+1"},
        {"label", "0 2+1"},
        {"&x", "2 1000+4"},
        {"0x2", "0 2+1"},
        {"@A[3]", "2 @39+4"},
        {"!buffer", "!2 102c+20"},
        {"x == 3", "2 1000+4 ==3/ffffffff"},
        {"x != 3", "2 1000+4 !=3/ffffffff"},
        {"x >= 3", "2 1000+4 >=3/ffffffff"},
        {"x <= 3", "2 1000+4 <=3/ffffffff"},
        {"x > 3", "2 1000+4 >3/ffffffff"},
        {"x < -1", "2 1000+4 <ffffffff/ffffffff"},
        {"x == size", "2 1000+4 ==c/ffffffff"},
        {"(flags & 0x0F) == 3", "2 1008+1 ==3/f"},
        {"table[2] == 4", "2 1014+4 ==4/ffffffff"},
        {"pt.y == 7", "2 101e+2 ==7/ffffffff"},
        {"pt.high == 5", "2 1020+1 ==28/f8"},
        {"(pt.high & 3) != 1", "2 1020+1 !=8/18"},
        {"p->x == 1", "2 0+2 ==1/ffffffff"},
        {"*p", "2 0+5"},
        {"@A[3] == 9", "2 @39+4 ==9/ffffffff"},
        {"x && y", "2 1004+4, 2 1000+4"},
        {"x == 1 && y == 2 && start", "0 0+1, 2 1004+4 ==2/ffffffff, 2 1000+4 ==1/ffffffff"},
        {"x && (y && flags)", "2 1008+1, 2 1004+4, 2 1000+4"},
        {"", "Invalid expression"},
        {"nothing", "nothing symbol not found"},
        {"x == y", "Constant required for rhs"},
        {"(x & y) == 1", "Constant required for rhs of mask"},
        {"(x + 1) == 1", "& is the only supported mask operator"},
        {"3 == 3", "Symbol required for lhs"},
        {"start == 3", "Symbol required for lhs"},
        {"!(x == 1)", "! only applicable to range expressions"},
        {"\"text\"", "Expression has no address"},
        {"real == 1", "a value that is no integer cannot be compared"},
        {"x == 1.5", "Constant required for rhs"},
    };
    for (auto& [text, expected] : cases)
        EXPECT_EQ(records(text), expected) << text;
    EXPECT_EQ(records("x", "Read/Write"), "3 1000+4");
    EXPECT_EQ(records("x", "Read"), "1 1000+4");
    EXPECT_EQ(records((repeat("x && ", 100) + "x").c_str()), "too many conditions");
}

TEST_F(BreakpointRecords, TheTargetAndTheFrameHaveASay)
{
    program(".TYPE int, INT(4)\n.PUBLIC start\n.CODE\nstart: MOVE SP, #0x400\n CALL f\n.end: JUMP .end\n"
            ".FUNC f\n.LOCAL here, int, SP + 8\n NOP\n RET\n.ENDFUNC\n",
            false);
    subject.start("start", true);
    wait();
    target.file.setSP(0x200);
    EXPECT_EQ(records("here"), "2 208+4") << "any symbol of that name";
    breakAt(9, 0, true);
    subject.go();
    ASSERT_EQ(wait(), 9);
    EXPECT_EQ(records("here"), "2 404+4") << "the local of the frame";
    target.capacity = 0;
    EXPECT_EQ(records("here"), "the target refuses the breakpoint");
    target.capacity = 8;
    DebuggerBreakpoint* local = set("here");
    EXPECT_EQ(local->getDescription(), "0x404-0x407");
    EXPECT_EQ(set("@SP")->getAddress(), "@r29");
    target.data.linkLost = true;
    EXPECT_EQ(failureOf([&] { set("*(int *)here"); }), "link lost");
}
