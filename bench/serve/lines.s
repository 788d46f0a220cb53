; COUNT lines of 41 characters.
        .LIBRARY console
        .PUBLIC main
        .CODE
        .FUNC main
        MOVE    A[5], #COUNT
        MOVE    A[0], #COUNT
        JUMP    Z, .done
.next:  MOVE    A[0], #text
        CALL    puts
        MOVE    A[0], A[5]
        SUB     #1
        MOVE    A[5], A[0]
        JUMP    NZ, .next
.done:  MOVE    A[0], #0
        RET
        .ENDFUNC
        .DATA
text:   .ASCIZ "0123456789012345678901234567890123456789"
