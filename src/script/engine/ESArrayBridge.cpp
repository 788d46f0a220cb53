// Arrays from and to buffers of the host.
#include "script/engine/ESContext.h"

template <typename In> ESObject* ESContext::fromBuffer(const In* data, unsigned count)
{
    if (count > ESLimits::BridgeElements)
        throwRangeError(QStringLiteral("array too long"));
    ESArray* array = newArray(0, nullptr);
    array->reserveElements(count);
    for (unsigned i = 0; i < count; ++i)
        array->insert(i, ESValue(double(data[i])));
    array->slot(0).setValue(ESValue(double(count)));
    return array;
}

template <typename Out> std::unique_ptr<Out[]> ESContext::toBuffer(const ESValue& value, unsigned& count)
{
    count = 0;
    if (!isarray(value))
        throwTypeError(QStringLiteral("array argument expected"));
    unsigned length = toUint32(get(value.object(), g_lengthString));
    if (length > ESLimits::BridgeElements)
        throwRangeError(QStringLiteral("array too long"));
    auto buffer = std::make_unique<Out[]>(length);
    for (unsigned i = 0; i < length; ++i)
        buffer[i] = Out(toUint32(getIndex(value.object(), i)));
    count = length;
    return buffer;
}

ESObject* ESContext::fromByteArray(const unsigned char* data, unsigned count)
{
    return fromBuffer(data, count);
}

ESObject* ESContext::fromUint16Array(const unsigned short* data, unsigned count)
{
    return fromBuffer(data, count);
}

ESObject* ESContext::fromUint32Array(const unsigned long* data, unsigned count)
{
    return fromBuffer(data, count);
}

ESObject* ESContext::fromWordArray(const unsigned* data, unsigned count)
{
    return fromBuffer(data, count);
}

std::unique_ptr<unsigned char[]> ESContext::toByteArray(const ESValue& value, unsigned& count)
{
    return toBuffer<unsigned char>(value, count);
}

std::unique_ptr<unsigned short[]> ESContext::toUint16Array(const ESValue& value, unsigned& count)
{
    return toBuffer<unsigned short>(value, count);
}

std::unique_ptr<unsigned long[]> ESContext::toUint32Array(const ESValue& value, unsigned& count)
{
    return toBuffer<unsigned long>(value, count);
}

std::unique_ptr<unsigned[]> ESContext::toWordArray(const ESValue& value, unsigned& count)
{
    return toBuffer<unsigned>(value, count);
}
