#include "ActionsTestSupport.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <type_traits>

#include "TestSupport.h"
#include "WindowDriver.h"

namespace ActionsTest {

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

struct KeyCloser {
  void operator()(HKEY key) const { ::RegCloseKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

// The key opened (or created) with `access`; null when that failed.
Key OpenKey(HKEY root, const std::string& subKey, REGSAM access,
            bool create = false) {
  HKEY key = nullptr;
  LONG result = create ? ::RegCreateKeyExA(root, subKey.c_str(), 0, nullptr, 0,
                                           access, nullptr, &key, nullptr)
                       : ::RegOpenKeyExA(root, subKey.c_str(), 0, access, &key);
  return Key(result == ERROR_SUCCESS ? key : nullptr);
}

}  // namespace

RegValue ReadValue(HKEY root, const std::string& subKey, const char* name,
                   REGSAM view) {
  RegValue value;
  Key key = OpenKey(root, subKey, KEY_READ | view);
  char data[2048] = "";
  DWORD size = sizeof data - 1;
  if (!key ||
      ::RegQueryValueExA(key.get(), name, nullptr, &value.type,
                         reinterpret_cast<BYTE*>(data), &size) != ERROR_SUCCESS)
    return value;
  value.found = true;
  if (value.type == REG_SZ) value.text = data;
  if (value.type == REG_DWORD && size == 4)
    value.number = *reinterpret_cast<DWORD*>(data);
  return value;
}

bool KeyExists(HKEY root, const std::string& subKey, REGSAM view) {
  return OpenKey(root, subKey, KEY_READ | view) != nullptr;
}

std::vector<std::string> ValueNames(HKEY root, const std::string& subKey,
                                    REGSAM view) {
  std::vector<std::string> names;
  Key key = OpenKey(root, subKey, KEY_READ | view);
  char name[512];
  for (DWORD i = 0, size = sizeof name;
       key && !::RegEnumValueA(key.get(), i, name, &size, nullptr, nullptr,
                               nullptr, nullptr);
       ++i, size = sizeof name)
    names.push_back(name);
  return names;
}

bool WriteString(HKEY root, const std::string& subKey, const char* name,
                 const std::string& value, REGSAM view) {
  Key key = OpenKey(root, subKey, KEY_WRITE | view, true);
  return key && ::RegSetValueExA(key.get(), name, 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(value.c_str()),
                                 static_cast<DWORD>(value.size() + 1)) ==
                    ERROR_SUCCESS;
}

bool CreateKey(HKEY root, const std::string& subKey, REGSAM view) {
  return OpenKey(root, subKey, KEY_WRITE | view, true) != nullptr;
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
  return std::string(std::istreambuf_iterator<char>(in), {});
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

bool InstallBrowserStandIn() {
  return CopyBuilt("mshtml-standin", "c:\\windows\\system32\\mshtml.dll") &&
         WriteString(HKEY_CURRENT_USER, "Software\\Wine\\DllOverrides",
                     "mshtml", "native,builtin");
}

bool CopyInto(const std::string& from, const std::string& to) {
  return ::CopyFileA(from.c_str(), to.c_str(), FALSE) != 0;
}

}  // namespace ActionsTest
