; A calculator: reads lines of a number, an operator and a number, such as "12 * 34", and prints the result
; in decimal, hexadecimal and octal. A line of another form ends it. The status is how many lines were
; worked out.

        .LIBRARY console
        .PUBLIC main, input, count

        .TYPE long, INT(4)
        .TYPE char, CHAR(1)
        .TYPE text, PTR(char)

        .STRUCT task
        .FIELD  left, long
        .FIELD  right, long
        .FIELD  operation, char
        .FIELD  flags, UNSIGNED(1), 72, 4
        .ENDSTRUCT

        .CODE
        .FUNC main
        .PARAM argc, long, A[0]
        .RESULT long, A[0]
        MOVE    A[0], #welcome
        CALL    printf

.next:  MOVE    A[0], #request
        CALL    scanf
        CMP     #3
        JUMP    NE, .done
        MOVE    DP[0], #input
        MOVE    A[4], @DP[0].L++
        MOVE    A[5], @DP[0].L++
        MOVE    A[0], @DP[0].B
        CMP     #'+'
        JUMP    E, .add
        CMP     #'-'
        JUMP    E, .subtract
        CMP     #'*'
        JUMP    E, .multiply
        CMP     #'&'
        JUMP    E, .and
        MOVE    A[0], #unknown
        CALL    printf
        JUMP    .next

.add:   MOVE    A[0], A[4]
        ADD     A[5]
        JUMP    .print
.subtract:
        MOVE    A[0], A[4]
        SUB     A[5]
        JUMP    .print
.and:   MOVE    A[0], A[4]
        AND     A[5]
        JUMP    .print
.multiply:
        CALL    multiply

.print: MOVE    DP[0], #answer + 4
        MOVE    @DP[0].L++, A[0]
        MOVE    @DP[0].L++, A[0]
        MOVE    @DP[0].L, A[0]
        MOVE    DP[0], #count
        MOVE    A[0], @DP[0].L
        ADD     #1
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], #answer
        CALL    printf
        JUMP    .next

.done:  MOVE    A[0], #farewell
        CALL    printf
        MOVE    DP[0], #count
        MOVE    A[0], @DP[0].L
        RET
        .ENDFUNC

; A[0] := A[4] * A[5], bit by bit; changes both.
        .FUNC multiply
        .PARAM left, long, A[4]
        .PARAM right, long, A[5]
        .RESULT long, A[0]
        .LOCAL  product, long, A[3]
        MOVE    A[3], #0
        MOVE    LC[0], #32
.bit:   MOVE    A[0], A[5]
        SR
        MOVE    A[5], A[0]
        JUMP    NC, .skip
        MOVE    A[0], A[3]
        ADD     A[4]
        MOVE    A[3], A[0]
.skip:  MOVE    A[0], A[4]
        SLA
        MOVE    A[4], A[0]
        DJNZ    LC[0], .bit
        MOVE    A[0], A[3]
        RET
        .ENDFUNC

        .DATA
        .ALIGN  4
request:
        DL      scanFormat, input, input + 8, input + 4
welcome:
        DL      welcomeFormat, '>'
        .DOUBLE 1.25
answer: DL      answerFormat, 0, 0, 0
unknown:
        DL      unknownFormat
farewell:
        DL      farewellFormat, lastWord
count:  DL      0
scanFormat:
        .ASCIZ  "%d %c %d"
welcomeFormat:
        .ASCIZ  "calc %c version %.2f\n"
answerFormat:
        .ASCIZ  "= %d 0x%08x %#o\n"
unknownFormat:
        .ASCIZ  "?\n"
farewellFormat:
        .ASCIZ  "%s.\n"
lastWord:
        .ASCIZ  "bye"

        .BSS
        .ALIGN  4
input:  .SPACE  12
        .VAR    input, STRUCT task
        .VAR    count, long
        .VAR    request, ARRAY(text, 4)
        .VAR    answer, ARRAY(long, 4)
