// The setup program's application object: its run is the whole installer.
#pragma once

#include "InstallLocation.h"
#include "InstallLog.h"
#include "TApplication.h"
#include "TFileSystem.h"
#include "TString.h"
#include "TVersion.h"

namespace Zendra {

using Tern::CPath;
using Tern::CStr;
using Tern::CVersion;
using Tern::Int;
using Tern::UInt32;

enum ExitCode : Int {
  exitOk = 0,
  exitFailure = 1,
  exitBadCmdLine = 2,
  exitInUse = 3,  // reserved: files in use lead to a numbered folder instead
  exitNoPermission = 4,
  exitNewerVersion = 5,
  exitBadIEVersion = 6,
};

// "exitOk" ... "exitBadIEVersion"; any other value is "(unknown)".
const char* ExitCodeName(Int exitCode);

// Kinds of the setup's message dialog: the platform message-box styles.
enum MessageKind : UInt32 {
  mkPlain = 0,     // OK, no icon
  mkError = 16,    // OK, stop icon
  mkWarning = 48,  // OK, exclamation icon
};

extern const char cSetupCaption[];  // "Zendra Setup"
extern const char cMutexName[];     // "ORV:ZendraSetup"

class CZendraSetupApp : public Tern::CGUIApplication {
 public:
  // `mutexError` is the last error of the single-instance mutex's creation.
  explicit CZendraSetupApp(UInt32 mutexError);
  ~CZendraSetupApp() override;

  static CZendraSetupApp* Current();

  Int Main(const char* cmdLine) override;

  // Every setup message goes through here: shown, or only logged when silent.
  void MessageDialog(const char* message, MessageKind kind);

  bool IsSilent() const { return mSilent; }
  // Normally set from the command line; callers of single install actions
  // (the tests among them) set it themselves.
  void SetSilent(bool silent) { mSilent = silent; }
  bool IsVerbose() const { return mVerbose; }
  bool IsCrashFlagSet() const { return mCrash; }

  const CPath& LogFilePath() const { return mLogFilePath; }
  void SetLogFilePath(const CPath& path) { mLogFilePath = path; }
  const CPath& SetupDir() const { return mSetupDir; }
  const CPath& MakerDir() const { return mMakerDir; }
  const CPath& InstallDir() const { return mInstallDir; }
  const CPath& CommonDir() const { return mCommonDir; }
  const CPath& FontsDir() const { return mFontsDir; }
  const CVersion& SetupVersion() const { return mSetupVersion; }
  const CStr& SetupVersionText() const { return mSetupVersionText; }
  const CVersion& InstalledVersion() const { return mInstalledVersion; }
  bool IsInstalled() const { return mInstalledVersion.IsValid(); }
  const CStr& InstalledServerPath() const { return mInstalledServerPath; }

  // ---- Install location (InstallLocation.cpp; the install actions use it) --
  // "zendra.ovc" beside the running program.
  bool GetConfigPath(CPath& path) const;
  void SetInstallDir(const CPath& dir);
  // Creates a folder the install needs; says so to the user when it can't.
  bool CreateDirectoryStep(const CPath& dir, const char* description);

  // ---- Install steps ----
  // Every step's result: a false result or a failed code reports the step's
  // failure text (and counts it) and gives false.
  bool CheckStep(bool ok, const char* failureText) {
    return LogStep(ok, failureText);
  }
  bool CheckStep(Tern::CError code, const char* failureText) {
    return LogStatus(code, failureText);  // the status tells support why
  }
  // Called once the install actions have ended, either way: the log is then
  // also copied into the install folder when it is closed.
  void InstallEnded(const CPath& installDir) { mLogCopyDir = installDir; }

 protected:
  void Run() override;

 private:
  void SetFixedVariables();
  void ReadOwnProductVersion();
  bool ReadConfiguration();
  void NoteMissingConfiguration();
  void AddRegistrySearchLocations();

  void InstallSequence();
  void RemovalSequence();
  void ProtocolHandlerRemovalSequence();

  bool PermissionProbe() const;
  void NoPermission(const char* action);
  bool OpenLogAndPrepare(const char* logName, bool numbered);
  // Install location and installed-copy detection (InstallLocation.cpp).
  bool ReadSetupVersion();
  bool InitInstallDirs();
  void DetectInstalledCopy();
  bool RunsFromInstalledFolder();
  bool FindNewInstallDir();
  bool InternetExplorerIsRecentEnough() const;
  void ShowSuccess();
  void FailureMessage(const char* format);
  void StoreNotify();

  UInt32 mMutexError;
  bool mSilent = false;
  bool mVerbose = false;
  bool mCrash = false;
  bool mConfigMissing = false;  // no Zendra.ovc beside Setup.exe
  CPath mLogFilePath;
  CPath mSetupDir;
  CPath mMakerDir;
  CPath mInstallDir;
  CPath mCommonDir;
  CPath mFontsDir;
  CVersion mSetupVersion;
  CStr mSetupVersionText;
  CVersion mInstalledVersion;
  CStr mInstalledServerPath;
  CPath mLogCopyDir;
};

// Shows dialog 2000 with `text`; the choice goes to the variable "Notify".
void ShowNotificationDialog(const char* text);

}  // namespace Zendra
