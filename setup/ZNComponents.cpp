#include "ZNComponents.h"

#include <windows.h>

#include "InstallLog.h"
#include "TImportLibrary_Win.h"

namespace Zendra {

using Tern::CLocalFileSystem;

const char* const cComponentFiles[5] = {"Zendra.dll", "ZendraMimer.dll",
                                        "ZendraBHO.dll", "ZendraPanel.cpl",
                                        "ZendraBraille.dll"};

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
    HANDLE file = ::CreateFileA(os.Chars(), GENERIC_WRITE, 0, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    inUse = file == INVALID_HANDLE_VALUE;
    if (!inUse) ::CloseHandle(file);
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
  bool inUse[5] = {};
  bool any = false;
  for (int i = 0; i < 5; ++i) {
    CPath file = installDir;
    if (Tern::Succeeded(file.AppendComponent(cComponentFiles[i])))
      inUse[i] = FileIsInUse(file);
    any = any || inUse[i];
  }
  LogText(
      "Zendra.dll in use = %d, ZendraMimer.dll in use = %d, ZendraBHO.dll in "
      "use = %d, ZendraPanel.cpl in use = %d, ZendraBraille.dll in use = %d\n",
      inUse[0], inUse[1], inUse[2], inUse[3], inUse[4]);
  return any;
}

}  // namespace Zendra
