#include "Harness.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "ActionsTestSupport.h"
#include "PlatformRegistry.h"
#include "TestSupport.h"

namespace E2E {

namespace fs = std::filesystem;
using TestSupport::ArgValue;
using TestSupport::ChildProcess;
using TestSupport::WindowsPath;

SourceFolder::SourceFolder(const std::string& name)
    : mDir("C:\\ZendraE2E\\" + name) {
  std::error_code ec;
  fs::remove_all(mDir, ec);
  fs::create_directories(mDir, ec);
}

void SourceFolder::AddSetup() const {
  ::CopyFileA(WindowsPath(ArgValue("setup-exe")).c_str(), SetupExe().c_str(),
              FALSE);
}

bool SourceFolder::WriteConfig(
    const std::vector<std::string>& variables) const {
  std::string args = "write \"" + mDir + "\\Zendra.ovc\"";
  for (const auto& v : variables) args += " \"" + v + "\"";
  ChildProcess ovc(WindowsPath(ArgValue("ovc-exe")), args);
  return ovc.WaitForExit() == 0;
}

bool SourceFolder::WriteProductConfig(
    const std::vector<std::string>& extra) const {
  std::vector<std::string> variables = {
      "OVCMajVersion=4", "AppName=Zendra",         "SetupName=Zendra Setup",
      "VendorId=ORV",    "LicenseeAboutText1=E2E", "LicenseeAboutText2=E2E",
      "BUILD_NUMBER=0"};
  variables.insert(variables.end(), extra.begin(), extra.end());
  return WriteConfig(variables);
}

void SourceFolder::Standard() const {
  // The machine has the browser whose library the install registers with.
  ActionsTest::InstallBrowserStandIn();
  std::error_code ec;
  fs::copy(WindowsPath(ArgValue("sample-dir")), mDir,
           fs::copy_options::recursive | fs::copy_options::overwrite_existing,
           ec);
  AddSetup();
}

int RunSetup(const SourceFolder& source, const std::string& arguments,
             bool* showedWindow) {
  ChildProcess setup(source.SetupExe(), arguments);
  int code = setup.WaitForExit(60000);
  if (showedWindow) *showedWindow = setup.EverShowedWindow();
  return code;
}

bool WaitUntilGone(const std::string& path, int seconds) {
  for (int i = 0; i < seconds * 10; ++i) {
    if (::GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES)
      return true;
    ::Sleep(100);
  }
  return false;
}

std::string TempDir() {
  char buf[MAX_PATH] = "";
  ::GetTempPathA(sizeof buf, buf);
  return buf;
}

std::string ReadLog(const std::string& fileName) {
  std::ifstream in(TempDir() + fileName, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

bool LogExists(const std::string& fileName) {
  return fs::exists(TempDir() + fileName);
}

void WriteLog(const std::string& fileName, const std::string& text) {
  std::ofstream(TempDir() + fileName, std::ios::binary) << text;
}

std::vector<std::string> LogFiles() {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(TempDir(), ec)) {
    std::string name = entry.path().filename().string();
    if (name.rfind("Zendra ", 0) == 0 && name.size() > 4 &&
        name.compare(name.size() - 4, 4, ".log") == 0)
      names.push_back(name);
  }
  return names;
}

namespace {

std::string Trimmed(const std::string& line) {
  std::size_t start = line.find_first_not_of(" \t");
  std::size_t end = line.find_last_not_of(" \t\r");
  return start == std::string::npos ? "" : line.substr(start, end - start + 1);
}

}  // namespace

bool BlocksBalanced(const std::string& log, std::string* problem) {
  std::vector<std::string> open;
  std::istringstream lines(log);
  std::string line;
  auto fail = [&](const std::string& what) {
    if (problem) *problem = what;
    return false;
  };
  while (std::getline(lines, line)) {
    std::string text = Trimmed(line);
    if (text.rfind("Start: ", 0) == 0 && text.size() > 9 &&
        text.compare(text.size() - 2, 2, " {") == 0) {
      open.push_back(text.substr(7, text.size() - 9));
    } else if (text.rfind("} End: ", 0) == 0) {
      std::string name = text.substr(7);
      if (open.empty() || open.back() != name)
        return fail("unexpected end: " + name);
      open.pop_back();
    }
  }
  if (!open.empty()) return fail("not closed: " + open.back());
  return true;
}

std::string Footer(const std::string& log) {
  std::size_t exitLine = log.rfind("Exit code = ");
  return exitLine == std::string::npos ? "" : log.substr(exitLine);
}

bool SetRegString(HKEY root, const std::string& subKey, const char* name,
                  const std::string& value) {
  HKEY key = nullptr;
  if (::RegCreateKeyExA(root, subKey.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                        &key, nullptr) != ERROR_SUCCESS)
    return false;
  LONG result = ::RegSetValueExA(key, name, 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(value.c_str()),
                                 static_cast<DWORD>(value.size() + 1));
  ::RegCloseKey(key);
  return result == ERROR_SUCCESS;
}

std::string GetRegString(HKEY root, const std::string& subKey,
                         const char* name) {
  return TestSupport::RegistryString(root, subKey, name);
}

void DeleteRegTree(HKEY root, const std::string& subKey) {
  ::RegDeleteTreeA(root, subKey.c_str());
  ::RegDeleteKeyA(root, subKey.c_str());
}

bool SaveScreenshot(HWND window, const std::string& name) {
  const std::string dir = ArgValue("screenshots");
  if (dir.empty() || !window) return false;
  RECT rect;
  ::GetWindowRect(window, &rect);
  const int width = rect.right - rect.left, height = rect.bottom - rect.top;
  if (width <= 0 || height <= 0) return false;

  HDC screen = ::GetDC(nullptr);
  HDC memory = ::CreateCompatibleDC(screen);
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = height;  // bottom-up, as BMP files store it
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 24;
  info.bmiHeader.biCompression = BI_RGB;
  void* pixels = nullptr;
  HBITMAP bitmap =
      ::CreateDIBSection(memory, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
  HGDIOBJ old = ::SelectObject(memory, bitmap);
  ::BitBlt(memory, 0, 0, width, height, screen, rect.left, rect.top, SRCCOPY);
  ::SelectObject(memory, old);

  const DWORD stride = ((width * 3 + 3) / 4) * 4;
  const DWORD imageSize = stride * height;
  BITMAPFILEHEADER file = {};
  file.bfType = 0x4D42;  // "BM"
  file.bfOffBits = sizeof file + sizeof info.bmiHeader;
  file.bfSize = file.bfOffBits + imageSize;
  info.bmiHeader.biSizeImage = imageSize;
  std::error_code ec;
  fs::create_directories(WindowsPath(dir), ec);
  std::ofstream out(WindowsPath(dir) + "\\" + name + ".bmp", std::ios::binary);
  out.write(reinterpret_cast<const char*>(&file), sizeof file);
  out.write(reinterpret_cast<const char*>(&info.bmiHeader),
            sizeof info.bmiHeader);
  out.write(static_cast<const char*>(pixels), imageSize);

  ::DeleteObject(bitmap);
  ::DeleteDC(memory);
  ::ReleaseDC(nullptr, screen);
  return out.good();
}

}  // namespace E2E
