#include "FilesInUse.h"

#include <windows.h>

#include "InstallLog.h"
#include "Product.h"
#include "TScopedResource_Win.h"

namespace Zendra {

using Tern::CError;
using Tern::CLocalFileSystem;
using Tern::CPath;
using Tern::CStr;

namespace {

// A file another program holds can't be opened for exclusive writing. A
// read-only one is opened for exclusive reading instead: its deletion takes
// the attribute off first. A file that is not there is held by no one.
bool IsHeld(const char* path) {
  HANDLE opened = ::CreateFileA(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
  if (opened == INVALID_HANDLE_VALUE) {
    const DWORD error = ::GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
      return false;
    const DWORD attributes = ::GetFileAttributesA(path);
    if (error == ERROR_ACCESS_DENIED && attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & FILE_ATTRIBUTE_READONLY))
      opened = ::CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
  }
  return !Tern::CScopedFileHandle(opened).IsValid();
}

class CHeldFileSearch : public Tern::CFileSystem::CVisitor {
 public:
  CError Visit(Tern::CFileSystem& fs, const CPath& entry,
               CError type) override {
    if (type == Tern::S_FSIsDirectory)
      return fs.EnumerateDirectory(entry, "*", *this);
    if (!IsHeld(entry.OSToPathString().Chars())) return Tern::Ok;
    held = entry;
    return Tern::Failure;  // found: the walk stops
  }
  CPath held;
};

}  // namespace

bool IsHeldFile(const CPath& path) {
  return IsHeld(path.OSToPathString().Chars());
}

bool FileIsInUse(const CPath& path) {
  CLogBlock block("Check if file is in-use");
  CStr os = path.OSToPathString();
  LogText("Checking if '%s' is in use.\n", os.Chars());
  bool inUse = false;
  CError type = CLocalFileSystem::Instance().GetItemType(path);
  if (type == Tern::S_FSIsFile || type == Tern::S_FSIsDirectory) {
    inUse = IsHeld(os.Chars());
  } else if (type == Tern::E_NotFound) {
    LogText("File doesn't exist.\n");
  } else {
    LogStatus(type, "File exists");
  }
  LogText("FileIsInUse() returns %d.\n", inUse ? 1 : 0);
  return inUse;
}

bool FindFileInUse(const CPath& dir, CPath& held) {
  CHeldFileSearch search;
  if (CLocalFileSystem::Instance().GetItemType(dir) != Tern::S_FSIsDirectory ||
      CLocalFileSystem::Instance().EnumerateDirectory(dir, "*", search) !=
          Tern::Failure)
    return false;
  held = search.held;
  return true;
}

bool InstallFolderInUse(const CPath& installDir) {
  CLogBlock block("Check if Zendra files are in-use");
  bool any = false;
  CStr summary;
  for (const CComponent& component : cComponents) {
    CPath file = installDir;
    const bool inUse = Tern::Succeeded(file.AppendComponent(component.file)) &&
                       FileIsInUse(file);
    any = any || inUse;
    summary.AppendFormat("%s%s in use = %d", summary.IsEmpty() ? "" : ", ",
                         component.file, inUse ? 1 : 0);
  }
  LogText("%s\n", summary.Chars());
  CPath held;
  if (any || !FindFileInUse(installDir, held)) return any;
  LogText("'%s' is in use by another program.\n",
          held.OSToPathString().Chars());
  return true;
}

}  // namespace Zendra
