// The process entry point of Setup.exe.
#include <windows.h>

#include "InstallLog.h"
#include "Product.h"
#include "Setup.h"
#include "TError.h"

namespace {

// The mutex is created before the application object and lives as long as
// the process, so that a second Setup started meanwhile sees it.
Tern::CNamedMutex gSingleInstance(Zendra::cMutexName);
Zendra::CZendraSetupApp gApp(gSingleInstance.CreationError());

// A failed assertion with no debugger attached ends up here: its report goes
// into the log, where support staff see it, and the run goes on.
void ContinueAfterAssertion(const char* report) {
  Zendra::LogText("%s", report);
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR cmdLine, int) {
  Tern::InstallAssertionHandler(ContinueAfterAssertion);
  return gApp.Main(cmdLine);
}
