// All limits of the debug adapter: what an editor may ask for, whoever wrote it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace DapLimits {

// Bytes in front of a message, with its empty line.
constexpr size_t HeaderBytes = 4096;
constexpr size_t MessageBytes = 16 * 1024 * 1024;
constexpr int JsonNesting = 64;
// Bytes of requests that wait while the adapter is busy; more stay in the pipe.
constexpr size_t WaitingBytes = 64 * 1024 * 1024;
// Bytes of events that an editor has not taken yet; the adapter then waits for it.
constexpr size_t UnsentBytes = 16 * 1024 * 1024;

// Of each kind, and of the expressions in one text of a log point.
constexpr int Breakpoints = 10000;
constexpr int LogPieces = 1000;
// Things with children that were shown since the last stop.
constexpr int References = 1 << 20;
// Children in one answer. Editors ask for arrays in pages, and for everything else at once.
constexpr int Children = 10000;
constexpr unsigned StringBytes = 4096;
constexpr uint32_t MemoryBytes = 1024 * 1024;
constexpr int Instructions = 10000;
constexpr int Frames = 10000;
constexpr int Completions = 1000;
// Bytes of a source file that is sent instead of its name.
constexpr int64_t SourceBytes = 16 * 1024 * 1024;
constexpr int SourceMapEntries = 1000;

} // namespace DapLimits
