// The simulator library: the core behind the virtual interface of maxqsim.h.
#include "sim/Core.h"
#include "sim/Parameters.h"
#include "sim/RomFile.h"
#include "sim/maxqsim.h"

#include <new>

namespace maxq30 {

namespace {

class Simulator final : public MAXQSIMInterface, private MAXQSIMRunner {
public:
    bool initialise(MAXQSIMCallBacks* callBacks, const char* parameter, const char* romFileName) override
    {
        close();
        std::string error;
        if (start(callBacks, parameter ? parameter : "", romFileName ? romFileName : "", error))
            return true;
        close();
        if (callBacks)
            callBacks->onMiscError(error.c_str(), 0);
        return false;
    }

    void close() override
    {
        m_core.reset();
        m_callBacks = nullptr;
    }

    bool readCode(unsigned address, unsigned length, unsigned char* buffer) override
    {
        return m_core && m_core->readCode(address, length, buffer);
    }
    bool writeCode(unsigned address, unsigned length, const unsigned char* data) override
    {
        return m_core && m_core->writeCode(address, length, data);
    }
    bool readData(unsigned address, unsigned length, unsigned char* buffer) override
    {
        return m_core && m_core->readData(address, length, buffer);
    }
    bool writeData(unsigned address, unsigned length, const unsigned char* data) override
    {
        return m_core && m_core->writeData(address, length, data);
    }

    unsigned readRegister(unsigned module, unsigned index) override
    {
        return m_core && module < 16 && index < 32 ? m_core->readRegister(registerNumber(module, index)) : 0;
    }
    void writeRegister(unsigned module, unsigned index, unsigned value) override
    {
        if (m_core && module < 16 && index < 32)
            m_core->writeRegister(registerNumber(module, index), value);
    }

    // The order of the interface keeps three places that have no use.
    void reserved8() override {}
    void reserved9() override {}
    void reserved10() override {}

    void reset() override
    {
        if (m_core)
            m_core->reset();
    }
    unsigned step() override { return m_core ? m_core->step() : 0; }

    MAXQSIMRunner* runner() { return m_core ? this : nullptr; }

    void extend(unsigned features)
    {
        if (m_core)
            m_core->setCallBacks(static_cast<MAXQSIMExtendedCallBacks*>(m_callBacks), features);
    }

private:
    // The runner.
    void run(MAXQSIMRun* run) override { m_core->run(*run); }
    void interrupt() override { m_core->requestStop(); }
    void setStops(const unsigned* addresses, unsigned count) override
    {
        std::vector<uint32_t> words(addresses, addresses + count);
        for (uint32_t& word : words)
            word /= 2;
        m_core->setStops(words);
    }
    void setDataRanges(const MAXQSIMDataRange* ranges, unsigned count) override
    {
        if (ranges)
            m_core->tellAccesses({ranges, ranges + count});
        else
            m_core->tellAllAccesses();
    }
    void readCounts(unsigned address, unsigned words, MAXQSIMCount* counts) override
    {
        for (unsigned i = 0; i < words; ++i)
            counts[i] = m_core->count(address / 2 + i);
    }
    void resetCounts() override { m_core->resetCounts(); }

    bool start(MAXQSIMCallBacks* callBacks, const char* parameter, const std::string& romFile,
               std::string& error)
    {
        Parameters parameters;
        if (!parameters.parse(parameter, error))
            return false;
        try {
            m_core = std::make_unique<Core>(parameters.codeBytes, parameters.dataBytes);
            if (!loadRomFile(*m_core, romFile, error))
                return false;
        } catch (const std::bad_alloc&) {
            error = "not enough memory for the simulated memories";
            return false;
        }
        if (!parameters.traceFile.empty() && !m_core->openTrace(parameters.traceFile)) {
            error = "cannot write trace file " + parameters.traceFile;
            return false;
        }
        m_callBacks = callBacks;
        m_core->setCallBacks(callBacks);
        return true;
    }

    std::unique_ptr<Core> m_core; // null before initialise and after close
    MAXQSIMCallBacks* m_callBacks = nullptr;
};

} // namespace

} // namespace maxq30

#define MAXQSIM_EXPORT extern "C" __attribute__((visibility("default")))

MAXQSIM_EXPORT MAXQSIMInterface* newMAXQSIMInterface()
{
    return new (std::nothrow) maxq30::Simulator;
}

MAXQSIM_EXPORT void deleteMAXQSIMInterface(MAXQSIMInterface* object)
{
    delete static_cast<maxq30::Simulator*>(object);
}

MAXQSIM_EXPORT void extendMAXQSIMCallBacks(MAXQSIMInterface* object, unsigned features)
{
    static_cast<maxq30::Simulator*>(object)->extend(features);
}

MAXQSIM_EXPORT MAXQSIMRunner* runnerOfMAXQSIM(MAXQSIMInterface* object)
{
    return static_cast<maxq30::Simulator*>(object)->runner();
}
