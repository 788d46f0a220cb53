// Everything that an executable holds, as --dump prints it: one source with each kind of item.
#include "support/TempDir.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

namespace {

constexpr char source[] = R"(
        .LIBRARY tail
        .ATTRIBUTE vendor, "none"
        .PROTECTED
        .PRIORITY 3
        .PUBLIC main, SIZE
SIZE    = 0x10 + 2
        .TYPE word, UNSIGNED(2)
        .CODE
        .FUNC main, FRAME=4, SAVED=0x30
        .PARAM count, INT(4), A[4]
        MOVE A[0], #SIZE
        MOVE A[1], #local
        MOVE A[2], #table + 2
        MOVE A[3], #20
.loop:  DJNZ LC[0], .loop
        JUMP .+4
        .BLOCK
        .LOCAL p, PTR(word), SP + 8
        .HIDDEN ON
        CALL tail
        .HIDDEN OFF
        .ENDBLOCK
        RET
        .ENDFUNC
        LINKIF SIZE - 18
        NOP
        ENDLINKIF
        LINKIF SIZE
        RL
        ENDLINKIF
        .ALIGN 8
        ORG 0x40
data2:  DB 1, "a"
        .FILL 3, 7
        DA table
        .DATA
table:  DW 1, table
        .VAR table, ARRAY(word, 2)
        .SPACE SIZE
        .SECTION copy, NONE, LOAD, 0x100
        .INIT data
local   = 7
typed   = 9
        .VAR typed, CODE(word)
        .CONST
)";

constexpr char expected[] = R"(Module result, protected
  attribute vendor = "none"
  library tail
  link order priority 3

Sections
  code             code   load  0x00000000-0x00000049  33 bytes
  data             data         0x00008000-0x00008015  22 bytes
  copy             none   load  0x00000000-0x00000015  22 bytes
  const            code   load  empty

Symbols
  SIZE                     public 0x00000012
  main                     public 0x00000000  (INT(4))  main.s:9
  tail                     public 0x00000048
  data2                           0x00000040
  table                           0x00008000  word[2]  main.s:38
  typed                           0x00000009  word  main.s:44
  count                           A[4]  INT(4)  main.s:10
  p                               SP ?? 8  word*  main.s:18

Scopes
  function main frame 4 saved 0x0030  0x00000000-0x00000012
    count
    block  0x0000000e-0x00000010
      p

Lines
  0x00000000  main.s:11
  0x00000002  main.s:12
  0x00000004  main.s:13
  0x00000008  main.s:14
  0x0000000a  main.s:15
  0x0000000c  main.s:16
  0x0000000e  main.s:20
  0x00000010  main.s:23
  0x00000012  main.s:29
  0x00000014  main.s:31
  0x00000040  main.s:33
  0x00000042  main.s:34
  0x00000045  main.s:35
  0x00000048  lib/tail.s:3

Section code
main:
  0000  1209            	MOVE	A[0], #SIZE
  0002  0719            	MOVE	A[1], #7
  0004  800B0229        	MOVE	A[2], #table + 2
  0008  1439            	MOVE	A[3], #0x14
main.loop:
  000A  FF4D            	DJNZ	LC[0], main.loop
  000C  010C            	JUMP	@0 + 4
  000E  1C3D            	CALL	tail	; hidden
  0010  0D8C            	RET
  0012                  	LINKIF	SIZE
  0012  4A8A            	RL
  0014                  	ENDLINKIF
  0014                  	.ALIGN	BYTE[8]
  0040                  	ORG	64
data2:
  0040  01              	DB	1
  0041  61              	DB	97
  0042                  	.FILL	3, 7
  0045  0080            	DA	table
tail:
  0048  0D8C            	RET

Section data
table:
  8000  0100            	DW	1
  8002  0080            	DW	table
  8004                  	.SPACE	SIZE

Section copy
  0000                  	.INIT	"data"

Section const
)";

std::string contents(const std::string& name)
{
    std::ifstream in(name);
    return std::string((std::istreambuf_iterator<char>(in)), {});
}

} // namespace

TEST(Dump, ShowsEveryKindOfItem)
{
    TempDir dir;
    dir.write("lib/tail.s", ".PUBLIC tail\n.CODE\ntail: RET\n");
    std::string kvas = KVAS_PROGRAM, file = dir / "result.kvx", text = dir / "text";
    std::string main = dir.write("main.s", source + 1);
    ASSERT_EQ(system((kvas + " --lib " + (dir / "lib") + " --data 0x8000 -o " + file + " " + main).c_str()),
              0);
    ASSERT_EQ(system((kvas + " --dump " + file + " >" + text).c_str()), 0);
    std::string dump = contents(text);
    for (size_t at; (at = dump.find(dir.path() + "/")) != std::string::npos;)
        dump.erase(at, dir.path().size() + 1);
    EXPECT_EQ(dump, expected);

    // An executable without anything in it.
    std::string empty = dir.write("empty.s", "");
    ASSERT_EQ(
        system(
            (kvas + " -o " + file + " " + empty + " && " + kvas + " --dump " + file + " >" + text).c_str()),
        0);
    EXPECT_EQ(contents(text), "Module result\n\nSections\n\nSymbols\n\nScopes\n\nLines\n");
}
