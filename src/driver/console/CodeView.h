// The place in the program that commands are about: a frame of the stopped program, with its source line or
// instruction, and the text of the code around it.
#pragma once

#include "debug/evaluation/ExpressionContext.h"
#include "driver/session/ProgramRun.h"
#include "support/Path.h"

#include <QString>

#include <cstdint>

class Frame;

class CodeView : public ProgramRun::StopListener {
public:
    // The run is not owned.
    explicit CodeView(ProgramRun& run) : m_run(run) {}

    // Selects the innermost frame and shows its line, with the exception's text above it when one has
    // stopped the program.
    void onBreakpoint() override;
    // Selects a frame and shows its line; nothing happens when there is no such frame.
    void locate(unsigned frame);
    // Shows the line with so many around it: "NUMBER:\tTEXT", or "\tINSTRUCTION" in disassembly mode and for
    // code without lines. A line that its file does not have shows nothing.
    void showCode(unsigned before, unsigned after);

    bool sourceMode() const { return m_sourceMode; }
    void setSourceMode(bool on) { m_sourceMode = on; }

    // Null while the program runs.
    Frame* frame() const;
    // Where names are looked up: in the frame and the file of the place; nowhere while the program runs.
    ExpressionContext context() const;
    const Path& path() const { return m_path; }
    int line() const { return m_line; } // 0 for none

private:
    bool select(unsigned frame);
    QStringList sourceLines(unsigned before, unsigned after) const;
    QStringList instructions(unsigned before, unsigned after) const;

    ProgramRun& m_run;
    unsigned m_frame = 0;
    QString m_function;
    Path m_path;
    int m_line = 0;
    uint32_t m_address = 0;
    bool m_sourceMode = true;
};
