// The version banner.
#pragma once

void RELEASE_printVersionToStderr(const char* program);
