#include "ZNInstall.h"

#include <windows.h>

#include "InstallLog.h"
#include "Setup.h"

namespace Zendra {

using Tern::CLocalFileSystem;

const char* const cComponentFiles[5] = {"Zendra.dll", "ZendraMimer.dll",
                                        "ZendraBHO.dll", "ZendraPanel.cpl",
                                        "ZendraBraille.dll"};

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

// The install actions and removal steps are built step by step; until they
// are, these say so in the log and change nothing on the machine.
bool InstallProduct(CZendraSetupApp& app, bool installFonts,
                    bool noVersionCheck) {
  CLogBlock block("Installing Zendra");
  LogText("Installation directory = '%s', fonts = %d, version check = %d.\n",
          app.InstallDir().OSToPathString().Chars(), installFonts ? 1 : 0,
          noVersionCheck ? 0 : 1);
  LogText("No install actions are built into this Setup yet.\n");
  return true;
}

bool RemoveProduct(CZendraSetupApp& app) {
  CLogBlock block("Removing Zendra");
  LogText("Installation directory = '%s'.\n",
          app.InstallDir().OSToPathString().Chars());
  LogText("No removal steps are built into this Setup yet.\n");
  return true;
}

bool RemoveSetupProgram(CZendraSetupApp&) {
  LogText("The self-deleting batch file is not built into this Setup yet.\n");
  return true;
}

}  // namespace Zendra
