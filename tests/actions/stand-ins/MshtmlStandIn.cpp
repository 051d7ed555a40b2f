// A stand-in for the browser's mshtml.dll on test machines, whose own
// mshtml.dll lacks "IERegisterXMLNS": it registers an XML namespace the way
// the browser does, as a string value named by the namespace URI with the
// class ID in braces as data.
#include <windows.h>

#include <cwchar>

extern "C" __declspec(dllexport) HRESULT WINAPI
    IERegisterXMLNS(LPCWSTR uri, GUID clsid, BOOL machine) {
  if (!uri || !*uri) return E_INVALIDARG;
  wchar_t text[40];
  std::swprintf(text, 40,
                L"{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                clsid.Data1, clsid.Data2, clsid.Data3, clsid.Data4[0],
                clsid.Data4[1], clsid.Data4[2], clsid.Data4[3], clsid.Data4[4],
                clsid.Data4[5], clsid.Data4[6], clsid.Data4[7]);
  HKEY key = nullptr;
  if (::RegCreateKeyExW(machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                        L"SOFTWARE\\Microsoft\\Internet Explorer\\XMLNamespace",
                        0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                        nullptr) != ERROR_SUCCESS)
    return E_FAIL;
  const DWORD bytes = static_cast<DWORD>((std::wcslen(text) + 1) * 2);
  LONG result = ::RegSetValueExW(key, uri, 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(text), bytes);
  ::RegCloseKey(key);
  return result == ERROR_SUCCESS ? S_OK : E_FAIL;
}
