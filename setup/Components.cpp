#include "Components.h"

#include <windows.h>

#include "InstallLog.h"
#include "Product.h"
#include "TImportLibrary_Win.h"
#include "TRegistry_Win.h"
#include "TScopedResource_Win.h"

namespace Zendra {

using Tern::CError;
using Tern::CLocalFileSystem;
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
  for (const CComponent& component : cComponents)
    all = LogStep(RegisterComponent(false, context.installDir, component.file),
                  component.unregisterStep) &&
          all;
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

bool FileIsInUse(const CPath& path) {
  CLogBlock block("Check if file is in-use");
  CStr os = path.OSToPathString();
  LogText("Checking if '%s' is in use.\n", os.Chars());
  bool inUse = false;
  CError type = CLocalFileSystem::Instance().GetItemType(path);
  if (type == Tern::S_FSIsFile || type == Tern::S_FSIsDirectory) {
    Tern::CScopedFileHandle file(::CreateFileA(os.Chars(), GENERIC_WRITE, 0,
                                               nullptr, OPEN_EXISTING,
                                               FILE_ATTRIBUTE_NORMAL, nullptr));
    inUse = !file.IsValid();
  } else if (type == Tern::E_NotFound) {
    LogText("File doesn't exist.\n");
  } else {
    LogStatus(type, "File exists");
  }
  LogText("FileIsInUse() returns %d.\n", inUse ? 1 : 0);
  return inUse;
}

bool ComponentsInUse(const CPath& installDir) {
  CLogBlock block("Check if Zendra files are in-use");
  bool any = false;
  CStr summary;
  for (const CComponent& component : cComponents) {
    CPath file = installDir;
    const bool inUse = Tern::Succeeded(file.AppendComponent(component.file)) &&
                       FileIsInUse(file);
    any = any || inUse;
    summary.AppendFormat("%s%s in use = %d", summary.IsEmpty() ? "" : ", ",
                         component.file, inUse ? 1 : 0);
  }
  LogText("%s\n", summary.Chars());
  return any;
}

}  // namespace Zendra
