// The boundary between a debugger and a simulator library. A library exports two functions, which
// make and destroy one interface object; everything else goes through the virtual operations below.
// Their order is the binary interface: neither class has a destructor slot, so the first operation
// of each stands in slot 0. Addresses and lengths are in bytes. All calls come from one thread.
#pragma once

// What the library tells its user while it executes. A library calls only these six.
class MAXQSIMCallBacks {
public:
    // A data access that succeeded. byteAccess is 1 for a byte and 0 for a 16-bit word.
    virtual void onDataAccess(bool read, unsigned address, unsigned value, unsigned byteAccess) = 0;
    // A data access outside the memories.
    virtual void onDataError(bool read, unsigned address) = 0;
    // A word access at an odd address.
    virtual void onDataAlignmentError(bool read, unsigned address) = 0;
    // An instruction fetch outside the code memory.
    virtual void onCodeError(unsigned address) = 0;
    virtual void onInvalidInstruction(unsigned address) = 0;
    // Anything else; the text is good for the length of the call.
    virtual void onMiscError(const char* text, unsigned address) = 0;

protected:
    ~MAXQSIMCallBacks() = default;
};

// Callbacks of a user who simulates peripherals outside the library. The registers of modules 0 to 4
// are the peripheral window; `number` is (index << 4) | module. A library calls these only after
// useMAXQSIMPeripherals has switched them on, so a user with six slots is safe with any library.
class MAXQSIMPeripheralCallBacks : public MAXQSIMCallBacks {
public:
    // The value of a window register of `size` bytes.
    virtual unsigned onPeripheralLoad(unsigned number, unsigned size) = 0;
    virtual void onPeripheralStore(unsigned number, unsigned size, unsigned value) = 0;
    // Asked once in 64 instructions with the current interrupt requests of modules 0 to 4 (bit n for
    // module n); answers the new ones.
    virtual unsigned onPollForInterrupts(unsigned requests) = 0;

protected:
    ~MAXQSIMPeripheralCallBacks() = default;
};

// The processor with its memories.
class MAXQSIMInterface {
public:
    // Must succeed before anything else is asked. The parameter text is the library's own affair.
    virtual bool initialise(MAXQSIMCallBacks* callBacks, const char* parameter, const char* romFileName) = 0;
    virtual void close() = 0;
    // Reads and writes of the two memories: false, and nothing is changed, when part of the range lies
    // outside.
    virtual bool readCode(unsigned address, unsigned length, unsigned char* buffer) = 0;
    virtual bool writeCode(unsigned address, unsigned length, const unsigned char* data) = 0;
    virtual bool readData(unsigned address, unsigned length, unsigned char* buffer) = 0;
    virtual bool writeData(unsigned address, unsigned length, const unsigned char* data) = 0;
    // Module 0 to 15, index 0 to 31. IP (module 12, index 0) counts 16-bit words.
    virtual unsigned readRegister(unsigned module, unsigned index) = 0;
    virtual void writeRegister(unsigned module, unsigned index, unsigned value) = 0;
    // These keep their places in the order; nobody calls them.
    virtual void reserved8() = 0;
    virtual void reserved9() = 0;
    virtual void reserved10() = 0;
    virtual void reset() = 0;
    // Executes one instruction and answers the cycles that it took.
    virtual unsigned step() = 0;

protected:
    ~MAXQSIMInterface() = default;
};

// The exports: newMAXQSIMInterface and deleteMAXQSIMInterface in every library, and
// useMAXQSIMPeripherals in one that can hand its peripheral window to its user. The last is called
// after initialise, whose callbacks must then be a MAXQSIMPeripheralCallBacks.
using NewMAXQSIMInterface = MAXQSIMInterface* (*)();
using DeleteMAXQSIMInterface = void (*)(MAXQSIMInterface*);
using UseMAXQSIMPeripherals = void (*)(MAXQSIMInterface*, bool);
