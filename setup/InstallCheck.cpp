#include "InstallCheck.h"

#include "FilesInUse.h"
#include "Fonts.h"
#include "InstallLog.h"
#include "PathLimit.h"
#include "ProductFiles.h"
#include "Signatures.h"
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
const char cFileMissing[] =
    "Zendra can't be installed from here: '%s' is missing.\n\nCopy the "
    "product again as it was shipped, and run Setup from there. Nothing has "
    "been changed.";
const char cInstalledFolder[] =
    "Zendra can't be installed from '%s': that is where Zendra is installed, "
    "and the install replaces what is there.\n\nTo repair Zendra, run Setup "
    "from the folder the product was shipped in. Nothing has been changed.";

// The files the install replaces first: the product's fonts in its fonts
// folder, and the install folder. (An install folder in use was swapped for
// a numbered one before; this one is in use only when no numbered folder
// could be found. One found free then is claimed already.)
bool FindHeldFile(const CInstallContext& context, CPath& held) {
  return (context.installFonts && FindHeldFont(context.fontsDir, held)) ||
         ClaimFolder(context.installDirClaim, context.installDir, held);
}

// Why the install can't go ahead, or empty when it can: the source is the
// installed folder, a file is held, a path is too long, a source file is
// missing, or a program is not signed by Setup's own publisher.
CStr ReasonToRefuse(const CInstallContext& context, CLongestPath& longest) {
  CStr reason;
  CPath held;
  if (context.sourceIsProductFolder) {
    reason.Format(cInstalledFolder, context.setupDir.OSToPathString().Chars());
    return reason;
  }
  if (FindHeldFile(context, held)) {
    reason.Format(cFileInUse, held.OSToPathString().Chars());
    return reason;
  }
  NoteFontPaths(context, longest);
  NoteInstallPaths(context, longest);
  NoteWordMacroPaths(longest);
  // A path too long can't be looked up either: that is said first.
  if (!longest.Fits())
    reason.Format(cPathTooLong, longest.Longest().Chars(),
                  static_cast<int>(longest.Longest().Length()),
                  static_cast<int>(CLongestPath::cLimit));
  else if (!longest.FirstMissing().IsEmpty())
    reason.Format(cFileMissing, longest.FirstMissing().Chars());
  else
    reason = CheckProgramSignatures(context);
  return reason;
}

}  // namespace

bool InstallCanFinish(CInstallContext& context) {
  CLogBlock block("Check that the install can finish");
  CLongestPath longest;
  const CStr reason = ReasonToRefuse(context, longest);
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
