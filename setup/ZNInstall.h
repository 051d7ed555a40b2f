// The install actions and the removal steps the driver calls.
#pragma once

#include "TFileSystem.h"
#include "ZNComponents.h"

namespace Zendra {

class CZendraSetupApp;

// The install actions: files, fonts, components, Office and registry
// entries. False at the first failing step.
bool InstallProduct(CZendraSetupApp& app, bool installFonts,
                    bool noVersionCheck);
// The removal steps, ending with the self-deletion of Setup.
bool RemoveProduct(CZendraSetupApp& app);
// Deletes everything in `dir` that can be deleted, going on past what
// can't (the running Setup.exe, which the batch file deletes later).
void DeleteAllThatCanGo(const Tern::CPath& dir);
// Removes the Setup program and its folder (the self-deleting batch file).
bool RemoveSetupProgram(CZendraSetupApp& app);

}  // namespace Zendra
