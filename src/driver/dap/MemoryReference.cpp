#include "driver/dap/MemoryReference.h"

#include "driver/dap/RequestFailure.h"

#include <limits>

QString MemoryReference::text(uint32_t address)
{
    return QLatin1String("0x") + QString::number(address, 16);
}

QString MemoryReference::text(const char* space, uint32_t address)
{
    return QLatin1String(space) + QLatin1Char(':') + text(address);
}

MemoryReference::MemoryReference(const QString& reference, int64_t offset)
{
    qsizetype colon = reference.indexOf(QLatin1Char(':'));
    space = reference.left(std::max<qsizetype>(colon, 0));
    QString digits = reference.mid(colon + 1);
    bool good = false;
    // In C notation, as users type it.
    uint64_t value = digits.toULongLong(&good, 0);
    if (!good)
        throw RequestFailure(QStringLiteral("\"%1\" is no address").arg(reference));
    constexpr uint64_t End = uint64_t(std::numeric_limits<uint32_t>::max()) + 1;
    if (value >= End || offset <= -int64_t(End) || offset >= int64_t(End) || int64_t(value) + offset < 0 ||
        int64_t(value) + offset >= int64_t(End))
        throw RequestFailure(QStringLiteral("\"%1\" is outside of all memory").arg(reference));
    address = uint32_t(int64_t(value) + offset);
}

uint32_t MemoryReference::code(const QString& reference, int64_t offset)
{
    return MemoryReference(reference, offset).address;
}
