// The product's entry in Windows' list of installed programs, through which
// Setup.exe -u removes it.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// The entry for the install folder, with the version of the running
// program.
bool AddUninstallEntry(CInstallContext& context);
// The same with a given version text; an unreadable one fails the step.
bool AddUninstallEntry(const Tern::CPath& installDir, const char* versionText);
// Deletes the entry's key with everything below it.
bool RemoveUninstallEntry(CInstallContext& context);

}  // namespace Zendra
