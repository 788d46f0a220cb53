; Repeats each line that is typed, with its number, until an empty one comes. The status is how many
; there were. With an argument it shows single characters instead, as their keys are pressed, until a "q".

        .LIBRARY console
        .PUBLIC main, lines

        .TYPE long, INT(4)
        .TYPE char, CHAR(1)

        .CODE
        .FUNC main
        .PARAM argc, long, A[0]
        .RESULT long, A[0]
        CMP     #2                      ; the first argument stands for the program's name
        JUMP    E, keys
.next:  MOVE    A[0], #line
        CALL    gets
        MOVE    DP[0], #line
        MOVE    A[0], @DP[0].B
        JUMP    Z, .done

        MOVE    DP[0], #lines
        MOVE    A[0], @DP[0].L
        ADD     #1
        MOVE    @DP[0].L, A[0]
        MOVE    DP[0], #block
        MOVE    @DP[0].L++, #format
        MOVE    @DP[0].L++, A[0]
        MOVE    @DP[0].L, #line
        MOVE    A[0], #block
        CALL    printf
        JUMP    .next

.done:  MOVE    DP[0], #lines
        MOVE    A[0], @DP[0].L
        RET
        .ENDFUNC

; A[0] := how many keys were pressed in front of the "q".
        .FUNC keys
        .RESULT long, A[0]
.next:  CALL    getkey
        CMP     #'q'
        JUMP    E, .done
        MOVE    DP[0], #block
        MOVE    @DP[0].L++, #keyFormat
        MOVE    @DP[0].L, A[0]
        MOVE    DP[0], #lines
        MOVE    A[0], @DP[0].L
        ADD     #1
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], #block
        CALL    printf
        JUMP    .next
.done:  MOVE    DP[0], #lines
        MOVE    A[0], @DP[0].L
        RET
        .ENDFUNC

        .DATA
lines:  DL      0
keyFormat:
        .ASCIZ  "<%hhu>"
format: .ASCIZ  "%d: %s\n"

        .BSS
        .ALIGN  4
block:  .SPACE  12
line:   .SPACE  1024
        .VAR    lines, long
        .VAR    format, ARRAY(char, 8)
        .VAR    block, ARRAY(long, 3)
        .VAR    line, ARRAY(char, 1024)
