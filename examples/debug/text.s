; Texts: their length, copies of them, and how they read from the end.

        .PUBLIC label, buffer, names, primes, motto

        .TYPE long, INT(4)
        .TYPE char, CHAR(1)
        .TYPE text, PTR(char)

CODE_WINDOW = 0x1000000         ; here data pointers read the code memory
PRIMES      = 6

        .CODE
; Copies the first name to the buffer, turns it around there, and puts the sum of the primes behind it.
        .FUNC label
        MOVE    DP[0], #names
        MOVE    A[1], @DP[0].L
        MOVE    A[0], #buffer
        CALL    copy
        MOVE    A[0], #buffer
        CALL    reverse
        CALL    sumPrimes
        MOVE    DP[0], #sum
        MOVE    @DP[0].L, A[0]
        RET
        .ENDFUNC

; A[0] := the number of characters of a text.
        .FUNC length
        .PARAM  start, text, A[1]
        .RESULT long, A[0]
        .LOCAL  at, text, A[2]
        MOVE    A[1], A[0]
        MOVE    DP[0], A[0]
.next:  MOVE    A[0], @DP[0].B++
        MOVE    A[2], DP[0]
        JUMP    NZ, .next
        MOVE    A[0], A[2]
        SUB     A[1]
        SUB     #1
        RET
        .ENDFUNC

; Copies the text A[1] to A[0], with the zero at its end.
        .FUNC copy
        .PARAM  to, text, A[2]
        .PARAM  from, text, A[1]
        MOVE    A[2], A[0]
        MOVE    DP[1], A[0]
        MOVE    DP[0], A[1]
.next:  MOVE    A[0], @DP[0].B++
        MOVE    @DP[1].B++, A[0]
        JUMP    NZ, .next
        RET
        .ENDFUNC

; Turns a text around where it lies.
        .FUNC reverse, SAVED=0x30
        .PARAM  what, text, A[4]
        .LOCAL  last, text, A[5]
        PUSH    A[4]
        .ADJUST -4
        PUSH    A[5]
        .ADJUST -8
        MOVE    A[4], A[0]
        CALL    length
        JUMP    Z, .done
        ADD     A[4]
        SUB     #1
        MOVE    A[5], A[0]
.swap:  MOVE    A[0], A[5]              ; done where the ends have met
        SUB     A[4]
        JUMP    Z, .done
        JUMP    S, .done
        MOVE    DP[0], A[4]
        MOVE    DP[1], A[5]
        MOVE    A[0], @DP[0].B
        MOVE    A[1], @DP[1].B
        MOVE    @DP[0].B, A[1]
        MOVE    @DP[1].B, A[0]
        MOVE    A[0], A[4]
        ADD     #1
        MOVE    A[4], A[0]
        MOVE    A[0], A[5]
        SUB     #1
        MOVE    A[5], A[0]
        JUMP    .swap
.done:  POP     A[5]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
        RET
        .ENDFUNC

; A[0] := the sum of the primes, which lie in code memory.
        .FUNC sumPrimes
        .RESULT long, A[0]
        .LOCAL  left, long, LC[0]
        MOVE    DP[0], #CODE_WINDOW + primes
        MOVE    LC[0], #PRIMES
        MOVE    A[0], #0
.next:  ADD     @DP[0].W++
        DJNZ    LC[0], .next
        RET
        .ENDFUNC

        .CONST
        .ALIGN  2
primes: DW      2, 3, 5, 7, 11, 13
motto:  .ASCIZ  "read only"

        .DATA
        .ALIGN  4
names:  DL      bolt, nut, 0
sum:    DL      0
bolt:   .ASCIZ  "hexagon"
nut:    .ASCIZ  "wing nut"

        .BSS
        .ALIGN  4
buffer: .SPACE  16

        .VAR    primes, CODE(ARRAY(UNSIGNED(2), PRIMES))
        .VAR    motto, CODE(ARRAY(char, 10))
        .VAR    names, ARRAY(text, 3)
        .VAR    sum, long
        .VAR    buffer, ARRAY(char, 16)
