// The bytes of a marker on top of the evaluator's stack of blocks, for as long as this object lives.
#pragma once

#include "debug/evaluation/DebugMarkerType.h"
#include "debug/evaluation/ZOFFExpressionEvaluator.h"
#include "expression/ParserException.h"

class ZOFFExpressionEvaluator::MemoryBuffer {
public:
    MemoryBuffer(ZOFFExpressionEvaluator& evaluator, const MyMarker& marker, bool lazy)
        : m_evaluator(evaluator), m_marker(marker)
    {
        evaluator.m_unreadable = false;
        evaluator.fillMemoryBuffer(marker, lazy);
    }
    ~MemoryBuffer() { m_evaluator.discardMemoryBuffer(); }
    MemoryBuffer(const MemoryBuffer&) = delete;
    MemoryBuffer& operator=(const MemoryBuffer&) = delete;

    // Throws ParserException when something that was asked for could not be read.
    void check() const
    {
        if (m_evaluator.m_unreadable)
            throw ParserException(QStringLiteral("cannot read ") + MyMarker(m_marker).getValueAsString());
    }

private:
    ZOFFExpressionEvaluator& m_evaluator;
    const MyMarker& m_marker;
};
