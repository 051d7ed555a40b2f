#include <windows.h>

#include "Platform.h"
#include "TError.h"

namespace Tern {

CError ErrorFromWindows(UInt32 windowsError) {
  CError mapped;
  if (MapWindowsError(windowsError, &mapped)) return mapped;
  CStr text = Platform::SystemErrorText(windowsError);
  SetSourcePosition(__FILE__, __LINE__);
  AssertFailed("unknown Windows error: '%s' (0x%08X)", text.Chars(),
               static_cast<unsigned>(windowsError));
  return Failure;
}

namespace Platform {

void DebugOutput(const char* text) { ::OutputDebugStringA(text); }

bool IsDebuggerAttached() { return ::IsDebuggerPresent() != FALSE; }

void HardBreak() { ::DebugBreak(); }

bool IsQuitPending() {
  MSG msg;
  return ::PeekMessageA(&msg, nullptr, WM_QUIT, WM_QUIT, PM_NOREMOVE) != FALSE;
}

AssertAnswer AskAboutAssertion(const char* text, const char* caption) {
  int answer = ::MessageBoxA(
      nullptr, text, caption,
      MB_ABORTRETRYIGNORE | MB_ICONEXCLAMATION | MB_SYSTEMMODAL | MB_TOPMOST);
  if (answer == IDABORT) return aaAbort;
  if (answer == IDRETRY) return aaRetry;
  return aaIgnore;
}

void RaiseAssertionException() { ::RaiseException(1, 0, 0, nullptr); }

void ExitProcess(Int code) { ::ExitProcess(static_cast<UINT>(code)); }

unsigned long long TickCount() { return ::GetTickCount(); }

CStr SystemErrorText(UInt32 number) {
  char buf[200] = "";
  DWORD n = ::FormatMessageA(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
      number, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), buf, sizeof buf,
      nullptr);
  while (n > 0 && (buf[n - 1] == '\n' || buf[n - 1] == '\r')) buf[--n] = 0;
  return CStr(buf, static_cast<Int>(n));
}

}  // namespace Platform

// ---- The outer handler for the assertion exception -------------------------

namespace {

AssertionHandler gAssertionHandler = nullptr;

LONG CALLBACK ContinueAfterAssertion(EXCEPTION_POINTERS* info) {
  if (info->ExceptionRecord->ExceptionCode != 1)
    return EXCEPTION_CONTINUE_SEARCH;
  if (gAssertionHandler) gAssertionHandler(LastAssertionReport());
  return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

void InstallAssertionHandler(AssertionHandler handler) {
  static PVOID installed = nullptr;
  gAssertionHandler = handler;
  if (!installed)
    installed = ::AddVectoredExceptionHandler(1, ContinueAfterAssertion);
}

}  // namespace Tern
