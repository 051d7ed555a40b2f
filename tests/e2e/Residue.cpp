#include "Residue.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>

#include "Harness.h"

namespace Residue {

namespace {

namespace fs = std::filesystem;
using E2E::TempDir;

// What stays after a removal, on purpose (the README lists why), and what
// Wine changes by itself.
const char* const cKept[] = {
    // The fonts: documents made with the product go on using them.
    R"(FILE C:\\windows\\Fonts\\.*\.ttf)",
    R"(REG HKLM\\Software\\(Wow6432Node\\)?Microsoft\\Windows NT\\CurrentVersion\\Fonts\|Zendra .*)",
    R"(FILE C:\\Program Files \(x86\)\\Orvane(\\Common(\\Fonts(\\TrueType(\\.*)?)?)?)?)",
    // The logs, for support staff.
    R"(FILE C:\\users\\[^\\]+\\Temp\\Zendra (Install \d+|Uninstall)\.log)",
    // The publisher stays trusted: other Orvane programs are signed too.
    R"(REG HKLM\\Software\\(Wow6432Node\\)?Microsoft\\SystemCertificates\\TrustedPublisher(\\.*)?)",
    // The machine's and the user's settings: a reinstall keeps them.
    R"(REG HKLM\\Software\\Wow6432Node\\Orvane(\\OVZN4(\|DoVersionChecks)?)?)",
    R"(REG HKCU\\Software\\Orvane(\\OVZN4)?(\|Notify)?)",
    // Browser settings the removal does not undo: Enterprise Mode, the
    // pre-approved class, the version checker's elevation policy and the
    // compatibility assistant's record of the control-panel applet. They
    // name the product's class and files, which are gone.
    R"(REG HKLM\\Software\\(Wow6432Node\\)?Policies\\Microsoft(\\Internet Explorer(\\Main(\\EnterpriseMode(\|Enable)?)?)?)?)",
    R"(REG HKLM\\Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Ext(\\PreApproved(\\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1\})?)?)",
    R"(REG HKLM\\Software\\Wow6432Node\\Microsoft\\Internet Explorer\\Low Rights(\\ElevationPolicy(\\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1\}(\|.*)?)?)?)",
    R"(REG HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags(\\Compatibility Assistant(\\Persisted(\|.*\\ZendraPanel\.cpl)?)?)?)",
    // Keys the install created empty on a machine that lacked them, as a
    // bare test machine does; Windows and Office have them already.
    R"(REG HKLM\\Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Internet Settings(\\5\.0)?(\\User Agent(\\Post Platform)?)?)",
    R"(REG HKLM\\Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Accepted Documents)",
    R"(REG HKLM\\Software\\Wow6432Node\\Microsoft\\Internet Explorer\\XMLNamespace)",
    R"(REG HKLM\\Software\\Microsoft\\Office(\\16\.0(\\PowerPoint(\\AddIns)?)?)?)",
    // The machine's and the user's certificate stores, empty, and the trust
    // provider's settings, which checking a signature opens; Windows has
    // them already.
    R"(REG HK(CU|LM)\\Software\\Microsoft\\SystemCertificates(\\[^|]*)?)",
    R"(REG HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Wintrust(\\.*)?)",
    // Windows Installer's own keys and folder, empty once its last product
    // has gone (Wine keeps them), and the package tests' own logs.
    R"(REG HKLM\\Software\\(Classes|Microsoft\\Windows\\CurrentVersion)\\Installer(\\[^|]*)?)",
    R"(FILE C:\\windows\\Installer)",
    R"(FILE C:\\ZendraE2E\\[^\\]*\.(log|txt))",
    // Wine's own bookkeeping as programs start and end.
    R"(REG HKCU\\Software\\Wine\\.*)",
    R"(REG HKLM\\Software\\Wine\\.*)",
};

// RegSaveKey asks for the backup privilege.
bool EnableBackupPrivilege() {
  HANDLE token = nullptr;
  TOKEN_PRIVILEGES backup = {1, {{{0, 0}, SE_PRIVILEGE_ENABLED}}};
  const bool enabled =
      ::OpenProcessToken(::GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES,
                         &token) &&
      ::LookupPrivilegeValueA(nullptr, SE_BACKUP_NAME,
                              &backup.Privileges[0].Luid) &&
      ::AdjustTokenPrivileges(token, FALSE, &backup, 0, nullptr, nullptr) &&
      ::GetLastError() == ERROR_SUCCESS;
  if (token) ::CloseHandle(token);
  return enabled;
}

// Where a value's quoted name that starts at `from` ends: the first quote
// not escaped with a backslash.
std::size_t NameEnd(const std::string& line, std::size_t from) {
  for (std::size_t i = from; i < line.size(); ++i) {
    if (line[i] == '\\')
      ++i;
    else if (line[i] == '"')
      return i;
  }
  return std::string::npos;
}

// "\\" stands for one backslash, "\"", "\[" and "\]" for the character.
std::string Unescaped(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() &&
        std::strchr("\\\"[]", text[i + 1]))
      ++i;
    plain += text[i];
  }
  return plain;
}

