// One contiguous range of a load file: addresses, bytes, and a patch copy on demand.
#pragma once

#include "loadfile/limits.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class LoadFileSectionInterface {
public:
    virtual ~LoadFileSectionInterface() = default;
    virtual const std::string& name() const = 0; // may be empty
    virtual uint32_t address() const = 0;        // of the first byte
    virtual uint32_t length() const = 0;         // in bytes
    // The bytes; with `patched` the patch copy when there is one. Null for a section without data.
    virtual const unsigned char* data(bool patched) const = 0;
    // The patch copy, made on first use from the unpatched bytes; owned by the section.
    virtual unsigned char* createPatch() = 0;
    virtual void clearPatch() = 0;
};

// Same range and, where both have data, the same unpatched bytes; a section with data never equals
// one without.
bool operator==(const LoadFileSectionInterface& a, const LoadFileSectionInterface& b);

// A section over bytes that somebody else owns and keeps for as long as the section lives.
class StandardLoadFileSection : public LoadFileSectionInterface {
public:
    StandardLoadFileSection(std::string name, uint32_t address, uint32_t length, unsigned char* data);

    const std::string& name() const override { return m_name; }
    uint32_t address() const override { return m_address; }
    uint32_t length() const override { return m_length; }
    const unsigned char* data(bool patched) const override
    {
        return patched && m_patch ? m_patch.get() : m_data;
    }
    unsigned char* createPatch() override;
    void clearPatch() override { m_patch.reset(); }

    // For makers that find out a section's place and size as they go.
    void setAddress(uint32_t address) { m_address = address; }
    void setLength(uint32_t length) { m_length = length; }

protected:
    std::string m_name;
    uint32_t m_address;
    uint32_t m_length;
    unsigned char* m_data;
    std::unique_ptr<unsigned char[]> m_patch;
};

// A section that owns a growing buffer, for readers that do not know the size in advance. A scattered file
// has a million of them, of a record each: the objects lie together in blocks, and the first bytes inside the
// object.
class ExpandingLoadFileSection final : public StandardLoadFileSection {
public:
    ExpandingLoadFileSection(std::string name, uint32_t address);
    ~ExpandingLoadFileSection() override;
    ExpandingLoadFileSection(const ExpandingLoadFileSection&) = delete;
    ExpandingLoadFileSection& operator=(const ExpandingLoadFileSection&) = delete;

    static void* operator new(size_t size);
    static void operator delete(void* section);

    // Adds `count` uninitialised bytes at the end and returns the address of the first. The buffer
    // grows by half, so many small steps stay linear. Throws HException when the section would
    // reach beyond the last target address.
    unsigned char* expand(uint32_t count)
    {
        if (count > m_capacity - m_length || end() + count > LoadFileLimits::AddressSpace) [[unlikely]]
            grow(count);
        unsigned char* added = m_data + m_length;
        m_length += count;
        return added;
    }

    // One past the last address; 2^32 for a section that ends at the last one.
    uint64_t end() const { return uint64_t(m_address) + m_length; }

private:
    static constexpr uint32_t InnerBytes = 32;
    void grow(uint32_t count);

    uint32_t m_capacity = InnerBytes;
    unsigned char m_inner[InnerBytes];
};
