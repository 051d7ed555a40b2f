// The sample product's version checker: a small GUI program that reports the
// installed version. Run with "/show" it shows it; otherwise it only exits.
#include <windows.h>

#include <cstring>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR cmdLine, int) {
  if (cmdLine && std::strstr(cmdLine, "/show"))
    ::MessageBoxA(nullptr, "Zendra " VERSION_TEXT, "Zendra Version Check",
                  MB_OK);
  return 0;
}
