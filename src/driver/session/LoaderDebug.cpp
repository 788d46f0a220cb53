// What the session does for the debugger: it passes on what went wrong, and finds source text.

#include "driver/session/Loader.h"
#include "driver/session/SessionFace.h"
#include "support/Path.h"

namespace {

constexpr int MaximumWarnings = 100;

} // namespace

void Loader::displayError(const QString& text)
{
    if (++m_warnings <= MaximumWarnings)
        m_face.warning(text);
    if (m_warnings == MaximumWarnings)
        m_face.warning(QStringLiteral("further warnings are not shown"));
}

void Loader::error(const QString& text)
{
    displayError(text);
}

Path Loader::getDebugSourcePath(const Path& path)
{
    return path;
}

QString Loader::getDebugSourceText(const Path& path, int line)
{
    return m_sourceText.line(path, line);
}
