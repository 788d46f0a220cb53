#include "tools/kvas/Layout.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Instruction.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/limits.h"

#include <algorithm>
#include <cstdio>

namespace kvas {

namespace {

// One counter of addresses for each memory.
enum class Memory { None, Code, Data, Eeprom };

Memory memoryOf(SectionKind kind)
{
    switch (kind) {
    case SectionKind::Code: return Memory::Code;
    case SectionKind::Data:
    case SectionKind::Data3:
    case SectionKind::Data4: return Memory::Data;
    case SectionKind::Eeprom: return Memory::Eeprom;
    default: return Memory::None;
    }
}

// The debugger keeps addresses in signed 32 bits.
constexpr uint64_t HighestAddress = 0x7FFFFFFF;

std::string hex(uint64_t value)
{
    char text[24];
    snprintf(text, sizeof text, "0x%llx", (unsigned long long)value);
    return text;
}

} // namespace

void Layout::run()
{
    decideLinkIfs();
    if (m_diagnostics.failed())
        return;
    if (!m_placement.data)
        m_placement.data = startOfData();
    if (m_diagnostics.failed())
        return;
    for (m_pass = 1; m_pass <= limits::Passes; ++m_pass) {
        bool moved = assignAddresses();
        m_evaluator.nextPass();
        bool grown = grow();
        if (m_diagnostics.failed())
            return;
        if (!moved && !grown)
            break;
    }
    if (m_pass > limits::Passes) {
        for (const Section& section : m_program.sections) {
            for (const Fragment& fragment : section.fragments) {
                for (const Item& item : fragment.items) {
                    if (item.kind == ItemKind::Space && !item.operand->isConstant())
                        m_diagnostics.error(item.place, "the size changes the addresses that it depends on");
                }
            }
        }
        if (!m_diagnostics.failed())
            m_diagnostics.error({}, "no addresses can be found that satisfy all sizes");
        return;
    }
    check();
}

uint32_t Layout::startOfData()
{
    auto found = m_program.publics.find("_RAM_Start_Address");
    if (found == m_program.publics.end())
        return 0;
    Value start = m_evaluator.evaluate(m_program.of(found->second));
    if (!start.resolved())
        m_diagnostics.error(found->second->defined,
                            "where data begins must not depend on addresses: " + start.why);
    else if (start.number < 0 || uint64_t(start.number) > HighestAddress)
        m_diagnostics.error(found->second->defined, "data cannot begin at " + std::to_string(start.number));
    return uint32_t(start.number);
}

void Layout::decideLinkIfs()
{
    for (Section& section : m_program.sections) {
        for (Fragment& fragment : section.fragments) {
            bool dropping = false;
            for (Item& item : fragment.items) {
                if (item.kind == ItemKind::LinkIf) {
                    Value condition = m_evaluator.evaluate(item.operand);
                    if (!condition.resolved())
                        m_diagnostics.error(item.place,
                                            "the condition must not depend on addresses: " + condition.why);
                    item.value = condition.number;
                    dropping = !condition.number;
                }
                // Labels stay, so that what refers to them still has a value.
                item.dropped = dropping && item.kind != ItemKind::Mark;
                if (item.kind == ItemKind::EndLinkIf)
                    dropping = false;
            }
        }
    }
}

// True when something is not where it was in the round before.
bool Layout::assignAddresses()
{
    std::map<Memory, uint64_t> next{{Memory::Code, m_placement.code}, {Memory::Data, *m_placement.data}};
    bool moved = false;
    for (Section& section : m_program.sections) {
        uint64_t& pc = next[memoryOf(section.kind)];
        bool first = true;
        for (Fragment& fragment : section.fragments) {
            if (fragment.hasOrigin)
                pc = fragment.origin;
            else
                pc = (pc + fragment.alignment - 1) / fragment.alignment * fragment.alignment;
            fragment.start = uint32_t(pc);
            moved |= place(fragment, pc);
            fragment.end = uint32_t(pc);
            if (pc > HighestAddress || fragment.end - fragment.start > limits::SectionBytes) {
                m_diagnostics.error(fragment.place, "the section " + section.name + " is too large");
                throw GaveUp();
            }
            bool empty = fragment.start == fragment.end;
            if (first) {
                section.start = fragment.start;
                section.end = fragment.end;
            } else if (!empty) {
                section.start = std::min(section.start, fragment.start);
                section.end = std::max(section.end, fragment.end);
            }
            first = first && empty;
        }
        moved |= !section.placed;
        section.placed = true;
    }
    return moved;
}

bool Layout::place(Fragment& fragment, uint64_t& pc)
{
    bool moved = false;
    for (Item& item : fragment.items) {
        item.pc = uint32_t(pc);
        if (item.kind == ItemKind::Mark) {
            moved |= item.marker->pc != int64_t(pc);
            item.marker->pc = int64_t(pc);
            continue;
        }
        if (!item.dropped)
            moved |= measure(item, pc);
        pc += item.length;
    }
    return moved;
}

// Sets the item's length; true when the length is new.
bool Layout::measure(Item& item, uint64_t pc)
{
    uint32_t before = item.length;
    switch (item.kind) {
    case ItemKind::Instruction: item.length = item.size * 2u; break;
    case ItemKind::Bytes: item.length = item.size; break;
    case ItemKind::Address: item.length = 2; break;
    case ItemKind::Fill: item.length = item.count; break;
    case ItemKind::Align: item.length = uint32_t((item.count - pc % item.count) % item.count); break;
    case ItemKind::Space: {
        Value size = m_evaluator.evaluate(item.operand);
        bool usable = size.resolved() && size.number >= 0 && uint64_t(size.number) <= limits::SectionBytes;
        item.length = usable ? uint32_t(size.number) : 0;
        break;
    }
    case ItemKind::Init: {
        const Section* section = m_program.section(item.text);
        item.length = section->end - section->start;
        break;
    }
    default: item.length = 0; break;
    }
    return item.length != before;
}

bool Layout::grow()
{
    bool grown = false;
    for (Section& section : m_program.sections) {
        for (Fragment& fragment : section.fragments) {
            for (Item& item : fragment.items) {
                if (item.kind != ItemKind::Instruction || !item.operand || item.dropped)
                    continue;
                Value value = m_evaluator.evaluate(item.operand);
                if (!value.resolved())
                    continue; // reported by check()
                // Rounds that each lengthen one instruction would go on for as many rounds as there are
                // instructions. So all take their far form together at last, and what still grows then
                // does so once.
                unsigned words = wordsNeeded(item, value.number, m_pass <= limits::PassesBeforeWidening);
                if (words <= item.size)
                    continue;
                item.size = m_pass > limits::PassesBeforeWidening + 1 ? 4 : uint8_t(words);
                grown = true;
            }
        }
    }
    return grown;
}

void Layout::check()
{
    for (Symbol* symbol : m_program.symbols) {
        Value value = m_evaluator.evaluate(symbol->value);
        if (!value.resolved())
            m_diagnostics.error(symbol->defined, value.why);
    }
    for (Section& section : m_program.sections)
        checkSection(section);
    if (!m_diagnostics.failed())
        checkOverlaps();
}

void Layout::checkSection(Section& section)
{
    for (Fragment& fragment : section.fragments) {
        for (Item& item : fragment.items) {
            if (!item.dropped)
                checkItem(section, item);
        }
    }
}

void Layout::checkItem(const Section&, Item& item)
{
    if (item.kind == ItemKind::Instruction && item.pc % 2)
        m_diagnostics.error(item.place, "the instruction is at an odd address");
    if (item.kind == ItemKind::Init) {
        const Section* section = m_program.section(item.text);
        for (const Fragment& fragment : section->fragments) {
            for (const Item& inner : fragment.items) {
                if (inner.kind == ItemKind::Init)
                    m_diagnostics.error(item.place,
                                        "a section with .INIT cannot itself be the source of one");
            }
        }
    }
    if (!item.operand || item.kind == ItemKind::LinkIf)
        return;
    Value value = m_evaluator.evaluate(item.operand);
    if (!value.resolved()) {
        m_diagnostics.error(item.place, value.why);
        return;
    }
    item.value = value.number;
    switch (item.kind) {
    case ItemKind::Space:
        if (value.number < 0 || uint64_t(value.number) > limits::SectionBytes)
            m_diagnostics.error(item.place, "the space is too large");
        break;
    case ItemKind::Bytes: checkRange(item, item.size); break;
    case ItemKind::Address: checkRange(item, 2); break;
    case ItemKind::Instruction:
        checkRange(item, 4);
        if (takesCodeTarget(item) && value.number % 2)
            m_diagnostics.error(item.place, "the target is at an odd address");
        break;
    default: break;
    }
}

void Layout::checkRange(const Item& item, unsigned bytes)
{
    int64_t limit = int64_t(1) << (8 * bytes - 1);
    if (item.value < -limit || item.value >= 2 * limit)
        m_diagnostics.error(item.place, "the value " + std::to_string(item.value) + " does not fit in " +
                                            std::to_string(8 * bytes) + " bits");
}

void Layout::checkOverlaps()
{
    struct Range {
        Memory memory;
        const Fragment* fragment;
        const Section* section;
    };
    std::vector<Range> ranges;
    for (const Section& section : m_program.sections) {
        for (const Fragment& fragment : section.fragments) {
            if (fragment.start != fragment.end && memoryOf(section.kind) != Memory::None)
                ranges.push_back({memoryOf(section.kind), &fragment, &section});
        }
    }
    std::stable_sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) {
        return std::pair(a.memory, a.fragment->start) < std::pair(b.memory, b.fragment->start);
    });
    const Range* last = nullptr; // the one that reaches furthest
    for (const Range& range : ranges) {
        if (last && last->memory == range.memory && last->fragment->end > range.fragment->start) {
            m_diagnostics.error(range.fragment->place, "section " + range.section->name + " at " +
                                                           hex(range.fragment->start) + " overlaps section " +
                                                           last->section->name + ", which ends at " +
                                                           hex(last->fragment->end));
        }
        if (!last || last->memory != range.memory || last->fragment->end < range.fragment->end)
            last = &range;
    }
}

} // namespace kvas
