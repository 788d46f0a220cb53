; The average weight, by calls that stand five deep below main: report, summarise, average, divide, subtract.

        .PUBLIC report

        .TYPE long, INT(4)

        .STRUCT summary
        .FIELD  weight, long
        .FIELD  count, long
        .FIELD  average, long
        .ENDSTRUCT

PARTS       = 5

        .CODE
; A[0] := the average weight of the parts.
        .FUNC report
        .RESULT long, A[0]
        MOVE    DP[0], #total
        MOVE    A[0], @DP[0].L
        MOVE    A[1], #PARTS
        CALL    summarise
        RET
        .ENDFUNC

; Fills in the summary, and gives back the average.
        .FUNC summarise
        .PARAM  weight, long, A[0]
        .PARAM  count, long, A[1]
        .RESULT long, A[0]
        MOVE    DP[0], #figures
        MOVE    @DP[0].L++, A[0]
        MOVE    @DP[0].L, A[1]
        MOVE    A[0], #figures
        CALL    average
        MOVE    DP[0], #figures + 8
        MOVE    @DP[0].L, A[0]
        RET
        .ENDFUNC

        .FUNC average
        .PARAM  of, PTR(STRUCT summary), A[2]
        .RESULT long, A[0]
        MOVE    A[2], A[0]
        MOVE    DP[0], A[0]
        MOVE    A[3], @DP[0].L++
        MOVE    A[1], @DP[0].L
        MOVE    A[0], A[3]
        CALL    divide
        RET
        .ENDFUNC

; A[0] := A[0] / A[1], for what is not negative.
        .FUNC divide, SAVED=0x70
        .PARAM  dividend, long, A[4]
        .PARAM  divisor, long, A[5]
        .RESULT long, A[0]
        .LOCAL  quotient, long, A[6]
        PUSH    A[4]
        .ADJUST -4
        PUSH    A[5]
        .ADJUST -8
        PUSH    A[6]
        .ADJUST -12
        MOVE    A[4], A[0]
        MOVE    A[5], A[1]
        MOVE    A[6], #0
.again: MOVE    A[0], A[4]
        MOVE    A[1], A[5]
        CALL    subtract
        JUMP    S, .done
        MOVE    A[4], A[0]
        MOVE    A[0], A[6]
        ADD     #1
        MOVE    A[6], A[0]
        JUMP    .again
.done:  MOVE    A[0], A[6]
        POP     A[6]
        .ADJUST -8
        POP     A[5]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
        RET
        .ENDFUNC

; A[0] := A[0] - A[1], with the sign to jump by.
        .FUNC subtract
        .PARAM  from, long, A[0]
        .PARAM  what, long, A[1]
        .RESULT long, A[0]
        SUB     A[1]
        RET
        .ENDFUNC

        .BSS
        .ALIGN  4
figures:
        .SPACE  12
        .VAR    figures, STRUCT summary
