// A plain image: one section "data" with the bytes of the file, which must be told where to go.
#pragma once

#include "loadfile/FileInput.h"
#include "loadfile/LoadFileInterface.h"

class BinaryLoadFile : public StandardLoadFile {
public:
    explicit BinaryLoadFile(const char* file) : m_bytes(file) {}

    bool hasLoadAddress() const override { return false; }
    // A new address has the sections built again; the same one keeps them.
    void setLoadAddress(unsigned long address) override;

protected:
    // Throws HException when the file reaches beyond the last target address.
    bool createLoadFileSections() override;

private:
    FileBytes m_bytes;
    uint32_t m_loadAddress = 0;
};
