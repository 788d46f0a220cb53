; Repeats each line that is typed, with its number, until an empty one comes. The status is how many
; there were.

        .LIBRARY console
        .PUBLIC main, lines

        .TYPE long, INT(4)
        .TYPE char, CHAR(1)

        .CODE
        .FUNC main
        .RESULT long, A[0]
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

        .DATA
lines:  DL      0
format: .ASCIZ  "%d: %s\n"

        .BSS
        .ALIGN  4
block:  .SPACE  12
line:   .SPACE  1024
        .VAR    lines, long
        .VAR    format, ARRAY(char, 8)
        .VAR    block, ARRAY(long, 3)
        .VAR    line, ARRAY(char, 1024)
