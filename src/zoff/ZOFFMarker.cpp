#include "zoff/ZOFFMarker.h"

int32_t ZOFFMarker::m_markCount = 0;

void ZOFFMarker::print(std::string& out) const
{
    if (m_name) {
        out += m_name->view();
        return;
    }
    if (m_numbers.printNumber == -1)
        m_numbers.printNumber = m_markCount++;
    out += '@';
    out += std::to_string(m_numbers.printNumber);
}

void ZOFFFilename::print(std::string& out) const
{
    out += "\t.FILE\t\"";
    if (m_fileName)
        out += m_fileName->view();
    out += '"';
}

void ZOFFLocus::print(std::string& out) const
{
    out += "\t.LINE\t\"";
    if (m_file && m_file->fileName())
        out += m_file->fileName()->view();
    out += "\", ";
    out += std::to_string(line());
}
