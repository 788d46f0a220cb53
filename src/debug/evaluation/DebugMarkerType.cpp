#include "debug/evaluation/DebugMarkerType.h"

#include "debug/evaluation/ZOFFExpressionEvaluator.h"
#include "expression/ExpressionType.h"
#include "expression/ParserException.h"

QString DebugMarkerType::getValueAsString()
{
    if (kind == Register) {
        QString name = registerNumberToName(unsigned(address));
        return offset ? name + u'+' + QString::number(offset) : name;
    }
    uint64_t place = isMemory() ? location() : address + uint64_t(int64_t(offset));
    return QStringLiteral("0x%1").arg(place, int(2 * wordSize), 16, QLatin1Char('0'));
}

bool DebugMarkerType::equiv(const MarkerType* other) const
{
    auto* marker = dynamic_cast<const DebugMarkerType*>(other);
    return marker && kind == marker->kind && address == marker->address && bitSize == marker->bitSize &&
           bitOffset == marker->bitOffset && sizeInBytes == marker->sizeInBytes && offset == marker->offset;
}

bool DebugMarkerType::lt(const MarkerType* other) const
{
    auto* marker = dynamic_cast<const DebugMarkerType*>(other);
    if (!marker)
        return false;
    if (kind != marker->kind)
        return kind < marker->kind;
    if (address != marker->address)
        return kind == Register ? registerNumberLT(unsigned(address), unsigned(marker->address))
                                : address < marker->address;
    if (offset != marker->offset)
        return offset < marker->offset;
    return littleEndian ? bitOffset > marker->bitOffset : bitOffset < marker->bitOffset;
}

ExpressionType MyMarker::getValue()
{
    return evaluator->getValue(this);
}

void MyMarker::setValue(const QString& text)
{
    int number = evaluator->registerNameToNumber(text.toUtf8().constData());
    if (number < 0)
        throw ParserException("no such register");
    kind = Register;
    address = unsigned(number);
}

QString MyMarker::registerNumberToName(unsigned number) const
{
    return evaluator->registerNumberToName(number);
}

bool MyMarker::registerNumberLT(unsigned a, unsigned b) const
{
    return evaluator->registerNumberLT(a, b);
}
