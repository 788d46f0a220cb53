// What this version cannot do yet says so, in one form.
#pragma once

// Throws HException "this version cannot WHAT".
[[noreturn]] void notInThisVersion(const char* what);
