// Executables whose variables are shown, read through expressions and written: the input is the file, and its
// bytes are the program's memory, too.
#include "debug/evaluation/limits.h"
#include "expression/ExpressionType.h"
#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "tests/debug/FakeProgram.h"
#include "tests/support/MAXQ30Records.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSymbol.h"

#include <cstdlib>

namespace {

constexpr int SymbolsShown = 20;
constexpr size_t LongText = 20'000; // from here on aggregates are left out

// Follows everything, but not far.
class Builder : public TextBuilder {
public:
    pointerEvalMode getPointerEvalMode(const QString& name, const QString&, uint64_t,
                                       unsigned& count) override
    {
        count = 2;
        return text.size() > LongText ? PointerValue : pointerEvalMode(name.size() % 4);
    }
    arrayEvalMode getArrayEvalMode(const QString& name, const QString&, unsigned& count) override
    {
        count = std::min(count, 3u);
        return text.size() > LongText ? ArrayNothing : name.size() % 5 ? ArrayElements : ArrayString;
    }
    structEvalMode getStructEvalMode(const QString&, const QString&) override
    {
        return text.size() > LongText ? StructSummary : StructFields;
    }
    void addPrimitive(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& type, const MyMarker* marker) override
    {
        TextBuilder::addPrimitive(name, path, value, type, marker);
        value.toStr(16, false, false, nullptr);
    }
};

template <typename Action> void guarded(FakeProgram& program, Action&& action)
{
    try {
        action();
    } catch (const HException&) {
    }
    if (program.openBlocks() != 0)
        abort();
}

void walk(ZOFFModule* module, const uint8_t* data, size_t size)
{
    SymbolicDebug symbols(Path("fuzz.kvx"), module);
    FakeProgram program(symbols);
    program.data.assign(data, data + size);
    program.code = program.data;
    program.adjustment = int(size % 3);
    int left = SymbolsShown;
    for (ZOFFSymbol* symbol : module->allSymbols()) {
        if (left-- == 0)
            break;
        Builder builder;
        guarded(program, [&] { program.formatSymbol(symbol, &builder); });
        if (builder.depth != 0)
            abort();
        for (qsizetype i = 0; i < std::min<qsizetype>(builder.paths.size(), 5); ++i)
            guarded(program, [&] { program.parseAndEvaluate(builder.paths[i]).evaluate(); });
        QString name = QString::fromUtf8(symbol->name() ? symbol->name()->c_str() : "");
        for (const char* form : {"%1[1]", "*%1", "&%1", "sizeof(%1)", "%1 + 1", "++%1", "((char[3])%1)[1]",
                                 "((struct point*)&%1)->x", "%1->next->x = 3"})
            guarded(program,
                    [&] { program.formatExpression(QLatin1String(form).arg(name), name, &builder); });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ZOFFMAXQ30Reader reader(std::span<const unsigned char>(data, size), true);
    ZOFFModule* module = nullptr;
    try {
        module = reader.readFile(false);
    } catch (const HException&) {
    }
    if (!module)
        return 0;
    try {
        walk(module, data, size);
    } catch (const HException&) { // of the index
    }
    ZOFFReader::release(module);
    return 0;
}
