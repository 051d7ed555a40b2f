#include "Residue.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <regex>

namespace Residue {

namespace {

namespace fs = std::filesystem;

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
    R"(REG HKLM\\Software\\Wow6432Node\\Orvane(\\OVZN4)?)",
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
    // Wine's own bookkeeping as programs start and end.
    R"(REG HKCU\\Software\\Wine\\.*)",
    R"(REG HKLM\\Software\\Wine\\.*)",
};

std::string ValueData(DWORD type, const BYTE* data, DWORD size) {
  if (type == REG_SZ || type == REG_EXPAND_SZ)
    return std::string(
        reinterpret_cast<const char*>(data),
        size ? strnlen(reinterpret_cast<const char*>(data), size) : 0);
  std::string hex;
  char byte[4];
  for (DWORD i = 0; i < size && i < 64; ++i) {
    std::snprintf(byte, sizeof byte, "%02x", data[i]);
    hex += byte;
  }
  return "type " + std::to_string(type) + ": " + hex;
}

void WalkKey(HKEY key, const std::string& path, Snapshot& out) {
  out["REG " + path] = "";
  char name[16384];
  std::vector<BYTE> data(1 << 16);
  for (DWORD i = 0;; ++i) {
    DWORD nameSize = sizeof name, dataSize = static_cast<DWORD>(data.size());
    DWORD type = 0;
    if (::RegEnumValueA(key, i, name, &nameSize, nullptr, &type, data.data(),
                        &dataSize) != ERROR_SUCCESS)
      break;
    out["REG " + path + "|" + name] = ValueData(type, data.data(), dataSize);
  }
  for (DWORD i = 0;; ++i) {
    DWORD nameSize = sizeof name;
    if (::RegEnumKeyExA(key, i, name, &nameSize, nullptr, nullptr, nullptr,
                        nullptr) != ERROR_SUCCESS)
      break;
    HKEY sub = nullptr;
    if (::RegOpenKeyExA(key, name, 0, KEY_READ | KEY_WOW64_64KEY, &sub) !=
        ERROR_SUCCESS)
      continue;
    WalkKey(sub, path + "\\" + name, out);
    ::RegCloseKey(sub);
  }
}

// Under Wine these of the user's folders are the Unix home folder itself,
// which is no part of the test machine.
bool IsUnixHome(const fs::path& path) {
  static const std::regex home(
      R"(C:\\users\\[^\\]+\\(Desktop|Documents|Downloads|Music|Pictures|Videos))",
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
  WalkKey(HKEY_LOCAL_MACHINE, "HKLM", out);
  WalkKey(HKEY_CURRENT_USER, "HKCU", out);
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
