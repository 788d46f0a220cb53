// Code memory of a MAXQ30 device through its ROM bootloader, for the length of a load. Writes are collected
// into pages; the first read takes the device out of the bootloader, and from then on reads go through the
// debug engine. What the bootloader refuses is told as a warning, and shows when the memory is verified.
#pragma once

#include "maxq30/jtag/MAXQ30BootloaderInformation.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QString>

#include <utility>

class MAXQ30JTAGCodeMemoryInterface;
class MAXQ30JTAGTargetInterface;

class MAXQ30JTAGLoaderMemoryInterface : public TargetMemoryInterface {
public:
    // Resets the device into its bootloader and asks what it can do. Throws HException when it does not
    // start or its answers make no sense. Both references outlive this.
    MAXQ30JTAGLoaderMemoryInterface(MAXQ30JTAGTargetInterface& target, MAXQ30JTAGCodeMemoryInterface& code);

    const QString& deviceId() const { return m_deviceId; }
    const BootloaderReport& report() const { return m_report; }

    // Bytes of a page that it does not receive go out as 0xFF.
    void pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes) override;
    void peekBytes(uint32_t address, unsigned count, unsigned char* bytes) override;
    void flush() override;
    // The last flush of a load, which tells whether the bootloader refused part of it.
    void finish();
    void eraseAll() override; // by the project's erase script
    // At once, in whole commands of the family that the bootloader offers; the end of a fixed-length
    // command is filled with 0xFF.
    void alignedPokeBytes(unsigned int address, unsigned int length, const unsigned char* data);

    unsigned optimumPokeBytesFragment() const override { return 0x10000; }
    unsigned optimumPeekBytesFragment() const override { return 0x10000; }
    unsigned optimumMemsetBytesFragment() const override { return 0x10000; }
    unsigned optimumDownloadBytesFragment() const override { return 0x800; }
    unsigned optimumUploadBytesFragment() const override { return 0x1000; }
    unsigned optimumVerifyBytesFragment() const override { return 0x1000; }
    unsigned optimumEraseBytesFragment() const override { return 0x20000; }

    // Sends a command; a warning tells when the bootloader refuses it.
    void command(const unsigned char* bytes, unsigned count);
    // The bootloader's flags and the error of its last command.
    std::pair<unsigned char, unsigned char> getFlagsAndError();
    static const char* getLoaderStatusString(unsigned char error);

private:
    static constexpr unsigned PageBytes = 256;
    static constexpr uint32_t NoPage = 0xFFFFFFFF;

    void ask(unsigned char command, unsigned char* answer, unsigned count);
    unsigned askNumber(unsigned char command);
    void getSupportedCommands();
    void getDeviceId();
    void getROMVersion();
    void warnOfRefusal(const char* what);
    bool fixedLengthFits() const;
    void awaitPrompt();
    void pokeVariable(uint32_t address, unsigned length, const unsigned char* data);
    void pokeFixed(uint32_t address, unsigned length, const unsigned char* data);
    void leaveBootloader();

    MAXQ30JTAGTargetInterface& m_target;
    MAXQ30JTAGCodeMemoryInterface& m_codeMemory;
    unsigned char m_page[PageBytes];
    unsigned m_pageSize = PageBytes;
    uint32_t m_pageBase = NoPage;
    bool m_inLoader = true; // until the first read
    BootloaderReport m_report;
    QString m_deviceId;
    bool m_loadRefused = false; // and not told yet
};
