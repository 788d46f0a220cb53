#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/limits.h"

namespace kvas {

void Diagnostics::error(const Place& place, std::string_view text)
{
    m_errors.push_back({place, std::string(text)});
    if (m_errors.size() == limits::Errors) {
        m_errors.push_back({place, "too many errors"});
        throw GaveUp();
    }
}

uint32_t Diagnostics::addFile(std::string_view name)
{
    m_files.emplace_back(name);
    return uint32_t(m_files.size() - 1);
}

std::string Diagnostics::text() const
{
    std::string all;
    for (const Error& error : m_errors) {
        all += m_files[error.place.file];
        if (error.place.line)
            all += ":" + std::to_string(error.place.line) + ":" + std::to_string(error.place.column);
        all += ": error: " + error.text + "\n";
    }
    return all;
}

} // namespace kvas
