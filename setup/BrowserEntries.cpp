#include "BrowserEntries.h"

#include <windows.h>

#include <vector>

#include "InstallLog.h"
#include "Product.h"
#include "TRegistry_Win.h"

namespace Zendra {

using Tern::CWinRegKey;

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
const char cAcceptedDocumentsKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
    "Internet Settings\\Accepted Documents";
const char cXhtmlType[] = "application/xhtml+xml";

const char cFilterKey[] = "HKEY_CLASSES_ROOT\\PROTOCOLS\\Filter";
const char* const cFilterTypes[] = {
    "text/xml",
    "text/xml; charset=utf-8",
    "text/xml; charset=iso-8859-1",
    "application/xhtml+xml",
    "application/xhtml+xml; charset=utf-8",
    "application/xhtml+xml; charset=iso-8859-1",
};

// What a filter type's key says about who handles the type.
enum FilterStatus {
  fsNoType = 0,       // no key for the type
  fsNoFilter = 1,     // the key names no class
  fsOurFilter = 2,    // the product's own filter
  fsOtherFilter = 3,  // another filter: a clash
};

FilterStatus TypeStatus(CWinRegKey& filters, const char* type) {
  CWinRegKey typeKey;
  if (!typeKey.Open(type, filters, Tern::rmRead)) return fsNoType;
  CStr clsid;
  if (!typeKey.GetString("CLSID", clsid) || clsid.IsEmpty()) return fsNoFilter;
  return ::lstrcmpiA(clsid.Chars(), cMimeFilterClassId) == 0 ? fsOurFilter
                                                             : fsOtherFilter;
}

CStr Joined(const char* key, const char* tail) {
  CStr path(key);
  path += tail;
  return path;
}

bool OpenStep(CWinRegKey& key, const char* path, const char* failure) {
  return LogKeyStep(key.Open(path, Tern::rmCreate), key, failure);
}

}  // namespace

bool MimeFilterClashes() {
  CLogBlock block("Check to see if a MIME filter is already installed");
  CWinRegKey filters;
  if (!filters.Open(cFilterKey, Tern::rmWrite)) {
    // Only reading is needed to tell who claims the types.
    if (!filters.Open(cFilterKey, Tern::rmRead)) {
      LogText("No MIME filters are registered.\n");
      return false;
    }
    LogText("The MIME filter key can't be opened for writing; reading it.\n");
  }
  bool clash = false;
  for (const char* type : cFilterTypes) {
    const FilterStatus status = TypeStatus(filters, type);
    LogText("For type = '%s', status = %d.\n", type, static_cast<int>(status));
    if (status == fsOtherFilter) {
      LogText("Filter clashes!!!\n");
      clash = true;
    }
  }
  return clash;
}

bool AddToPreApprovedList(CInstallContext&) {
  CLogBlock block("Add registry entry for PreApproved List");
  CWinRegKey key;
  return OpenStep(
      key, Joined(cPreApprovedKey, cProductClassId).Chars(),
      "Open Zendra AddToInternetExplorerPreApprovedList registry key.");
}

bool AddVersionCheckElevation(CInstallContext& context) {
  const CPath& installDir = context.installDir;
  CLogBlock block("Add registry entry to elevate VersionCheck privledges");
  if (!installDir.IsValid()) TERN_FAIL("mInstallDir.IsValid()");
  CWinRegKey key;
  return OpenStep(
             key, Joined(cElevationKey, cProductClassId).Chars(),
             "Open Zendra AddVersionCheckPrivledgeElevation registry key.") &&
         LogStep(key.SetNumber("Policy", 3), "Write Policy registry value.") &&
         LogStep(key.SetString("AppName", "VersionCheck.exe"),
                 "Write AppName registry value.") &&
         LogStep(key.SetString("AppPath", installDir.OSToPathString().Chars()),
                 "Write AppPath registry value.");
}

bool AddEnterpriseMode(CInstallContext&) {
  CLogBlock block("Add registry entry for Enterprise Mode");
  CWinRegKey key;
  return OpenStep(key, cEnterpriseModeKey,
                  "Open Enterprise Mode' registry key") &&
         LogStep(key.SetString("Enable", ""),
                 "Write Enterprise Mode enable registry value.");
}

bool AddCompatibilityWarningKey(CInstallContext& context) {
  CLogBlock block(
      "Add registry entry to prevent Control Panel Compatibility Warning");
  CPath panel = context.installDir;
  CWinRegKey key;
  return LogStatus(panel.AppendComponent("ZendraPanel.cpl"),
                   "Append 'ZendraPanel.cpl'") &&
         OpenStep(key, cCompatibilityKey,
                  "Open Control Panel Compatibility registry key") &&
         LogStep(key.SetNumber(panel.OSToPathString().Chars(), 16),
                 "Write Control Panel Compatibility registry value.");
}

bool RemoveFromAcceptedDocuments(CInstallContext&) {
  CLogBlock block("Remove application/xhtml+xml from Accepted Documents");
  CWinRegKey key;
  if (!OpenStep(key, cAcceptedDocumentsKey,
                "Open Zendra sAcceptedDocuments registry key."))
    return false;
  std::vector<CStr> names;
  key.GetValueNames(names);
  for (const CStr& name : names) {
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
