#include <windows.h>

#include "TApplication.h"
#include "TError.h"

namespace Tern {

namespace {

const char cAppWindowClass[] = "OVAppWindow";

}  // namespace

CGUIApplication::CGUIApplication(const char* name) : CApplication(name) {}

CGUIApplication::~CGUIApplication() {
  if (mAppWindow) ::DestroyWindow(static_cast<HWND>(mAppWindow));
}

void* CGUIApplication::ModuleHandle() const {
  return ::GetModuleHandleA(nullptr);
}

// The class is registered with the window, not at start: under Wine even the
// registration of a class sets up the desktop, its display driver and theme,
// which a silent run never needs.
void* CGUIApplication::AppWindow() {
  if (mAppWindow) return mAppWindow;
  WNDCLASSA wndClass = {};
  wndClass.lpfnWndProc = ::DefWindowProcA;
  wndClass.hInstance = static_cast<HINSTANCE>(ModuleHandle());
  wndClass.lpszClassName = cAppWindowClass;
  if (!::RegisterClassA(&wndClass) &&
      ::GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
    TERN_FAIL("RegisterClassA(&wndClass)");
  // Never shown: it only receives the application's own messages.
  mAppWindow =
      ::CreateWindowA(cAppWindowClass, GetName().Chars(), WS_OVERLAPPED, 0, 0,
                      0, 0, nullptr, nullptr, wndClass.hInstance, nullptr);
  return mAppWindow;
}

CNamedMutex::CNamedMutex(const char* mutexName) {
  TERN_ASSERT(mutexName);
  if (!mutexName) return;
  mMutex.Reset(::CreateMutexA(nullptr, FALSE, mutexName));
  mLastError = ::GetLastError();
  if (!mMutex.IsValid())
    TERN_FAIL("(mMutex = ::CreateMutexA(0,0,mutexName)) != 0");
}

}  // namespace Tern
