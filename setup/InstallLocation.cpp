#include "InstallLocation.h"

#include "FilesInUse.h"
#include "InstallFolders.h"
#include "InstallLog.h"
#include "Product.h"
#include "TRegistry_Win.h"

namespace Zendra {

using Tern::CError;
using Tern::CLocalFileSystem;
using Tern::CStr;
using Tern::CVersion;
using Tern::CWinRegKey;
using Tern::Int;

namespace {

CLocalFileSystem& LFS() { return CLocalFileSystem::Instance(); }

// Appends one component and logs the step like every checked call.
bool AppendStep(CPath& path, const CPath& from, const char* component,
                const char* step) {
  path = from;
  return LogStatus(path.AppendComponent(component), step);
}

}  // namespace

bool CInstallLocation::GetConfigPath(CPath& path) {
  CError err = LFS().GetDirectory(CLocalFileSystem::dtModuleDir, path);
  return Tern::Succeeded(err) &&
         Tern::Succeeded(path.AppendComponent(cConfigFileName));
}

bool CInstallLocation::Find() {
  if (!LogStatus(LFS().GetDirectory(CLocalFileSystem::dtAppDir, mSetupDir),
                 "Could not get Setup.exe's directory"))
    return false;
  LogText("Install source folder = '%s'.\n",
          mSetupDir.OSToPathString().Chars());
  if (!ReadSetupVersion() || !InitInstallDirs()) return false;
  DetectInstalledCopy();
  return true;
}

bool CInstallLocation::ReadSetupVersion() {
  CLogBlock block("Getting version of Setup.exe");
  CPath setupExe;
  if (!AppendStep(setupExe, mSetupDir, "Setup.exe", "Append 'Setup'"))
    return false;
  CStr text;
  if (!LogStep(CVersion::GetVersionInfo(setupExe.OSToPathString().Chars(),
                                        CVersion::viProductVersion, text),
               "Get Setup's product version."))
    return false;
  mSetupVersionText = text;
  mSetupVersion.Parse(text.Chars());
  LogText(
      "The version of Zendra currently being installed (Setup's product "
      "version) = '%s'.\n",
      text.Chars());
  return true;
}

bool CInstallLocation::InitInstallDirs() {
  CLogBlock block("Initializing installation directories");
  CPath programFiles;
  if (!LogStatus(LFS().GetDirectory(CLocalFileSystem::dtWinProgramFilesDir,
                                    programFiles),
                 "Get 'Program Files' directory"))
    return false;
  LogText("'Program Files' directory = '%s'.\n",
          programFiles.OSToPathString().Chars());
  CPath common, fonts;
  return AppendStep(mMakerDir, programFiles, cMakerFolder, "Append 'Orvane'") &&
         AppendStep(mInstallDir, mMakerDir, cInstallFolder,
                    "Append 'Zendra'") &&
         AppendStep(common, mMakerDir, cCommonFolder, "Append 'Common'") &&
         AppendStep(fonts, common, "Fonts", "Append 'Fonts'") &&
         AppendStep(mFontsDir, fonts, "TrueType", "Append 'TrueType'");
}

void CInstallLocation::DetectInstalledCopy() {
  CLogBlock block("Check if Zendra already installed");
  mInstalledVersion = CVersion();
  mInstalledServerPath.Clear();
  CWinRegKey classKey;
  if (LogStep(classKey.Open(cProductClassKey, Tern::rmRead),
              "Open CLSID key")) {
    CWinRegKey versionKey, serverKey;
    CStr text;
    if (LogStep(versionKey.Open("InstalledVersion", classKey, Tern::rmRead),
                "Open InstalledVersion key") &&
        LogStep(versionKey.GetString(nullptr, text),
                "Read InstalledVersion default value")) {
      LogText("InstalledVersion = '%s'.\n", text.Chars());
      CVersion installed;
      if (LogStatus(installed.Parse(text.Chars()),
                    "Convert InstalledVersion value"))
        mInstalledVersion = installed;
    }
    if (LogStep(serverKey.Open("InprocServer32", classKey, Tern::rmRead),
                "Open InprocServer32 key") &&
        LogStep(serverKey.GetString(nullptr, text),
                "Read InprocServer32 default value")) {
      LogText("server path from InprocServer32 key = '%s'.\n", text.Chars());
      mInstalledServerPath = text;
    }
  }
  LogText(IsInstalled() ? "Zendra already installed.\n"
                        : "Zendra not installed.\n");
}

bool CInstallLocation::DetectedFolder(CPath& folder) const {
  CPath server;
  return !mInstalledServerPath.IsEmpty() &&
         Tern::Succeeded(server.Set(mInstalledServerPath.Chars())) &&
         Tern::Succeeded(server.GetComponent(CPath::ctDir, folder));
}

// Compared by the folders' long forms: Setup may run through a short (8.3)
// name, and the registry may hold either.
bool CInstallLocation::IsInstallFolder(const CPath& dir) const {
  CPath longDir, parent;
  CStr name;
  return Tern::Succeeded(LFS().GetLongForm(dir, longDir)) &&
         Tern::Succeeded(longDir.GetComponent(CPath::ctDir, parent)) &&
         LFS().IsSameItem(parent, mMakerDir) &&
         Tern::Succeeded(longDir.GetComponentString(CPath::ctFile, name)) &&
         IsInstallFolderName(name);
}

bool CInstallLocation::IsProductFolder(const CPath& dir) const {
  CPath detected;
  return (DetectedFolder(detected) && LFS().IsSameItem(dir, detected)) ||
         IsInstallFolder(dir);
}

bool CInstallLocation::RunsFromInstalledFolder() const {
  CPath installed = mInstallDir;
  const bool same = DetectedFolder(installed)
                        ? LFS().IsSameItem(mSetupDir, installed)
                        : IsInstallFolder(mSetupDir);
  if (same) return true;
  CStr why;
  why.Format(
      "Setup.exe runs from '%s', not from Zendra's installed folder '%s': "
      "nothing is removed",
      mSetupDir.OSToPathString().Chars(), installed.OSToPathString().Chars());
  return LogStep(false, why.Chars());
}

void CInstallLocation::SetInstallDir(const CPath& dir) {
  mInstallDir = dir;
  TERN_ASSERT(mInstallDir.IsValid());
  LogText("Installation directory = '%s'.\n",
          mInstallDir.OSToPathString().Chars());
}

bool CInstallLocation::FindNewInstallDir() {
  if (!InstallFolderInUse(mInstallDir, mInstallDirClaim)) return true;
  CLogBlock block("Find a new install directory");
  CPath parent;
  if (!LogStatus(mInstallDir.GetComponent(CPath::ctDir, parent),
                 "GetComponent"))
    return false;
  for (Int n = 1;; ++n) {
    CStr name;
    name.Format("%s%03d", cInstallFolder, static_cast<int>(n));
    CPath candidate;
    if (!AppendStep(candidate, parent, name.Chars(), "AddComponent"))
      return false;
    CError type = LFS().GetItemType(candidate);
    if (type == Tern::S_FSIsFile || type == Tern::S_FSIsDirectory) {
      LogText("Install directory '%s' already exists.\n",
              candidate.OSToPathString().Chars());
    } else if (type == Tern::E_NotFound) {
      SetInstallDir(candidate);
      return true;
    } else {
      return LogStatus(type, "GetNodeType");
    }
  }
}

}  // namespace Zendra
