// The Office code: Word macros and the PowerPoint add-in, and the string
// table they compose their messages from.
#pragma once

#include "TString.h"

namespace Zendra {

// The string with this ID from the program's own string table, or empty
// (after an internal error) when there is none.
Tern::CStr GetResStr(unsigned strID);

// The strings from `baseID` upward, joined, up to the one that is "!END!".
Tern::CStr GetResBlock(unsigned baseID);

}  // namespace Zendra
