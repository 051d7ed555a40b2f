// The product's COM components: registering and unregistering them.
#pragma once

#include "InstallContext.h"
#include "TFileSystem.h"

namespace Zendra {

// Registers each component in the install folder in turn, the product's
// own first; stops at the first that fails, with its failure text. With
// the -noversioncheck option the product's version checks are turned off
// once the product's own component has written its settings.
bool RegisterComponents(CInstallContext& context);
// Unregisters every component, each step logged; false when any failed.
bool UnregisterComponents(CInstallContext& context);

// Loads `fileName` from `dir` and calls its DllRegisterServer (or, with
// `doRegister` false, DllUnregisterServer). Every failure is logged and
// counted; true when the load and the entry point both succeeded.
bool RegisterComponent(bool doRegister, const Tern::CPath& dir,
                       const char* fileName);

}  // namespace Zendra
