// The records that build types.
#include "support/HException.h"
#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFReaderInline.h" // the steps of the reader
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"
#include "zoff/limits.h"

ZOFFStrucType* ZOFFReader::popStruc()
{
    Entry entry = popEntry();
    auto* type = entry.kind == Entry::Object && entry.object && entry.object->kind() == ZOFFKind::Type
                     ? static_cast<ZOFFType*>(entry.object)
                     : nullptr;
    if (!type || !type->isStruc())
        throw HException("bad object file: operand type error (structure expected)");
    return static_cast<ZOFFStrucType*>(type);
}

ZOFFFunctionType* ZOFFReader::popFunction()
{
    Entry entry = popEntry();
    auto* type = entry.kind == Entry::Object && entry.object && entry.object->kind() == ZOFFKind::Type
                     ? static_cast<ZOFFType*>(entry.object)
                     : nullptr;
    if (!type || !type->isFunction())
        throw HException("bad object file: operand type error (function type expected)");
    return static_cast<ZOFFFunctionType*>(type);
}

void ZOFFReader::performType(ZOFFTag tag)
{
    switch (tag) {
    case ZOFFTag::Char:
    case ZOFFTag::Int:
    case ZOFFTag::Unsigned: push(new ZOFFSimpleType(tag, popSize())); break;
    case ZOFFTag::Float: push(new ZOFFFloatType(popSize())); break;
    case ZOFFTag::Untyped: push(new ZOFFUntypedType(popSize())); break;
    case ZOFFTag::OldStruc: push(new ZOFFStrucType(0)); break;
    case ZOFFTag::Struc: push(new ZOFFStrucType(popSize())); break;
    case ZOFFTag::Array: {
        int64_t count = popConst();
        push(new ZOFFArrayType(popType(), count));
        break;
    }
    case ZOFFTag::CountedArray: {
        int32_t count = popInt32();
        ZOFFType* element = popType();
        push(new ZOFFCountedArrayType(popType(), element, count));
        break;
    }
    case ZOFFTag::ForwardType: push(new ZOFFPtrType(popSize())); break;
    case ZOFFTag::Ptr: {
        ZOFFType* target = popType();
        Entry entry = popEntry();
        auto* pointer = entry.kind == Entry::Object && entry.object && entry.object->kind() == ZOFFKind::Type
                            ? static_cast<ZOFFType*>(entry.object)
                            : nullptr;
        if (!pointer || !pointer->isPtr())
            throw HException("bad object file: operand type error (pointer expected)");
        m_lastPointer = static_cast<ZOFFPtrType*>(pointer);
        m_pointerSteps += m_lastPointer->setTarget(target);
        if (m_pointerSteps >
            ZOFFLimits::PointerStepsFree + ZOFFLimits::PointerStepsPerByte * int64_t(m_input.size()))
            bad("types nested too deeply");
        break;
    }
    case ZOFFTag::BytePtr:
    case ZOFFTag::WordPtr:
        if (!m_lastPointer)
            throw HException("bad object file: operand type error (pointer expected)");
        m_lastPointer->setRepresentation(tag);
        break;
    case ZOFFTag::DataSpace:
    case ZOFFTag::CodeSpace:
    case ZOFFTag::EepromSpace:
    case ZOFFTag::PeripheralSpace: push(new ZOFFQualifiedType(popType(), tag)); break;
    case ZOFFTag::Function: {
        int32_t savedRegisters = popInt32();
        int32_t frameSize = popInt32();
        int32_t a = popInt32();
        push(new ZOFFFunctionType(a, frameSize, savedRegisters));
        break;
    }
    case ZOFFTag::Member: push(new ZOFFMemberFunctionType(popType())); break;
    case ZOFFTag::StaticField: {
        ZOFFType* type = popType();
        ZOFFExpr* expr = popExpr(false);
        const HString* name = popNameOrNull();
        ZOFFStrucType* struc = popStruc();
        struc->addField(new ZOFFStaticField(name, expr, type));
        push(struc);
        break;
    }
    case ZOFFTag::DynamicField: {
        ZOFFType* type = popType();
        int32_t size = popInt32();
        int32_t offset = popInt32();
        const HString* name = popNameOrNull();
        ZOFFStrucType* struc = popStruc();
        struc->addField(new ZOFFDynamicField(name, offset, size, type));
        push(struc);
        break;
    }
    case ZOFFTag::ParamIn:
    case ZOFFTag::ParamOut: {
        ZOFFSymbol* symbol = popSymbol();
        ZOFFFunctionType* function = popFunction();
        if (tag == ZOFFTag::ParamIn)
            function->addInParameter(symbol);
        else
            function->addOutParameter(symbol);
        push(function);
        break;
    }
    default: break;
    }
}
