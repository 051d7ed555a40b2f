// Whether other programs hold the product's files: a file that is held
// can't be replaced or deleted now.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "TFileSystem.h"

namespace Zendra {

// The files below a folder, each opened for exclusive writing and deletion:
// while they are claimed no other program can open them, and they are
// written over or deleted through the same handles, without being looked up
// again.
class CFolderClaim {
 public:
  CFolderClaim() = default;
  CFolderClaim(const CFolderClaim&) = delete;
  CFolderClaim& operator=(const CFolderClaim&) = delete;
  ~CFolderClaim() { Release(); }

  // Claims every file below `dir`, at any depth. False, with `held` the
  // first file that another program holds, when there is one; nothing stays
  // claimed then. Not logged.
  bool Claim(const Tern::CPath& dir, Tern::CPath& held);
  // Whether the files below `dir` are claimed.
  bool Covers(const Tern::CPath& dir) const;
  // Deletes the claimed files but the writable ones `keep` names, which stay
  // claimed; what can't be deleted this way (a read-only file) is let go,
  // for a deletion by name.
  void DeleteFilesExcept(const std::function<bool(const Tern::CPath&)>& keep);
  // Whether `file` is still claimed; whether any file below `dir` is.
  bool Holds(const Tern::CPath& file) const;
  bool HoldsAnyBelow(const Tern::CPath& dir) const;
  // Writes `src` over the claimed `dest`, as a copy would (its bytes, its
  // time of last writing, its attributes but read-only), and lets it go. A
  // file that could not be written whole is deleted.
  Tern::CError WriteOver(const Tern::CPath& dest, const Tern::CPath& src);
  // Lets the files go, unchanged.
  void Release();

  // One claimed file.
  struct CFile {
    std::string key;  // its path in lower case
    Tern::CPath path;
    void* handle;   // null once let go
    bool writable;  // a read-only file is opened for reading only
  };

 private:
  // Where the file at `key` is among those still claimed; mFiles.size()
  // when it is not.
  std::size_t IndexOf(const std::string& key) const;
  void LetGo(CFile& file);

  Tern::CPath mDir;
  std::vector<CFile> mFiles;  // by key
  bool mClaimed = false;
};

// True when the file exists and another program holds it; not logged.
bool IsHeldFile(const Tern::CPath& path);
// The same, logged.
bool FileIsInUse(const Tern::CPath& path);
// The first file below `dir` (at any depth) that another program holds;
// false when there is none. Not logged.
bool FindFileInUse(const Tern::CPath& dir, Tern::CPath& held);
// True when any file in the install folder is in use: the components
// (each logged) or any other file (the first one met logged). When none
// is, `claim` holds them all.
bool InstallFolderInUse(const Tern::CPath& installDir, CFolderClaim& claim);
// The first file below `dir` that another program holds, as FindFileInUse,
// the files claimed when none is; a folder `claim` covers already is not
// looked at again. Without a claim, only looked at.
bool ClaimFolder(CFolderClaim* claim, const Tern::CPath& dir,
                 Tern::CPath& held);

}  // namespace Zendra
