// Addresses in the protocol's messages: "0x" and the hexadecimal digits of a byte address, behind the name of
// a memory and a colon where it is not the one that is meant by itself: code for instructions, data for
// everything else.
#pragma once

#include <QString>

#include <cstdint>

class MemoryReference {
public:
    static constexpr const char* Code = "code";
    static constexpr const char* Data = "data";

    static QString text(uint32_t address);
    static QString text(const char* space, uint32_t address);

    // The address of an instruction, plus an offset in bytes. Throws RequestFailure for what is none.
    static uint32_t code(const QString& reference, int64_t offset);
    // Address and memory of a reference plus an offset; the memory is empty when none is named.
    MemoryReference(const QString& reference, int64_t offset);

    QString space;
    uint32_t address;
};
