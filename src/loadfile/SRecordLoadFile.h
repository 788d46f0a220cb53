// Motorola S-records: S0 header, S1 to S3 data, S5 record count, S7 to S9 entry point, each with a
// checksum. The end of the file ends reading, not the entry point record. Throws HException with the
// line number behind its text.
#pragma once

#include "loadfile/TextLoadFile.h"

class SRecordLoadFile : public TextLoadFile {
public:
    explicit SRecordLoadFile(const char* file);
    // The bytes of a file.
    explicit SRecordLoadFile(std::span<const char> text);

private:
    template <class Source> void read(Source source); // a file name or its bytes
    void readRecord(Cursor line);
    static void checkSum(Cursor& line, uint8_t sum);
    uint16_t m_dataRecords = 0;
};
