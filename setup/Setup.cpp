#include "Setup.h"

#include <windows.h>

#include "TError.h"
#include "TVarList.h"
#include "TVersion.h"
#include "Version.h"

namespace Zendra {

using Tern::CVarList;

const char cSetupCaption[] = "Zendra Setup";
const char cMutexName[] = "ORV:ZendraSetup";

namespace {

const char cAlreadyRunning[] = "Zendra Setup is already running.";
const char cUseAddRemovePrograms[] =
    "To remove Zendra, please use Add/Remove Programs in the Windows Control "
    "Panel.";
const Tern::UInt32 cErrorAlreadyExists = 183;

// The folder of the running executable, with its trailing backslash.
bool ModuleFolder(CStr& folder) {
  char path[MAX_PATH];
  DWORD n = ::GetModuleFileNameA(nullptr, path, sizeof path);
  if (n == 0 || n >= sizeof path) return false;
  CStr full(path, static_cast<Int>(n));
  Int slash = -1;
  for (Int i = 0; i < full.Length(); ++i)
    if (full[i] == '\\' || full[i] == '/') slash = i;
  if (slash < 0) return false;
  folder = full.Mid(0, slash + 1);
  return true;
}

}  // namespace

const char* ExitCodeName(Int exitCode) {
  switch (exitCode) {
    case exitOk:
      return "exitOk";
    case exitFailure:
      return "exitFailure";
    case exitBadCmdLine:
      return "exitBadCmdLine";
    case exitInUse:
      return "exitInUse";
    case exitNoPermission:
      return "exitNoPermission";
    case exitNewerVersion:
      return "exitNewerVersion";
    case exitBadIEVersion:
      return "exitBadIEVersion";
  }
  TERN_FAIL("unknown exit code");
  return "(unknown)";
}

CZendraSetupApp::CZendraSetupApp(UInt32 mutexError)
    : CGUIApplication(cSetupCaption), mMutexError(mutexError) {}

CZendraSetupApp* CZendraSetupApp::Current() {
  return dynamic_cast<CZendraSetupApp*>(CApplication::Current());
}

void CZendraSetupApp::MessageDialog(const char* text, MessageKind kind) {
  TERN_ASSERT(text);
  if (!text || mSilent) return;
  ::MessageBoxA(nullptr, text, cSetupCaption, kind);
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
  char path[MAX_PATH];
  DWORD n = ::GetModuleFileNameA(nullptr, path, sizeof path);
  bool ok = n > 0 && n < sizeof path &&
            Tern::CVersion::GetVersionInfo(
                path, Tern::CVersion::viProductVersion, mSetupVersionText);
  TERN_ASSERT(ok);
  CVarList::Global().Set("ProductVersion", mSetupVersionText.Chars());
}

// The configuration file "zendra.ovc" lives beside the running Setup.exe.
bool CZendraSetupApp::GetConfigPath(CStr& path) const {
  if (!ModuleFolder(path)) return false;
  path.Append("zendra.ovc");
  return true;
}

void CZendraSetupApp::AddRegistrySearchLocations() {
  CVarList& vars = CVarList::Global();
  vars.AddSearchLocation("HKEY_LOCAL_MACHINE", "SOFTWARE\\Orvane");
  vars.AddSearchLocation("HKEY_LOCAL_MACHINE", "SOFTWARE\\Orvane\\OVZN4");
  vars.AddSearchLocation("HKEY_CURRENT_USER", "SOFTWARE\\Orvane");
  vars.AddSearchLocation("HKEY_CURRENT_USER", "SOFTWARE\\Orvane\\OVZN4");
}

void CZendraSetupApp::Run() {
  SetFixedVariables();
  ReadOwnProductVersion();
  if (!GetConfigPath(mConfigPath)) {
    SetExitCode(exitFailure);
    return;
  }
  AddRegistrySearchLocations();

  bool crashVariable = false;
  mCrash =
      HasOption("crash", 0) ||
      (CVarList::Global().GetBool("Crash", crashVariable) && crashVariable);

  if (mMutexError == cErrorAlreadyExists) {
    MessageDialog(cAlreadyRunning, mkPlain);
    return;
  }

  // Options are tested in this fixed order, each against the first remaining
  // argument, so that options given in another order are not recognised.
  mSilent = HasOption("s", 0);
  mVerbose = HasOption("verbose", 0);
  if (HasOption("i", 0)) {
    InstallSequence();
  } else if (HasOption("u", 0)) {
    RemovalSequence();
  } else if (HasOption("uph", 0)) {
    ProtocolHandlerRemovalSequence();
  } else {
    MessageDialog(cUseAddRemovePrograms, mkError);
    SetExitCode(exitBadCmdLine);
  }
}

void CZendraSetupApp::InstallSequence() {
  mFonts = !HasOption("nofonts", 0);
  mNoVersionCheck = HasOption("noversioncheck", 0);
}

void CZendraSetupApp::RemovalSequence() {}

void CZendraSetupApp::ProtocolHandlerRemovalSequence() {}

}  // namespace Zendra
