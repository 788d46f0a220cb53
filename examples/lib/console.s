; Console output and input by the host. Texts end with a zero byte; addresses are in data memory.

        .PUBLIC puts, putchar, printf, scanf, gets, getchar, getkey

        .TYPE long, INT(4)
        .TYPE char, CHAR(1)
        .TYPE text, PTR(char)

        .CODE
; Prints the text at A[0] and a new line.
        .FUNC puts
        .PARAM line, text, A[0]
        MOVE    A[1], #24
        JUMP    hostCall
        .ENDFUNC

; Prints the character in A[0].
        .FUNC putchar
        .PARAM character, long, A[0]
        MOVE    A[1], #23
        JUMP    hostCall
        .ENDFUNC

; Prints by the block at A[0]: the address of a format, then its arguments, 4 bytes each and 8 for a
; floating point number. Answers the number of characters.
        .FUNC printf
        .PARAM block, PTR(text), A[0]
        .RESULT long, A[0]
        MOVE    A[1], #10
        JUMP    hostCall
        .ENDFUNC

; Reads a line by the block at A[0]: the address of a format, then addresses of what it reads. Answers
; the number of items.
        .FUNC scanf
        .PARAM block, PTR(text), A[0]
        .RESULT long, A[0]
        MOVE    A[1], #14
        JUMP    hostRead
        .ENDFUNC

; Reads a line into the buffer at A[0], which must be long enough.
        .FUNC gets
        .PARAM buffer, text, A[0]
        MOVE    A[1], #22
        JUMP    hostRead
        .ENDFUNC

; A[0] := the next character of the lines that were typed; waits for a whole line.
        .FUNC getchar
        .RESULT long, A[0]
        MOVE    A[1], #21
        JUMP    hostRead
        .ENDFUNC

; A[0] := the next character, as soon as its key is pressed.
        .FUNC getkey
        .RESULT long, A[0]
        MOVE    A[1], #44
        JUMP    hostRead
        .ENDFUNC
