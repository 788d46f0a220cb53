; A calculator: reads lines of a number, an operator and a number, such as "12 * 34", and prints the result
; in decimal, hexadecimal and octal. A line of another form ends it. The status is how many lines were
; worked out. With an argument it shows the formats instead: each row of a table reads a line with one
; format and prints what was read with another; the status is how many rows were read.

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

        .STRUCT row
        .FIELD  scan, text
        .FIELD  place, PTR(long)
        .FIELD  print, text
        .FIELD  instead, UNSIGNED(4)
        .FIELD  size, UNSIGNED(4)
        .FIELD  operation, UNSIGNED(4)
        .ENDSTRUCT

PRINTF      = 10                ; floating point numbers of 8 bytes
PRINTF_4    = 12                ; and of 4

        .CODE
        .FUNC main
        .PARAM argc, long, A[0]
        .RESULT long, A[0]
        CMP     #2                      ; the first argument stands for the program's name
        JUMP    E, formats
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

; A[0] := the number of rows of the table that were read.
        .FUNC formats, SAVED=0x30
        .RESULT long, A[0]
        .LOCAL  row, PTR(STRUCT row), A[4]
        .LOCAL  left, long, A[5]
        PUSH    A[4]
        .ADJUST -4
        PUSH    A[5]
        .ADJUST -8
        MOVE    A[4], #rows
.row:   MOVE    DP[0], A[4]
        MOVE    A[1], @DP[0].L++        ; the scan format, 0 behind the last row
        MOVE    A[0], A[1]
        JUMP    Z, .counts
        MOVE    A[2], @DP[0].L++        ; where the value goes
        MOVE    A[3], @DP[0].L++        ; the print format
        MOVE    DP[1], #scanned
        MOVE    @DP[1].L++, A[1]
        MOVE    @DP[1].L++, A[2]
        MOVE    @DP[1].L, #length
        MOVE    DP[1], #values
        MOVE    @DP[1].L++, A[3]
        MOVE    @DP[1].L++, @DP[0].L++  ; what is printed when the value goes elsewhere
        MOVE    @DP[1].L, #0
        MOVE    A[0], #scanned
        CALL    scanf
        CMP     #1
        JUMP    NE, .done

        MOVE    DP[0], A[4]             ; the value once for each conversion of the row
        MOVE    A[0], DP[0]
        ADD     #16
        MOVE    DP[0], A[0]
        MOVE    A[0], @DP[0].L++        ; its size
        MOVE    A[1], @DP[0].L++        ; the operation that prints
        MOVE    A[4], DP[0]
        ADD     #values + 4
        MOVE    DP[1], A[0]
        MOVE    DP[0], #values + 4
        MOVE    LC[0], #6
.copy:  MOVE    @DP[1].L++, @DP[0].L++
        DJNZ    LC[0], .copy
        MOVE    A[0], #values
        CALL    hostCall
        MOVE    DP[0], #count
        MOVE    A[0], @DP[0].L
        ADD     #1
        MOVE    @DP[0].L, A[0]
        JUMP    .row

.counts:
        MOVE    A[0], #counted          ; what was printed and read, counted on the way
        CALL    printf
        MOVE    DP[0], #values
        MOVE    @DP[0].L++, #countsFormat
        MOVE    DP[1], #printed
        MOVE    @DP[0].L++, @DP[1].L
        MOVE    DP[1], #length
        MOVE    @DP[0].L, @DP[1].L
        MOVE    A[0], #values
        CALL    printf
.done:  MOVE    DP[0], #count
        MOVE    A[0], @DP[0].L
        POP     A[5]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
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
word:   .ASCIZ  "%s"
inteFmt:
        .ASCIZ  "%i"
octFmt: .ASCIZ  "%o"
hexFmt: .ASCIZ  "%x"
uintFmt:
        .ASCIZ  "%u"
pointFmt:
        .ASCIZ  "%p"
shortFmt:
        .ASCIZ  "%hd"
byteFmt:
        .ASCIZ  "%hhu"
hugeFmt:
        .ASCIZ  "%lld"
charFmt:
        .ASCIZ  "%c"
lineFmt:
        .ASCIZ  "line %s %n"
percentFmt:
        .ASCIZ  "%d%%"
floatFmt:
        .ASCIZ  "%f"
doubleFmt:
        .ASCIZ  "%lf"
floatEFmt:
        .ASCIZ  "%e"
doubleGFmt:
        .ASCIZ  "%lG"
inteOut:
        .ASCIZ  "%d %i %u %x %X %o\n"
octOut: .ASCIZ  "%#o %#x %08x %-6d| %+d\n"
hexOut: .ASCIZ  "%x % d %'d %.8X %10u|\n"
uintOut:
        .ASCIZ  "%u %lu %ld %.3u\n"
pointOut:
        .ASCIZ  "%p\n"
shortOut:
        .ASCIZ  "%hd %hu %hhd %hhu\n"
hugeOut:
        .ASCIZ  "%lld %llu %llx\n"
charOut:
        .ASCIZ  "<%c> <%3c> <%-3c>\n"
wordOut:
        .ASCIZ  "<%s> <%.2s> <%8s> <%-8s>\n"
widthOut:
        .ASCIZ  "<%*d> <%-*d>\n"
floatOut:
        .ASCIZ  "%f %e %g\n"
floatOut2:
        .ASCIZ  "%.3f %E %+G\n"
countedFormat:
        .ASCIZ  "%s%n%%\n"
countsFormat:
        .ASCIZ  "%d printed, %d read\n"
        .ALIGN  4
rows:   DL      inteFmt, values + 4, inteOut, 0, 4, PRINTF
        DL      octFmt, values + 4, octOut, 0, 4, PRINTF
        DL      hexFmt, values + 4, hexOut, 0, 4, PRINTF
        DL      uintFmt, values + 4, uintOut, 0, 4, PRINTF
        DL      pointFmt, values + 4, pointOut, 0, 4, PRINTF
        DL      shortFmt, values + 4, shortOut, 0, 4, PRINTF
        DL      byteFmt, values + 4, widthOut, 0, 4, PRINTF
        DL      hugeFmt, values + 4, hugeOut, 0, 8, PRINTF
        DL      charFmt, values + 4, charOut, 0, 4, PRINTF
        DL      word, buffer, wordOut, buffer, 4, PRINTF
        DL      percentFmt, values + 4, inteOut, 0, 4, PRINTF
        DL      doubleFmt, values + 4, floatOut, 0, 8, PRINTF
        DL      doubleGFmt, values + 4, floatOut2, 0, 8, PRINTF
        DL      floatFmt, values + 4, floatOut, 0, 4, PRINTF_4
        DL      floatEFmt, values + 4, floatOut2, 0, 4, PRINTF_4
        DL      lineFmt, buffer, wordOut, buffer, 4, PRINTF
        DL      0
counted:
        DL      countedFormat, buffer, printed

        .BSS
        .ALIGN  4
values: .SPACE  40              ; a print format and its arguments
scanned:
        .SPACE  12
length: .SPACE  4               ; characters of the line when all of its format was read
printed:
        .SPACE  4
buffer: .SPACE  256
        .VAR    rows, ARRAY(STRUCT row, 16)
        .VAR    buffer, ARRAY(char, 256)
input:  .SPACE  12
        .VAR    input, STRUCT task
        .VAR    count, long
        .VAR    request, ARRAY(text, 4)
        .VAR    answer, ARRAY(long, 4)
