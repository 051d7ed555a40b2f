// The OEM branding: each OEM setting stored again as an "RO_" value of the
// product's key, which the product reads and the user's settings cannot
// override.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// "RO_VendorId" and the others, from the settings "VendorId", ... of the
// global variable list (the configuration file, else the registry).
bool AddOEMEntries(CInstallContext& context);
bool RemoveOEMEntries(CInstallContext& context);

}  // namespace Zendra
