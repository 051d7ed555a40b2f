// The file steps of an install: the component files, the subfolder trees,
// the extra files and the fonts, copied from the source folder (the folder
// of the running Setup.exe).
#pragma once

#include "TFileSystem.h"

namespace Zendra {

class CZendraSetupApp;

// Copies `name` from `srcDir` to `destDir`, replacing what is there.
bool CopyOneFile(CZendraSetupApp& app, const char* name,
                 const Tern::CPath& srcDir, const Tern::CPath& destDir);

// Every component file into the install folder; goes through the whole list
// and fails at the end when any copy failed.
bool InstallMainFiles(CZendraSetupApp& app);

// The subfolder trees, one row each.
struct CSubfolderStep {
  const char* startLine;
  const char* subfolder;  // "/" between folders
  const char* label;
  const char* failureText;
};
extern const CSubfolderStep cSubfolderSteps[3];
bool InstallSubfolder(CZendraSetupApp& app, const CSubfolderStep& step);

// "Setup.exe", "VersionCheck.exe", "About.gif", "Zendra.ovc".
extern const char* const cExtraFiles[4];
bool InstallExtraFiles(CZendraSetupApp& app);

// Copies the fonts into the product's fonts folder and installs each into
// the system.
bool InstallFonts(CZendraSetupApp& app);

}  // namespace Zendra
