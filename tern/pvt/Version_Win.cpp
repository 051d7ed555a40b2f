#include <windows.h>

#include <vector>

#include "TStr.h"
#include "TVersion.h"

namespace Tern {

bool CVersion::GetVersionInfo(const char* osPath, InfoKind which, CStr& out) {
  DWORD ignored = 0;
  DWORD size = ::GetFileVersionInfoSizeA(osPath, &ignored);
  if (size == 0) return false;
  std::vector<char> info(size);
  if (!::GetFileVersionInfoA(osPath, 0, size, info.data())) return false;
  void* root = nullptr;
  UINT rootLen = 0;
  if (!::VerQueryValueA(info.data(), "\\", &root, &rootLen)) return false;
  const char* query = which == viFileVersion
                          ? "\\StringFileInfo\\040904E4\\FileVersion"
                          : "\\StringFileInfo\\040904E4\\ProductVersion";
  void* value = nullptr;
  UINT valueLen = 0;
  if (!::VerQueryValueA(info.data(), query, &value, &valueLen) || !value)
    return false;
  const char* text = static_cast<const char*>(value);
  while (Str::IsSpace(*text)) ++text;
  out = text;
  return true;
}

}  // namespace Tern
