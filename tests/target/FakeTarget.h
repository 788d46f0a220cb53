// A target whose memories are arrays and which notes every call that matters, for tests of the
// download engine and of the session.
#pragma once

#include "loadfile/LoadFileInterface.h"
#include "loadfile/LoadFileSection.h"
#include "support/Endian.h"
#include "support/HException.h"
#include "target/TargetInterface.h"
#include "target/download/TargetInterfaceHelperFunctions.h"
#include "target/memory/TargetMemoryInterface.h"

#include <cstring>
#include <string>
#include <vector>

class FakeMemory : public TargetMemoryInterface {
public:
    explicit FakeMemory(bool erase, unsigned size = 0x10000)
        : TargetMemoryInterface(Endian::Little, 4, erase), bytes(size, 0xFF)
    {
    }
    void pokeBytes(uint32_t address, unsigned count, const unsigned char* from) override
    {
        note("poke", address, count);
        if (count)
            memcpy(at(address, count), from, count);
    }
    void peekBytes(uint32_t address, unsigned count, unsigned char* to) override
    {
        if (count)
            memcpy(to, at(address, count), count);
    }
    void downloadBytes(uint32_t address, unsigned count, const unsigned char* from, bool last) override
    {
        note(last ? "last" : "load", address, count);
        if (count)
            memcpy(at(address, count), from, count);
    }
    void eraseBytesBegin() override { log += "["; }
    void eraseBytesEnd() override { log += "]"; }
    void eraseBytes(uint32_t address, unsigned count, unsigned* erasedAddress, unsigned* erasedCount) override
    {
        uint32_t low = address / block * block;
        uint32_t high = (address + count + block - 1) / block * block;
        note("erase", low, high - low);
        memset(at(low, high - low), 0xFF, high - low);
        if (erasedAddress)
            *erasedAddress = low;
        if (erasedCount)
            *erasedCount = high - low;
    }
    void eraseAll() override { log += "eraseAll "; }
    void lockBytes(uint32_t address, unsigned count) override { note("lock", address, count); }
    void unlockAll() override { log += "unlockAll "; }
    bool supportsDifferentialDownloading() const override { return differential; }
    unsigned optimumDownloadBytesFragment() const override { return fragment; }
    unsigned optimumEraseBytesFragment() const override { return fragment; }
    unsigned optimumVerifyBytesFragment() const override { return fragment; }
    unsigned optimumLockBytesFragment() const override { return fragment; }

    std::vector<unsigned char> bytes;
    std::string log;
    bool differential = false;
    unsigned fragment = NoLimit;
    uint32_t block = 0x100;
    uint32_t failAt = 0xFFFFFFFF; // an access that touches this address throws

private:
    unsigned char* at(uint32_t address, unsigned count)
    {
        if (failAt >= address && failAt - address < count)
            throw HException("link lost");
        if (uint64_t(address) + count > bytes.size())
            throw HException("outside the fake memory");
        return bytes.data() + address;
    }
    void note(const char* what, uint32_t address, unsigned count)
    {
        char text[64];
        snprintf(text, sizeof text, "%s(%x,%x) ", what, address, count);
        log += text;
    }
};

class FakeHelpers : public TargetInterfaceHelperFunctions {
public:
    void progress(int done, int total, const char* label, const char*, bool) override
    {
        if (label)
            log += std::string(label) + " of " + std::to_string(total) + ": ";
        log += std::to_string(done) + " ";
        if (cancelAfter > 0 && --cancelAfter == 0)
            cancelled = true;
    }
    void message(const QString& text) override { messages += text.toStdString() + "\n"; }
    void error(const QString& text) override { messages += "error " + text.toStdString() + "\n"; }
    void message(const QString& text, int level) override
    {
        messages += text.toStdString() + "@" + QString::number(level, 16).toStdString() + "\n";
    }
    void success(const QString&) override {}
    void beginGroup(const QString& title, int count) override
    {
        messages += "{" + title.toStdString() + " " + QString::number(count, 16).toStdString() + "\n";
    }
    void endGroup(const QString& text) override { messages += text.toStdString() + "}\n"; }
    bool checkCancelled() override { return cancelled; }
    bool differentialDownloadEnabled() override { return differential; }

    std::string log;
    std::string messages;
    bool differential = true;
    bool cancelled = false;
    int cancelAfter = 0;
};

class FakeTarget : public TargetInterface {
public:
    explicit FakeTarget(FakeHelpers* helpers, int capabilities = HasEraseAll)
        : TargetInterface(capabilities, "Fake Board", helpers), code(true), ee(true)
    {
    }
    void connect(bool) override { connected = true; }
    void disconnect() override { connected = false; }
    bool isConnected() const override { return connected; }
    bool isStopped() override { return true; }
    TargetMemoryInterface* codeMemory() override { return &code; }
    TargetMemoryInterface* dataMemory() override { return &code; }
    TargetMemoryInterface* eeMemory() override { return hasEe ? &ee : nullptr; }
    void reset(bool, bool) override { calls += "reset "; }
    void go() override { calls += "go "; }
    void start(bool, unsigned) override { calls += "start "; }
    void step() override { calls += "step "; }
    void stop() override { calls += "stop "; }
    void clear() override { calls += "clear "; }
    void loadBeginInitial() override
    {
        calls += "begin ";
        if (failBegin)
            throw HException("no loader");
    }
    void loadEndFinal() override
    {
        calls += "end ";
        if (failEnd)
            throw HException("no way back");
    }

    FakeMemory code;
    FakeMemory ee;
    bool hasEe = false;
    bool connected = false;
    bool failBegin = false;
    bool failEnd = false;
    std::string calls;
};

// A load file made by hand. A section without bytes has no data.
class MadeLoadFile : public StandardLoadFile {
public:
    MadeLoadFile& add(const char* name, uint32_t address, std::vector<unsigned char> bytes,
                      bool eeprom = false)
    {
        m_bytes.push_back(std::make_unique<std::vector<unsigned char>>(std::move(bytes)));
        std::vector<unsigned char>& kept = *m_bytes.back();
        auto section =
            std::make_unique<StandardLoadFileSection>(name, address, uint32_t(kept.size()), kept.data());
        eeprom ? m_sections.addee(std::move(section)) : m_sections.add(std::move(section));
        return *this;
    }
    MadeLoadFile& addWithoutData(uint32_t address, uint32_t length)
    {
        m_sections.add(std::make_unique<StandardLoadFileSection>("", address, length, nullptr));
        return *this;
    }
    bool hasLoadAddress() const override { return true; }
    void setLoadAddress(unsigned long) override {}
    bool createLoadFileSections() override { return true; }

private:
    std::vector<std::unique_ptr<std::vector<unsigned char>>> m_bytes;
};
