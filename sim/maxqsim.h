// The boundary between a debugger and a simulator library. A library exports two functions, which
// make and destroy one interface object; everything else goes through the virtual operations below.
// Their order is the binary interface: neither class has a destructor slot, so the first operation
// of each stands in slot 0. Addresses and lengths are in bytes. All calls come from one thread.
#pragma once

// What the library tells its user while it executes. Unless asked, a library calls only these six.
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

// Callbacks that a user may ask for, each kind by its bit of MAXQSIMFeature. A library that does not know
// them never calls them, and one that does only after extendMAXQSIMCallBacks.
enum MAXQSIMFeature : unsigned { MAXQSIM_LongDataAccesses = 1, MAXQSIM_Peripherals = 2 };

class MAXQSIMExtendedCallBacks : public MAXQSIMCallBacks {
public:
    // MAXQSIM_LongDataAccesses: a data access of 32 bits that succeeded. Without the feature it is told
    // as two words.
    virtual void onLongDataAccess(bool read, unsigned address, unsigned value) = 0;

    // MAXQSIM_Peripherals: the user simulates what stands behind the registers of modules 0 to 4.
    // `number` is (index << 4) | module.
    // The value of a window register of `size` bytes.
    virtual unsigned onPeripheralLoad(unsigned number, unsigned size) = 0;
    virtual void onPeripheralStore(unsigned number, unsigned size, unsigned value) = 0;
    // Asked once in 4096 instructions with the current interrupt requests of modules 0 to 4 (bit n for
    // module n); answers the new ones.
    virtual unsigned onPollForInterrupts(unsigned requests) = 0;

protected:
    ~MAXQSIMExtendedCallBacks() = default;
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

// Data addresses, both bounds among them.
struct MAXQSIMDataRange {
    unsigned first;
    unsigned last;
};

// How often the instruction at an address was executed. A jump, call or return also tells how often it went
// to its target; the other times it went on behind itself.
struct MAXQSIMCount {
    unsigned long long executed;
    unsigned long long taken;
};

// A run of many steps in one call.
struct MAXQSIMRun {
    unsigned long long maximum; // steps to do
    bool fromStop;              // the first instruction is executed even if a stop lies there
    // What was done, good when the run is over, also by an exception of a callback.
    unsigned long long steps;
    unsigned long long cycles;
    bool atStop; // it ended before an instruction at a stop
};

// A processor at its full speed: nothing is asked of its user between the steps. The state of an interface
// object, which owns it. Addresses are in bytes.
class MAXQSIMRunner {
public:
    // Each step is what MAXQSIMInterface::step does. The run ends early at a stop, and behind a step in which
    // a callback called interrupt().
    virtual void run(MAXQSIMRun* run) = 0;
    virtual void interrupt() = 0;
    // Where runs end, before the instruction is executed; in place of earlier ones. Any number costs nothing
    // during a run.
    virtual void setStops(const unsigned* addresses, unsigned count) = 0;
    // From now on onDataAccess and onLongDataAccess are called only for accesses that touch one of the
    // ranges; null for all accesses. What lies far from all ranges costs nothing.
    virtual void setDataRanges(const MAXQSIMDataRange* ranges, unsigned count) = 0;
    // Executions since initialise or resetCounts, by runs and by steps, of the instructions at `address`,
    // address + 2 and so on; 0 outside the code memory. Entries into interrupts are not among them.
    virtual void readCounts(unsigned address, unsigned words, MAXQSIMCount* counts) = 0;
    virtual void resetCounts() = 0;

protected:
    ~MAXQSIMRunner() = default;
};

// The exports: newMAXQSIMInterface and deleteMAXQSIMInterface in every library, and
// extendMAXQSIMCallBacks in one that knows the features. The last is called after initialise, whose
// callbacks must then be a MAXQSIMExtendedCallBacks; the features given are those that hold from now on.
// runnerOfMAXQSIM is there in a library that has a runner; it is null before initialise and good until close.
using NewMAXQSIMInterface = MAXQSIMInterface* (*)();
using DeleteMAXQSIMInterface = void (*)(MAXQSIMInterface*);
using ExtendMAXQSIMCallBacks = void (*)(MAXQSIMInterface*, unsigned features);
using RunnerOfMAXQSIM = MAXQSIMRunner* (*)(MAXQSIMInterface*);
