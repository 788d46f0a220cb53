// The breakpoints of a simulated target: the list in the order of setting, the tests of an access against
// it, and the match that the current step has found.
//
// Every instruction and data access is tested, so there is a short way around the list: `refresh` notes
// where code and data breakpoints may match. The records belong to the debugger, which changes them behind
// our back; whoever lets it run calls `refresh` afterwards.
#pragma once

#include "debug/monitor/HBreakpoint.h"
#include "sim/maxqsim.h"

#include <array>
#include <vector>

class SimulatedBreakpoints {
public:
    void add(HBreakpoint* breakpoint);
    // Drops a match of the breakpoint, too.
    void remove(HBreakpoint* breakpoint);
    void clear();
    int count() const { return int(m_list.size()); }
    void refresh();

    HBreakpoint* matched() const { return m_matched; }
    unsigned matchedAddress() const { return m_matchedAddress; }
    unsigned matchedData() const { return m_matchedData; }
    void resetMatched() { m_matched = nullptr; }

    // False when matchCode would find nothing at this address.
    bool mayMatchCode(uint32_t pc) const { return m_codePlaces[codePlace(pc)]; }
    // Changes whenever one of the following may have.
    unsigned generation() const { return m_generation; }
    // The even addresses at which matchCode finds something; not to be asked when that is nearly everywhere.
    bool matchesCodeEverywhere() const { return m_codeEverywhere; }
    std::vector<unsigned> codeAddresses() const;
    // Accesses that touch none of these match nothing; not to be asked when nearly all may match.
    bool matchesDataEverywhere() const { return m_dataEverywhere; }
    std::vector<MAXQSIMDataRange> dataRanges() const;
    // False when no access of up to four bytes from this address can match.
    bool mayMatchData(uint32_t address) const { return m_dataPlaces[dataPlace(address)]; }
    bool watchesRegisters() const { return !m_registers.empty(); }
    // Numbers of the registers that enabled breakpoints watch.
    const std::vector<unsigned>& registers() const { return m_registers; }

    // The match of an access, which replaces an earlier one. A breakpoint that another one chains from only
    // enables that one, and leaves the earlier match as it is.
    void setMatched(HBreakpoint* breakpoint, unsigned address, unsigned data);
    // Of the following, the last match in the list stands, and one counts only if all records along its
    // `next` link match the same access. What an access arms can match from the next access on.
    // The instruction at `pc` is about to execute. Forgets an earlier match.
    void matchCode(uint32_t pc);
    // A data access of 1, 2 or 4 bytes. One of four also meets the value of a breakpoint of two in either
    // half.
    void matchData(unsigned address, unsigned length, unsigned value, bool read);
    // An access of a register.
    void matchRegister(unsigned number, unsigned length, unsigned value, bool read);

    // The test of one breakpoint against a data access.
    static bool matchesData(const HBreakpoint* b, unsigned address, unsigned length, unsigned value,
                            bool read);

private:
    static constexpr unsigned Places = 0x10000;   // programs up to 128 KiB have no two addresses at one place
    static constexpr unsigned LongestNoted = 256; // bytes; a longer range is tested at every instruction
    static constexpr unsigned LongestAccess = 4;
    // Bytes by place; those that are set are remembered, so that clearing costs no more than setting.
    class PlaceTable {
    public:
        void clear();
        void set(unsigned place);
        void setAll();
        unsigned char operator[](unsigned place) const { return m_bytes[place]; }

    private:
        std::array<unsigned char, Places> m_bytes{};
        std::vector<unsigned> m_set;
        bool m_all = false;
    };
    // The data breakpoints with a value at one place, for a test without branches: a record is met when
    // (accessed & bits) - low <= span, or when not.
    struct Values {
        struct Test {
            uint32_t bits, low, span;
            bool inverted;
        };
        uint32_t address, length;
        bool reads, writes;
        std::vector<Test> tests;
    };
    static unsigned codePlace(uint32_t address) { return address >> 1 & (Places - 1); }
    static unsigned dataPlace(uint32_t address) { return address >> 2 & (Places - 1); }
    void noteCode(const HBreakpoint* b);
    void noteData(HBreakpoint* b);
    void noteValue(const HBreakpoint* b);
    bool anyMatches(unsigned address, unsigned length, unsigned value, bool read) const;
    bool arms(const HBreakpoint* b) const;
    void arm(const HBreakpoint* b);
    HBreakpoint* lastOf(std::vector<HBreakpoint*>& candidates);

    std::vector<HBreakpoint*> m_list;
    HBreakpoint* m_matched = nullptr;
    unsigned m_matchedAddress = 0;
    unsigned m_matchedData = 0;

    // Noted by refresh(), of enabled breakpoints in the order of the list.
    PlaceTable m_codePlaces;
    PlaceTable m_dataPlaces;
    std::vector<HBreakpoint*> m_code;
    std::vector<HBreakpoint*> m_data;
    std::vector<HBreakpoint*> m_ranges; // of these, those without a value
    std::vector<Values> m_values;       // and those with one
    std::vector<unsigned> m_registers;
    unsigned m_generation = 0;
    bool m_codeEverywhere = false;
    bool m_dataEverywhere = false;
    bool m_chains = false; // some breakpoint is to be armed by another
};
