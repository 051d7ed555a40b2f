// Copying into the install: one file, or a whole source folder tree, each
// step logged the way support staff read it.
#pragma once

#include "InstallContext.h"
#include "TFileSystem.h"
#include "TString.h"

namespace Zendra {

class CFolderClaim;

// Copies `name` from `srcDir` to `destDir`, replacing what is there; a file
// `claim` holds there is written over through its handle.
bool CopyOneFile(const char* name, const Tern::CPath& srcDir,
                 const Tern::CPath& destDir, CFolderClaim* claim = nullptr);

// Creates `dir` and any missing folder above it for the install, in the
// block "Create <label> directory": a folder that is there already is fine
// ("directory '...' already exists."); one that can't be made is also told
// to the user, as a matter of permission.
bool CreateDirectoryBlock(const CInstallContext& context, const char* label,
                          const Tern::CPath& dir);
// The same, announced first as "creating <label> directory = '...'", as the
// file steps log each folder they make.
bool CreateInstallDirectory(const CInstallContext& context, const char* label,
                            const Tern::CPath& dir);

// Walks a source folder: each file is copied into the matching destination
// folder; each folder met gets its destination folder (labelled "<label>
// subdirectory") and is walked in turn.
class CFolderCopy : public Tern::CFileSystem::CVisitor {
 public:
  CFolderCopy(const CInstallContext& context, const Tern::CPath& destDir,
              const char* label);
  // Walks `srcDir` into the destination folder; true when all was copied.
  bool Walk(const Tern::CPath& srcDir);
  Tern::CError Visit(Tern::CFileSystem& fs, const Tern::CPath& entry,
                     Tern::CError type) override;

 private:
  bool CopyFile(const Tern::CPath& file);
  // Failure after a failure that is logged already; any other failed status
  // is logged here.
  Tern::CError WalkTree(const Tern::CPath& srcDir);

  const CInstallContext& mContext;
  Tern::CPath mDestDir;
  Tern::CStr mLabel;
};

}  // namespace Zendra
