#include "Components.h"

#include <windows.h>

#include "InstallLog.h"
#include "Product.h"
#include "TImportLibrary_Win.h"
#include "TRegistry_Win.h"

namespace Zendra {

using Tern::CError;
using Tern::CPath;
using Tern::CStr;

namespace {

void DisableVersionChecks() {
  Tern::CWinRegKey key;
  if (key.Open(cProductKey, Tern::rmCreate))
    key.SetString("DoVersionChecks", "0");  // errors here are ignored
}

}  // namespace

bool RegisterComponents(CInstallContext& context) {
  for (const CComponent& component : cComponents) {
    if (!LogStep(RegisterComponent(true, context.installDir, component.file),
                 component.registerFailure))
      return false;
    if (&component == &cComponents[0] && context.disableVersionChecks)
      DisableVersionChecks();
  }
  return true;
}

bool UnregisterComponents(CInstallContext& context) {
  bool all = true;
  for (const CComponent& component : cComponents) {
    // A file that is gone (an earlier removal was cut short) has nothing
    // left to unregister.
    CPath file = context.installDir;
    if (Tern::Succeeded(file.AppendComponent(component.file)) &&
        Tern::CLocalFileSystem::Instance().GetItemType(file) ==
            Tern::E_NotFound) {
      LogText("%s: already gone.\n", component.unregisterStep);
      continue;
    }
    all = LogStep(RegisterComponent(false, context.installDir, component.file),
                  component.unregisterStep) &&
          all;
  }
  return all;
}

bool RegisterComponent(bool doRegister, const CPath& dir,
                       const char* fileName) {
  CLogBlock block(doRegister ? "Register DLL" : "Unregister DLL");
  TERN_ASSERT(fileName);
  if (!fileName) return false;
  // The component finds its companion libraries in its own folder.
  if (!::SetCurrentDirectoryA(dir.OSToPathString().Chars()))
    TERN_FAIL("::SetCurrentDirectoryA(dir.OSToPathString())");

  CPath path = dir;
  if (!LogStatus(path.AppendComponent(fileName), "AppendComponent() failed."))
    return false;
  LogText("DLL path = '%s'\n", path.OSToPathString().Chars());

  CError status;
  Tern::CImportLibrary library(path, &status);
  if (!LogStatus(status, "Load DLL", false)) return false;
  status = doRegister ? library.Register() : library.Unregister();
  const bool called =
      LogStatus(status, doRegister ? "Register DLL" : "Unregister DLL", false);
  library.Unload();
  return called;
}

}  // namespace Zendra
