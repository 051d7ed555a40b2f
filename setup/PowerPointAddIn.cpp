#include "PowerPointAddIn.h"

#include "InstallLog.h"
#include "OfficeRegistry.h"
#include "StringTable.h"
#include "TFormat.h"
#include "TRegistry_Win.h"

namespace Zendra {

using Tern::CFormat;

namespace {

const char cPowerPointAddInFile[] =
    "Zendra 4 Commands for PowerPoint (32-bit).ppam";

struct PowerPtRow {
  unsigned nameID;
  Int officeVersion;
  Int bitness;
  const char* addInKey;
  const char* installKey;  // ends in a backslash
  UInt32 autoLoad;
  const char* addInFile;
  const char* sourceSubfolder;
};

#define ZN_POWERPOINT_ROW(id, office, version)                               \
  {                                                                          \
    id, office, 32, ZENDRA_OFFICE_KEY(version, "PowerPoint\\AddIns"),        \
        ZENDRA_OFFICE_KEY(version, "PowerPoint\\InstallRoot\\"), 0xFFFFFFFF, \
        cPowerPointAddInFile, "Office Support/32"                            \
  }

const PowerPtRow InstallPowerPt[5] = {
    ZN_POWERPOINT_ROW(517, 12, "12.0"), ZN_POWERPOINT_ROW(518, 14, "14.0"),
    ZN_POWERPOINT_ROW(519, 15, "15.0"), ZN_POWERPOINT_ROW(520, 16, "16.0"),
    ZN_POWERPOINT_ROW(521, 16, "17.0"),
};

#undef ZN_POWERPOINT_ROW

// The application's key: the install key up to its last backslash.
CStr ApplicationKey(const PowerPtRow& row) {
  CStr keyPath(row.installKey);
  keyPath.Truncate(keyPath.Length() - 1);
  return keyPath;
}

bool IsPresent(const PowerPtRow& row) {
  COfficeKey key;
  return IniParsePath(ApplicationKey(row).Chars(), key) &&
         RegKeyExists(key, OfficeView());
}

CStr AddInName(const PowerPtRow& row) {
  CStr name(row.addInFile);
  const Int dot = name.Length() - 5;  // ".ppam"
  name.Truncate(dot);
  return name;
}

// The add-in's own key below the row's AddIns key.
bool AppKey(const PowerPtRow& row, COfficeKey& appKey) {
  if (!IniParsePath(row.addInKey, appKey)) return false;
  appKey.subKey += "\\";
  appKey.subKey += AddInName(row);
  return true;
}

bool AddInPath(const CPath& installDir, const PowerPtRow& row, CStr& path) {
  CPath file = installDir;
  CPath sub(row.sourceSubfolder);
  bool ok = LogStatus(file.Append(sub), "Append the add-in's folder") &&
            LogStatus(file.AppendComponent(row.addInFile),
                      "Append the add-in's file name");
  path = file.OSToPathString();
  return ok;
}

bool InstallRow(const CPath& installDir, const PowerPtRow& row) {
  const CStr name = GetResStr(row.nameID);
  COfficeKey appKey;
  CStr fname;
  if (!LogStep(AppKey(row, appKey), "Parse the AddIns key") ||
      !AddInPath(installDir, row, fname))
    return false;
  CFormat line(
      "InstallMSPowerPtAddIns installing: <PowerPtVer>, Filename: <fname>, "
      "appKeyStr: <aks>, addInName: <addInName>\n",
      nullptr, CFormat::fmtNoGlobalExpansion);
  line.Item("PowerPtVer", name.Chars());
  line.Item("fname", fname.Chars());
  line.Item("aks", appKey.subKey.Chars());
  line.Item("addInName", AddInName(row).Chars());
  LogText("%s", line.Result().Chars());
  const bool use64BitVersion = OSIs64Bit();
  return RegCreateKeyValue(appKey, "AutoLoad", row.autoLoad, use64BitVersion) &&
         RegCreateKeyValue(appKey, "Path", fname.Chars(), use64BitVersion);
}

}  // namespace

bool InstallMSPowerPtAddIns(CInstallContext& context) {
  CLogBlock block("Check versions of PowerPoint and adding macros for them");
  bool ok = true;
  for (const PowerPtRow& row : InstallPowerPt) {
    if (!IsPresent(row)) {
      const CStr name = GetResStr(row.nameID);
      LogText("InstallMSPowerPtAddIns NOT installing: %s\n", name.Chars());
      FoundInOtherView(ApplicationKey(row).Chars(), name, "add-in");
      continue;
    }
    ok = InstallRow(context.installDir, row) && ok;
  }
  return ok;
}

bool RemoveMSPowerPtAddIns(CInstallContext&) {
  bool ok = true;
  const bool use64BitVersion = OSIs64Bit();
  const Int view = use64BitVersion ? Tern::rv64BitView : Tern::rvDefaultView;
  for (const PowerPtRow& row : InstallPowerPt) {
    COfficeKey appKey;
    if (!AppKey(row, appKey) || !RegKeyExists(appKey, view)) continue;
    const bool deleted = RegDeleteKeyInView(appKey, use64BitVersion);
    LogText("Deleting %s, result = %s\n", appKey.subKey.Chars(),
            deleted ? "success" : "failure");
    ok = deleted && ok;
  }
  return ok;
}

}  // namespace Zendra
