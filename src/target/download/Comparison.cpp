#include "target/download/Comparison.h"

#include "target/memory/TargetMemoryInterface.h"

namespace {

constexpr uint32_t ZeroPiece = 1024;
constexpr unsigned char Zeros[ZeroPiece] = {};

constexpr uint32_t DifferencePiece = 64;

} // namespace

bool memoryMatches(TargetMemoryInterface& memory, uint32_t address, uint32_t count, const unsigned char* data)
{
    if (data)
        return memory.verifyBytes(address, count, data);
    return forEachPiece(address, count, nullptr, [&](uint32_t at, uint32_t rest, const unsigned char*) {
        uint32_t piece = std::min(rest, ZeroPiece);
        return memory.verifyBytes(at, piece, Zeros) ? piece : 0;
    });
}

QString firstDifference(TargetMemoryInterface& memory, uint32_t address, uint32_t count,
                        const unsigned char* data)
{
    QString found = QStringLiteral("The memory answered differently when it was read again");
    forEachPiece(
        address, count, data, [&](uint32_t at, uint32_t rest, const unsigned char* from) -> uint32_t {
            unsigned char there[DifferencePiece];
            uint32_t piece = std::min(rest, DifferencePiece);
            memory.uploadBytes(at, piece, there);
            const unsigned char* expected = from ? from : Zeros;
            auto [differs, wanted] = std::mismatch(there, there + piece, expected);
            if (differs == there + piece)
                return piece;
            found = QString::asprintf("The first difference is at 0x%08X: 0x%02X expected, 0x%02X found",
                                      unsigned(at + (differs - there)), *wanted, *differs);
            return 0;
        });
    return found;
}
