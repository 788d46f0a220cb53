// What a solution may ask of us at most. Each limit is far above what people write by hand or a workbench
// writes for them, and ends in a message instead of a crash or an endless run.
#pragma once

namespace ProjectLimits {

constexpr unsigned ImportDepth = 100; // solutions that import each other

} // namespace ProjectLimits
