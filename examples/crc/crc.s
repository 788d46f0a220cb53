; Computes the CRC-32 of a text, bit by bit, without any service of the host but the exit. The status is 0
; when the result is the known one.

        .PUBLIC main, crc, result

        .TYPE long, UNSIGNED(4)
        .TYPE byte, UNSIGNED(1)

POLYNOMIAL = 0xEDB88320
EXPECTED   = 0xCBF43926         ; of the digits from 1 to 9

        .CODE
        .FUNC main
        .RESULT long, A[0]
        MOVE    DP[0], #digits
        MOVE    LC[0], #9
        CALL    crc
        MOVE    DP[0], #result
        MOVE    @DP[0].L, A[0]
        CMP     #EXPECTED
        MOVE    A[0], #0
        JUMP    E, .same
        MOVE    A[0], #1
.same:  RET
        .ENDFUNC

; A[0] := the CRC-32 of LC[0] bytes from DP[0] on; changes A[1] and LC[1].
        .FUNC crc
        .PARAM address, PTR(byte), DP[0]
        .PARAM length, UNSIGNED(2), LC[0]
        .RESULT long, A[0]
        MOVE    A[1], #POLYNOMIAL
        MOVE    A[0], #-1
.byte:  XOR     @DP[0].B++
        MOVE    LC[1], #8
.bit:   SR
        JUMP    NC, .skip
        XOR     A[1]
.skip:  DJNZ    LC[1], .bit
        DJNZ    LC[0], .byte
        CPL
        RET
        .ENDFUNC

        .DATA
digits: .ASCII  "123456789"
        .BSS
        .ALIGN  4
result: .SPACE  4
        .VAR    digits, ARRAY(byte, 9)
        .VAR    result, long
