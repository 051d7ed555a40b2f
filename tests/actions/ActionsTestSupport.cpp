#include "ActionsTestSupport.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "InstallLog.h"
#include "TestSupport.h"
#include "WindowDriver.h"

namespace ActionsTest {

CaseLog::CaseLog() {
  Zendra::ResetErrorCount();
  Zendra::OpenLog("Zendra Actions.log", false);
}

CaseLog::~CaseLog() {
  if (mOpen) Zendra::CloseLog(false, 0);
}

std::string CaseLog::Finish() {
  if (mOpen) Zendra::CloseLog(false, 0);
  mOpen = false;
  return ReadText(Zendra::LogPath().OSToPathString().Chars());
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

int Count(const std::string& text, const std::string& part) {
  int n = 0;
  for (std::size_t pos = text.find(part); pos != std::string::npos;
       pos = text.find(part, pos + 1))
    ++n;
  return n;
}

namespace {

// An open key, closed when it goes.
class Key {
 public:
  Key(HKEY root, const std::string& subKey, REGSAM access, bool create) {
    LONG result = create
                      ? ::RegCreateKeyExA(root, subKey.c_str(), 0, nullptr, 0,
                                          access, nullptr, &mKey, nullptr)
                      : ::RegOpenKeyExA(root, subKey.c_str(), 0, access, &mKey);
    if (result != ERROR_SUCCESS) mKey = nullptr;
  }
  ~Key() {
    if (mKey) ::RegCloseKey(mKey);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  HKEY Get() const { return mKey; }

 private:
  HKEY mKey = nullptr;
};

bool Write(HKEY root, const std::string& subKey, const char* name, DWORD type,
           const void* data, DWORD size, REGSAM view) {
  Key key(root, subKey, KEY_WRITE | view, true);
  return key.Get() && ::RegSetValueExA(key.Get(), name, 0, type,
                                       static_cast<const BYTE*>(data),
                                       size) == ERROR_SUCCESS;
}

}  // namespace

RegValue ReadValue(HKEY root, const std::string& subKey, const char* name,
                   REGSAM view) {
  RegValue value;
  Key key(root, subKey, KEY_READ | view, false);
  char data[2048] = "";
  DWORD size = sizeof data - 1;
  if (!key.Get() ||
      ::RegQueryValueExA(key.Get(), name, nullptr, &value.type,
                         reinterpret_cast<BYTE*>(data), &size) != ERROR_SUCCESS)
    return value;
  value.found = true;
  if (value.type == REG_SZ) value.text = data;
  if (value.type == REG_DWORD && size == 4)
    value.number = *reinterpret_cast<DWORD*>(data);
  return value;
}

bool KeyExists(HKEY root, const std::string& subKey, REGSAM view) {
  Key key(root, subKey, KEY_READ | view, false);
  return key.Get() != nullptr;
}

std::vector<std::string> ValueNames(HKEY root, const std::string& subKey,
                                    REGSAM view) {
  std::vector<std::string> names;
  Key key(root, subKey, KEY_READ | view, false);
  for (DWORD i = 0; key.Get(); ++i) {
    char name[512];
    DWORD size = sizeof name;
    if (::RegEnumValueA(key.Get(), i, name, &size, nullptr, nullptr, nullptr,
                        nullptr) != ERROR_SUCCESS)
      break;
    names.push_back(name);
  }
  return names;
}

bool WriteString(HKEY root, const std::string& subKey, const char* name,
                 const std::string& value, REGSAM view) {
  return Write(root, subKey, name, REG_SZ, value.c_str(),
               static_cast<DWORD>(value.size() + 1), view);
}

bool WriteNumber(HKEY root, const std::string& subKey, const char* name,
                 DWORD value, REGSAM view) {
  return Write(root, subKey, name, REG_DWORD, &value, sizeof value, view);
}

bool CreateKey(HKEY root, const std::string& subKey, REGSAM view) {
  Key key(root, subKey, KEY_WRITE | view, true);
  return key.Get() != nullptr;
}

void MakeFolder(const std::string& path) {
  std::error_code ec;
  std::filesystem::create_directories(path, ec);
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

bool FileExists(const std::string& path) {
  DWORD attributes = ::GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool CopyBuilt(const char* argName, const std::string& to) {
  const std::string from =
      TestSupport::WindowsPath(TestSupport::ArgValue(argName));
  // Files of a cloned prefix are hard links to the template's: unlink
  // before writing, never write through.
  ::DeleteFileA(to.c_str());
  return !from.empty() && ::CopyFileA(from.c_str(), to.c_str(), FALSE);
}

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
  RegValue value =
      ReadValue(HKEY_LOCAL_MACHINE,
                "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts",
                valueName.c_str());
  return value.found ? value.text : "<none>";
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

bool InstallBrowserStandIn(bool override) {
  if (!CopyBuilt("mshtml-standin", "c:\\windows\\system32\\mshtml.dll"))
    return false;
  return !override ||
         WriteString(HKEY_CURRENT_USER, "Software\\Wine\\DllOverrides",
                     "mshtml", "native,builtin");
}

bool CopyInto(const std::string& from, const std::string& to) {
  return ::CopyFileA(from.c_str(), to.c_str(), FALSE) != 0;
}

}  // namespace ActionsTest
