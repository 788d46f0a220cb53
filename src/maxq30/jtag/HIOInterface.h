// Something that bytes can be read from and written to.
#pragma once

class HIOInterface {
public:
    virtual ~HIOInterface() = default;
    // Both answer the number of bytes moved, which may be less than asked for. What a short count or a
    // failure means is the implementation's to say.
    virtual int read(unsigned char* buffer, int count) = 0;
    virtual int write(const unsigned char* buffer, int count) = 0;
};
