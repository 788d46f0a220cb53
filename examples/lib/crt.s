; Startup of the example programs, and the way to the host. It comes first on kvas's command line, so
; that `start` is at address 0, where the processor begins.
;
; Registers: AP stays 0, so ACC is A[0]. Arguments and results go in A[0] to A[3], which a call may change
; together with DP[0], DP[1] and LC[0]; A[4] to A[15] belong to the caller. The stack grows down from the
; end of the RAM; an entry takes four bytes.

        .PUBLIC _RAM_Start_Address, _RAM_Size, _dbgCntrlWord, _dbgCommWord
        .PUBLIC start, exit, hostCall, hostRead

_RAM_Start_Address = 0x8000     ; above all code, so that an address means one thing only
_RAM_Size          = 0x8000

CODE_WINDOW = 0x1000000         ; here data pointers read the code memory
NO_INPUT    = -2                ; the host's answer while nothing was typed
OP_EXIT     = 46
OP_ARGS     = 84

ARGS_SIZE   = 512

        .TYPE long, INT(4)
        .TYPE word, UNSIGNED(4)

        .CODE
        .FUNC start
        MOVE    SP, #_RAM_Start_Address + _RAM_Size
        MOVE    AP, #0
        MOVE    APC, #0

        MOVE    A[0], #SIZEOF(data)     ; variables with a first value
        JUMP    Z, .zero
        MOVE    LC[0], A[0]
        MOVE    DP[0], #CODE_WINDOW + dataImage
        MOVE    DP[1], #STARTOF(data)
.copy:  MOVE    @DP[1].B++, @DP[0].B++
        DJNZ    LC[0], .copy

.zero:  MOVE    A[0], #SIZEOF(bss)      ; the others begin with 0
        JUMP    Z, .args
        MOVE    LC[0], A[0]
        MOVE    DP[1], #STARTOF(bss)
.clear: MOVE    @DP[1].B++, #0
        DJNZ    LC[0], .clear

.args:  MOVE    DP[0], #argsBlock       ; the program's arguments
        MOVE    @DP[0].L++, #argsBuffer
        MOVE    @DP[0].L, #ARGS_SIZE
        MOVE    A[0], #argsBlock
        MOVE    A[1], #OP_ARGS
        CALL    hostCall                ; A[0]: how many
        MOVE    A[1], #argsBuffer       ; their addresses, with a 0 behind the last
        CALL    main
        CALL    exit
        .ENDFUNC

; Ends the program with the status in A[0]. The host stops the processor.
        .FUNC exit
        .PARAM status, long, A[0]
        MOVE    DP[0], #_dbgCommWord
        MOVE    @DP[0].L, A[0]
        MOVE    DP[0], #_dbgCntrlWord
        MOVE    @DP[0].L, #OP_EXIT
.ended: JUMP    .ended
        .ENDFUNC

; A[0] := what the host answers to operation A[1] with the argument A[0].
        .FUNC hostCall
        .PARAM argument, long, A[0]
        .PARAM operation, long, A[1]
        .RESULT long, A[0]
        MOVE    DP[0], #_dbgCommWord
        MOVE    @DP[0].L, A[0]
        MOVE    DP[0], #_dbgCntrlWord
        MOVE    @DP[0].L, A[1]
.wait:  MOVE    A[0], @DP[0].L
        JUMP    NZ, .wait
        MOVE    DP[0], #_dbgCommWord
        MOVE    A[0], @DP[0].L
        RET
        .ENDFUNC

; The same for what reads from the console: asks again while there is no input.
        .FUNC hostRead
        .PARAM argument, long, A[2]
        .PARAM operation, long, A[1]
        .RESULT long, A[0]
        MOVE    A[2], A[0]
.again: MOVE    A[0], A[2]
        CALL    hostCall
        CMP     #NO_INPUT
        JUMP    E, .again
        RET
        .ENDFUNC

; The first values of the variables, kept in code memory.
        .CONST
dataImage:
        .INIT   "data"

        .DATA
        .BSS
        .ALIGN  4
_dbgCntrlWord:
        .SPACE  4
_dbgCommWord:
        .SPACE  4
argsBlock:
        .SPACE  8
argsBuffer:
        .SPACE  ARGS_SIZE
        .VAR    _dbgCntrlWord, word
        .VAR    _dbgCommWord, word
        .VAR    argsBlock, ARRAY(word, 2)
        .VAR    argsBuffer, ARRAY(UNSIGNED(1), 512)
