// A load file: anything that can be put into target memory as a list of address ranges with bytes,
// and optionally an entry point. The readers stand beside this file, one class each.
#pragma once

#include "loadfile/LoadFileSections.h"

class LoadFileInterface {
public:
    LoadFileInterface() = default;
    virtual ~LoadFileInterface() = default;
    LoadFileInterface(const LoadFileInterface&) = delete;
    LoadFileInterface& operator=(const LoadFileInterface&) = delete;

    virtual bool hasEntryPoint() const = 0;
    virtual void setEntryPoint(unsigned long entryPoint) = 0;
    virtual unsigned long entryPoint() = 0;
    // True when the file carries its own addresses, false when it must be told where to go.
    virtual bool hasLoadAddress() const = 0;
    virtual void setLoadAddress(unsigned long address) = 0;
    // Replaces the sections of ordinary memory by one that spans them all, gaps filled with `fill`;
    // where sections overlap the later one wins. Without any byte nothing changes.
    virtual void makeContiguous(unsigned char fill);
    virtual void sortLoadFileSections();
    virtual bool hasSymbols() { return false; }

    // The sections, built on first demand and then kept until invalidated. Throws HException
    // "cannot read sections from load file"; a later call tries again.
    LoadFileSections& loadFileSections();
    void invalidateLoadFileSections();
    void clearPatches();

protected:
    // Builds the sections into m_sections; true on success.
    virtual bool createLoadFileSections() = 0;

    LoadFileSections m_sections;

private:
    bool m_sectionsValid = false;
};

// A load file that keeps an entry point once it is told one.
class StandardLoadFile : public LoadFileInterface {
public:
    bool hasEntryPoint() const override { return m_entryPointKnown; }
    void setEntryPoint(unsigned long entryPoint) override
    {
        m_entryPoint = uint32_t(entryPoint);
        m_entryPointKnown = true;
    }
    unsigned long entryPoint() override { return m_entryPoint; }

private:
    uint32_t m_entryPoint = 0;
    bool m_entryPointKnown = false;
};
