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
  TERN_ASSERT(mLib == 0);
  if (!libPath.IsValid() || mLib) return E_BadArgument;
  if (const CExecModule* lib = CExecModule::Instance())
    TERN_ASSERT(lib->GetPhase() == execNormal);
  HMODULE module = ::LoadLibraryA(libPath.OSToPathString().Chars());
  if (!module) return ErrorFromWindows(::GetLastError());
  mLib = module;
  return Ok;
}

void* CImportLibrary::Lookup(const char* funcName) const {
  TERN_ASSERT(funcName);
  TERN_ASSERT(IsLoaded());
  if (!funcName || !IsLoaded()) return nullptr;
  return reinterpret_cast<void*>(
      ::GetProcAddress(static_cast<HMODULE>(mLib), funcName));
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
  if (!mLib) return;
  // Forgotten first, so that a reported failure is not met again later.
  HMODULE module = static_cast<HMODULE>(mLib);
  mLib = nullptr;
  const CExecModule* app = CExecModule::Instance();
  const ExecPhase phase = app ? app->GetPhase() : execNormal;
  if (phase == execInStartup) {
    TERN_ASSERT(phase != execInStartup);
  } else if (phase == execNormal) {
    if (!::FreeLibrary(module)) TERN_FAIL("::FreeLibrary(mLib)");
  }
  // Later phases: deliberately left loaded, so that no library code runs its
  // unload while the program is ending.
}

}  // namespace Tern
