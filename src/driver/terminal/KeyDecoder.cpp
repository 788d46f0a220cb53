#include "driver/terminal/KeyDecoder.h"

#include <optional>

namespace {

constexpr unsigned char EscapeByte = 27, BackspaceByte = 8, DeleteByte = 127;
constexpr size_t MaxParameter = 16;

using Key = KeyDecoder::Key;

bool isText(unsigned char byte)
{
    return byte >= 32 && byte != DeleteByte;
}

std::optional<Key> keyOfLetter(unsigned char letter)
{
    switch (letter) {
    case 'A': return Key::Up;
    case 'B': return Key::Down;
    case 'C': return Key::Right;
    case 'D': return Key::Left;
    case 'H': return Key::Home;
    case 'F': return Key::End;
    }
    return {};
}

// The keys that terminals send as a number: ESC [ number ~
std::optional<Key> keyOfNumber(const std::string& number)
{
    if (number == "1" || number == "7")
        return Key::Home;
    if (number == "4" || number == "8")
        return Key::End;
    if (number == "3")
        return Key::Delete;
    return {};
}

} // namespace

void KeyDecoder::setKeys(unsigned char erase, unsigned char kill, unsigned char endOfFile)
{
    m_erase = erase;
    m_kill = kill;
    m_endOfFile = endOfFile;
}

void KeyDecoder::decode(std::string_view bytes, Receiver& receiver)
{
    size_t at = 0;
    while (at < bytes.size()) {
        auto byte = static_cast<unsigned char>(bytes[at]);
        if (m_state == State::Text && isText(byte)) {
            size_t end = at + 1;
            while (end < bytes.size() && isText(static_cast<unsigned char>(bytes[end])))
                ++end;
            receiver.onText(bytes.substr(at, end - at));
            at = end;
            continue;
        }
        ++at;
        if (m_state == State::Text || byte == EscapeByte)
            controlByte(byte, receiver);
        else
            sequenceByte(byte, receiver);
    }
}

void KeyDecoder::controlByte(unsigned char byte, Receiver& receiver)
{
    if (byte == EscapeByte)
        m_state = State::Escape;
    else if (byte == '\n' || byte == '\r')
        receiver.onKey(Key::Enter);
    else if (byte == '\t')
        receiver.onKey(Key::Tab);
    else if (byte == m_erase || byte == BackspaceByte || byte == DeleteByte)
        receiver.onKey(Key::Backspace);
    else if (byte == m_kill)
        receiver.onKey(Key::Kill);
    else if (byte == m_endOfFile)
        receiver.onKey(Key::EndOfFile);
}

void KeyDecoder::sequenceByte(unsigned char byte, Receiver& receiver)
{
    if (m_state == State::Escape) {
        m_parameter.clear();
        m_state = byte == '[' ? State::Sequence : byte == 'O' ? State::Application : State::Text;
        return;
    }
    if (m_state == State::Sequence && byte >= 0x20 && byte < 0x40) {
        if (m_parameter.size() < MaxParameter)
            m_parameter += char(byte);
        return;
    }
    m_state = State::Text;
    if (auto key = byte == '~' ? keyOfNumber(m_parameter) : keyOfLetter(byte))
        receiver.onKey(*key);
}
