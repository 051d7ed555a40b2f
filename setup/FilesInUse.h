// Whether other programs hold the product's files: a file that is held
// can't be replaced or deleted now.
#pragma once

#include <vector>

#include "TFileSystem.h"

namespace Zendra {

// The files below a folder, each opened for exclusive writing and deletion:
// while they are claimed no other program can open them, and they are
// deleted through the same handles, without being looked up again.
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
  // Deletes the claimed files and lets them go; what can't be deleted this
  // way (a read-only file) is left for a deletion by name.
  void DeleteFiles();
  // Lets the files go, unchanged.
  void Release();

 private:
  Tern::CPath mDir;
  std::vector<void*> mFiles;
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
