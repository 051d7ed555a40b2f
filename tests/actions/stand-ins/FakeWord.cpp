// Plays Word for the tests: a top-level window of class "OpusApp" whose
// title is the command line. Being a small 32-bit program, it also serves as
// Word's "WINWORD.EXE" in a test machine's Office folders. It ends when its
// window is closed, or after a minute.
#include <windows.h>

namespace {

LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam,
                            LPARAM lParam) {
  if (message == WM_DESTROY || message == WM_TIMER) {
    ::PostQuitMessage(0);
    return 0;
  }
  return ::DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR cmdLine, int) {
  WNDCLASSA windowClass = {};
  windowClass.lpfnWndProc = WindowProc;
  windowClass.hInstance = instance;
  windowClass.lpszClassName = "OpusApp";
  if (!::RegisterClassA(&windowClass)) return 1;
  HWND window = ::CreateWindowA("OpusApp", cmdLine, WS_OVERLAPPEDWINDOW, 0, 0,
                                320, 200, nullptr, nullptr, instance, nullptr);
  if (!window) return 1;
  ::ShowWindow(window, SW_SHOWNOACTIVATE);
  ::SetTimer(window, 1, 60000, nullptr);
  MSG message;
  while (::GetMessageA(&message, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&message);
    ::DispatchMessageA(&message);
  }
  return 0;
}
