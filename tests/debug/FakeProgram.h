// A stopped program to evaluate expressions about: symbols of an assembled module, memories that are arrays,
// registers of 4 bytes, and a builder that keeps what it is shown as text.
#pragma once

#include "debug/evaluation/VariableListBuilder.h"
#include "debug/evaluation/ZOFFExpressionEvaluator.h"
#include "debug/symbols/SymbolicDebug.h"
#include "expression/ParserException.h"
#include "maxq30/cpu/MAXQ30Registers.h"

#include <cstring>
#include <map>

class FakeProgram : public ZOFFExpressionEvaluator {
public:
    explicit FakeProgram(SymbolicDebug& symbols) : ZOFFExpressionEvaluator(4), m_symbols(symbols) {}

    static constexpr uint32_t DataStart = 0x1000;
    static constexpr unsigned StackPointer = MAXQ30Registers::SP;

    ZOFFSymbol* getSymbol(const char* name) const override
    {
        if (ZOFFSymbol* scoped = m_symbols.findScopedSymbol(name, pc))
            return scoped;
        return m_symbols.findModuleSymbol(name);
    }
    ZOFFType* getNamedType(const char* name) const override { return m_symbols.findNamedType(name); }
    uint32_t getSPValue(int number) override { return uint32_t(registers[unsigned(number)]); }
    int getSPAdjustment() const override { return adjustment; }
    int registerDereference(int base, int64_t index) override
    {
        return index >= 0 && index < 8 ? int(index << 4 | base) : -1;
    }

    uint64_t getRegister(unsigned number) override { return registers[number]; }
    unsigned getRegisterLength(unsigned number) override { return (number & 15) == 2 ? 2 : 4; }
    void setRegister(unsigned number, uint64_t value) override { registers[number] = value; }
    unsigned nextRegisterNumber(unsigned number) override { return number + 16; }
    int registerNameToNumber(const char* name) override
    {
        if (strcmp(name, "SP") == 0)
            return StackPointer;
        int index = name[0] && name[1] ? atoi(name + 1) : -1;
        return index < 0 ? -1 : name[0] == 'A' ? index << 4 | 9 : name[0] == 'B' ? index << 4 | 2 : -1;
    }
    QString registerNumberToName(unsigned number) override
    {
        if (number == StackPointer)
            return QStringLiteral("SP");
        return QStringLiteral("%1%2").arg(QChar(number % 16 == 9 ? u'A' : u'B')).arg(number >> 4);
    }
    bool registerNumberLT(unsigned a, unsigned b) override { return a < b; }

    unsigned readMemory(unsigned address, unsigned count, unsigned char* bytes) override
    {
        ++reads;
        bytesRead += int(count);
        return move(data, DataStart, address, count, [&](unsigned char* at) { memcpy(bytes, at, count); });
    }
    unsigned writeMemory(unsigned address, unsigned count, const unsigned char* bytes) override
    {
        return move(data, DataStart, address, count, [&](unsigned char* at) { memcpy(at, bytes, count); });
    }
    unsigned readCodeMemory(unsigned address, unsigned count, unsigned char* bytes) override
    {
        return move(code, 0, address, count, [&](unsigned char* at) { memcpy(bytes, at, count); });
    }
    unsigned writeCodeMemory(unsigned, unsigned, const unsigned char*) override { return 0; }
    unsigned readEepromMemory(unsigned, unsigned, unsigned char*) override { return 0; }
    unsigned writeEepromMemory(unsigned, unsigned, const unsigned char*) override { return 0; }
    unsigned readPeripheralMemory(unsigned, unsigned, unsigned char*) override { return 0; }
    unsigned writePeripheralMemory(unsigned, unsigned, const unsigned char*) override { return 0; }

    size_t openBlocks() const { return blocks(); }

    std::vector<unsigned char> data = std::vector<unsigned char>(0x400);
    std::vector<unsigned char> code;
    std::map<unsigned, uint64_t> registers;
    uint32_t pc = 0;
    int adjustment = 0;
    int reads = 0, bytesRead = 0;

private:
    template <typename Move>
    unsigned move(std::vector<unsigned char>& memory, uint32_t start, uint32_t address, unsigned count,
                  Move&& bytes)
    {
        if (address < start || address - start > memory.size() || count > memory.size() - (address - start))
            return 0;
        bytes(memory.data() + (address - start));
        return count;
    }

    SymbolicDebug& m_symbols;
};

// "name=value", arrays in brackets, objects in braces.
class TextBuilder : public VariableListBuilder {
public:
    void setExpressionContext(const ExpressionContext&) override {}
    pointerEvalMode getPointerEvalMode(const QString&, const QString& typeName, uint64_t address,
                                       unsigned& count) override
    {
        count = pointerCount;
        return typeName == u"char" && address ? PointerString : pointers;
    }
    arrayEvalMode getArrayEvalMode(const QString& name, const QString& typeName, unsigned& count) override
    {
        if (arrays != ArrayElements)
            return arrays;
        count = std::min(count, limit);
        return VariableListBuilder::getArrayEvalMode(name, typeName, count);
    }
    structEvalMode getStructEvalMode(const QString&, const QString&) override { return structs; }
    void addPrimitive(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& type, const MyMarker* marker) override
    {
        text += name.toStdString() + "=" + value.toStr(radix, false, false, nullptr).toStdString() + " ";
        paths.append(path);
        types.append(type);
        if (marker)
            markers.push_back(*marker);
    }
    Token beginObject(const QString& name, const QString&, const ExpressionType&, const QString&,
                      const MyMarker*) override
    {
        text += name.toStdString() + "{ ";
        return ++depth;
    }
    void endObject(Token token) override { end(token, "} "); }
    Token beginArray(const QString& name, const QString&, const ExpressionType&, const QString&,
                     const MyMarker*) override
    {
        text += name.toStdString() + "[ ";
        return ++depth;
    }
    void endArray(Token token) override { end(token, "] "); }
    void clear() override { text.clear(); }

    std::string text;
    QStringList paths, types;
    std::vector<MyMarker> markers;
    pointerEvalMode pointers = PointerValue;
    arrayEvalMode arrays = ArrayElements;
    structEvalMode structs = StructFields;
    unsigned pointerCount = 0, limit = 1'000'000;
    int radix = 10, depth = 0;

private:
    void end(Token token, const char* bracket) { text += token == depth-- ? bracket : "unbalanced "; }
};
