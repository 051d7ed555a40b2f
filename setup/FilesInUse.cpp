#include "FilesInUse.h"

#include <windows.h>

#include <algorithm>

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
// exclusive reading instead (its deletion takes the attribute off first),
// and `writable` says which. INVALID_HANDLE_VALUE when the file is held or
// not there (`missing`).
HANDLE OpenExclusively(const char* path, DWORD extra, bool& missing,
                       bool& writable) {
  HANDLE opened = ::CreateFileA(path, GENERIC_WRITE | extra, 0, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  missing = false;
  writable = opened != INVALID_HANDLE_VALUE;
  if (writable) return opened;
  const DWORD error = ::GetLastError();
  missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  const DWORD attributes = ::GetFileAttributesA(path);
  if (error == ERROR_ACCESS_DENIED && attributes != INVALID_FILE_ATTRIBUTES &&
      (attributes & FILE_ATTRIBUTE_READONLY))
    opened = ::CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  return opened;
}

// The key a claimed file is found by: Windows names are not case-sensitive.
std::string KeyOf(const CStr& path) {
  std::string key(path.Chars(), static_cast<std::size_t>(path.Length()));
  if (!key.empty()) ::CharLowerBuffA(&key[0], static_cast<DWORD>(key.size()));
  return key;
}

// The first claimed file whose key is `key` or after it.
std::vector<CFolderClaim::CFile>::const_iterator FirstFrom(
    const std::vector<CFolderClaim::CFile>& files, const std::string& key) {
  return std::lower_bound(files.begin(), files.end(), key,
                          [](const CFolderClaim::CFile& file,
                             const std::string& k) { return file.key < k; });
}

// The file goes when its last handle closes.
void DeleteOnClose(HANDLE file) {
  FILE_DISPOSITION_INFO deleteOnClose = {TRUE};
  ::SetFileInformationByHandle(file, FileDispositionInfo, &deleteOnClose,
                               sizeof deleteOnClose);
}

// Writes what is left of `in` to `out`.
bool CopyBytes(HANDLE in, HANDLE out) {
  char buffer[64 * 1024];
  for (;;) {
    DWORD read = 0, written = 0;
    if (!::ReadFile(in, buffer, sizeof buffer, &read, nullptr)) return false;
    if (read == 0) return true;
    if (!::WriteFile(out, buffer, read, &written, nullptr) || written != read)
      return false;
  }
}

// A copy's attributes: the source's, but never read-only.
DWORD WritableAttributes(DWORD source) {
  const DWORD attributes = source & ~FILE_ATTRIBUTE_READONLY;
  return attributes ? attributes : FILE_ATTRIBUTE_NORMAL;
}

// A file that is not there is held by no one.
bool IsHeld(const char* path) {
  bool missing = false, writable = false;
  Tern::CScopedFileHandle opened(OpenExclusively(path, 0, missing, writable));
  return !missing && !opened.IsValid();
}

// Walks a tree, stopping at the first file held; each file opened is kept
// when a claim is given.
class CHeldFileSearch : public Tern::CFileSystem::CVisitor {
 public:
  explicit CHeldFileSearch(std::vector<CFolderClaim::CFile>* kept)
      : mKept(kept) {}
  CError Visit(Tern::CFileSystem& fs, const CPath& entry,
               CError type) override {
    if (type == Tern::S_FSIsDirectory)
      return fs.EnumerateDirectory(entry, "*", *this);
    const CStr path = entry.OSToPathString();
    if (!mKept) {
      if (!IsHeld(path.Chars())) return Tern::Ok;
    } else {
      bool missing = false, writable = false;
      HANDLE opened = OpenExclusively(path.Chars(), DELETE, missing, writable);
      if (opened != INVALID_HANDLE_VALUE)
        mKept->push_back({KeyOf(path), entry, opened, writable});
      if (opened != INVALID_HANDLE_VALUE || missing) return Tern::Ok;
    }
    held = entry;
    return Tern::Failure;  // found: the walk stops
  }
  CPath held;

 private:
  std::vector<CFolderClaim::CFile>* mKept;
};

bool SearchTree(const CPath& dir, std::vector<CFolderClaim::CFile>* kept,
                CPath& held) {
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
  std::sort(mFiles.begin(), mFiles.end(),
            [](const CFile& a, const CFile& b) { return a.key < b.key; });
  mDir = dir;
  mClaimed = true;
  return true;
}

bool CFolderClaim::Covers(const CPath& dir) const {
  return mClaimed && CLocalFileSystem::Instance().IsSameItem(mDir, dir);
}

void CFolderClaim::DeleteFilesExcept(
    const std::function<bool(const CPath&)>& keep) {
  std::vector<CFile> kept;
  for (const CFile& file : mFiles) {
    if (file.writable && keep(file.path)) {
      kept.push_back(file);
      continue;
    }
    DeleteOnClose(file.handle);
    ::CloseHandle(file.handle);
  }
  mFiles.swap(kept);
}

std::size_t CFolderClaim::IndexOf(const std::string& key) const {
  const auto found = FirstFrom(mFiles, key);
  if (found == mFiles.end() || found->key != key || !found->handle)
    return mFiles.size();
  return static_cast<std::size_t>(found - mFiles.begin());
}

bool CFolderClaim::Holds(const CPath& file) const {
  return IndexOf(KeyOf(file.OSToPathString())) < mFiles.size();
}

bool CFolderClaim::HoldsAnyBelow(const CPath& dir) const {
  const std::string prefix = KeyOf(dir.OSToPathString()) + '\\';
  for (auto file = FirstFrom(mFiles, prefix);
       file != mFiles.end() && file->key.compare(0, prefix.size(), prefix) == 0;
       ++file)
    if (file->handle) return true;
  return false;
}

// Closed, and no longer found; the entry stays, so that the others keep
// their places.
void CFolderClaim::LetGo(CFile& file) {
  ::CloseHandle(file.handle);
  file.handle = nullptr;
}

CError CFolderClaim::WriteOver(const CPath& dest, const CPath& src) {
  const std::size_t at = IndexOf(KeyOf(dest.OSToPathString()));
  if (at == mFiles.size()) return Tern::E_NotFound;
  CFile* file = &mFiles[at];
  Tern::CScopedFileHandle in(::CreateFileA(
      src.OSToPathString().Chars(), GENERIC_READ, FILE_SHARE_READ, nullptr,
      OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  FILE_BASIC_INFO facts = {};
  bool whole = in.IsValid() &&
               ::GetFileInformationByHandleEx(in.Get(), FileBasicInfo, &facts,
                                              sizeof facts) &&
               CopyBytes(in.Get(), file->handle) &&
               ::SetEndOfFile(file->handle);
  if (whole) {
    // The time of last writing is the source's, as a copy's; the others
    // (zero) stay.
    FILE_BASIC_INFO set = {};
    set.LastWriteTime = facts.LastWriteTime;
    set.FileAttributes = WritableAttributes(facts.FileAttributes);
    whole = ::SetFileInformationByHandle(file->handle, FileBasicInfo, &set,
                                         sizeof set);
  }
  const DWORD error = whole ? 0 : ::GetLastError();
  if (!whole) DeleteOnClose(file->handle);
  LetGo(*file);
  if (whole) return Tern::Ok;
  return Tern::ErrorFromWindows(error ? error : ERROR_WRITE_FAULT);
}

void CFolderClaim::Release() {
  for (const CFile& file : mFiles)
    if (file.handle) ::CloseHandle(file.handle);
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