// The whole hive below `root`, saved by the registry server in one call in
// Wine's text format: each key that has values or no subkeys, each value
// with its data as written. The keys above them are added.
void ReadHive(HKEY root, const std::string& rootName, Snapshot& out) {
  const std::string file = TempDir() + "residue-hive.reg";
  ::DeleteFileA(file.c_str());
  const LONG saved = ::RegSaveKeyA(root, file.c_str(), nullptr);
  ASSERT_EQ(ERROR_SUCCESS, saved) << "RegSaveKey " << rootName;
  std::ifstream in(file, std::ios::binary);
  std::string line, key;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#' || line[0] == ';') continue;
    if (line[0] == '[') {
      key = rootName + "\\" + Unescaped(line.substr(1, line.rfind(']') - 1));
      for (std::size_t at = key.find('\\'); at != std::string::npos;
           at = key.find('\\', at + 1))
        out["REG " + key.substr(0, at)];  // the keys above it
      out["REG " + key];
      continue;
    }
    // "name"=data or @=data (the default value); binary data goes on over
    // lines that end in a backslash.
    const std::size_t nameEnd = line[0] == '@' ? 0 : NameEnd(line, 1);
    if (nameEnd == std::string::npos) continue;  // "WINE REGISTRY Version 2"
    const std::string name =
        line[0] == '@' ? "" : Unescaped(line.substr(1, nameEnd - 1));
    std::string data = line.substr(nameEnd + 2);
    while (!data.empty() && data.back() == '\\' && std::getline(in, line)) {
      data.pop_back();
      data += line.substr(std::min(line.find_first_not_of(' '), line.size()));
    }
    out["REG " + key + "|" + name] = data;
  }
  in.close();
  ::DeleteFileA(file.c_str());
}

// Under Wine these of the user's folders are the Unix home folder itself,
// which is no part of the test machine.
bool IsUnixHome(const fs::path& path) {
  static const std::regex home(
      R"(C:\\users\\[^\\]+\\(Desktop|Documents|Downloads|Music|Pictures|Videos|)"
      R"(AppData\\Roaming\\Microsoft\\Windows\\Templates))",
      std::regex::icase);
  return std::regex_match(path.string(), home);
}

void WalkFiles(Snapshot& out) {
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(
           "C:\\", fs::directory_options::skip_permission_denied, ec);
       it != fs::recursive_directory_iterator(); it.increment(ec)) {
    if (ec) break;
    if (IsUnixHome(it->path())) {
      it.disable_recursion_pending();
      continue;
    }
    const std::string path = it->path().string();
    out["FILE " + path] =
        it->is_regular_file(ec) ? std::to_string(it->file_size(ec)) : "dir";
  }
}

bool Kept(const std::string& item) {
  for (const char* pattern : cKept)
    if (std::regex_match(item, std::regex(pattern, std::regex::icase)))
      return true;
  return false;
}

}  // namespace

Snapshot Take() {
  Snapshot out;
  EXPECT_TRUE(EnableBackupPrivilege());
  ReadHive(HKEY_LOCAL_MACHINE, "HKLM", out);
  ReadHive(HKEY_CURRENT_USER, "HKCU", out);
  WalkFiles(out);
  return out;
}

std::vector<std::string> Unexpected(const Snapshot& before,
                                    const Snapshot& after) {
  std::vector<std::string> unexpected;
  auto report = [&](char mark, const std::string& item,
                    const std::string& data) {
    const std::string line = std::string(1, mark) + " " + item + " = " + data;
    std::printf("residue: %s\n", line.c_str());
    if (!Kept(item)) unexpected.push_back(line);
  };
  for (const auto& [item, data] : after) {
    auto old = before.find(item);
    if (old == before.end())
      report('+', item, data);
    else if (old->second != data)
      report('~', item, old->second + " -> " + data);
  }
  for (const auto& [item, data] : before)
    if (!after.count(item)) report('-', item, data);
  return unexpected;
}

}  // namespace Residue
