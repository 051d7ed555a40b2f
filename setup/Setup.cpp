#include "Setup.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "InstallLog.h"
#include "InstallPlan.h"
#include "Product.h"
#include "ProductFiles.h"
#include "SelfDelete.h"
#include "SetupResource.h"
#include "TError.h"
#include "TRegistry_Win.h"
#include "TVarList.h"
#include "Version.h"

namespace Zendra {

using Tern::CError;
using Tern::CLocalFileSystem;
using Tern::CVarList;
using Tern::CVersion;
using Tern::CWinRegKey;

namespace {

const char cAlreadyRunning[] = "Zendra Setup is already running.";
const char cUseAddRemovePrograms[] =
    "To remove Zendra, please use Add/Remove Programs in the Windows Control "
    "Panel.";
const char cNoPermission[] =
    "You must have permission to install/uninstall software in order to %s "
    "Zendra.\nPlease log on with the necessary permission, or contact your "
    "system administrator for help.";
const char cNewerVersion[] =
    "A newer version of Zendra is already installed.\n\nIf you really want to "
    "install this older version,\nyou must first remove the installed version "
    "using\nAdd/Remove Programs in the Control Panel.";
const char cOldInternetExplorer[] =
    "Zendra requires Internet Explorer version 6.0 or later.";
const char cUpgraded[] =
    "Zendra successfully upgraded to version %s.\n\nYou must restart Internet "
    "Explorer and PowerPoint\nto use the new version of Zendra.";
const char cInstalled[] =
    "Zendra %s installed successfully.\n\nYou must restart Internet Explorer "
    "and PowerPoint\nto use Zendra.";
const char cInstallFailed[] =
    "Zendra installation failed!\n\nSee \"%s\" for details";
const char cRemovalFailed[] =
    "Zendra removal failed!\n\nSee \"%s\" for details";
const char cHandlerRemovalFailed[] =
    "Protocol handler removal failed!\n\nSee \"%s\" for details";
const char cRemoved[] = "Zendra removed successfully.";
const char cRemovedOnRestart[] =
    "Zendra removed successfully.\n\nSome of its files are in use: they are "
    "deleted when Windows restarts, which finishes the removal.";
const char cRemovalFailedOnRestart[] =
    "Zendra removal failed!\n\nSee \"%s\" for details\n\nSome of its files "
    "are in use: they are deleted when Windows restarts.";
const char cHandlerRemoved[] = "Protocol handler removed successfully.";
const char cInstalledByPackage[] =
    "Zendra was installed by its Windows Installer package %s, which must "
    "remove it too: use Add/Remove Programs, or msiexec /x %s. Nothing has "
    "been removed.";

const UInt32 cErrorAlreadyExists = 183;

}  // namespace

CZendraSetupApp::CZendraSetupApp(UInt32 mutexError)
    : CGUIApplication(cSetupCaption), mMutexError(mutexError) {}

CZendraSetupApp::~CZendraSetupApp() { CloseLog(mVerbose, GetExitCode()); }

Int CZendraSetupApp::Main(const char* cmdLine) {
  Int exitCode = CGUIApplication::Main(cmdLine);
  // The application ends here; after an install the log goes beside the
  // installed product as well.
  CloseLog(mVerbose, exitCode, mLogCopyDir.IsValid() ? &mLogCopyDir : nullptr);
  return exitCode;
}

void CZendraSetupApp::MessageDialog(const char* message, MessageKind kind) {
  TERN_ASSERT(message);
  if (!message) return;
  if (mSilent) {
    LogText("MessageDialog (suppressed due to -s option):\n%s\n", message);
    return;
  }
  LogText("MessageDialog: displayed\n%s\n", message);
  ::MessageBoxA(nullptr, message, cSetupCaption, kind);
}

// ---- The run ----------------------------------------------------------------

void CZendraSetupApp::Run() {
  SetFixedVariables();
  ReadOwnProductVersion();
  if (!ReadConfiguration()) {
    SetExitCode(exitFailure);
    return;
  }
  AddRegistrySearchLocations();

  if (mMutexError == cErrorAlreadyExists) {
    MessageDialog(cAlreadyRunning, mkPlain);
    return;
  }
  ReadOptions();
  switch (mAction) {
    case aInstall:
      InstallSequence();
      break;
    case aRemove:
      RemovalSequence();
      break;
    case aRemoveProtocolHandler:
      ProtocolHandlerRemovalSequence();
      break;
    case aNone:
      MessageDialog(cUseAddRemovePrograms, mkError);
      SetExitCode(exitBadCmdLine);
      break;
  }
}

// Options are tested in this fixed order, each against the first remaining
// argument, so that options given in another order are not recognised.
void CZendraSetupApp::ReadOptions() {
  bool crashVariable = false;
  mCrash =
      HasOption("crash", 0) ||
      (CVarList::Global().GetBool("Crash", crashVariable) && crashVariable);
  mSilent = HasOption("s", 0);
  mVerbose = HasOption("verbose", 0);
  if (HasOption("i", 0)) {
    mAction = aInstall;
    mInstallFonts = !HasOption("nofonts", 0);
    mDisableVersionChecks = HasOption("noversioncheck", 0);
  } else if (HasOption("u", 0)) {
    mAction = aRemove;
  } else if (HasOption("uph", 0)) {
    mAction = aRemoveProtocolHandler;
  }
}

void CZendraSetupApp::SetFixedVariables() {
  CVarList& vars = CVarList::Global();
  vars.Set("VersionDomain", SETUP_VERSION_DOMAIN);
  vars.Set("ORVWebSite", SETUP_WEB_SITE);
  vars.Set("ProductName", "Zendra");
  vars.Set("MakeMathAccessible", "0");
  vars.Set("SpeechTarget", "Blind");
  vars.Set("ChemSpeech", "SpellOut");
}

void CZendraSetupApp::ReadOwnProductVersion() {
  CPath program;
  CStr text;
  bool ok =
      Tern::Succeeded(CLocalFileSystem::Instance().GetProgramFile(program)) &&
      CVersion::GetVersionInfo(program.OSToPathString().Chars(),
                               CVersion::viProductVersion, text);
  TERN_ASSERT(ok);
  CVarList::Global().Set("ProductVersion", text.Chars());
}

// The product's configuration file: merged when it is of major version 4,
// ignored when of another; a file that can't be read ends the run. A missing
// one is noted instead: an install needs it, a removal goes on without it,
// so that a machine never keeps a product it can't remove.
bool CZendraSetupApp::ReadConfiguration() {
  CPath path;
  if (!CInstallLocation::GetConfigPath(path)) return false;
  CVarList config;
  const Tern::CError read = config.ReadFile(path.OSToPathString().Chars());
  if (read == Tern::E_NotFound) {
    mConfigMissing = true;
    return true;
  }
  if (Tern::Failed(read)) return false;
  CStr major;
  if (config.Get("OVCMajVersion", major) && major == "4")
    CVarList::Global().Merge(config);
  return true;
}

// The maker's and the product's keys (both below HKEY_LOCAL_MACHINE), the
// machine's before the user's.
void CZendraSetupApp::AddRegistrySearchLocations() {
  CVarList& vars = CVarList::Global();
  for (const char* root : {"HKEY_LOCAL_MACHINE", "HKEY_CURRENT_USER"})
    for (const char* key : {cMakerKey, cProductKey})
      vars.AddSearchLocation(root, std::strchr(key, '\\') + 1);
}

// ---- The three sequences ---------------------------------------------------

void CZendraSetupApp::InstallSequence() {
  if (mConfigMissing) {
    SetExitCode(exitFailure);
    return;
  }
  if (!PermissionProbe()) {
    NoPermission("install");
    return;
  }
  if (!OpenLogAndPrepare("Zendra Install <Num>.log", true)) {
    SetExitCode(exitFailure);  // nothing was installed
    FailureMessage(cInstallFailed);
    return;
  }
  if (mLocation.IsInstalled() &&
      mLocation.InstalledVersion().IsGreater(mLocation.SetupVersion())) {
    MessageDialog(cNewerVersion, mkError);
    SetExitCode(exitNewerVersion);
    FailureMessage(cInstallFailed);
    return;
  }
  if (!InternetExplorerIsRecentEnough()) {
    MessageDialog(cOldInternetExplorer, mkPlain);
    SetExitCode(exitBadIEVersion);
    FailureMessage(cInstallFailed);
    return;
  }
  // On failure the install goes on in the usual folder.
  mLocation.FindNewInstallDir();
  CInstallContext context = MakeContext();
  const InstallOutcome outcome = RunInstall(context);
  // Once the install has changed the machine, its log also goes beside it.
  if (outcome != ioNotFinished) mLogCopyDir = context.installDir;
  if (outcome != ioSucceeded) {
    SetExitCode(exitFailure);
    FailureMessage(cInstallFailed);
    return;
  }
  ShowSuccess();
}

void CZendraSetupApp::RemovalSequence() {
  if (!PermissionProbe()) {
    NoPermission("remove");
    return;
  }
  if (!OpenLogAndPrepare("Zendra Uninstall.log", false)) {
    SetExitCode(exitFailure);  // nothing was removed
    FailureMessage(cRemovalFailed);
    return;
  }
  // The removal empties the folder it runs from: anywhere but the installed
  // folder that would destroy files that are not the product's.
  if (!LeftToPackage() && mLocation.RunsFromInstalledFolder()) {
    mLocation.SetInstallDir(mLocation.SetupDir());
    NoteMissingConfiguration();
    CInstallContext context = MakeContext();
    const bool removed = RunRemoval(context);
    const bool onRestart = context.restartFinishesRemoval;
    if (removed) {
      MessageDialog(onRestart ? cRemovedOnRestart : cRemoved, mkPlain);
      return;
    }
    SetExitCode(exitFailure);
    FailureMessage(onRestart ? cRemovalFailedOnRestart : cRemovalFailed);
    return;
  }
  SetExitCode(exitFailure);
  FailureMessage(cRemovalFailed);
}

// A product that a Windows Installer package installed is removed through
// the package, which runs this program in turn: removed by hand, the
// package would stay registered for a product that is gone.
bool CZendraSetupApp::LeftToPackage() {
  CStr package;
  if (!CWinRegKey::ReadString(cProductKey, "MsiProductCode", package) ||
      package.IsEmpty())
    return false;
  CStr text;
  text.Format(cInstalledByPackage, package.Chars(), package.Chars());
  LogStep(false, text.Chars());
  MessageDialog(text.Chars(), mkError);
  return true;
}

void CZendraSetupApp::NoteMissingConfiguration() {
  if (!mConfigMissing) return;
  CPath path;
  CInstallLocation::GetConfigPath(path);
  LogText(
      "Configuration file '%s' not found: removing with the built-in "
      "settings.\n",
      path.OSToPathString().Chars());
}

void CZendraSetupApp::ProtocolHandlerRemovalSequence() {
  if (!PermissionProbe()) {
    NoPermission("remove");
    return;
  }
  if (!OpenLogAndPrepare("Zendra Uninstall.log", false)) {
    SetExitCode(exitFailure);  // nothing was removed
    FailureMessage(cHandlerRemovalFailed);
    return;
  }
  mLocation.SetInstallDir(mLocation.SetupDir());
  NoteMissingConfiguration();
  // With a copy installed, its folder stays for its own removal. Otherwise
  // only a folder the product was installed in is deleted: Setup.exe may
  // also have been started from Downloads or a share, among other files.
  const CPath& dir = mLocation.SetupDir();
  if (!mLocation.IsInstalled()) {
    if (!mLocation.IsInstallFolder(dir)) {
      LogText(
          "Keeping '%s' and everything in it: it is not a folder Zendra was "
          "installed in.\n",
          dir.OSToPathString().Chars());
    } else if (!DeleteHandlerFolder()) {
      SetExitCode(exitFailure);
      FailureMessage(cHandlerRemovalFailed);
      return;
    }
  }
  MessageDialog(cHandlerRemoved, mkPlain);
}

bool CZendraSetupApp::DeleteHandlerFolder() {
  CInstallContext context = MakeContext();
  LogText("Deleting contents of directory: %s.\n",
          context.installDir.OSToPathString().Chars());
  DeleteAllThatCanGo(context.installDir);  // failures are ignored
  return LogStep(RemoveSetupProgram(context), "Removing Setup");
}

CInstallContext CZendraSetupApp::MakeContext() {
  CInstallContext context;
  context.setupDir = mLocation.SetupDir();
  context.installDir = mLocation.InstallDir();
  context.fontsDir = mLocation.FontsDir();
  context.versionText = mLocation.SetupVersionText();
  context.sourceIsProductFolder = mLocation.IsProductFolder(context.setupDir);
  context.silent = mSilent;
  context.installFonts = mInstallFonts;
  context.disableVersionChecks = mDisableVersionChecks;
  context.messages = this;
  context.installDirClaim = &mLocation.InstallDirClaim();
  return context;
}

bool CZendraSetupApp::PermissionProbe() const {
  CWinRegKey orvane;
  if (!orvane.Open(cMakerKey, Tern::rmCreate)) return false;
  CWinRegKey test;
  if (!test.Open("TestKey", orvane, Tern::rmCreate)) return false;
  test.Close();
  return orvane.DeleteSubKey("TestKey");
}

void CZendraSetupApp::NoPermission(const char* action) {
  CStr text;
  text.Format(cNoPermission, action);
  MessageDialog(text.Chars(), mkError);
  SetExitCode(exitNoPermission);
}

void CZendraSetupApp::FailureMessage(const char* format) {
  CStr text;
  text.Format(format, mLogFilePath.OSToPathString().Chars());
  MessageDialog(text.Chars(), mkWarning);
}

bool CZendraSetupApp::OpenLogAndPrepare(const char* logName, bool numbered) {
  bool opened = OpenLog(logName, numbered);
  mLogFilePath = LogPath();
  if (!opened) return false;
  // -crash proves on a real machine that an internal error is reported into
  // the log and the run carries on.
  if (mCrash) TERN_FAIL("Crash test requested (-crash)");
  return mLocation.Find();
}

bool CZendraSetupApp::InternetExplorerIsRecentEnough() const {
  CStr version;
  if (!CWinRegKey::ReadString(cBrowserKey, "Version", version)) return false;
  // The major number is the text before the first "."; without a "." in a
  // place after the first character ("11", ".5") the whole text is taken.
  const Int dot = version.Find('.');
  const CStr major = dot > 0 ? version.Mid(0, dot) : version;
  return std::strtol(major.Chars(), nullptr, 10) >= 6;
}

void CZendraSetupApp::ShowSuccess() {
  const bool upgraded =
      mLocation.IsInstalled() &&
      mLocation.SetupVersion().IsGreater(mLocation.InstalledVersion());
  CStr text;
  text.Format(upgraded ? cUpgraded : cInstalled,
              mLocation.SetupVersionText().Chars());
  LogText("%s\n", text.Chars());  // the outcome, also for silent runs
  if (!mSilent) ShowNotificationDialog(text.Chars());
  StoreNotify();
}

void CZendraSetupApp::StoreNotify() {
  CWinRegKey settings;
  if (!settings.Open(cUserSettingsKey, Tern::rmCreate)) return;
  CStr notify;
  if (!CVarList::Global().Get("Notify", notify)) return;
  bool written = settings.SetString("Notify", notify.Chars());
  TERN_ASSERT(written);
}

// ---- Notification dialog ---------------------------------------------------

namespace {

INT_PTR CALLBACK NotifyDialogProc(HWND dialog, UINT message, WPARAM wParam,
                                  LPARAM lParam) {
  switch (message) {
    case WM_INITDIALOG: {
      ::SetDlgItemTextA(dialog, IDC_NOTIFY_TEXT,
                        reinterpret_cast<const char*>(lParam));
      CStr notify;
      CVarList::Global().Get("Notify", notify);
      if (notify == "Y")
        ::CheckRadioButton(dialog, IDC_NOTIFY_YES, IDC_NOTIFY_NO,
                           IDC_NOTIFY_YES);
      else if (notify == "N")
        ::CheckRadioButton(dialog, IDC_NOTIFY_YES, IDC_NOTIFY_NO,
                           IDC_NOTIFY_NO);
      else
        ::EnableWindow(::GetDlgItem(dialog, IDOK), FALSE);
      return TRUE;
    }
    case WM_COMMAND:
      switch (LOWORD(wParam)) {
        case IDC_NOTIFY_YES:
        case IDC_NOTIFY_NO:
          ::EnableWindow(::GetDlgItem(dialog, IDOK), TRUE);
          return TRUE;
        case IDOK:
          CVarList::Global().Set(
              "Notify",
              ::IsDlgButtonChecked(dialog, IDC_NOTIFY_YES) == BST_CHECKED
                  ? "Y"
                  : "N");
          ::EndDialog(dialog, IDOK);
          return TRUE;
      }
      break;
  }
  return FALSE;
}

}  // namespace

void ShowNotificationDialog(const char* text) {
  ::DialogBoxParamA(::GetModuleHandleA(nullptr), MAKEINTRESOURCEA(IDD_NOTIFY),
                    nullptr, NotifyDialogProc, reinterpret_cast<LPARAM>(text));
}

}  // namespace Zendra
