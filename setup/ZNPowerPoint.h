// The PowerPoint add-in: registered with every PowerPoint version found, in
// the 64-bit registry view on a 64-bit system, and removed again.
#pragma once

#include "TFileSystem.h"

namespace Zendra {

extern const char cPowerPointAddInFile[];

// Writes "AutoLoad" and "Path" for every PowerPoint version whose
// "InstallRoot" key exists; a failed row does not stop the others. False
// when any write failed.
bool InstallMSPowerPtAddIns(const Tern::CPath& installDir);
// Deletes the add-in's key of every version that has one; failures are
// logged only.
bool RemoveMSPowerPtAddIns();

}  // namespace Zendra
