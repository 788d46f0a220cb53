; A program to look into with the debugger: it fills a table of squares, plants a tree of parts and weighs it,
; turns texts around, and works out an average five calls deep. The exit status is the average weight.

        .LIBRARY console
        .PUBLIC main, flags, table, total, mode, ratio, precise, result

        .TYPE long, INT(4)

STRAY_ADDRESS = 0x7000000       ; no memory is there

        .CODE
        .FUNC main
        .RESULT long, A[0]
        MOVE    A[0], #welcome
        CALL    puts
        CALL    fill
        CALL    plant
        MOVE    DP[0], #root
        MOVE    A[0], @DP[0].L
        CALL    weigh
        MOVE    DP[0], #total
        MOVE    @DP[0].L, A[0]
        CALL    label
        CALL    report
        MOVE    DP[0], #result
        MOVE    @DP[0].L, A[0]
        CALL    wander
        MOVE    DP[0], #result
        MOVE    A[0], @DP[0].L
        RET
        .ENDFUNC

; table[n] := n * n for all elements; flags counts them.
        .FUNC fill, SAVED=0x30
        .LOCAL  index, long, A[4]
        .LOCAL  element, PTR(long), A[5]
        PUSH    A[4]
        .ADJUST -4
        PUSH    A[5]
        .ADJUST -8
        MOVE    A[4], #0
        MOVE    A[5], #table
.next:  MOVE    A[0], A[4]
        CALL    square
        MOVE    DP[1], A[5]
        MOVE    @DP[1].L++, A[0]
        MOVE    A[5], DP[1]
        MOVE    DP[0], #flags
        MOVE    A[0], @DP[0].L
        ADD     #1
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], A[4]
        ADD     #1
        MOVE    A[4], A[0]
        CMP     #6
        JUMP    NE, .next
        POP     A[5]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
        RET
        .ENDFUNC

; A[0] := side * side, by adding.
        .FUNC square
        .PARAM  side, long, A[1]
        .RESULT long, A[0]
        MOVE    A[1], A[0]
        JUMP    Z, .done
        MOVE    LC[0], A[0]
        MOVE    A[0], #0
.add:   ADD     A[1]
        DJNZ    LC[0], .add
.done:  RET
        .ENDFUNC

; What the debugger may ask for by setting mode: 1 reads where no memory is, 2 runs until mode is changed.
        .FUNC wander
        .LOCAL  wanted, long, A[1]
.again: MOVE    DP[0], #mode
        MOVE    A[0], @DP[0].L
        MOVE    A[1], A[0]
        CMP     #2
        JUMP    E, .again
        CMP     #1
        JUMP    NE, .done
        MOVE    DP[0], #STRAY_ADDRESS
        MOVE    A[0], @DP[0].L
.done:  RET
        .ENDFUNC

        .DATA
        .ALIGN  4
flags:  DL      0
mode:   DL      0
total:  DL      0
result: DL      0
ratio:  .FLOAT  0.75
precise:
        .DOUBLE -1234.5
welcome:
        .ASCIZ  "parts"

        .BSS
        .ALIGN  4
table:  .SPACE  24

        .VAR    flags, UNSIGNED(4)
        .VAR    mode, long
        .VAR    total, long
        .VAR    result, long
        .VAR    ratio, FLOAT(4)
        .VAR    precise, FLOAT(8)
        .VAR    table, ARRAY(long, 6)
