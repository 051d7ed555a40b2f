#include "PendingDeletions.h"

#include <windows.h>

#include <string>
#include <vector>

#include "InstallLog.h"
#include "TScopedResource_Win.h"

namespace Zendra {

namespace {

const char cSessionManager[] =
    "SYSTEM\\CurrentControlSet\\Control\\Session Manager";
const char cPendingValue[] = "PendingFileRenameOperations";

// The Win32 path of an entry, which is an NT path ("\??\C:\...").
std::string Win32Path(const std::string& entry) {
  return entry.rfind("\\??\\", 0) == 0 ? entry.substr(4) : entry;
}

// Whether `path` names `dir` or lies in it.
bool NamesFolderOrBelow(const std::string& path, const std::string& dir) {
  return path.size() >= dir.size() &&
         ::_strnicmp(path.c_str(), dir.c_str(), dir.size()) == 0 &&
         (path.size() == dir.size() || path[dir.size()] == '\\');
}

// The value's strings, by its size: a deletion's target is an empty string,
// so the list does not end at the first one.
std::vector<std::string> Strings(const std::vector<char>& data) {
  std::vector<std::string> strings;
  std::string current;
  for (char c : data) {
    if (c != '\0') {
      current += c;
      continue;
    }
    strings.push_back(current);
    current.clear();
  }
  return strings;
}

}  // namespace

bool CancelPendingDeletions(CInstallContext& context) {
  HKEY opened = nullptr;
  if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, cSessionManager, 0,
                      KEY_QUERY_VALUE | KEY_SET_VALUE,
                      &opened) != ERROR_SUCCESS)
    return true;
  Tern::CScopedRegKey key(opened);
  DWORD type = 0, size = 0;
  if (::RegQueryValueExA(opened, cPendingValue, nullptr, &type, nullptr,
                         &size) != ERROR_SUCCESS ||
      type != REG_MULTI_SZ)
    return true;
  std::vector<char> data(size);
  if (::RegQueryValueExA(opened, cPendingValue, nullptr, nullptr,
                         reinterpret_cast<BYTE*>(data.data()),
                         &size) != ERROR_SUCCESS)
    return true;
  data.resize(size);
  // Pairs: what to move, and where to; an empty target deletes it.
  const std::vector<std::string> names = Strings(data);
  const std::string dir = context.installDir.OSToPathString().Chars();
  std::string kept;
  bool cancelled = false;
  for (size_t i = 0; i + 1 < names.size(); i += 2) {
    const std::string path = Win32Path(names[i]);
    if (names[i + 1].empty() && NamesFolderOrBelow(path, dir)) {
      LogText("Cancelled the deletion at restart of '%s'.\n", path.c_str());
      cancelled = true;
      continue;
    }
    kept += names[i] + '\0' + names[i + 1] + '\0';
  }
  if (!cancelled) return true;
  if (kept.empty())
    return LogStep(::RegDeleteValueA(opened, cPendingValue) == ERROR_SUCCESS,
                   "Delete the deletions waiting for the restart");
  kept += '\0';
  return LogStep(
      ::RegSetValueExA(opened, cPendingValue, 0, REG_MULTI_SZ,
                       reinterpret_cast<const BYTE*>(kept.data()),
                       static_cast<DWORD>(kept.size())) == ERROR_SUCCESS,
      "Write the deletions waiting for the restart");
}

}  // namespace Zendra
