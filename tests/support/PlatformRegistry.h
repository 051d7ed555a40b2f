// Registry reads through the plain platform calls, so that tests check what
// the code under test wrote without going through that code.
#pragma once

#include <windows.h>

#include <string>

namespace TestSupport {

// The string value, or "<none>" when the key or the value is missing.
// `view` is 0, KEY_WOW64_32KEY or KEY_WOW64_64KEY.
std::string RegistryString(HKEY root, const std::string& subKey,
                           const char* name, REGSAM view = 0);

}  // namespace TestSupport
