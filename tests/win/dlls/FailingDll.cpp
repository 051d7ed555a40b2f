// A library whose registration fails and whose removal answers a positive
// (still successful) result.
#include <windows.h>

extern "C" __declspec(dllexport) HRESULT __stdcall DllRegisterServer() {
  return E_FAIL;
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllUnregisterServer() {
  return S_FALSE;
}
