#include "WindowDriver.h"

#include <filesystem>
#include <fstream>
#include <vector>

#include "TestSupport.h"

namespace TestSupport {

std::string WindowsPath(const std::string& unixPath) {
  if (unixPath.empty() || unixPath[0] != '/') return unixPath;
  std::string path = "Z:" + unixPath;
  for (char& c : path)
    if (c == '/') c = '\\';
  return path;
}

ChildProcess::ChildProcess(const std::string& exe,
                           const std::string& arguments) {
  std::string commandLine = "\"" + exe + "\" " + arguments;
  std::vector<char> buffer(commandLine.begin(), commandLine.end());
  buffer.push_back(0);
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  if (!::CreateProcessA(exe.c_str(), buffer.data(), nullptr, nullptr, FALSE, 0,
                        nullptr, nullptr, &startup, &mInfo))
    mInfo = {};
}

ChildProcess::ChildProcess(const std::wstring& exe,
                           const std::string& arguments) {
  std::wstring commandLine = L"\"" + exe + L"\" ";
  commandLine.append(arguments.begin(), arguments.end());  // plain ASCII
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  if (!::CreateProcessW(exe.c_str(), &commandLine[0], nullptr, nullptr, FALSE,
                        0, nullptr, nullptr, &startup, &mInfo))
    mInfo = {};
}

ChildProcess::~ChildProcess() {
  if (mInfo.hProcess) {
    if (::WaitForSingleObject(mInfo.hProcess, 0) == WAIT_TIMEOUT) {
      ::TerminateProcess(mInfo.hProcess, 99);
      ::WaitForSingleObject(mInfo.hProcess, 10000);  // gone, with its mutex
    }
    ::CloseHandle(mInfo.hProcess);
    ::CloseHandle(mInfo.hThread);
  }
}

namespace {

struct WindowSearch {
  DWORD processId;
  const char* caption;  // null: any visible window
  HWND found;
};

BOOL CALLBACK MatchWindow(HWND window, LPARAM param) {
  auto* search = reinterpret_cast<WindowSearch*>(param);
  DWORD pid = 0;
  ::GetWindowThreadProcessId(window, &pid);
  if ((search->processId != 0 && pid != search->processId) ||
      !::IsWindowVisible(window))
    return TRUE;
  if (search->caption) {
    char text[256] = "";
    ::GetWindowTextA(window, text, sizeof text);
    if (std::string(text) != search->caption) return TRUE;
  }
  search->found = window;
  return FALSE;
}

std::string WindowText(HWND window) {
  int n = ::GetWindowTextLengthA(window);
  std::string text(n + 1, '\0');
  ::GetWindowTextA(window, &text[0], n + 1);
  text.resize(n);
  return text;
}

std::string ClassName(HWND window) {
  char name[64] = "";
  ::GetClassNameA(window, name, sizeof name);
  return name;
}

struct ChildSearch {
  std::string className;
  std::string text;  // compared without "&"; empty: any
  bool wantIcon;
  HWND found;
};

BOOL CALLBACK MatchChild(HWND child, LPARAM param) {
  auto* search = reinterpret_cast<ChildSearch*>(param);
  if (ClassName(child) != search->className) return TRUE;
  std::string text = WindowText(child);
  std::string plain;
  for (char c : text)
    if (c != '&') plain += c;
  bool isIcon = (::GetWindowLongA(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON;
  if (search->wantIcon != isIcon) return TRUE;
  if (!search->text.empty() && plain != search->text) return TRUE;
  search->found = child;
  return FALSE;
}

HWND FindChild(HWND parent, const char* className, const std::string& text,
               bool icon) {
  ChildSearch search{className, text, icon, nullptr};
  ::EnumChildWindows(parent, MatchChild, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

}  // namespace

HWND ChildProcess::FindVisibleWindow(const char* caption) const {
  WindowSearch search{mInfo.dwProcessId, caption, nullptr};
  ::EnumWindows(MatchWindow, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

HWND ChildProcess::WaitForDialog(const char* caption, DWORD timeoutMs) {
  if (!mInfo.hProcess) return nullptr;
  for (DWORD waited = 0; waited < timeoutMs; waited += 50) {
    if (HWND window = FindVisibleWindow(caption)) {
      mSawWindow = true;
      ::Sleep(200);  // let the dialog finish laying itself out
      return window;
    }
    if (::WaitForSingleObject(mInfo.hProcess, 50) == WAIT_OBJECT_0) break;
  }
  return nullptr;
}

HWND WaitForAnyWindow(const char* caption, DWORD timeoutMs) {
  for (DWORD waited = 0; waited < timeoutMs; waited += 50) {
    WindowSearch search{0, caption, nullptr};
    ::EnumWindows(MatchWindow, reinterpret_cast<LPARAM>(&search));
    if (search.found) {
      ::Sleep(200);  // let the dialog finish laying itself out
      return search.found;
    }
    ::Sleep(50);
  }
  return nullptr;
}

int ChildProcess::WaitForExit(DWORD timeoutMs) {
  if (!mInfo.hProcess) return -1;
  for (DWORD waited = 0; waited < timeoutMs; waited += 50) {
    if (FindVisibleWindow(nullptr)) mSawWindow = true;
    if (::WaitForSingleObject(mInfo.hProcess, 50) == WAIT_OBJECT_0) {
      DWORD code = 0;
      ::GetExitCodeProcess(mInfo.hProcess, &code);
      return static_cast<int>(code);
    }
  }
  ::TerminateProcess(mInfo.hProcess, 99);
  return -1;
}

std::string MessageBoxText(HWND box) {
  // The message is the static control that is not the icon.
  HWND text = FindChild(box, "Static", "", false);
  return text ? WindowText(text) : std::string();
}

bool HasIcon(HWND box) {
  // A plain box may keep an empty icon control: ask it for its icon.
  HWND icon = FindChild(box, "Static", "", true);
  return icon != nullptr && ::SendMessageA(icon, STM_GETICON, 0, 0) != 0;
}

std::string ControlText(HWND dialog, int id) {
  HWND control = ::GetDlgItem(dialog, id);
  return control ? WindowText(control) : std::string("<no control>");
}

bool ControlEnabled(HWND dialog, int id) {
  HWND control = ::GetDlgItem(dialog, id);
  return control && ::IsWindowEnabled(control);
}

bool ControlChecked(HWND dialog, int id) {
  HWND control = ::GetDlgItem(dialog, id);
  return control && ::SendMessageA(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void ClickControl(HWND dialog, int id) {
  if (HWND control = ::GetDlgItem(dialog, id))
    ::SendMessageA(control, BM_CLICK, 0, 0);
  ::Sleep(100);  // let the dialog react before it is looked at again
}

ScopedEnvironment::ScopedEnvironment(const wchar_t* name,
                                     const std::wstring& value)
    : mName(name) {
  std::vector<wchar_t> old(32768);
  DWORD n = ::GetEnvironmentVariableW(name, old.data(), old.size());
  mHadValue = n > 0 && n < old.size();
  if (mHadValue) mOld.assign(old.data(), n);
  ::SetEnvironmentVariableW(name, value.c_str());
}

ScopedEnvironment::~ScopedEnvironment() {
  ::SetEnvironmentVariableW(mName, mHadValue ? mOld.c_str() : nullptr);
}

bool SaveScreenshot(HWND window, const std::string& name) {
  const std::string dir = WindowsPath(ArgValue("screenshots"));
  RECT rect;
  if (dir.empty() || !window || !::GetWindowRect(window, &rect)) return false;
  const LONG width = rect.right - rect.left, height = rect.bottom - rect.top;
  const DWORD imageSize = (width * 3 + 3) / 4 * 4 * height;
  // Bottom-up 24-bit rows, as BMP files store them.
  BITMAPINFO info = {{sizeof(BITMAPINFOHEADER), width, height, 1, 24, BI_RGB,
                      imageSize, 0, 0, 0, 0},
                     {}};
  HDC screen = ::GetDC(nullptr);
  HDC memory = ::CreateCompatibleDC(screen);
  void* pixels = nullptr;
  HBITMAP bitmap =
      ::CreateDIBSection(memory, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
  HGDIOBJ old = ::SelectObject(memory, bitmap);
  ::BitBlt(memory, 0, 0, width, height, screen, rect.left, rect.top, SRCCOPY);
  ::SelectObject(memory, old);
  const DWORD offset = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
  const BITMAPFILEHEADER file = {0x4D42, offset + imageSize, 0, 0, offset};
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
  std::ofstream out(dir + "\\" + name + ".bmp", std::ios::binary);
  out.write(reinterpret_cast<const char*>(&file), sizeof file);
  out.write(reinterpret_cast<const char*>(&info.bmiHeader),
            sizeof info.bmiHeader);
  if (pixels) out.write(static_cast<const char*>(pixels), imageSize);
  ::DeleteObject(bitmap);
  ::DeleteDC(memory);
  ::ReleaseDC(nullptr, screen);
  return pixels && out.good();
}

}  // namespace TestSupport
