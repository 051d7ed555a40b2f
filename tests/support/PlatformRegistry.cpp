#include "PlatformRegistry.h"

namespace TestSupport {

std::string RegistryString(HKEY root, const std::string& subKey,
                           const char* name, REGSAM view) {
  HKEY key = nullptr;
  if (::RegOpenKeyExA(root, subKey.c_str(), 0, KEY_READ | view, &key) !=
      ERROR_SUCCESS)
    return "<none>";
  char data[1024] = "";
  DWORD size = sizeof data, type = 0;
  LONG result = ::RegQueryValueExA(key, name, nullptr, &type,
                                   reinterpret_cast<BYTE*>(data), &size);
  ::RegCloseKey(key);
  return result == ERROR_SUCCESS ? data : "<none>";
}

}  // namespace TestSupport
