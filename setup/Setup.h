// The setup program's application object: it reads the command line, opens
// the log, finds the install location and runs the install or the removal.
#pragma once

#include "ExitCode.h"
#include "InstallContext.h"
#include "InstallLocation.h"
#include "TApplication.h"

namespace Zendra {

class CZendraSetupApp : public Tern::CGUIApplication, public CMessageSink {
 public:
  // `mutexError` is the last error of the single-instance mutex's creation.
  explicit CZendraSetupApp(Tern::UInt32 mutexError);
  ~CZendraSetupApp() override;

  Tern::Int Main(const char* cmdLine) override;

  // Every setup message goes through here: shown, or only logged when silent.
  void MessageDialog(const char* message, MessageKind kind) override;

 protected:
  void Run() override;

 private:
  enum Action { aNone, aInstall, aRemove, aRemoveProtocolHandler };

  void SetFixedVariables();
  void ReadOwnProductVersion();
  bool ReadConfiguration();
  void ReadOptions();
  void NoteMissingConfiguration();
  bool LeftToPackage();
  void AddRegistrySearchLocations();

  void InstallSequence();
  void RemovalSequence();
  void ProtocolHandlerRemovalSequence();
  // Deletes the folder Setup runs from, Setup.exe last; false when the
  // batch file that deletes Setup.exe could not be started.
  bool DeleteHandlerFolder();

  bool PermissionProbe() const;
  void NoPermission(const char* action);
  bool OpenLogAndPrepare(const char* logName, bool numbered);
  CInstallContext MakeContext();
  bool InternetExplorerIsRecentEnough() const;
  void ShowSuccess();
  void FailureMessage(const char* format);
  void StoreNotify();

  Tern::UInt32 mMutexError;
  // The command line, read once, in a fixed order.
  Action mAction = aNone;
  bool mSilent = false;
  bool mVerbose = false;
  bool mCrash = false;
  bool mInstallFonts = true;
  bool mDisableVersionChecks = false;

  bool mConfigMissing = false;  // no Zendra.ovc beside Setup.exe
  Tern::CPath mLogFilePath;
  CInstallLocation mLocation;
  Tern::CPath mLogCopyDir;
};

// Shows dialog 2000 with `text`; the choice goes to the variable "Notify".
void ShowNotificationDialog(const char* text);

}  // namespace Zendra
