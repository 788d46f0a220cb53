#include "zoff/ZOFFPackedItems.h"

#include "support/Pool.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFProcessor.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"

#include <algorithm>
#include <cstring>
#include <vector>

void ZOFFRun::copyBytes(uint8_t* to) const
{
    if (item)
        item->copyBytes(to);
    else
        memcpy(to, bytes, count);
}

bool ZOFFPackedItems::covers(uint32_t address) const
{
    return std::any_of(m_runs.begin(), m_runs.end(), [address](const ZOFFRun& run) {
        auto from = uint32_t(run.address());
        return from <= address && int64_t(address) < from + run.size();
    });
}

namespace {

template <class T> T take(const uint8_t*& at)
{
    T value;
    memcpy(&value, at, sizeof value);
    at += sizeof value;
    return value;
}

// The code bytes of a fragment's packed instructions, one instruction after another.
class CodeBytes {
public:
    explicit CodeBytes(const PoolList<ZOFFRun>& runs) : m_run(runs.begin()), m_end(runs.end()) {}
    const uint8_t* next(unsigned count)
    {
        while (m_left == 0 && m_run != m_end) {
            if (!m_run->item) {
                m_at = m_run->bytes;
                m_left = m_run->count;
            }
            ++m_run;
        }
        const uint8_t* bytes = m_at;
        m_at += count;
        m_left -= count;
        return bytes;
    }

private:
    const ZOFFRun* m_run;
    const ZOFFRun* m_end;
    const uint8_t* m_at = nullptr;
    uint32_t m_left = 0;
};

} // namespace

ZOFFProcessorInsn* ZOFFPackedItems::makeInsn(const uint8_t* operation, const uint8_t* bytes, int32_t pc,
                                             int32_t stackAdjust)
{
    unsigned number = *operation++;
    unsigned count = 2 * ((number & 3) + 1);
    ZOFFExpr* operand = nullptr;
    switch (number & OperandMask) {
    case Expression: operand = take<ZOFFExpr*>(operation); break;
    case SymbolValue: operand = new ZOFFSymbolExpr(take<ZOFFSymbol*>(operation)); break;
    case MarkerPlace: operand = new ZOFFMarkerExpr(take<ZOFFMarker*>(operation)); break;
    }
    const ZOFFProcessor& processor = ZOFFProcessor::current();
    ZOFFProcessorInsn* insn = processor.newInsn(processor.opcodeOf(bytes, count), operand);
    insn->appendBytes({reinterpret_cast<const char*>(bytes), count});
    insn->setPC(pc);
    insn->setHidden(number & Hidden);
    insn->setStackAdjust(stackAdjust);
    return insn;
}

void ZOFFPackedItems::unpack(ZOFFFragment& fragment) const
{
    CurrentPool current(m_pool);
    std::vector<Made> made(m_made.begin(), m_made.end());
    std::sort(made.begin(), made.end(),
              [](const Made& a, const Made& b) { return a.operation < b.operation; });
    auto madeOf = [&made](const uint8_t* operation) -> ZOFFInsn* {
        if (made.empty())
            return nullptr;
        auto found =
            std::lower_bound(made.begin(), made.end(), operation,
                             [](const Made& a, const uint8_t* wanted) { return a.operation < wanted; });
        return found != made.end() && found->operation == operation ? found->item : nullptr;
    };
    CodeBytes code(m_runs);
    const uint8_t* at = m_stream;
    ZOFFLocus* locus = nullptr;
    ZOFFFilename* file = nullptr;
    int32_t line = 0, pc = -1, adjust = 0;
    for (;;) {
        const uint8_t* operation = at;
        switch (unsigned number = *at++) {
        case Object: fragment.link(take<ZOFFInsn*>(at), locus); break;
        case Step:
        case Line: {
            line = number == Step ? int32_t(uint32_t(line) + uint32_t(take<int8_t>(at))) : take<int32_t>(at);
            auto* position = static_cast<ZOFFLocus*>(madeOf(operation));
            if (!position) {
                position = new ZOFFLocus(file, line, ZOFFTag::Locus);
                position->setPC(pc);
            }
            locus = position;
            fragment.link(position, position);
            break;
        }
        case File:
            file = take<ZOFFFilename*>(at);
            line = 0;
            break;
        case SetPC: pc = take<int32_t>(at); break;
        case AdjustStack: adjust = take<int32_t>(at); break;
        case ResetLocus: locus = nullptr; break;
        case UseLocus: locus = take<ZOFFLocus*>(at); break;
        case Continue:
            at = take<const uint8_t*>(at);
            if (!at)
                return;
            break;
        default: {
            if (number & OperandMask)
                at += sizeof(void*);
            unsigned count = 2 * ((number & 3) + 1);
            const uint8_t* bytes = code.next(count);
            ZOFFInsn* insn = madeOf(operation);
            fragment.link(insn ? insn : makeInsn(operation, bytes, pc, adjust), locus);
            pc += int32_t(count);
        }
        }
    }
}
