// A COM-style library whose registration entries write and remove a registry
// value, so that a test sees that they were called.
#include <windows.h>

namespace {
const char cKey[] = "Software\\ZendraTests\\ImportLibrary";
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllRegisterServer() {
  HKEY key = nullptr;
  if (::RegCreateKeyExA(HKEY_CURRENT_USER, cKey, 0, nullptr, 0, KEY_WRITE,
                        nullptr, &key, nullptr) != ERROR_SUCCESS)
    return E_FAIL;
  const char value[] = "yes";
  ::RegSetValueExA(key, "Registered", 0, REG_SZ,
                   reinterpret_cast<const BYTE*>(value), sizeof value);
  ::RegCloseKey(key);
  return S_OK;
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllUnregisterServer() {
  return ::RegDeleteKeyA(HKEY_CURRENT_USER, cKey) == ERROR_SUCCESS ? S_OK
                                                                   : S_FALSE;
}
