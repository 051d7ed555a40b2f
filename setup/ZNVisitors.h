// The walk that copies a source folder tree into the install folder: a
// folder visitor that makes each destination folder and descends, and file
// visitors that are handed each file met.
#pragma once

#include "TFileSystem.h"
#include "TString.h"

namespace Zendra {

class CZendraSetupApp;

// Creates `dir` and any missing folder above it for the install, logging
// "creating <label> directory"; a folder that is already there is fine.
bool CreateInstallDirectory(const char* label, const Tern::CPath& dir);

// Base of the visitors that are handed the files of a walk.
class CZendraFileVisitor {
 public:
  virtual ~CZendraFileVisitor() = default;
  // False stops the walk.
  virtual bool VisitFile(const Tern::CPath& file) = 0;
};

// Copies each file it is given into its destination folder, keeping the
// name, and logs it under its label.
class CZendraFileInstallVisitor : public CZendraFileVisitor {
 public:
  CZendraFileInstallVisitor(CZendraSetupApp& app, const Tern::CPath& destDir,
                            const char* label);
  bool VisitFile(const Tern::CPath& file) override;

 private:
  CZendraSetupApp& mApp;
  Tern::CPath mDestDir;
  Tern::CStr mLabel;
};

// Walks a source folder: files go to a CZendraFileInstallVisitor for the
// matching destination folder; each folder met gets its destination folder
// (labelled "<label> subdirectory") and is walked in turn.
class CZendraDirVisitor : public Tern::CFileSystem::CVisitor {
 public:
  CZendraDirVisitor(CZendraSetupApp& app, const Tern::CPath& destDir,
                    const char* label);
  // Walks `srcDir` into the destination folder; true when all was copied.
  bool Walk(const Tern::CPath& srcDir);
  Tern::CError Visit(Tern::CFileSystem& fs, const Tern::CPath& entry) override;

 private:
  // Failure after a failure that is logged already; any other failed status
  // is logged here.
  Tern::CError WalkTree(const Tern::CPath& srcDir);

  CZendraSetupApp& mApp;
  Tern::CPath mDestDir;
  Tern::CStr mLabel;
  CZendraFileInstallVisitor mFiles;
};

}  // namespace Zendra
