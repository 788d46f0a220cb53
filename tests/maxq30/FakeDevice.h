// A device and its adapter in one, as driver functions over a fake link: it notes each operation, keeps two
// memories, answers registers and the bootloader's questions, and fails the test on a frame it does not know.
#pragma once

#include "maxq30/jtag/HDataLink.h"
#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "maxq30/jtag/maxqd.h"
#include "support/Endian.h"
#include "support/HException.h"
#include "target/FakeTarget.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <unistd.h>

class FakeDevice : public HDataLink {
public:
    using Bytes = std::vector<unsigned char>;

    int read(unsigned char*, int) override { return 0; }
    int write(const unsigned char*, int) override { return 0; }

    static void bind(_maxqd_t* maxqd, FakeDevice* device)
    {
        MAXQD_init(maxqd);
        maxqd->link = device;
        device->pending.clear();
        maxqd->close = [](_maxqd_t* m) {
            of(m).log += "close "; // never fails
            m->link = nullptr;     // the test owns the device
            return 1;
        };
        maxqd->setNRST = [](_maxqd_t* m, int level) { of(m).note(level ? "nrst1" : "nrst0"); };
        maxqd->trst = [](_maxqd_t* m) { of(m).note("trst"); };
        maxqd->shiftInIR = [](_maxqd_t* m, unsigned char ir) { of(m).note("ir" + std::to_string(ir)); };
        maxqd->setSystemProgrammingBits = [](_maxqd_t* m, unsigned char bits) {
            of(m).note("sp" + std::to_string(bits));
        };
        maxqd->shiftInOutDR = [](_maxqd_t* m, unsigned char in, unsigned char* status) {
            return of(m).scan(in, status);
        };
        maxqd->multiShiftInDR8 = [](_maxqd_t* m, const unsigned char* bytes, unsigned long count) {
            of(m).frame({bytes, bytes + count});
            return 1;
        };
        maxqd->multiShiftOutDR8 = [](_maxqd_t* m, unsigned char* bytes, unsigned long count) {
            of(m).note("out" + std::to_string(count));
            of(m).answer(bytes, count);
            return 1;
        };
        maxqd->loaderWrite = [](_maxqd_t* m, const unsigned char* bytes, unsigned long count) {
            of(m).command({bytes, bytes + count});
            return 1;
        };
        maxqd->loaderRead = [](_maxqd_t* m, unsigned char* bytes, unsigned long count) {
            of(m).answer(bytes, count);
            return 1;
        };
        maxqd->setTimeout = [](_maxqd_t* m, unsigned long value) {
            of(m).log += "timeout" + std::to_string(value) + " "; // never fails
            return std::exchange(of(m).timeout, value);
        };
    }

    std::string take() { return std::exchange(log, {}); }

    std::string log;
    std::map<uint32_t, uint16_t> words;     // by word address; code from 0x800000
    Bytes map = Bytes(754);                 // the answer to the register map frame
    std::map<unsigned, uint32_t> registers; // live values
    std::deque<std::pair<int, int>> scans;  // status and data of the next scans
    std::pair<int, int> otherwise = {1, 0}; // of scans behind them
    std::map<unsigned char, Bytes> reports; // what the bootloader answers, by command
    int failAfter = -1;                     // operations until the link is lost
    unsigned long timeout = 1000;

private:
    static FakeDevice& of(_maxqd_t* maxqd) { return *static_cast<FakeDevice*>(maxqd->link); }

