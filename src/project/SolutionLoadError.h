// Why a solution did not load. The text is the file name followed by the detail, or for a file that is
// not XML "bad XML file - " and the file name.
#pragma once

#include "support/HException.h"

#include <QString>

class SolutionLoadError : public HException {
public:
    SolutionLoadError(const QString& fileName, const QString& detail)
        : HException(fileName + detail), m_fileName(fileName), m_detail(detail)
    {
    }
    // The parser's text, and the line that it reached.
    SolutionLoadError(const QString& fileName, const QString& errorText, unsigned line)
        : HException(QLatin1String("bad XML file - ") + fileName), m_fileName(fileName), m_badXML(true),
          m_errorText(errorText), m_errorLine(line)
    {
    }

    const QString& fileName() const { return m_fileName; } // last part of the path; may be empty
    const QString& detail() const { return m_detail; }     // follows the file name
    bool badXML() const { return m_badXML; }
    const QString& errorText() const { return m_errorText; }
    unsigned errorLine() const { return m_errorLine; }

private:
    QString m_fileName;
    QString m_detail;
    bool m_badXML = false;
    QString m_errorText;
    unsigned m_errorLine = 0;
};
