#include <windows.h>

#include "TApplication.h"
#include "TImportLibrary_Win.h"

namespace Tern {

CImportLibrary::CImportLibrary(const CPath& libPath, CError* status) {
  CError err = Load(libPath);
  if (status) *status = err;
}

CImportLibrary::~CImportLibrary() { Unload(); }

CError CImportLibrary::Load(const CPath& libPath) {
  TERN_ASSERT(libPath.IsValid());
  if (IsLoaded()) TERN_FAIL("mLib == 0");  // a second load
  if (!libPath.IsValid() || IsLoaded()) return E_BadArgument;
  if (const CExecModule* lib = CExecModule::Instance())
    TERN_ASSERT(lib->GetPhase() == execNormal);
  mLib.Reset(::LoadLibraryA(libPath.OSToPathString().Chars()));
  return IsLoaded() ? Ok : ErrorFromWindows(::GetLastError());
}

void* CImportLibrary::Lookup(const char* funcName) const {
  TERN_ASSERT(funcName);
  TERN_ASSERT(IsLoaded());
  if (!funcName || !IsLoaded()) return nullptr;
  return reinterpret_cast<void*>(::GetProcAddress(mLib.Get(), funcName));
}

CError CImportLibrary::CallEntry(const char* entryName) {
  using Entry = HRESULT(STDAPICALLTYPE*)();
  auto entry = reinterpret_cast<Entry>(Lookup(entryName));
  if (!entry) return E_NotFound;
  return entry() < 0 ? Failure : Ok;
}

CError CImportLibrary::Register() { return CallEntry("DllRegisterServer"); }

CError CImportLibrary::Unregister() { return CallEntry("DllUnregisterServer"); }

void CImportLibrary::Unload() {
  if (!IsLoaded()) return;
  const CExecModule* app = CExecModule::Instance();
  const ExecPhase phase = app ? app->GetPhase() : execNormal;
  // Forgotten before any report, so that a reported failure is not met again
  // later. Later phases leave the module loaded on purpose, so that no
  // library code runs its unload while the program is ending.
  if (phase != execNormal) mLib.Release();
  TERN_ASSERT(phase != execInStartup);
  if (phase == execNormal && !mLib.Close()) TERN_FAIL("::FreeLibrary(mLib)");
}

}  // namespace Tern