    void note(const std::string& text)
    {
        if (failAfter == 0) {
            pending.clear();
            throw HException("link lost");
        }
        if (failAfter > 0)
            --failAfter;
        log += text + " ";
    }
    static std::string hex(const Bytes& bytes)
    {
        std::string text;
        char two[3];
        for (unsigned char byte : bytes) {
            snprintf(two, sizeof two, "%02x", byte);
            text += two;
        }
        return text;
    }
    unsigned char scan(unsigned char in, unsigned char* status)
    {
        note(in ? "scan" + hex({in}) : "scan");
        auto [bits, data] = otherwise;
        if (scans.empty() && bits == 0)
            usleep(1000); // whoever waits for a status should not fill the log meanwhile
        if (!scans.empty()) {
            std::tie(bits, data) = scans.front();
            scans.pop_front();
        }
        if (status)
            *status = static_cast<unsigned char>(bits);
        return static_cast<unsigned char>(data);
    }
    void answer(unsigned char* bytes, unsigned long count)
    {
        if (pending.size() < count) {
            ADD_FAILURE() << count << " bytes read where " << pending.size() << " are to come, after " << log;
            throw HException("the fake device has no more to say");
        }
        std::copy_n(pending.begin(), count, bytes);
        pending.erase(pending.begin(), pending.begin() + long(count));
    }
    static uint32_t number(const Bytes& bytes, unsigned at, unsigned size)
    {
        return uint32_t(Endian::unpackNumber(bytes.data(), at, size, Endian::Little));
    }
    void push(uint32_t value, unsigned size)
    {
        for (unsigned i = 0; i < size; ++i)
            pending.push_back(static_cast<unsigned char>(value >> 8 * i));
    }
    void frame(const Bytes& bytes)
    {
        note("in" + hex(bytes));
        EXPECT_TRUE(pending.empty()) << "an answer was not read, before " << log;
        pending.clear();
        size_t size = bytes.size();
        unsigned char first = bytes[0];
        if (first >= 0x10 && first <= 0x1E)
            size == 1 ? push(0x44332211, first == 0x11 ? 1 : first < 0x19 ? 3 : 4) : void();
        else if ((first == 0x1F || first == 0x20 || first == 0x26 || first == 0x27) && size == 1)
            ;
        else if (first == 0x21 && size == 2)
            pending.assign(map.begin(), map.end());
        else if (first == 0x22 && size == 8)
            for (uint32_t i = 0; i < number(bytes, 5, 2); ++i)
                push(words[number(bytes, 1, 4) + i], 2);
        else if (first == 0x25 && size == (bytes[3] & 0x80 ? 7 : 8))
            words[number(bytes, 1, 4)] = uint16_t(number(bytes, 5, 2));
        else if (first == 0x24 && size == 8)
            registers[number(bytes, 1, 2)] = number(bytes, 3, 4);
        else if (first == 0x29 && size == 4)
            push(registers[number(bytes, 1, 2)], 4);
        else
            ADD_FAILURE() << "unknown frame " << hex(bytes);
    }
    void command(const Bytes& bytes)
    {
        note("load" + hex(bytes));
        EXPECT_TRUE(pending.empty()) << "an answer was not read, before " << log;
        pending.clear();
        auto report = reports.find(bytes[0]);
        if (report != reports.end() && bytes.size() == 1)
            pending.assign(report->second.begin(), report->second.end());
        else if (bytes[0] != 0x10 && bytes[0] != 0x90 && bytes[0] != 0x02)
            ADD_FAILURE() << "unknown bootloader command " << hex(bytes);
    }

    std::deque<unsigned char> pending; // of the running answer
};

class FakeJTAGTarget : public MAXQ30JTAGTargetInterface {
public:
    FakeJTAGTarget() : MAXQ30JTAGTargetInterface("Fake Adapter", &helpers)
    {
        device.reports = {{0x04, {0, 4}},       {0x05, {0x02, 0x00, 0x20, 0x00}},
                          {0x06, {0xFF, 0x7F}}, {0x07, {0, 0}},
                          {0x09, {5, 1}},       {0x0D, {'M', '3', '0', 0}}};
    }
    ~FakeJTAGTarget() override { closeLink(); }
    void connect(bool reset) override
    {
        closeLink();
        FakeDevice::bind(&m_driver, &device);
        device.scans = {{0, 0xB4}, {0, 0x85}, {0, 0x01}, {0, 0xFF}};
        MAXQ30JTAGTargetInterface::connect(reset);
    }
    // Connected, with an empty log.
    FakeJTAGTarget& connected()
    {
        connect(true);
        device.take();
        return *this;
    }
    void openAlone() { FakeDevice::bind(&m_driver, &device); }

    FakeHelpers helpers;
    FakeDevice device;
};
