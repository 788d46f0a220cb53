// The runnable form of an ESCode: its steps, and how much stack they need.
#pragma once

#include "script/engine/ESSteps.h"

#include "script/engine/ESObject.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class ESCode;
class ESString;

class ESThread {
public:
    explicit ESThread(ESCode& code);

    // The machine writes to the steps' caches.
    ESStep* steps() { return m_steps.data(); }
    // Source line of a step.
    int line(const ESStep* step) const { return m_lines[std::size_t(step - m_steps.data())]; }
    // Slots above the arguments that a call takes at most.
    int stackNeed() const { return m_stackNeed; }
    // Jump tables of SWITCH steps: distances from the step, 0 where no case is.
    const std::vector<int32_t>& table(int index) const { return m_tables[std::size_t(index)]; }
    // The slots of an activation object, undefined: the parameters, and the locals.
    std::span<const ESProperty> parameterSlots() const { return m_parameterSlots; }
    std::span<const ESProperty> localSlots() const { return m_localSlots; }
    // Union of the variables' name bits.
    uint16_t names() const { return m_names; }

private:
    void simplifyLogic(std::vector<uint8_t>& bytes) const;
    void measureStack(const ESCode& code);
    void markTargets(const std::vector<uint8_t>& bytes);
    void translate(const std::vector<uint8_t>& bytes);
    void translateOne(const std::vector<uint8_t>& bytes, int offset);
    void add(ESStep step, int line);
    void addJump(int op, int target, int line);
    bool combine();
    bool combineOperator(ESStep& last, ESStep& before);
    bool combineCompare(ESStep& last, ESStep& before);
    bool combineStore(ESStep& last, ESStep& before);
    bool combineAccess(ESStep& last, ESStep& before);
    bool combineCase();
    void replaceLastTwo(const ESStep& step);
    void resolveJumps(const std::vector<int>& stepAt);
    void makeTables();

    ESCode& m_code;
    std::vector<ESStep> m_steps;
    std::vector<int> m_lines;
    std::vector<std::vector<int32_t>> m_tables;
    // For the translation only: by code offset whether a jump leads there, and the stack's depth before
    // the instruction (-1 where none leads); and the object literals that are open, by depth.
    struct Literal {
        int depth;
        std::size_t step;
    };
    std::vector<bool> m_isTarget;
    std::vector<int> m_depthAt;
    std::vector<Literal> m_literals;
    std::size_t m_barrier = 0; // steps before this may not be changed any more
    int m_stackNeed = 0;
    std::vector<ESProperty> m_parameterSlots;
    std::vector<ESProperty> m_localSlots;
    uint16_t m_names = 0;
};
