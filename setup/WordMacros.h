// The product's macro template in the Startup folder of every Word version
// found, and its removal.
#pragma once

#include "InstallContext.h"
#include "PathLimit.h"

namespace Zendra {

// Whether Word runs (a top-level window of class "OpusApp"), logged with the
// window's title.
bool IsWordRunning();

// Copies the macro template from the install folder into the Startup folder
// of every Word version found, once per folder. A failed copy is explained
// in the log and, unless the run is silent, to the user; the others go on.
// False when any copy failed.
bool InstallMSWordMacros(CInstallContext& context);

// Deletes the template from every Word version's Startup folder; false when
// one that is there could not be deleted.
bool RemoveMSWordMacros(CInstallContext& context);
// The template's path in each Word's Startup folder.
void NoteWordMacroPaths(CLongestPath& longest);

}  // namespace Zendra
