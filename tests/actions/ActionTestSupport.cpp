#include "ActionTestSupport.h"

#include <fstream>
#include <sstream>

#include "PlatformRegistry.h"
#include "TestSupport.h"
#include "WindowDriver.h"

namespace ActionTests {

std::string SampleFile(const std::string& name) {
  return TestSupport::WindowsPath(TestSupport::ArgValue("sample-dir")) + "\\" +
         name;
}

std::string TestFontFile(const char* set, const std::string& name) {
  return TestSupport::WindowsPath(
             TestSupport::ArgValue(std::string("fonts-") + set)) +
         "\\" + name;
}

std::string SystemFontFile(const std::string& name) {
  char dir[MAX_PATH] = "";
  ::GetWindowsDirectoryA(dir, MAX_PATH);
  return std::string(dir) + "\\Fonts\\" + name;
}

std::string FontsKeyValue(const std::string& valueName) {
  return TestSupport::RegistryString(
      HKEY_LOCAL_MACHINE,
      "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts",
      valueName.c_str());
}

namespace {
int CALLBACK CountFamilies(const LOGFONTA*, const TEXTMETRICA*, DWORD,
                           LPARAM count) {
  ++*reinterpret_cast<int*>(count);
  return 1;
}
}  // namespace

bool GdiHasFamily(const std::string& face) {
  LOGFONTA font = {};
  font.lfCharSet = DEFAULT_CHARSET;
  lstrcpynA(font.lfFaceName, face.c_str(), LF_FACESIZE);
  HDC dc = ::GetDC(nullptr);
  int count = 0;
  ::EnumFontFamiliesExA(dc, &font, CountFamilies,
                        reinterpret_cast<LPARAM>(&count), 0);
  ::ReleaseDC(nullptr, dc);
  return count > 0;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos;
       at = text.find(part, at + part.size()))
    ++count;
  return count;
}

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

bool CopyInto(const std::string& from, const std::string& to) {
  return ::CopyFileA(from.c_str(), to.c_str(), FALSE) != 0;
}

}  // namespace ActionTests
