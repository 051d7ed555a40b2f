#include "InstallCheck.h"

#include "FilesInUse.h"
#include "Fonts.h"
#include "InstallLog.h"
#include "PathLimit.h"
#include "ProductFiles.h"
#include "WordMacros.h"

namespace Zendra {

using Tern::CPath;
using Tern::CStr;

namespace {

const char cFileInUse[] =
    "Zendra can't be installed now: '%s' is in use by another program.\n\n"
    "Close that program and run Setup again. Nothing has been changed.";
const char cPathTooLong[] =
    "Zendra can't be installed from here: the path '%s' is %d characters "
    "long, and Windows allows at most %d.\n\nRun Setup from a folder with a "
    "shorter path. Nothing has been changed.";

// The files the install deletes first: the product's fonts folder, which
// the font step empties, and the install folder. (An install folder in use
// was swapped for a numbered one before; this one is in use only when no
// numbered folder could be found.)
bool FindHeldFile(const CInstallContext& context, CPath& held) {
  return (context.installFonts && FindFileInUse(context.fontsDir, held)) ||
         FindFileInUse(context.installDir, held);
}

}  // namespace

bool InstallCanFinish(CInstallContext& context) {
  CLogBlock block("Check that the install can finish");
  CStr reason;
  CPath held;
  CLongestPath longest;
  if (FindHeldFile(context, held)) {
    reason.Format(cFileInUse, held.OSToPathString().Chars());
  } else {
    NoteInstallPaths(context, longest);
    NoteFontPaths(context, longest);
    NoteWordMacroPaths(longest);
    if (!longest.Fits())
      reason.Format(cPathTooLong, longest.Longest().Chars(),
                    static_cast<int>(longest.Longest().Length()),
                    static_cast<int>(CLongestPath::cLimit));
  }
  if (reason.IsEmpty()) {
    LogText(
        "No file to replace is in use; the longest path is '%s' (%d "
        "characters).\n",
        longest.Longest().Chars(),
        static_cast<int>(longest.Longest().Length()));
    return true;
  }
  LogStep(false, reason.Chars());
  context.Message(reason.Chars(), mkError);
  return false;
}

}  // namespace Zendra
