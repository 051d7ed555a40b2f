// The Office code: Word macros, and the string table the Office code
// composes its messages from. (The PowerPoint add-in is in ZNPowerPoint.)
#pragma once

#include "TString.h"

namespace Zendra {

class CZendraSetupApp;

// The string with this ID from the program's own string table, or empty
// (after an internal error) when there is none.
Tern::CStr GetResStr(unsigned strID);

// The strings from `baseID` upward, joined, up to the one that is "!END!".
Tern::CStr GetResBlock(unsigned baseID);

extern const char cWordMacroFile[];

// Whether Word runs (a top-level window of class "OpusApp"), logged with the
// window's title.
bool IsWordRunning();

// Copies the macro template from the install folder into the Startup folder
// of every Word version found, once per folder. A failed copy is explained
// in the log and, unless the run is silent, to the user; the others go on.
// False when any copy failed.
bool InstallMSWordMacros(CZendraSetupApp& app);

// Deletes the template from every Word version's Startup folder; false when
// one that is there could not be deleted.
bool RemoveMSWordMacros();

}  // namespace Zendra
