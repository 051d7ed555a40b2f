// What every install and removal step works with: the folders, the version
// being installed, the run's options and where messages for the user go.
// The driver makes it once, from the command line and the install location.
#pragma once

#include "TFileSystem.h"
#include "TString.h"

namespace Zendra {

class CFolderClaim;

// Kinds of the setup's message dialog: the platform message-box styles.
enum MessageKind : Tern::UInt32 {
  mkPlain = 0,     // OK, no icon
  mkError = 16,    // OK, stop icon
  mkWarning = 48,  // OK, exclamation icon
};

// Shows a message to the user, or only logs it in a silent run.
class CMessageSink {
 public:
  virtual ~CMessageSink() = default;
  virtual void MessageDialog(const char* message, MessageKind kind) = 0;
};

struct CInstallContext {
  Tern::CPath setupDir;    // the source: the folder of the running Setup.exe
  Tern::CPath installDir;  // Program Files\Orvane\Zendra, or a numbered one
  Tern::CPath fontsDir;    // Program Files\Orvane\Common\Fonts\TrueType
  Tern::CStr versionText;  // the product version being installed
  // Setup runs from a folder the product is installed in: an install from
  // there would empty its own source.
  bool sourceIsProductFolder = false;
  bool silent = false;
  bool installFonts = true;
  bool disableVersionChecks = false;
  CMessageSink* messages = nullptr;
  // The install folder's files, claimed by the checks before the first
  // change and deleted through the claim; none when null.
  CFolderClaim* installDirClaim = nullptr;
  // Set by a removal that left files in use for the next restart.
  bool restartFinishesRemoval = false;

  void Message(const char* text, MessageKind kind) const {
    if (messages) messages->MessageDialog(text, kind);
  }
};

}  // namespace Zendra
