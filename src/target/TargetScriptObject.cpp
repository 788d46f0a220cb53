// The script object "TargetInterface": its functions reach data memory and the target itself.

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/host/ScriptSystem.h"
#include "script/native/Builtin.h"
#include "support/Bracket.h"
#include "support/HException.h"
#include "support/QTx.h"
#include "target/TargetInterface.h"
#include "target/memory/TargetMemoryInterface.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <vector>

namespace {

// Elements of an array that a script asks for at once: each is a property of a script object.
constexpr uint32_t MaximumElements = 1 << 20;

constexpr unsigned DelayPiece = 50; // milliseconds between looks at a request to stop

enum Function {
    Reset,
    Go,
    PeekByte,
    PokeByte,
    PeekUint16,
    PokeUint16,
    PokeUint32,
    PeekUint32,
    PeekBytes,
    PokeBytes,
    PeekMultUint16,
    PokeMultUint16,
    PeekMultUint32,
    PokeMultUint32,
    EraseBytes,
    Delay,
    Message,
    Error,
    ReadBinary,
    SetDeviceTypeProperty,
};

constexpr Builtin Functions[] = {
    {"reset", "TargetInterface.prototype.reset", 0, false, Reset},
    {"go", "TargetInterface.prototype.go", 0, false, Go},
    {"peekByte", "TargetInterface.prototype.peekByte", 1, false, PeekByte},
    {"pokeByte", "TargetInterface.prototype.pokeByte", 2, false, PokeByte},
    {"peekUint16", "TargetInterface.prototype.peekUint16", 1, false, PeekUint16},
    {"pokeUint16", "TargetInterface.prototype.pokeUint16", 2, false, PokeUint16},
    {"pokeUint32", "TargetInterface.prototype.pokeUint32", 2, false, PokeUint32},
    {"peekUint32", "TargetInterface.prototype.peekUint32", 1, false, PeekUint32},
    {"peekBytes", "TargetInterface.prototype.peekBytes", 2, false, PeekBytes},
    {"pokeBytes", "TargetInterface.prototype.pokeBytes", 3, false, PokeBytes},
    {"peekMultUint16", "TargetInterface.prototype.peekMultUint16", 2, false, PeekMultUint16},
    {"pokeMultUint16", "TargetInterface.prototype.pokeMultUint16", 2, false, PokeMultUint16},
    {"peekMultUint32", "TargetInterface.prototype.peekMultUint32", 2, false, PeekMultUint32},
    {"pokeMultUint32", "TargetInterface.prototype.pokeMultUint32", 2, false, PokeMultUint32},
    {"eraseBytes", "TargetInterface.prototype.eraseBytes", 2, false, EraseBytes},
    {"delay", "TargetInterface.prototype.delay", 1, false, Delay},
    {"message", "TargetInterface.prototype.message", 1, false, Message},
    {"error", "TargetInterface.prototype.error", 1, false, Error},
    {"readBinary", "TargetInterface.prototype.readBinary", 1, false, ReadBinary},
    {"setDeviceTypeProperty", "TargetInterface.prototype.setDeviceTypeProperty", 1, false,
     SetDeviceTypeProperty},
};

uint32_t elementCount(ESContext* context, const ESValue& value)
{
    uint32_t count = context->toUint32(value);
    if (count > MaximumElements)
        throw HException(QStringLiteral("%1 elements are more than a script can read at once").arg(count));
    return count;
}

// A request to stop ends a long delay.
void delay(uint32_t milliseconds)
{
    while (milliseconds > 0 && !(scriptSystem && scriptSystem->stopRequested())) {
        uint32_t piece = std::min(milliseconds, DelayPiece);
        QTx::sleep(piece);
        milliseconds -= piece;
    }
}

// Undefined when the file cannot be opened.
ESValue readBinary(ESContext* context, const QString& name)
{
    std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(QFile::encodeName(name).constData(), "rb"), fclose);
    if (!file)
        return g_undefined;
    std::vector<unsigned char> bytes(MaximumElements + 1);
    bytes.resize(fread(bytes.data(), 1, bytes.size(), file.get()));
    if (ferror(file.get()))
        throw HException(QLatin1String("cannot read ") + name);
    if (bytes.size() > MaximumElements)
        throw HException(name + QLatin1String(" is larger than a script can read at once"));
    return ESValue(context->fromByteArray(bytes.data(), unsigned(bytes.size())));
}

