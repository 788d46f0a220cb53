// A face that hands everything on to another, which may be changed: what is made before the options are read
// does not know yet who watches the session.
#pragma once

#include "driver/session/SessionFace.h"

class FaceSwitch : public SessionFace {
public:
    // Not owned.
    explicit FaceSwitch(SessionFace& face) : m_face(&face) {}
    void setFace(SessionFace& face) { m_face = &face; }

    void progress(int done, int total, const char* label, const char* unit) override
    {
        m_face->progress(done, total, label, unit);
    }
    void summary(const QString& text) override { m_face->summary(text); }
    void message(const QString& text) override { m_face->message(text); }
    void warning(const QString& text) override { m_face->warning(text); }
    void output(std::string_view text) override { m_face->output(text); }
    void showLines(const QStringList& lines) override { m_face->showLines(lines); }

private:
    SessionFace* m_face;
};
