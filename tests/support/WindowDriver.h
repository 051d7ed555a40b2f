// Drives another process's windows the way a person would: find the dialog
// it shows, read its text, press its buttons.
#pragma once

#include <windows.h>

#include <string>

namespace TestSupport {

// "/home/x/Setup.exe" as Wine sees it: "Z:\home\x\Setup.exe".
std::string WindowsPath(const std::string& unixPath);

class ChildProcess {
 public:
  ChildProcess(const std::string& exe, const std::string& arguments);
  // A program whose path the ANSI code page can't write.
  ChildProcess(const std::wstring& exe, const std::string& arguments);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // The first visible top-level dialog of this process with that caption,
  // waiting up to `timeoutMs`; null when none appeared.
  HWND WaitForDialog(const char* caption, DWORD timeoutMs = 20000);
  // The exit code, or -1 when the process did not end within `timeoutMs`
  // (it is then killed).
  int WaitForExit(DWORD timeoutMs = 30000);
  // Whether any visible top-level window of the process was seen while
  // waiting for it.
  bool EverShowedWindow() const { return mSawWindow; }

 private:
  HWND FindVisibleWindow(const char* caption) const;

  PROCESS_INFORMATION mInfo = {};
  bool mSawWindow = false;
};

// The first visible top-level window of any process with that caption,
// waiting up to `timeoutMs`; for windows of a process started by another.
HWND WaitForAnyWindow(const char* caption, DWORD timeoutMs = 20000);

// The text of a message box (its static control).
std::string MessageBoxText(HWND box);
// Whether the box shows an icon (error and warning boxes do, plain ones not).
bool HasIcon(HWND box);

// Dialog controls by identifier.
std::string ControlText(HWND dialog, int id);
bool ControlEnabled(HWND dialog, int id);
bool ControlChecked(HWND dialog, int id);
void ClickControl(HWND dialog, int id);

// Saves a picture of the window to the screenshot folder given to the test
// program (--screenshots=DIR) as NAME.bmp; false without such a folder.
bool SaveScreenshot(HWND window, const std::string& name);

// Sets an environment variable of this process, and so of the programs it
// starts, for a scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const wchar_t* name, const std::wstring& value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  const wchar_t* mName;
  std::wstring mOld;
  bool mHadValue = false;
};

}  // namespace TestSupport
