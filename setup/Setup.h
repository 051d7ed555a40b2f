// The setup program's application object: its run is the whole installer.
#pragma once

#include "TApplication.h"
#include "TString.h"

namespace Zendra {

using Tern::CStr;
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

  static CZendraSetupApp* Current();

  // Every setup message goes through here: shown, or only logged when silent.
  void MessageDialog(const char* text, MessageKind kind);

  bool IsSilent() const { return mSilent; }
  bool IsVerbose() const { return mVerbose; }
  bool IsCrashFlagSet() const { return mCrash; }
  const CStr& SetupVersionText() const { return mSetupVersionText; }
  const CStr& ConfigPath() const { return mConfigPath; }

 protected:
  void Run() override;

 private:
  void SetFixedVariables();
  void ReadOwnProductVersion();
  bool GetConfigPath(CStr& path) const;
  void AddRegistrySearchLocations();

  void InstallSequence();
  void RemovalSequence();
  void ProtocolHandlerRemovalSequence();

  UInt32 mMutexError;
  bool mSilent = false;
  bool mVerbose = false;
  bool mCrash = false;
  bool mFonts = true;
  bool mNoVersionCheck = false;
  CStr mSetupVersionText;
  CStr mConfigPath;
};

}  // namespace Zendra
