// Word must not run while its Startup folders are written: the install asks
// the user to close it (dialog 2500) and looks again until it is gone.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// True once Word is not running. False, and logged, when it runs in a
// silent run or the user chose Exit Setup.
bool WaitUntilWordIsClosed(CInstallContext& context);

// Shows dialog 2500; true for Try Again, false for Exit Setup.
bool AskToCloseWord();

}  // namespace Zendra
