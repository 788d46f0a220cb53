// The measured loop: CRC-32, bit by bit, over 255 bytes of data memory, for ever.
#pragma once

#include <cstdint>

inline constexpr uint16_t crcProgram[] = {
    0x0800,                                  //       MOVE AP, #0
    0x0BED,          0x0BB8, 0x0B83, 0x1920, //       MOVE A[1], #0xEDB88320
    0x0F00 | 0x3000,                         // round: MOVE DP[0], #0
    0x0BFF,          0x0BFF, 0x0BFF, 0x09FF, //       MOVE A[0], #0xFFFFFFFF
    0x6DFF,                                  //       MOVE LC[0], #255
    0xBA1F,                                  // byte: XOR @DP[0].B++
    0x7D08,                                  //       MOVE LC[1], #8
    0x8AAA,                                  // bit:  SR
    0x6C01,                                  //       JUMP NC, skip
    0xBA19,                                  //       XOR A[1]
    0x5DFC,                                  // skip: DJNZ LC[1], bit
    0x4DF9,                                  //       DJNZ LC[0], byte
    0x0CF2,                                  //       JUMP round
};
