// Removing the Setup program itself, which runs from the folder it must
// delete: a batch file in the temporary folder waits until Setup has ended,
// deletes it and the then empty install folder, and finally itself.
#pragma once

#include "InstallContext.h"

namespace Zendra {

bool RemoveSetupProgram(CInstallContext& context);

}  // namespace Zendra