void eraseBytes(TargetMemoryInterface* memory, uint32_t address, uint32_t count)
{
    memory->eraseBytesBegin();
    Bracket bracket([memory] { memory->eraseBytesEnd(); });
    memory->eraseBytes(address, count, nullptr, nullptr);
    bracket.end();
}

} // namespace

ESObject* TargetInterface::installScriptObject(ESContext* context)
{
    ESObject* object = context->mkobj(context->objectPrototype(), context->objectClass());
    context->valinstant(context->globalObject(), ESProperty::DontEnum,
                        ESStringPool::intern(QStringLiteral("TargetInterface")), ESValue(object));
    for (const Builtin& row : Functions)
        biinst(context, object, row, context->functionPrototype(), this);
    return object;
}

void TargetInterface::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    auto number = [&](unsigned index) { return context->toUint32(biarg(argc, argv, index)); };
    auto text = [&] { return context->toString(biarg(argc, argv, 0)); };
    int id = function->builtinId();
    if (id < 0 || id >= int(std::size(Functions))) {
        ESClass::call(context, function, self, argc, argv);
        return;
    }
    if (id <= EraseBytes && !dataMemory())
        throw HException("Target is not connected");
    ESValue result = g_undefined;
    switch (id) {
    case Reset: reset(false, false); break;
    case Go: go(); break;
    case PeekByte: result = ESValue(double(dataMemory()->peekByte(number(0)))); break;
    case PokeByte: dataMemory()->pokeByte(number(0), uint8_t(number(1))); break;
    case PeekUint16: result = ESValue(double(dataMemory()->peekUint16(number(0)))); break;
    case PokeUint16: dataMemory()->pokeUint16(number(0), uint16_t(number(1))); break;
    case PokeUint32: dataMemory()->pokeUint32(number(0), number(1)); break;
    case PeekUint32: result = ESValue(double(dataMemory()->peekUint32(number(0)))); break;
    case PeekBytes: {
        std::vector<unsigned char> bytes(elementCount(context, biarg(argc, argv, 1)));
        dataMemory()->peekBytes(number(0), unsigned(bytes.size()), bytes.data());
        result = ESValue(context->fromByteArray(bytes.data(), unsigned(bytes.size())));
        break;
    }
    case PokeBytes: {
        unsigned count = 0;
        auto bytes = context->toByteArray(biarg(argc, argv, 1), count);
        dataMemory()->pokeBytes(number(0), count, bytes.get());
        break;
    }
    case PeekMultUint16: {
        std::vector<unsigned short> values(elementCount(context, biarg(argc, argv, 1)));
        dataMemory()->peekMultUint16(number(0), unsigned(values.size()), values.data());
        result = ESValue(context->fromUint16Array(values.data(), unsigned(values.size())));
        break;
    }
    case PokeMultUint16: {
        unsigned count = 0;
        auto values = context->toUint16Array(biarg(argc, argv, 1), count);
        dataMemory()->pokeMultUint16(number(0), count, values.get());
        break;
    }
    case PeekMultUint32: {
        std::vector<unsigned> values(elementCount(context, biarg(argc, argv, 1)));
        dataMemory()->peekMultUint32(number(0), unsigned(values.size()), values.data());
        result = ESValue(context->fromWordArray(values.data(), unsigned(values.size())));
        break;
    }
    case PokeMultUint32: {
        unsigned count = 0;
        auto values = context->toWordArray(biarg(argc, argv, 1), count);
        dataMemory()->pokeMultUint32(number(0), count, values.get());
        break;
    }
    case EraseBytes: ::eraseBytes(dataMemory(), number(0), number(1)); break;
    case Delay: delay(number(0)); break;
    case Message: m_helpers->message(text()); break;
    case Error: {
        QString what = text();
        m_helpers->message(QLatin1String("error: ") + what);
        throw HException(what);
    }
    case ReadBinary: result = readBinary(context, text()); break;
    case SetDeviceTypeProperty: setDeviceId(text()); break;
    }
    argv[0] = result;
}
