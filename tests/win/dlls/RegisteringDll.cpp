// A library whose registration entries answer in turn, so that a test sees
// each call and its result: registering succeeds once, then fails (a
// negative result); removing answers S_FALSE, which is still a success.
#include <windows.h>

namespace {
int gRegistrations = 0;
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllRegisterServer() {
  return ++gRegistrations == 1 ? S_OK : E_FAIL;
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllUnregisterServer() {
  return S_FALSE;
}
