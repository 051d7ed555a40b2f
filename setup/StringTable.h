// Setup.exe's own string table, from which the Office code composes its
// names and messages.
#pragma once

#include "TString.h"

namespace Zendra {

// The string with this ID, or empty (after an internal error) when there is
// none.
Tern::CStr GetResStr(unsigned strID);

// The strings from `baseID` upward, joined, up to the one that is "!END!".
Tern::CStr GetResBlock(unsigned baseID);

}  // namespace Zendra
