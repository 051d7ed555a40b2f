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

// Opens the file for exclusive writing, with `extra` access besides: a file
// another program holds can't be opened so. A read-only one is opened for
// exclusive reading instead (its deletion takes the attribute off first).
// INVALID_HANDLE_VALUE when the file is held or not there (`missing`).
HANDLE OpenExclusively(const char* path, DWORD extra, bool& missing) {
  HANDLE opened = ::CreateFileA(path, GENERIC_WRITE | extra, 0, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  missing = false;
  if (opened != INVALID_HANDLE_VALUE) return opened;
  const DWORD error = ::GetLastError();
  missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  const DWORD attributes = ::GetFileAttributesA(path);
  if (error == ERROR_ACCESS_DENIED && attributes != INVALID_FILE_ATTRIBUTES &&
      (attributes & FILE_ATTRIBUTE_READONLY))
    opened = ::CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  return opened;
}

// A file that is not there is held by no one.
bool IsHeld(const char* path) {
  bool missing = false;
  Tern::CScopedFileHandle opened(OpenExclusively(path, 0, missing));
  return !missing && !opened.IsValid();
}

// Walks a tree, stopping at the first file held; each file opened is kept
// when a claim is given.
class CHeldFileSearch : public Tern::CFileSystem::CVisitor {
 public:
  explicit CHeldFileSearch(std::vector<void*>* kept) : mKept(kept) {}
  CError Visit(Tern::CFileSystem& fs, const CPath& entry,
               CError type) override {
    if (type == Tern::S_FSIsDirectory)
      return fs.EnumerateDirectory(entry, "*", *this);
    const CStr path = entry.OSToPathString();
    if (!mKept) {
      if (!IsHeld(path.Chars())) return Tern::Ok;
    } else {
      bool missing = false;
      HANDLE opened = OpenExclusively(path.Chars(), DELETE, missing);
      if (opened != INVALID_HANDLE_VALUE) mKept->push_back(opened);
      if (opened != INVALID_HANDLE_VALUE || missing) return Tern::Ok;
    }
    held = entry;
    return Tern::Failure;  // found: the walk stops
  }
  CPath held;

 private:
  std::vector<void*>* mKept;
};

bool SearchTree(const CPath& dir, std::vector<void*>* kept, CPath& held) {
  CHeldFileSearch search(kept);
  if (CLocalFileSystem::Instance().GetItemType(dir) != Tern::S_FSIsDirectory ||
      CLocalFileSystem::Instance().EnumerateDirectory(dir, "*", search) !=
          Tern::Failure)
    return false;
  held = search.held;
  return true;
}

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
  return SearchTree(dir, nullptr, held);
}

bool CFolderClaim::Claim(const CPath& dir, CPath& held) {
  Release();
  if (SearchTree(dir, &mFiles, held)) {
    Release();
    return false;
  }
  mDir = dir;
  mClaimed = true;
  return true;
}

bool CFolderClaim::Covers(const CPath& dir) const {
  return mClaimed && CLocalFileSystem::Instance().IsSameItem(mDir, dir);
}

void CFolderClaim::DeleteFiles() {
  for (void* file : mFiles) {
    FILE_DISPOSITION_INFO deleteOnClose = {TRUE};
    ::SetFileInformationByHandle(file, FileDispositionInfo, &deleteOnClose,
                                 sizeof deleteOnClose);
  }
  Release();
}

void CFolderClaim::Release() {
  for (void* file : mFiles) ::CloseHandle(file);
  mFiles.clear();
  mClaimed = false;
}

bool ClaimFolder(CFolderClaim* claim, const CPath& dir, CPath& held) {
  if (!claim) return FindFileInUse(dir, held);
  return !claim->Covers(dir) && !claim->Claim(dir, held);
}

bool InstallFolderInUse(const CPath& installDir, CFolderClaim& claim) {
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
  if (any || claim.Claim(installDir, held)) return any;
  LogText("'%s' is in use by another program.\n",
          held.OSToPathString().Chars());
  return true;
}

}  // namespace Zendra
