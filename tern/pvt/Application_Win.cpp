#include <windows.h>

#include "TApplication.h"
#include "TError.h"

namespace Tern {

namespace {

const char cAppWindowClass[] = "OVAppWindow";
const UINT cRunMessage = WM_APP + 1;

LRESULT CALLBACK AppWindowProc(HWND window, UINT message, WPARAM wParam,
                               LPARAM lParam) {
  if (message == cRunMessage) {
    if (auto* app = dynamic_cast<CGUIApplication*>(CApplication::Current()))
      app->RunFromLoop();
    return 0;
  }
  return ::DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

CGUIApplication::CGUIApplication(const char* name) : CApplication(name) {}

CGUIApplication::~CGUIApplication() {
  if (mAppWindow) ::DestroyWindow(static_cast<HWND>(mAppWindow));
}

void* CGUIApplication::ModuleHandle() const {
  return ::GetModuleHandleA(nullptr);
}

bool CGUIApplication::InitInstance() {
  WNDCLASSA wndClass = {};
  wndClass.lpfnWndProc = AppWindowProc;
  wndClass.hInstance = static_cast<HINSTANCE>(ModuleHandle());
  wndClass.lpszClassName = cAppWindowClass;
  if (!::GetClassInfoA(wndClass.hInstance, cAppWindowClass, &wndClass)) {
    TERN_ASSERT(RegisterClassA(&wndClass));
  }
  // Never shown: it only receives the application's own messages.
  mAppWindow = ::CreateWindowA(cAppWindowClass, GetName().Chars(),
                               WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                               static_cast<HINSTANCE>(ModuleHandle()), nullptr);
  return true;
}

void CGUIApplication::RunNormalPhase() {
  if (!mAppWindow) {  // no window: run without the loop
    Run();
    return;
  }
  ::PostMessageA(static_cast<HWND>(mAppWindow), cRunMessage, 0, 0);
  MSG msg;
  while (::GetMessageA(&msg, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&msg);
    ::DispatchMessageA(&msg);
  }
}

void CGUIApplication::RunFromLoop() {
  Run();
  ::PostQuitMessage(0);
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
