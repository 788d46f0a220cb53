// The bytes of a terminal's keyboard as keys: text, which may be UTF-8, control keys, and the escape
// sequences of cursor and editing keys. A sequence may come in pieces.
#pragma once

#include <string>
#include <string_view>

class KeyDecoder {
public:
    enum class Key { Up, Down, Left, Right, Home, End, Delete, Backspace, Enter, Tab, Kill, EndOfFile };

    class Receiver {
    public:
        // Printable characters, several at once when they came so.
        virtual void onText(std::string_view text) = 0;
        virtual void onKey(Key key) = 0;

    protected:
        ~Receiver() = default;
    };

    void setKeys(unsigned char erase, unsigned char kill, unsigned char endOfFile);
    void decode(std::string_view bytes, Receiver& receiver);

private:
    enum class State { Text, Escape, Sequence, Application };

    void controlByte(unsigned char byte, Receiver& receiver);
    void sequenceByte(unsigned char byte, Receiver& receiver);

    State m_state = State::Text;
    std::string m_parameter; // digits of the sequence so far
    unsigned char m_erase = 127;
    unsigned char m_kill = 21;
    unsigned char m_endOfFile = 4;
};
