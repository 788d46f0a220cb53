// A host without an adapter: it moves the pins of a device level by level, each scan spelled out, and
// counts the pulses.
#pragma once

#include "board/Device.h"
#include "board/Journal.h"
#include "sim/Program.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <vector>

namespace board {

using Bytes = std::vector<uint8_t>;

class Probe {
public:
    explicit Probe(Device& device) : m_device(device) {}

    unsigned pulses = 0;
    uint8_t status = 0; // of the latest data scan

    void reset(bool level) { m_device.setReset(level); }
    void testReset()
    {
        tms(1, 5);
        tms(0);
    }
    void shiftIR(unsigned instruction)
    {
        tms(1, 2);
        tms(0, 2);
        tdi(instruction & 1);
        tms(0);
        tdi(instruction & 2);
        tms(0);
        tdi(instruction & 4);
        tms(1, 2);
        tms(0);
    }
    // The data byte; `status` is set.
    uint8_t shiftDR(unsigned byte)
    {
        status = 0;
        tms(1);
        tms(0, 2);
        status |= m_device.tdo() ? 1 : 0;
        tms(0);
        status |= m_device.tdo() ? 2 : 0;
        tms(0);
        unsigned out = 0;
        for (int bit = 0; bit < 8; ++bit) {
            out |= m_device.tdo() ? 1u << bit : 0;
            tdi(byte >> bit & 1);
            tms(bit == 7);
        }
        tms(1);
        tms(0);
        return uint8_t(out);
    }
    void systemProgramming(unsigned bits)
    {
        shiftIR(4);
        tms(1);
        tms(0, 2);
        tdi(bits & 1);
        tms(0);
        tdi(bits & 2);
        tms(0);
        tdi(bits & 4);
        tms(1, 2);
        tms(0);
    }
    void send(const Bytes& bytes)
    {
        for (uint8_t byte : bytes)
            shiftDR(byte);
    }
    Bytes fetch(size_t count)
    {
        Bytes bytes;
        while (count--)
            bytes.push_back(shiftDR(0));
        return bytes;
    }
    Bytes ask(const Bytes& frame, size_t count)
    {
        send(frame);
        return fetch(count);
    }
    // Bytes with flow control by the first status bit: the number of scans, or 0 when they were refused
    // ten times in a row.
    unsigned loaderWrite(const Bytes& bytes)
    {
        size_t next = 0;
        unsigned retries = 10, scans = 0;
        uint8_t current = bytes[0];
        for (;;) {
            bool finished = false, success = false;
            tms(1);
            tms(0, 2);
            tdi(0);
            if (m_device.tdo()) {
                retries = 10;
                finished = success = next == bytes.size();
                current = finished ? 0 : bytes[next++];
            } else if (--retries == 0) {
                finished = true;
            }
            tms(0, 2);
            for (int bit = 0; bit < 8; ++bit) {
                tdi(current >> bit & 1);
                tms(bit == 7);
            }
            tms(1);
            tms(0);
            ++scans;
            if (finished)
                return success ? scans : 0;
        }
    }

    // In reset with system programming value `bits` and the channel selected, then out of it.
    void restart(unsigned bits, const Bytes& whileInReset = {})
    {
        reset(false);
        testReset();
        systemProgramming(bits);
        shiftIR(2);
        send(whileInReset);
        reset(true);
    }
    bool isStopped()
    {
        shiftDR(0x20);
        shiftDR(0);
        return status != 0;
    }

private:
    void tms(bool level, unsigned count = 1)
    {
        m_device.setTMS(level);
        for (; count; --count, ++pulses)
            m_device.pulseTCK();
    }
    void tdi(bool level) { m_device.setTDI(level); }

    Device& m_device;
};

// A device with a probe on it. Tests change `settings` before they call powerUp().
class BoardTest : public ::testing::Test {
protected:
    void powerUp()
    {
        device = std::make_unique<Device>(settings, journal);
        probe = std::make_unique<Probe>(*device);
        probe->testReset();
    }
    void put(const maxq30::Words& words, uint32_t word = 0)
    {
        for (uint16_t w : words) {
            const unsigned char bytes[] = {uint8_t(w), uint8_t(w >> 8)};
            ASSERT_TRUE(device->core().writeCode(2 * word++, 2, bytes));
        }
    }
    Bytes code(uint32_t address, uint32_t length)
    {
        Bytes bytes(length);
        EXPECT_TRUE(device->core().readCode(address, length, bytes.data()));
        return bytes;
    }
    Bytes data(uint32_t address, uint32_t length)
    {
        Bytes bytes(length);
        EXPECT_TRUE(device->core().readData(address, length, bytes.data()));
        return bytes;
    }
    // Stopped at address 0, with the debug engine on.
    void stopInReset() { probe->restart(0, {0x11, 0x80, 0x1F}); }
    void startLoader()
    {
        probe->restart(1);
        int scans = 0;
        do
            ASSERT_LT(++scans, 100);
        while (probe->shiftDR(0), !probe->status);
    }
    // The answer to a command.
    Bytes command(const Bytes& bytes, size_t count)
    {
        EXPECT_NE(probe->loaderWrite(bytes), 0u);
        return probe->fetch(count);
    }
    uint8_t lastError() { return command({0x04}, 2)[1]; }

    Settings settings;
    Journal journal;
    std::unique_ptr<Device> device;
    std::unique_ptr<Probe> probe;
};

inline uint32_t little(const Bytes& bytes, size_t at, unsigned count)
{
    uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i)
        value |= uint32_t(bytes.at(at + i)) << (8 * i);
    return value;
}

inline Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace board
