#include "tools/kvas/Dump.h"

#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "support/HByteStream.h"
#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace kvas {

namespace {

const char* kindText(unsigned kind)
{
    switch (kind) {
    case ZOFFSection::Code: return "code";
    case 2:
    case 3:
    case 4: return "data";
    case ZOFFSection::Eeprom: return "eeprom";
    default: return "none";
    }
}

class Printer {
public:
    Printer(ZOFFModule& module, FILE* out) : m_module(module), m_out(out) {}

    void print()
    {
        module();
        sections();
        symbols();
        fprintf(m_out, "\nScopes\n");
        scopes(m_module);
        lines();
        for (ZOFFSection* section : m_module.sections())
            code(*section);
    }

private:
    static const char* text(const HString* name) { return name ? name->c_str() : ""; }

    void module()
    {
        fprintf(m_out, "Module %s%s\n", text(m_module.name()), m_module.isProtected() ? ", protected" : "");
        for (const auto& [key, value] : m_module.attributes())
            fprintf(m_out, "  attribute %s = \"%s\"\n", text(key), text(value));
        for (const HString* library : m_module.libraries())
            fprintf(m_out, "  library %s\n", text(library));
        if (m_module.linkOrderPriority() != ZOFFModule::DefaultLinkOrderPriority)
            fprintf(m_out, "  link order priority %d\n", m_module.linkOrderPriority());
    }

    void sections()
    {
        fprintf(m_out, "\nSections\n");
        for (ZOFFSection* section : m_module.sections()) {
            section->computeSectionMetrics();
            bool empty = section->lowestAddress() == ZOFFSection::UnknownAddress;
            fprintf(m_out, "  %-16s %-6s %-4s", text(section->name()), kindText(section->sectionKind()),
                    section->goesIntoLoadFile() ? "load" : "");
            if (empty)
                fprintf(m_out, "  empty\n");
            else
                fprintf(m_out, "  0x%08x-0x%08x  %lld bytes\n", section->lowestAddress(),
                        section->highestAddress(), (long long)section->accumulatedSize());
        }
    }

    void symbols()
    {
        fprintf(m_out, "\nSymbols\n");
        for (ZOFFSymbol* symbol : m_module.allSymbols()) {
            fprintf(m_out, "  %-24s %-6s %s", text(symbol->name()), isPublic(symbol) ? "public" : "",
                    value(*symbol).c_str());
            if (symbol->type())
                fprintf(m_out, "  %s", text(symbol->type()->getName()));
            if (const ZOFFLocus* locus = symbol->locus())
                fprintf(m_out, "  %s:%d", fileOf(locus), locus->line());
            fprintf(m_out, "\n");
        }
    }

    bool isPublic(const ZOFFSymbol* symbol) const
    {
        if (!symbol->name())
            return false;
        auto found = m_module.publicSymbols().find(symbol->name());
        return found != m_module.publicSymbols().end() && found->second == symbol;
    }

    // The address or number, or the expression when it has none: a register, say.
    static std::string value(const ZOFFSymbol& symbol)
    {
        if (!symbol.value())
            return "-";
        ZOFFEvaluation evaluation = symbol.evaluate();
        if (evaluation.unresolved)
            return symbol.value()->printString();
        char number[24];
        snprintf(number, sizeof number, "0x%08llx", (unsigned long long)evaluation.value);
        return number;
    }

    static const char* fileOf(const ZOFFLocus* locus)
    {
        return locus->file() ? text(locus->file()->fileName()) : "???";
    }

    // The reader bounds how deeply scopes are nested.
    void scopes(const ZOFFScope& scope, unsigned depth = 1)
    {
        for (const ZOFFScope* child : scope.children()) {
            fprintf(m_out, "%*s", int(2 * depth), "");
            bool isFunction = child->scopeKind() == ZOFFTag::ScopeFunction;
            fprintf(m_out, "%s", isFunction ? "function" : "block");
            if (child->functionSymbol()) {
                fprintf(m_out, " %s", text(child->functionSymbol()->name()));
                const ZOFFType* type = child->functionSymbol()->type();
                if (type && type->isFunction()) {
                    auto* function = static_cast<const ZOFFFunctionType*>(type);
                    fprintf(m_out, " frame %d saved 0x%04x", function->frameSize(),
                            unsigned(function->savedRegisters()));
                }
            }
            if (child->start() && child->end())
                fprintf(m_out, "  0x%08llx-0x%08llx", (unsigned long long)child->start()->evaluate().value,
                        (unsigned long long)child->end()->evaluate().value);
            fprintf(m_out, "\n");
            for (const auto& [name, object] : child->symbols())
                fprintf(m_out, "%*s%s\n", int(2 * depth + 2), "", text(name));
            scopes(*child, depth + 1);
        }
    }

    void lines()
    {
        fprintf(m_out, "\nLines\n");
        std::vector<const ZOFFLocus*> loci;
        for (ZOFFSection* section : m_module.sections()) {
            section->find([&](ZOFFInsn* item) {
                if (item->kind() == ZOFFKind::Locus)
                    loci.push_back(static_cast<const ZOFFLocus*>(item));
                return false;
            });
        }
        std::stable_sort(loci.begin(), loci.end(),
                         [](const ZOFFLocus* a, const ZOFFLocus* b) { return a->pc() < b->pc(); });
        for (const ZOFFLocus* locus : loci)
            fprintf(m_out, "  0x%08x  %s:%d\n", unsigned(locus->pc()), fileOf(locus), locus->line());
    }

    void code(ZOFFSection& section)
    {
        fprintf(m_out, "\nSection %s\n", text(section.name()));
        section.find([&](ZOFFInsn* item) {
            if (item->kind() == ZOFFKind::Marker) {
                auto* marker = static_cast<ZOFFMarker*>(item);
                if (marker->name())
                    fprintf(m_out, "%s:\n", text(marker->name()));
                return false;
            }
            std::string line = item->kind() == ZOFFKind::Locus ? std::string() : item->printString();
            if (line.empty())
                return false;
            std::string bytes;
            char hex[4];
            for (unsigned char byte : item->bytes()) {
                snprintf(hex, sizeof hex, "%02X", byte);
                bytes += hex;
            }
            fprintf(m_out, "  %s  %-16s%s%s\n", item->printPC().c_str(), bytes.c_str(), line.c_str(),
                    item->hidden() ? "\t; hidden" : "");
            return false;
        });
    }

    ZOFFModule& m_module;
    FILE* m_out;
};

} // namespace

void dump(const std::string& fileName, FILE* out)
{
    HFileInputByteStream file(fileName);
    ZOFFMAXQ30Reader reader(&file, true);
    std::unique_ptr<ZOFFModule, void (*)(ZOFFModule*)> module(reader.readFile(false), ZOFFReader::release);
    if (!module) {
        fprintf(out, "the file is empty\n");
        return;
    }
    CurrentPool current(module->pool());
    Printer(*module, out).print();
}

} // namespace kvas
