// Object files: the input is the file. What walks a module in the product is walked here as well:
// sections and metrics, load sections, expressions, names of types, the scope tree, disassembly.
#include "loadfile/LoadFileSections.h"
#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "support/HException.h"
#include "tests/support/MAXQ30Records.h" // installs the record
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"

#include <cstdlib>
#include <memory>

namespace {

size_t g_seen = 0;

void walkScope(const ZOFFScope* scope)
{
    for (auto& [name, object] : scope->symbols())
        g_seen += size_t(name->length()) + size_t(object->kind());
    if (scope->start())
        g_seen += scope->start()->evaluate().unresolved;
    for (const ZOFFScope* child : scope->children())
        walkScope(child);
}

void walkSection(ZOFFSection* section)
{
    section->computeSectionMetrics();
    g_seen += size_t(section->getSize() + section->accumulatedSize());
    g_seen += section->findInsnAt(0x100) != nullptr;
    g_seen += section->findInsnInRange(0x101) != nullptr;
    if (section->getSize() < 0x10000) {
        std::vector<uint8_t> bytes(size_t(section->getSize()));
        section->dump(bytes.size(), bytes.data());
    }
    std::string text;
    section->find([&text](ZOFFInsn* insn) {
        text.clear();
        insn->print(text);
        g_seen += text.size() + insn->printOpCode().size();
        if (insn->kind() == ZOFFKind::Processor) {
            uint32_t target = 0;
            g_seen += static_cast<ZOFFMAXQ30Insn*>(insn)->isJump(target);
            g_seen += size_t(insn->estimatedLength());
        }
        return false;
    });
}

void walk(ZOFFModule* module)
{
    for (ZOFFSection* section : module->sections())
        walkSection(section);
    for (ZOFFSymbol* symbol : module->allSymbols()) {
        g_seen += symbol->evaluate().message.size();
        if (symbol->type())
            g_seen += size_t(symbol->type()->getName() ? symbol->type()->getName()->length() : 0);
        for (const ZOFFType* type = symbol->type(); type && type->isPtr();)
            type = static_cast<const ZOFFPtrType*>(type)->target();
    }
    g_seen += module->hasHiddenInsns();
    walkScope(module);
}

ZOFFModule* read(const uint8_t* data, size_t size, bool keepLoci, bool quick, std::string& words)
{
    ZOFFMAXQ30Reader reader(std::span<const unsigned char>(data, size), keepLoci);
    try {
        return quick ? reader.readFileQuickly(false) : reader.readFile(false);
    } catch (const HException& failure) {
        words = failure.message();
        if (words.empty())
            abort();
        return nullptr;
    }
}

ZOFFKind kindOf(const ZOFFExpr* operand)
{
    return operand ? operand->kind() : ZOFFKind::Other;
}

// Items with source positions are packed first, those without are objects at once.
void compare(const ZOFFSection* packed, const ZOFFSection* objects)
{
    std::vector<const ZOFFInsn*> items;
    packed->find([&](ZOFFInsn* insn) {
        items.push_back(insn);
        return false;
    });
    size_t i = 0;
    objects->find([&](ZOFFInsn* other) {
        const ZOFFInsn* insn = i < items.size() ? items[i++] : nullptr;
        if (!insn || insn->kind() != other->kind() || insn->pc() != other->pc() ||
            insn->hidden() != other->hidden() || insn->stackAdjust() != other->stackAdjust() ||
            insn->printOpCode() != other->printOpCode() || insn->length() != other->length() ||
            insn->extensionWord() != other->extensionWord() ||
            insn->instrumentationData() != other->instrumentationData() ||
            kindOf(insn->operand()) != kindOf(other->operand()))
            abort();
        return false;
    });
    if (i != items.size())
        abort();
}

void compare(const ZOFFModule* packed, const ZOFFModule* objects)
{
    if (packed->sections().size() != objects->sections().size())
        abort();
    for (uint32_t i = 0; i < packed->sections().size(); ++i) {
        ZOFFSection* a = packed->sections()[i];
        ZOFFSection* b = objects->sections()[i];
        if (a->getSize() != b->getSize() || a->accumulatedSize() != b->accumulatedSize() ||
            a->lowestAddress() != b->lowestAddress() || a->hasHiddenInsns() != b->hasHiddenInsns())
            abort();
        if (i % 2)
            walkSection(a); // still packed
        compare(a, b);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string words, otherWords, quickWords;
    ZOFFModule* packed = read(data, size, true, false, words);
    ZOFFModule* objects = read(data, size, false, false, otherWords);
    ZOFFModule* quick = read(data, size, false, true, quickWords);
    if (words != otherWords || !packed != !objects)
        abort();
    try {
        if (packed && objects)
            compare(packed, objects);
    } catch (const HException&) {
    }
    for (ZOFFModule* module : {packed, quick}) {
        if (!module)
            continue;
        try {
            walk(module);
        } catch (const HException&) {
        }
    }
    for (ZOFFModule* module : {packed, objects, quick})
        ZOFFReader::release(module);
    return 0;
}
