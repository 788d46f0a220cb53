; COUNT requests that ask only for an answer.
        .LIBRARY console
        .PUBLIC main
KBHIT   = 43
        .CODE
        .FUNC main
        MOVE    A[5], #COUNT
        MOVE    A[0], #COUNT
        JUMP    Z, .done
.next:  MOVE    A[1], #KBHIT
        CALL    hostCall
        MOVE    A[0], A[5]
        SUB     #1
        MOVE    A[5], A[0]
        JUMP    NZ, .next
.done:  MOVE    A[0], #0
        RET
        .ENDFUNC
