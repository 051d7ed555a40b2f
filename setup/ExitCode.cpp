#include "ExitCode.h"

#include "TError.h"

namespace Zendra {

const char* ExitCodeName(Tern::Int exitCode) {
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

}  // namespace Zendra
