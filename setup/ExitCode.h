// The exit codes of Setup.exe, which deployment tools act on.
#pragma once

#include "TTypes.h"

namespace Zendra {

enum ExitCode : Tern::Int {
  exitOk = 0,
  exitFailure = 1,
  exitBadCmdLine = 2,
  exitInUse = 3,  // reserved: files in use lead to a numbered folder instead
  exitNoPermission = 4,
  exitNewerVersion = 5,
  exitBadIEVersion = 6,
};

// "exitOk" ... "exitBadIEVersion", as the log's last line names the code;
// any other value is "(unknown)".
const char* ExitCodeName(Tern::Int exitCode);
// What the code tells an administrator, as the README's table says it.
const char* ExitCodeMeaning(Tern::Int exitCode);

}  // namespace Zendra
