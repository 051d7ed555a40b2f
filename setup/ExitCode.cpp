#include "ExitCode.h"

#include "TError.h"

namespace Zendra {

namespace {

struct CExitCodeText {
  const char* name;
  const char* meaning;  // for administrators, as the README's table says
};

// Indexed by the code.
const CExitCodeText cExitCodes[] = {
    {"exitOk", "done"},
    {"exitFailure",
     "a step failed, or nothing could be done; Setup's log says which"},
    {"exitBadCmdLine", "no mode on the command line"},
    {"exitInUse", "reserved"},
    {"exitNoPermission", "the account may not install software"},
    {"exitNewerVersion",
     "A newer version of Zendra is already installed; it is kept"},
    {"exitBadIEVersion", "Internet Explorer is older than 6, or missing"},
};

bool IsKnown(Tern::Int exitCode) {
  return exitCode >= 0 &&
         exitCode <
             static_cast<Tern::Int>(sizeof cExitCodes / sizeof cExitCodes[0]);
}

}  // namespace

const char* ExitCodeName(Tern::Int exitCode) {
  if (IsKnown(exitCode)) return cExitCodes[exitCode].name;
  TERN_FAIL("unknown exit code");
  return "(unknown)";
}

const char* ExitCodeMeaning(Tern::Int exitCode) {
  return IsKnown(exitCode) ? cExitCodes[exitCode].meaning
                           : "an exit code Setup does not use";
}

}  // namespace Zendra
