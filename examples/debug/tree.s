; A binary tree of parts, ordered by their numbers. Both functions that walk it call themselves.

        .PUBLIC plant, weigh, root, parts

        .TYPE long, INT(4)
        .TYPE short, INT(2)
        .TYPE char, CHAR(1)

        .STRUCT part
        .FIELD  number, long
        .FIELD  weight, short
        .FIELD  kind, UNSIGNED(1), 48, 3
        .FIELD  painted, UNSIGNED(1), 51, 1
        .FIELD  level, UNSIGNED(1), 52, 4
        .FIELD  name, PTR(char), 64, 32
        .FIELD  left, PTR(STRUCT part)
        .FIELD  right, PTR(STRUCT part)
        .ENDSTRUCT

NUMBER      = 0                 ; byte offsets of the fields
WEIGHT      = 4
LEFT        = 12
RIGHT       = 16
PART_SIZE   = 20
PARTS       = 5

        .CODE
; Puts all parts into the tree, one by one.
        .FUNC plant, SAVED=0x30
        .LOCAL  count, long, A[4]
        .LOCAL  next, PTR(STRUCT part), A[5]
        PUSH    A[4]
        .ADJUST -4
        PUSH    A[5]
        .ADJUST -8
        MOVE    A[4], #PARTS
        MOVE    A[5], #parts
.next:  MOVE    DP[0], #root
        MOVE    A[0], @DP[0].L
        MOVE    A[1], A[5]
        CALL    insert
        MOVE    DP[0], #root
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], A[5]
        ADD     #PART_SIZE
        MOVE    A[5], A[0]
        MOVE    A[0], A[4]
        SUB     #1
        MOVE    A[4], A[0]
        JUMP    NZ, .next
        POP     A[5]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
        RET
        .ENDFUNC

; A[0] := the tree below A[0] with the part A[1] in it.
        .FUNC insert, SAVED=0x30
        .PARAM  tree, PTR(STRUCT part), A[4]
        .PARAM  added, PTR(STRUCT part), A[5]
        .RESULT PTR(STRUCT part), A[0]
        PUSH    A[4]
        .ADJUST -4
        PUSH    A[5]
        .ADJUST -8
        MOVE    A[4], A[0]
        MOVE    A[5], A[1]
        MOVE    A[0], A[4]
        JUMP    Z, .here
        MOVE    DP[0], A[4]             ; the numbers come first
        MOVE    DP[1], A[5]
        MOVE    A[0], @DP[1].L
        SUB     @DP[0].L
        JUMP    S, .left
        MOVE    A[0], A[4]
        ADD     #RIGHT
        JUMP    .below
.left:  MOVE    A[0], A[4]
        ADD     #LEFT
.below: PUSH    A[0]                    ; the place of the link to the smaller tree
        .ADJUST -12
        MOVE    DP[0], A[0]
        MOVE    A[0], @DP[0].L
        MOVE    A[1], A[5]
        CALL    insert
        POP     DP[0]
        .ADJUST -8
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], A[4]
        JUMP    .done
.here:  MOVE    A[0], A[5]
.done:  POP     A[5]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
        RET
        .ENDFUNC

; A[0] := the weight of the tree below A[0]. What its left part weighs waits on the stack.
        .FUNC weigh, FRAME=4, SAVED=0x10
        .PARAM  tree, PTR(STRUCT part), A[4]
        .RESULT long, A[0]
        .LOCAL  left, long, SP - 8
        PUSH    A[4]
        .ADJUST -4
        PUSH    #0
        .ADJUST -8
        MOVE    A[4], A[0]
        JUMP    Z, .done
        ADD     #LEFT
        MOVE    DP[0], A[0]
        MOVE    A[0], @DP[0].L
        CALL    weigh
        MOVE    DP[0], SP
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], A[4]
        ADD     #RIGHT
        MOVE    DP[0], A[0]
        MOVE    A[0], @DP[0].L
        CALL    weigh
        MOVE    DP[0], SP
        ADD     @DP[0].L
        MOVE    A[1], A[0]
        MOVE    A[0], A[4]
        ADD     #WEIGHT
        MOVE    DP[0], A[0]
        MOVE    A[0], A[1]
        ADD     @DP[0].W
.done:  POP     A[1]
        .ADJUST -4
        POP     A[4]
        .ADJUST 0
        RET
        .ENDFUNC

        .DATA
        .ALIGN  4
root:   DL      0
; Number, weight, kind with paint and level, the name, and two links.
parts:  DL      40
        DW      12, 0x2B
        DL      bolt, 0, 0
        DL      20
        DW      7, 0x11
        DL      nut, 0, 0
        DL      60
        DW      30, 0x3A
        DL      plate, 0, 0
        DL      10
        DW      3, 0x14
        DL      pin, 0, 0
        DL      50
        DW      8, 0x0D
        DL      ring, 0, 0
bolt:   .ASCIZ  "bolt"
nut:    .ASCIZ  "nut"
plate:  .ASCIZ  "plate"
pin:    .ASCIZ  "pin"
ring:   .ASCIZ  "ring"

        .VAR    root, PTR(STRUCT part)
        .VAR    parts, ARRAY(STRUCT part, PARTS)
