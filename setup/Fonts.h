// The product's fonts: copied into their own folder below Program Files and
// installed into the system from there.
#pragma once

#include "InstallContext.h"
#include "PathLimit.h"

namespace Zendra {

// Does nothing when the -nofonts option turned the fonts off.
bool InstallFonts(CInstallContext& context);
// Every path the font step reads and writes.
void NoteFontPaths(const CInstallContext& context, CLongestPath& longest);

}  // namespace Zendra
