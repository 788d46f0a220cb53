; Works on files of the host: writes one, finds a place in it, reads it back, renames and removes it. The
; status is 0 when each step answers what it should, and else the number of the step that did not.

        .LIBRARY console
        .PUBLIC main, step

        .TYPE long, INT(4)
        .TYPE char, CHAR(1)
        .TYPE text, PTR(char)

; Arguments of the host's operations, as they stand in a block.
        .STRUCT request, 16
        .FIELD  first, UNSIGNED(4)
        .FIELD  second, UNSIGNED(4)
        .FIELD  third, UNSIGNED(4)
        .FIELD  fourth, UNSIGNED(4)
        .ENDSTRUCT

FOPEN  = 6
FCLOSE = 8
FGETS  = 18
FPUTS  = 20
FWRITE = 34
FSEEK  = 35
LENGTH = 38
REMOVE = 78
RENAME = 79

        .CODE
; A[0] := the answer to operation A[1] with the block of A[4], A[5], A[6], A[7].
        .FUNC call
        .PARAM operation, long, A[1]
        .PARAM arguments, STRUCT request, A[4]
        .RESULT long, A[0]
        MOVE    DP[0], #block
        MOVE    @DP[0].L++, A[4]
        MOVE    @DP[0].L++, A[5]
        MOVE    @DP[0].L++, A[6]
        MOVE    @DP[0].L, A[7]
        MOVE    DP[0], #step            ; one more step done
        MOVE    A[0], @DP[0].L
        ADD     #1
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], #block
        JUMP    hostCall
        .ENDFUNC

; A[0] := the answer to operation A[1] with the argument A[4].
        .FUNC callDirect
        .PARAM operation, long, A[1]
        .PARAM argument, long, A[4]
        .RESULT long, A[0]
        MOVE    DP[0], #step
        MOVE    A[0], @DP[0].L
        ADD     #1
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], A[4]
        JUMP    hostCall
        .ENDFUNC

        .FUNC main
        .RESULT long, A[0]
        .LOCAL  handle, long, A[8]
        MOVE    A[4], #name             ; 1: open
        MOVE    A[5], #mode
        MOVE    A[1], #FOPEN
        CALL    call
        CMP     #-1
        JUMP    E, .failed
        MOVE    A[8], A[0]

        MOVE    A[4], #content          ; 2: write a text
        MOVE    A[5], A[8]
        MOVE    A[1], #FPUTS
        CALL    call
        JUMP    S, .failed

        MOVE    A[4], #digits           ; 3: write ten bytes as five items
        MOVE    A[5], #2
        MOVE    A[6], #5
        MOVE    A[7], A[8]
        MOVE    A[1], #FWRITE
        CALL    call
        CMP     #5
        JUMP    NE, .failed

        MOVE    A[4], A[8]              ; 4: the length tells of both
        MOVE    A[1], #LENGTH
        CALL    callDirect
        CMP     #21
        JUMP    NE, .failed

        MOVE    A[4], A[8]              ; 5: to the second line
        MOVE    A[5], #11
        MOVE    A[6], #0
        MOVE    A[1], #FSEEK
        CALL    call
        JUMP    NZ, .failed

        MOVE    A[4], #buffer           ; 6: read the digits back
        MOVE    A[5], #16
        MOVE    A[6], A[8]
        MOVE    A[1], #FGETS
        CALL    call
        JUMP    NZ, .failed
        MOVE    A[0], #buffer
        CALL    puts

        MOVE    A[4], A[8]              ; 7: close
        MOVE    A[1], #FCLOSE
        CALL    callDirect
        JUMP    NZ, .failed

        MOVE    A[4], #name             ; 8: rename
        MOVE    A[5], #newName
        MOVE    A[1], #RENAME
        CALL    call
        JUMP    NZ, .failed

        MOVE    A[4], #name             ; 9: the old name is gone
        MOVE    A[5], #readMode
        MOVE    A[1], #FOPEN
        CALL    call
        CMP     #-1
        JUMP    NE, .failed

        MOVE    A[4], #newName          ; 10: remove
        MOVE    A[1], #REMOVE
        CALL    call
        JUMP    NZ, .failed

        MOVE    A[0], #passed
        CALL    puts
        MOVE    A[0], #0
        RET

.failed:
        MOVE    DP[0], #block
        MOVE    @DP[0].L++, #failure
        MOVE    DP[1], #step
        MOVE    @DP[0].L, @DP[1].L
        MOVE    A[0], #block
        CALL    printf
        MOVE    DP[0], #step
        MOVE    A[0], @DP[0].L
        RET
        .ENDFUNC

        .DATA
step:   DL      0
name:   .ASCIZ  "qburn-scratch.txt"
newName:
        .ASCIZ  "qburn-renamed.txt"
mode:   .ASCIZ  "w+"
readMode:
        .ASCIZ  "r"
content:
        .ASCIZ  "first line\n"
digits: .ASCII  "0123456789"
passed: .ASCIZ  "all steps passed"
failure:
        .ASCIZ  "step %d failed\n"

        .BSS
        .ALIGN  4
block:  .SPACE  16
buffer: .SPACE  16
        .VAR    step, long
        .VAR    block, STRUCT request
        .VAR    buffer, ARRAY(char, 16)
