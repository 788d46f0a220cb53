// A trace of the JTAG operations of an open driver record: one line each on standard error, with the
// milliseconds since the trace began, the operation, its bytes in hexadecimal and what it means. A record
// that is not traced pays nothing, since the trace is a second table put in its place.
#pragma once

#include "maxq30/jtag/HDataLink.h"
#include "maxq30/jtag/maxqd.h"

#include <chrono>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

// Stands in the link's place and keeps the link and the table that were there, for its functions to find.
class JTAGTrace : public HDataLink {
public:
    // From now on the record's operations are traced; closing it ends that.
    static void install(_maxqd_t* maxqd, FILE* output = stderr);

    ~JTAGTrace() override;
    int read(unsigned char* buffer, int count) override { return m_traced.link->read(buffer, count); }
    int write(const unsigned char* buffer, int count) override { return m_traced.link->write(buffer, count); }
    void purge() override { m_traced.link->purge(); }
    void setTimeout(unsigned long milliseconds) override { m_traced.link->setTimeout(milliseconds); }

private:
    struct Table;
    JTAGTrace(const _maxqd_t& traced, FILE* output) : m_traced(traced), m_output(output) {}
    void line(const char* operation, std::span<const unsigned char> bytes, std::string_view words);
    template <class Operation>
    void guarded(const char* operation, std::span<const unsigned char> bytes, Operation&& body);

    _maxqd_t m_traced;
    FILE* m_output;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};
