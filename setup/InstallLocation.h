// Where the install comes from and goes to: the source folder (that of the
// running Setup.exe) and its version, the folders below Program Files, the
// copy already installed (found through the product's COM class) and, when
// its components are in use, a fresh numbered folder.
#pragma once

#include "FilesInUse.h"
#include "TFileSystem.h"
#include "TString.h"
#include "TVersion.h"

namespace Zendra {

class CInstallLocation {
 public:
  // The source folder, Setup's version, the install folders and the copy
  // already installed, each logged; false (logged) when one can't be had.
  bool Find();

  // The configuration file beside the running program.
  static bool GetConfigPath(Tern::CPath& path);

  // A removal runs from the installed copy's folder, where one was
  // detected; otherwise from one of the folders an install would use.
  // Anything else is logged as a failure that removes nothing.
  bool RunsFromInstalledFolder() const;
  // Whether `dir` is Program Files\Orvane\Zendra or one of its numbered
  // twins: the folders an install puts the product in.
  bool IsInstallFolder(const Tern::CPath& dir) const;
  // The same, or the folder of the copy detected as installed.
  bool IsProductFolder(const Tern::CPath& dir) const;
  // When the installed components are locked, the install goes to a fresh
  // numbered folder beside the usual one: Zendra001, Zendra002, ...
  // Otherwise the files of the usual one stay claimed for the install.
  bool FindNewInstallDir();
  void SetInstallDir(const Tern::CPath& dir);

  const Tern::CPath& SetupDir() const { return mSetupDir; }
  const Tern::CPath& InstallDir() const { return mInstallDir; }
  const Tern::CPath& FontsDir() const { return mFontsDir; }
  const Tern::CVersion& SetupVersion() const { return mSetupVersion; }
  const Tern::CStr& SetupVersionText() const { return mSetupVersionText; }
  const Tern::CVersion& InstalledVersion() const { return mInstalledVersion; }
  bool IsInstalled() const { return mInstalledVersion.IsValid(); }
  CFolderClaim& InstallDirClaim() { return mInstallDirClaim; }

 private:
  bool ReadSetupVersion();
  bool InitInstallDirs();
  void DetectInstalledCopy();
  // The folder of the detected copy's server; false when none was detected.
  bool DetectedFolder(Tern::CPath& folder) const;

  Tern::CPath mSetupDir;
  Tern::CPath mMakerDir;
  Tern::CPath mInstallDir;
  Tern::CPath mFontsDir;
  Tern::CVersion mSetupVersion;
  Tern::CStr mSetupVersionText;
  Tern::CVersion mInstalledVersion;
  Tern::CStr mInstalledServerPath;
  CFolderClaim mInstallDirClaim;
};

}  // namespace Zendra
