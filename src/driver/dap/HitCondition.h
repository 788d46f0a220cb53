// Which hits of a breakpoint count: "5" the fifth, ">= 5" the fifth and all behind it, "% 5" each fifth; "=",
// "==", ">", "<" and "<=" as well. An empty text stands for all.
#pragma once

#include <QString>

#include <cstdint>

class HitCondition {
public:
    HitCondition() = default;
    // Throws RequestFailure.
    explicit HitCondition(const QString& text);

    // Hits are numbered from 1.
    bool holds(uint64_t hit) const;
    bool always() const { return m_relation == Always; }

private:
    enum Relation { Always, Equal, Less, LessOrEqual, Greater, GreaterOrEqual, Multiple };
    Relation m_relation = Always;
    uint64_t m_number = 0;
};
