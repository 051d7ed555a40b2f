// The product's fonts: copied into their own folder below Program Files and
// installed into the system from there.
#pragma once

#include "InstallContext.h"
#include "PathLimit.h"

namespace Zendra {

// Does nothing when the -nofonts option turned the fonts off.
bool InstallFonts(CInstallContext& context);
// The first of the product's fonts in `fontsDir` that another program
// holds; false when none is. Other files in that folder, which the maker's
// other products share, are not the install's business.
bool FindHeldFont(const Tern::CPath& fontsDir, Tern::CPath& held);
// Every path the font step reads and writes.
void NoteFontPaths(const CInstallContext& context, CLongestPath& longest);

}  // namespace Zendra
