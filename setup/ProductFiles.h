// The product's files in its install folder: emptied and filled by an
// install (the components, the support folder trees and the extra files),
// deleted again by a removal.
#pragma once

#include "InstallContext.h"
#include "PathLimit.h"

namespace Zendra {

// Common\Protocol Handlers beside the install folder, which older versions
// left; its deletion is not checked.
bool DeleteProtocolHandlers(CInstallContext& context);
// Deletes what an earlier install left in the install folder.
bool EmptyInstallFolder(CInstallContext& context);
// Creates the install folder; tells the user when it can't.
bool CreateInstallFolder(CInstallContext& context);
// Every component file into the install folder; goes through the whole list
// and fails at the end when any copy failed.
bool InstallComponentFiles(CInstallContext& context);
// The support folder trees, each copied whole.
bool InstallSpeechRules(CInstallContext& context);
bool InstallOfficeSupportFiles(CInstallContext& context);
bool InstallLibLouisTables(CInstallContext& context);
// "Setup.exe", "VersionCheck.exe", "About.gif", "Zendra.ovc"; each copy
// reports its own failure.
bool InstallExtraFiles(CInstallContext& context);

// Every path the steps above read and write.
void NoteInstallPaths(const CInstallContext& context, CLongestPath& longest);

// Empties the install folder, keeping the configuration out of the way
// meanwhile. Nothing here counts towards the removal's result.
bool DeleteInstalledFiles(CInstallContext& context);
// Deletes everything in `dir` that can be deleted, going on past what
// can't: the running Setup.exe, which the batch file deletes later, and
// what other programs hold, which goes (with `dir`) at the next restart.
// True when anything was left for the restart.
bool DeleteAllThatCanGo(const Tern::CPath& dir);

}  // namespace Zendra
