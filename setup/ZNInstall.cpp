#include "ZNInstall.h"

#include <windows.h>

#include "InstallLog.h"
#include "Setup.h"

namespace Zendra {

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

}  // namespace Zendra
