// The install actions and the removal steps the driver calls, and the check
// whether the installed component files are in use.
#pragma once

#include "TFileSystem.h"

namespace Zendra {

class CZendraSetupApp;

// The product's COM components, in the order they are registered.
extern const char* const cComponentFiles[5];

// True when the file exists and cannot be opened for exclusive writing.
bool FileIsInUse(const Tern::CPath& path);
// True when any component file in `installDir` is in use.
bool ComponentsInUse(const Tern::CPath& installDir);

// The install actions: files, fonts, components, Office and registry
// entries. False at the first failing step.
bool InstallProduct(CZendraSetupApp& app, bool installFonts,
                    bool noVersionCheck);
// The removal steps, ending with the self-deletion of Setup.
bool RemoveProduct(CZendraSetupApp& app);
// Removes the Setup program and its folder (the self-deleting batch file).
bool RemoveSetupProgram(CZendraSetupApp& app);

}  // namespace Zendra
