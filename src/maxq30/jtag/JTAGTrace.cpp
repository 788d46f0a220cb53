#include "maxq30/jtag/JTAGTrace.h"

#include "maxq30/jtag/JTAGFrames.h"
#include "support/HException.h"

namespace {

std::string counted(const char* what, unsigned long count)
{
    return std::string(what) + " " + std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string statusInWords(unsigned char status)
{
    return "status " + std::to_string(status);
}

} // namespace

void JTAGTrace::line(const char* operation, std::span<const unsigned char> bytes, std::string_view words)
{
    double elapsed =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - m_begin).count();
    char head[64];
    snprintf(head, sizeof head, "%10.3f %-24s", elapsed, operation);
    std::string text = head;
    for (unsigned char byte : bytes) {
        char hex[4];
        snprintf(hex, sizeof hex, " %02x", byte);
        text += hex;
    }
    text += bytes.empty() ? " " : "  ";
    text += words;
    text += '\n';
    fputs(text.c_str(), m_output);
}

// An operation that fails leaves its line too: it is the one to look for.
template <class Operation>
void JTAGTrace::guarded(const char* operation, std::span<const unsigned char> bytes, Operation&& body)
{
    try {
        body();
    } catch (const HException& failure) {
        line(operation, bytes, "failed: " + failure.message());
        throw;
    }
}

// The functions of the second table. What carries no meaning of its own is passed on untraced.
struct JTAGTrace::Table {
    static JTAGTrace& of(_maxqd_t* maxqd) { return *static_cast<JTAGTrace*>(maxqd->link); }

    template <auto Slot> struct PassOn;
    template <class Result, class... Arguments, Result (*_maxqd_t::*Slot)(_maxqd_t*, Arguments...)>
    struct PassOn<Slot> {
        static Result call(_maxqd_t* maxqd, Arguments... arguments)
        {
            _maxqd_t& traced = of(maxqd).m_traced;
            return (traced.*Slot)(&traced, arguments...);
        }
    };

    static int close(_maxqd_t* maxqd)
    {
        JTAGTrace* trace = &of(maxqd);
        *maxqd = trace->m_traced;
        trace->m_traced.link = nullptr;
        delete trace;
        return maxqd->close(maxqd);
    }

    static void setNRST(_maxqd_t* maxqd, int level)
    {
        const unsigned char bytes[] = {static_cast<unsigned char>(level)};
        _maxqd_t& traced = of(maxqd).m_traced;
        of(maxqd).guarded("setNRST", bytes, [&] { traced.setNRST(&traced, level); });
        of(maxqd).line("setNRST", bytes, level ? "release reset" : "assert reset");
    }
    static void trst(_maxqd_t* maxqd)
    {
        _maxqd_t& traced = of(maxqd).m_traced;
        of(maxqd).guarded("trst", {}, [&] { traced.trst(&traced); });
        of(maxqd).line("trst", {}, "TAP to Run-Test/Idle");
    }
    static void shiftInIR(_maxqd_t* maxqd, unsigned char instruction)
    {
        const unsigned char bytes[] = {instruction};
        _maxqd_t& traced = of(maxqd).m_traced;
        of(maxqd).guarded("shiftInIR", bytes, [&] { traced.shiftInIR(&traced, instruction); });
        of(maxqd).line("shiftInIR", bytes, jtag::instructionInWords(instruction));
    }
    static void setSystemProgrammingBits(_maxqd_t* maxqd, unsigned char bits)
    {
        const unsigned char bytes[] = {bits};
        _maxqd_t& traced = of(maxqd).m_traced;
        of(maxqd).guarded("setSystemProgrammingBits", bytes,
                          [&] { traced.setSystemProgrammingBits(&traced, bits); });
        of(maxqd).line("setSystemProgrammingBits", bytes,
                       bits == maxqd::StartBootloader ? "the bootloader starts at the next reset"
                                                      : "the program starts at the next reset");
    }
    static unsigned char shiftInOutDR(_maxqd_t* maxqd, unsigned char in, unsigned char* status)
    {
        _maxqd_t& traced = of(maxqd).m_traced;
        unsigned char bytes[] = {in, 0};
        unsigned char seen = 0; // the scan is the same with and without a place for the status
        of(maxqd).guarded("shiftInOutDR", {bytes, 1},
                          [&] { bytes[1] = traced.shiftInOutDR(&traced, in, &seen); });
        if (status)
            *status = seen;
        of(maxqd).line("shiftInOutDR", bytes, statusInWords(seen));
        return bytes[1];
    }
    static int multiShiftOutDR8(_maxqd_t* maxqd, unsigned char* buffer, unsigned long count)
    {
        _maxqd_t& traced = of(maxqd).m_traced;
        int result = 0;
        of(maxqd).guarded("multiShiftOutDR8", {},
                          [&] { result = traced.multiShiftOutDR8(&traced, buffer, count); });
        of(maxqd).line("multiShiftOutDR8", {buffer, count}, counted("answer of", count));
        return result;
    }
    static int multiShiftInDR8(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
    {
        _maxqd_t& traced = of(maxqd).m_traced;
        int result = 0;
        of(maxqd).guarded("multiShiftInDR8", {buffer, count},
                          [&] { result = traced.multiShiftInDR8(&traced, buffer, count); });
        of(maxqd).line("multiShiftInDR8", {buffer, count}, jtag::debugFrameInWords({buffer, count}));
        return result;
    }
    static int loaderWrite(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
    {
        _maxqd_t& traced = of(maxqd).m_traced;
        int result = 0;
        of(maxqd).guarded("loaderWrite", {buffer, count},
                          [&] { result = traced.loaderWrite(&traced, buffer, count); });
        std::string words = jtag::loaderFrameInWords({buffer, count});
        of(maxqd).line("loaderWrite", {buffer, count}, result ? words : words + ", refused");
        return result;
    }
    static int loaderRead(_maxqd_t* maxqd, unsigned char* buffer, unsigned long count)
    {
        _maxqd_t& traced = of(maxqd).m_traced;
        int result = 0;
        of(maxqd).guarded("loaderRead", {}, [&] { result = traced.loaderRead(&traced, buffer, count); });
        of(maxqd).line("loaderRead", {buffer, count}, counted("bootloader: answer of", count));
        return result;
    }
};

JTAGTrace::~JTAGTrace()
{
    if (m_traced.link)
        m_traced.close(&m_traced);
}

void JTAGTrace::install(_maxqd_t* maxqd, FILE* output)
{
    maxqd->link = new JTAGTrace(*maxqd, output);
#define MAXQD_BIND(name) maxqd->name = Table::PassOn<&_maxqd_t::name>::call;
    MAXQD_GENERIC_SLOTS(MAXQD_BIND)
#undef MAXQD_BIND
    // What says something to a reader of the trace.
    maxqd->close = Table::close;
    maxqd->setNRST = Table::setNRST;
    maxqd->trst = Table::trst;
    maxqd->shiftInIR = Table::shiftInIR;
    maxqd->shiftInOutDR = Table::shiftInOutDR;
    maxqd->multiShiftOutDR8 = Table::multiShiftOutDR8;
    maxqd->multiShiftInDR8 = Table::multiShiftInDR8;
    maxqd->loaderWrite = Table::loaderWrite;
    maxqd->loaderRead = Table::loaderRead;
    maxqd->setSystemProgrammingBits = Table::setSystemProgrammingBits;
}
