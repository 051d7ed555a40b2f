#include "ZNRegistryEntries.h"

#include <windows.h>

#include <ctime>
#include <vector>

#include "InstallLog.h"
#include "TRegistry_Win.h"
#include "TVersion.h"

namespace Zendra {

using Tern::CVersion;
using Tern::CWinRegKey;

const char cProductCLSID[] = "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";
const char cMimeFilterCLSID[] = "{5A1C7E36-2B94-4F6D-9E21-7C3B0D84A6F1}";

namespace {

const char cPreApprovedKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\"
    "PreApproved\\";
const char cElevationKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Internet Explorer\\Low "
    "Rights\\ElevationPolicy\\";
const char cEnterpriseModeKey[] =
    "HKEY_LOCAL_MACHINE\\Software\\Policies\\Microsoft\\Internet "
    "Explorer\\Main\\EnterpriseMode";
const char cCompatibilityKey[] =
    "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows "
    "NT\\CurrentVersion\\AppCompatFlags\\Compatibility Assistant\\Persisted";
const char cUninstallKey[] =
    "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\"
    "Uninstall\\";
const char cAcceptedDocumentsKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
    "Internet Settings\\Accepted Documents";
const char cXhtmlType[] = "application/xhtml+xml";

const char cPublisher[] = "Orvane, Inc.";
const char cHelpLink[] = "http://www.orvane.com/support/";
const char cHelpTelephone[] = "+1 555 0142";
const char cHomePage[] = "http://www.orvane.com/";

CStr Joined(const char* key, const char* tail) {
  CStr path(key);
  path += tail;
  return path;
}

bool OpenStep(CWinRegKey& key, const char* path, const char* failure) {
  return LogStep(key.Open(path, Tern::rmCreate), failure);
}

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

}  // namespace

std::vector<CStr> ValueNamesOf(CWinRegKey& key) {
  std::vector<CStr> names;
  Int count = 0;
  if (!key.QueryInfo(nullptr, &count)) return names;
  for (Int i = 0; i < count; ++i) {
    CStr name;
    if (key.EnumValue(i, name)) names.push_back(name);
  }
  return names;
}

bool AddToPreApprovedList() {
  CLogBlock block("Add registry entry for PreApproved List");
  CWinRegKey key;
  return OpenStep(
      key, Joined(cPreApprovedKey, cProductCLSID).Chars(),
      "Open Zendra AddToInternetExplorerPreApprovedList registry key.");
}

bool AddVersionCheckElevation(const CPath& installDir) {
  CLogBlock block("Add registry entry to elevate VersionCheck privledges");
  if (!installDir.IsValid()) TERN_FAIL("mInstallDir.IsValid()");
  CWinRegKey key;
  return OpenStep(
             key, Joined(cElevationKey, cProductCLSID).Chars(),
             "Open Zendra AddVersionCheckPrivledgeElevation registry key.") &&
         LogStep(key.SetNumber("Policy", 3), "Write Policy registry value.") &&
         LogStep(key.SetString("AppName", "VersionCheck.exe"),
                 "Write AppName registry value.") &&
         LogStep(key.SetString("AppPath", installDir.OSToPathString().Chars()),
                 "Write AppPath registry value.");
}

bool AddEnterpriseMode() {
  CLogBlock block("Add registry entry for Enterprise Mode");
  CWinRegKey key;
  return OpenStep(key, cEnterpriseModeKey,
                  "Open Enterprise Mode' registry key") &&
         LogStep(key.SetString("Enable", ""),
                 "Write Enterprise Mode enable registry value.");
}

bool AddCompatibilityWarningKey(const CPath& installDir) {
  CLogBlock block(
      "Add registry entry to prevent Control Panel Compatibility Warning");
  CPath panel = installDir;
  CWinRegKey key;
  return LogStatus(panel.AppendComponent("ZendraPanel.cpl"),
                   "Append 'ZendraPanel.cpl'") &&
         OpenStep(key, cCompatibilityKey,
                  "Open Control Panel Compatibility registry key") &&
         LogStep(key.SetNumber(panel.OSToPathString().Chars(), 16),
                 "Write Control Panel Compatibility registry value.");
}

bool AddUninstallEntries(const CPath& installDir) {
  CStr version;
  if (!OwnProductVersion(version)) version.Clear();
  return AddUninstallEntries(installDir, version.Chars());
}

namespace {

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

bool AddUninstallEntries(const CPath& installDir, const char* versionText) {
  CLogBlock block("Add registry entries for uninstallation");
  CVersion version;
  if (!LogStep(versionText && Tern::Succeeded(version.Parse(versionText)),
               "Invalid executable version"))
    return false;
  CWinRegKey key;
  return OpenStep(key, Joined(cUninstallKey, cProductCLSID).Chars(),
                  "Open Zendra uninstall registry key.") &&
         WriteUninstallValues(key, installDir, versionText, version);
}

bool RemoveFromAcceptedDocuments() {
  CLogBlock block("Remove application/xhtml+xml from Accepted Documents");
  CWinRegKey key;
  if (!OpenStep(key, cAcceptedDocumentsKey,
                "Open Zendra sAcceptedDocuments registry key."))
    return false;
  for (const CStr& name : ValueNamesOf(key)) {
    CStr data;
    if (!key.GetString(name.Chars(), data) ||
        ::lstrcmpiA(data.Chars(), cXhtmlType) != 0)
      continue;
    LogText("Deleting value '%s' = '%s'.\n", name.Chars(), data.Chars());
    if (!LogStep(key.DeleteValue(name.Chars()),
                 "Delete application/xhtml+xml registry key."))
      return false;
  }
  return true;
}

}  // namespace Zendra
