// The PowerPoint add-in: registered with every PowerPoint version found, in
// the 64-bit registry view on a 64-bit system, and removed again.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// Writes "AutoLoad" and "Path" for every PowerPoint version whose
// "InstallRoot" key exists; a failed row does not stop the others. False
// when any write failed.
bool InstallMSPowerPtAddIns(CInstallContext& context);
// Deletes the add-in's key of every version that has one; false when one
// that is there could not be deleted.
bool RemoveMSPowerPtAddIns(CInstallContext& context);

}  // namespace Zendra
