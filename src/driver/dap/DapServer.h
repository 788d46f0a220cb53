// One session with an editor over a pair of descriptors, from its first message to its end.
#pragma once

#include "driver/dap/Adapter.h"

namespace DapServer {

// Comes back when the editor has disconnected or closed the pipe, or after Ctrl-C, with the target
// disconnected. The descriptors stay the caller's. Returns the exit status.
int run(const Adapter::Session& session, int input, int output);

} // namespace DapServer
