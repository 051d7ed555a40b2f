#include "ZNInstall.h"

#include "InstallLog.h"
#include "Setup.h"
#include "TRegistry_Win.h"
#include "ZNCertificate.h"
#include "ZNFiles.h"
#include "ZNOfficeMacros.h"
#include "ZNOfficeRegistry.h"
#include "ZNPowerPoint.h"
#include "ZNRegistryEntries.h"
#include "ZNWordWait.h"

namespace Zendra {

using Tern::CLocalFileSystem;

namespace {

// How the steps before the end went.
enum InstallOutcome { ioSucceeded, ioFailed, ioStoppedEarly };

struct CRegistration {
  const char* file;
  const char* failureText;
};
const CRegistration cLaterRegistrations[4] = {
    {"ZendraMimer.dll", "Unable to register ZendraMimer"},
    {"ZendraBHO.dll", "Unable to register ZendraBHO"},
    {"ZendraPanel.cpl", "Unable to register ZendraPanel"},
    {"ZendraBraille.dll", "Unable to register Braille Library"},
};

void DeleteProtocolHandlers(const CPath& installDir) {
  CPath makerDir, handlers;
  if (Tern::Failed(installDir.GetComponent(CPath::ctDir, makerDir))) return;
  handlers = makerDir;
  handlers.AppendComponent("Common");
  handlers.AppendComponent("Protocol Handlers");
  LogText("Deleting Common\\Protocol Handlers directory: %s.\n",
          handlers.OSToPathString().Chars());
  CLocalFileSystem::Instance().DeleteDirectory(handlers, true);  // unchecked
}

bool EmptyInstallDir(CZendraSetupApp& app) {
  const CPath& dir = app.InstallDir();
  LogText("Deleting contents of directory: %s.\n",
          dir.OSToPathString().Chars());
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  if (lfs.GetItemType(dir) != Tern::S_FSIsDirectory) return true;
  return app.CheckStep(lfs.DeleteDirectoryContents(dir, true),
                       "Can't delete directory contents");
}

bool CopyFiles(CZendraSetupApp& app, bool installFonts) {
  if (installFonts &&
      !app.CheckStep(InstallFonts(app), "Installation of Zendra fonts"))
    return false;
  if (!EmptyInstallDir(app) ||
      !app.CreateDirectoryStep(app.InstallDir(), "Zendra") ||
      !app.CheckStep(InstallMainFiles(app), "Unable to install files"))
    return false;
  for (const CSubfolderStep& step : cSubfolderSteps)
    if (!app.CheckStep(InstallSubfolder(app, step), step.failureText))
      return false;
  return InstallExtraFiles(app);  // each copy reports its own failure
}

void DisableVersionChecks() {
  Tern::CWinRegKey key;
  if (key.Open("HKEY_LOCAL_MACHINE\\SOFTWARE\\Orvane\\OVZN4", Tern::rmCreate))
    key.SetString("DoVersionChecks", "0");  // errors here are ignored
}

bool RegisterComponents(CZendraSetupApp& app, bool disableVersionChecks) {
  const CPath& dir = app.InstallDir();
  if (!app.CheckStep(AddOEMEntries(), "Unable to add registry entries") ||
      !app.CheckStep(RegisterComponent(true, dir, "Zendra.dll"),
                     "Unable to register Zendra"))
    return false;
  if (disableVersionChecks) DisableVersionChecks();
  for (const CRegistration& later : cLaterRegistrations)
    if (!app.CheckStep(RegisterComponent(true, dir, later.file),
                       later.failureText))
      return false;
  return true;
}

bool InstallOfficeAddIns(CZendraSetupApp& app) {
  return app.CheckStep(InstallMSWordMacros(app),
                       "Unable to copy Word Macros") &&
         app.CheckStep(InstallMSPowerPtAddIns(app.InstallDir()),
                       "Unable to copy PowerPoint Macros");
}

bool AddBrowserAndSystemEntries(CZendraSetupApp& app) {
  const CPath& dir = app.InstallDir();
  if (!app.CheckStep(AddToPreApprovedList(),
                     "Unable to add to IE PreApprovedList.") ||
      !app.CheckStep(AddVersionCheckElevation(dir),
                     "Unable to add VersionCheck to priority elevation key.") ||
      !app.CheckStep(AddXmlNamespace(), "Unable to add XMLNamespace.") ||
      !app.CheckStep(AddEnterpriseMode(), "Unable to add Enterprise Mode.") ||
      !app.CheckStep(AddCompatibilityWarningKey(dir),
                     "Unable to add Compatibility Warning key.") ||
      !app.CheckStep(RemoveFromAcceptedDocuments(),
                     "Unable to RemoveFromAcceptedDocumentsXHTML.") ||
      !app.CheckStep(AddUninstallEntries(dir),
                     "Unable to add uninstaller entries."))
    return false;
  const CStr token = UserAgentToken(app.SetupVersionText().Chars());
  return app.CheckStep(AddUserAgentToken(uakIE, token.Chars()),
                       "Unable to add IE user agent entry.") &&
         app.CheckStep(AddUserAgentToken(uakIE9, token.Chars()),
                       "Unable to add IE9 user agent entry.");
}

InstallOutcome InstallSteps(CZendraSetupApp& app, bool installFonts,
                            bool disableVersionChecks) {
  if (!CopyFiles(app, installFonts) ||
      !RegisterComponents(app, disableVersionChecks))
    return ioFailed;
  LogOSBitness();
  if (!WaitUntilWordIsClosed(app)) {
    LogText(
        "Microsoft Word is running and this is either a silent install or "
        "user quit install.\n");
    return ioStoppedEarly;
  }
  if (!InstallOfficeAddIns(app)) return ioFailed;
  AddTrustedPublisherCertificate();  // the install goes on either way
  return AddBrowserAndSystemEntries(app) ? ioSucceeded : ioFailed;
}

}  // namespace

bool InstallProduct(CZendraSetupApp& app, bool installFonts,
                    bool disableVersionChecks) {
  if (MimeFilterClashes()) {
    LogText("Installation failed!\n");
    return false;
  }
  DeleteProtocolHandlers(app.InstallDir());
  const InstallOutcome outcome =
      InstallSteps(app, installFonts, disableVersionChecks);
  if (outcome == ioStoppedEarly) return false;
  LogText(outcome == ioSucceeded ? "Installation successful!\n"
                                 : "Installation failed!\n");
  app.InstallEnded(app.InstallDir());
  return outcome == ioSucceeded;
}

}  // namespace Zendra
