; Greets, prints its arguments, and ends with their number as status.

        .LIBRARY console
        .PUBLIC main, greeted

        .TYPE long, INT(4)
        .TYPE char, CHAR(1)
        .TYPE text, PTR(char)

        .CODE
        .FUNC main, SAVED=0x70
        .PARAM argc, long, A[4]
        .PARAM argv, PTR(text), A[5]
        .RESULT long, A[0]
        PUSH    A[4]
        .ADJUST -4
        PUSH    A[5]
        .ADJUST -8
        PUSH    A[6]
        .ADJUST -12
        MOVE    A[4], A[0]
        MOVE    A[5], A[1]

        MOVE    A[0], #greeting
        CALL    puts
        MOVE    DP[0], #greeted
        MOVE    @DP[0].L, #1

        .BLOCK
        .LOCAL  index, long, A[6]
        MOVE    A[6], #0
.next:  MOVE    A[0], A[6]
        CMP     A[4]
        JUMP    E, .done
        MOVE    DP[0], A[5]             ; the address of the next argument
        MOVE    A[1], @DP[0].L++
        MOVE    A[5], DP[0]
        MOVE    DP[0], #block
        MOVE    @DP[0].L++, #format
        MOVE    @DP[0].L++, A[6]
        MOVE    @DP[0].L, A[1]
        MOVE    A[0], #block
        CALL    printf
        MOVE    A[0], A[6]
        ADD     #1
        MOVE    A[6], A[0]
        JUMP    .next
        .ENDBLOCK

.done:  MOVE    A[0], A[4]
        POP     A[6]
        .ADJUST -8
        POP     A[5]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
        RET
        .ENDFUNC

        .DATA
greeting:
        .ASCIZ  "Hello, world."
format: .ASCIZ  "argument %d: %s\n"

        .BSS
        .ALIGN  4
block:  .SPACE  12
greeted:
        .SPACE  4
        .VAR    greeting, ARRAY(char, 14)
        .VAR    format, ARRAY(char, 17)
        .VAR    block, ARRAY(long, 3)
        .VAR    greeted, long
