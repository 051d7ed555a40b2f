// The removal: undoes an install from the installed folder itself, step by
// step. No step stops the removal; the result counts only the steps whose
// failure leaves something of the product behind that matters.
#include <vector>

#include "InstallLog.h"
#include "Setup.h"
#include "TRegistry_Win.h"
#include "ZNInstall.h"
#include "ZNOfficeMacros.h"
#include "ZNOfficeRegistry.h"
#include "ZNPowerPoint.h"
#include "ZNRegistryEntries.h"

namespace Zendra {

using Tern::CLocalFileSystem;
using Tern::CWinRegKey;

namespace {

const char cUninstallKey[] =
    "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\"
    "Uninstall\\";
const char cXmlNamespaceKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Internet Explorer\\XMLNamespace";
const char cMathMLNamespace[] = "http://www.w3.org/1998/Math/MathML";

struct CUnregistration {
  const char* file;
  const char* message;
};
const CUnregistration cUnregistrations[5] = {
    {"Zendra.dll", "Unregister Zendra.dll"},
    {"ZendraMimer.dll", "Unregister ZendraMimer.dll"},
    {"ZendraBHO.dll", "Unregister ZendraBHO.dll"},
    {"ZendraPanel.cpl", "Unregister ZendraPanel.cpl"},
    {"ZendraBraille.dll", "Unregister Braille Library"},
};

// Deletes the subkey `name` of `parent` and everything below it, depth
// first (a key can only go once it has no subkeys).
bool DeleteKeyTree(CWinRegKey& parent, const char* name) {
  {
    CWinRegKey key(parent.GetView());
    if (!key.Open(name, parent, Tern::rmWrite)) return false;
    std::vector<CStr> subKeys;
    CStr subKey;
    for (Tern::Int i = 0; key.EnumSubKey(i, subKey); ++i)
      subKeys.push_back(subKey);
    for (const CStr& sub : subKeys)
      if (!DeleteKeyTree(key, sub.Chars())) return false;
  }
  return parent.DeleteSubKey(name);
}

bool RemoveUninstallEntry() {
  CWinRegKey uninstall;
  const bool opened = LogStep(uninstall.Open(cUninstallKey, Tern::rmWrite),
                              "Open Zendra registry key");
  return opened && LogStep(DeleteKeyTree(uninstall, cProductCLSID),
                           "Delete Zendra registry key and subkeys");
}

bool UnregisterComponents(const CPath& installDir) {
  bool all = true;
  for (const CUnregistration& c : cUnregistrations)
    all =
        LogStep(RegisterComponent(false, installDir, c.file), c.message) && all;
  return all;
}

bool RemoveXmlNamespace() {
  CWinRegKey key;
  return LogStep(key.Open(cXmlNamespaceKey, Tern::rmWrite),
                 "Open IE 'XMLNamespace' registry key") &&
         LogStep(key.DeleteValue(cMathMLNamespace),
                 "Delete XMLNamespace registry value.");
}

// Deletes every entry of a folder it can. The running Setup.exe can't go
// yet (the batch file deletes it later): that failure must not keep the
// entries after it.
class CDeleteEverythingVisitor : public Tern::CFileSystem::CVisitor {
 public:
  CError Visit(Tern::CFileSystem& fs, const CPath& entry) override {
    const CError deleted = fs.GetItemType(entry) == Tern::S_FSIsDirectory
                               ? fs.DeleteDirectory(entry, true)
                               : fs.RemoveFile(entry, true);
    // Told, not counted: Setup.exe itself is always among them.
    if (Tern::Failed(deleted))
      LogText("Could not delete '%s' (%s).\n", entry.OSToPathString().Chars(),
              Tern::ErrorName(deleted));
    return Tern::Ok;
  }
};

// Keeps the configuration out of the way while the folder is emptied, then
// deletes it too. Nothing here counts towards the result.
void DeleteInstalledFiles(const CPath& installDir) {
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  CPath tempDir, movedConfig, config = installDir;
  bool moved = false;
  if (LogStatus(lfs.GetDirectory(CLocalFileSystem::dtTempDir, tempDir),
                "Get temporary directory")) {
    movedConfig = tempDir;
    if (LogStatus(movedConfig.AppendComponent("Zendra.ovc"),
                  "Append Zendra.ovc") &&
        LogStatus(config.AppendComponent("Zendra.ovc"), "Append Zendra.ovc")) {
      if (lfs.GetItemType(config) == Tern::S_FSIsFile &&
          lfs.GetItemType(movedConfig) == Tern::S_FSIsFile)
        LogStatus(lfs.RemoveFile(movedConfig, true),
                  "Delete the older Zendra.ovc in the temporary folder", false);
      moved = LogStatus(lfs.Move(config, movedConfig), "Move Zendra.ovc");
    }
  }
  LogText("Deleting contents of directory: %s.\n",
          installDir.OSToPathString().Chars());
  DeleteAllThatCanGo(installDir);  // failures not checked
  if (moved) LogStatus(lfs.RemoveFile(movedConfig, true), "Delete Zendra.ovc");
}

}  // namespace

void DeleteAllThatCanGo(const CPath& dir) {
  CDeleteEverythingVisitor everything;
  CLocalFileSystem::Instance().EnumerateDirectory(dir, "*", everything);
}

bool RemoveProduct(CZendraSetupApp& app) {
  const CPath& dir = app.InstallDir();
  bool ok = LogStep(RemoveUserAgentToken(uakIE),
                    "Unable to remove IE user agent entry.");
  ok = LogStep(RemoveUserAgentToken(uakIE9),
               "Unable to remove IE9 user agent entry.") &&
       ok;
  ok = LogStep(RemoveUninstallEntry(),
               "Removing registry entries for uninstallation") &&
       ok;
  ok = UnregisterComponents(dir) && ok;
  LogOSBitness();
  ok = LogStep(RemoveMSWordMacros(), "Unable to remove Word Macros") && ok;
  ok = LogStep(RemoveMSPowerPtAddIns(), "Unable to remove PowerPoint Macros") &&
       ok;
  ok = LogStep(RemoveXmlNamespace(), "Removing XMLNamespace registry value.") &&
       ok;
  RemoveOEMEntries();  // does not count
  DeleteInstalledFiles(dir);
  return LogStep(RemoveSetupProgram(app), "Removing Setup") && ok;
}

}  // namespace Zendra
