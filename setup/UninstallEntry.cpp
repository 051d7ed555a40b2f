#include "UninstallEntry.h"

#include <ctime>

#include "InstallLog.h"
#include "Product.h"
#include "TRegistry_Win.h"
#include "TVersion.h"

namespace Zendra {

using Tern::CVersion;
using Tern::CWinRegKey;

namespace {

const char cPublisher[] = "Orvane, Inc.";
const char cHelpLink[] = "http://www.orvane.com/support/";
const char cHelpTelephone[] = "+1 555 0142";
const char cHomePage[] = "http://www.orvane.com/";

CStr Today() {
  char date[16] = "";
  std::time_t now = std::time(nullptr);
  std::strftime(date, sizeof date, "%Y%m%d", std::localtime(&now));
  return CStr(date);
}

bool OwnProductVersion(CStr& text) {
  CPath program;
  return Tern::Succeeded(
             Tern::CLocalFileSystem::Instance().GetProgramFile(program)) &&
         CVersion::GetVersionInfo(program.OSToPathString().Chars(),
                                  CVersion::viProductVersion, text);
}

bool WriteUninstallValues(CWinRegKey& key, const CPath& installDir,
                          const char* versionText, const CVersion& version) {
  CPath setupExe = installDir;
  if (!LogStatus(setupExe.AppendComponent("Setup.exe"), "Append 'Setup.exe'"))
    return false;
  const CStr icon = setupExe.OSToPathString();
  CStr command = icon;
  command += " -u";
  LogText("uninstall command line = '%s'\n", command.Chars());
  const CStr date = Today();
  LogText("install date = %s\n", date.Chars());
  return LogStep(key.SetString("DisplayName", "Zendra"),
                 "Create DisplayName registry key.") &&
         LogStep(key.SetString("DisplayIcon", icon.Chars()),
                 "Create DisplayIcon registry key.") &&
         LogStep(key.SetString("UninstallString", command.Chars()),
                 "Create UninstallString registry key") &&
         LogStep(key.SetString("Publisher", cPublisher),
                 "Create Publisher registry key.") &&
         LogStep(key.SetString("DisplayVersion", versionText),
                 "Create DisplayVersion registry key.") &&
         LogStep(key.SetNumber("VersionMajor", version.Major()),
                 "Create Major Version registry key.") &&
         LogStep(key.SetNumber("VersionMinor", version.Minor()),
                 "Create Minor Version registry key.") &&
         LogStep(key.SetString("HelpLink", cHelpLink),
                 "Create HelpLink registry key.") &&
         LogStep(key.SetString("HelpTelephone", cHelpTelephone),
                 "Create HelpTelephone registry key.") &&
         LogStep(key.SetString("URLInfoAbout", cHomePage),
                 "Create info URL registry key.") &&
         LogStep(key.SetString("URLUpdateInfo", cHomePage),
                 "Create update URL registry key.") &&
         LogStep(key.SetString("InstallDate", date.Chars()),
                 "Create InstallDate registry key.");
}

}  // namespace

bool AddUninstallEntry(CInstallContext& context) {
  CStr version;
  if (!OwnProductVersion(version)) version.Clear();
  return AddUninstallEntry(context.installDir, version.Chars());
}

bool AddUninstallEntry(const CPath& installDir, const char* versionText) {
  CLogBlock block("Add registry entries for uninstallation");
  CVersion version;
  if (!LogStep(versionText && Tern::Succeeded(version.Parse(versionText)),
               "Invalid executable version"))
    return false;
  CWinRegKey key;
  return LogKeyStep(key.Open(cUninstallKey, Tern::rmCreate), key,
                    "Open Zendra uninstall registry key.") &&
         WriteUninstallValues(key, installDir, versionText, version);
}

bool RemoveUninstallEntry(CInstallContext&) {
  CWinRegKey uninstall;
  const bool opened =
      LogRemovalStep(uninstall.Open(cUninstallListKey, Tern::rmWrite),
                     uninstall, "Open Zendra registry key");
  return opened &&
         (!uninstall.IsValid() ||
          LogRemovalStep(uninstall.DeleteSubKeyTree(cProductClassId), uninstall,
                         "Delete Zendra registry key and subkeys"));
}

}  // namespace Zendra
