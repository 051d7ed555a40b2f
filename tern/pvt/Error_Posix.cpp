// The native build has no debugger channel nor structured exceptions: reports
// go to standard error and the program continues after them.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "Platform.h"
#include "TError.h"

namespace Tern {

CError ErrorFromWindows(UInt32 windowsError) {
  CError mapped;
  if (MapWindowsError(windowsError, &mapped)) return mapped;
  SetSourcePosition(__FILE__, __LINE__);
  AssertFailed("unknown Windows error: '%s' (0x%08X)", "",
               static_cast<unsigned>(windowsError));
  return Failure;
}

namespace Platform {

void DebugOutput(const char* text) { std::fputs(text, stderr); }
bool IsDebuggerAttached() { return false; }
void HardBreak() { std::raise(SIGTRAP); }
bool IsQuitPending() { return false; }
AssertAnswer AskAboutAssertion(const char*, const char*) { return aaIgnore; }

namespace {
AssertionHandler gAssertionHandler = nullptr;
}

void RaiseAssertionException() {
  if (gAssertionHandler) gAssertionHandler(LastAssertionReport());
}

void ExitProcess(Int code) { std::exit(code); }

unsigned long long TickCount() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<unsigned long long>(now.tv_sec) * 1000 +
         now.tv_nsec / 1000000;
}
CStr SystemErrorText(UInt32) { return CStr(); }

void SetAssertionHandler(AssertionHandler handler) {
  gAssertionHandler = handler;
}

}  // namespace Platform

void InstallAssertionHandler(AssertionHandler handler) {
  Platform::SetAssertionHandler(handler);
}

}  // namespace Tern
