// Word must not run while its Startup folders are written: the install asks
// the user to close it (dialog 2500) and looks again until it is gone.
#pragma once

namespace Zendra {

class CZendraSetupApp;

// True once Word is not running. False when it runs in a silent run, or the
// user chose Exit Setup.
bool WaitUntilWordIsClosed(CZendraSetupApp& app);

// Shows dialog 2500; true for Try Again, false for Exit Setup.
bool AskToCloseWord();

}  // namespace Zendra
