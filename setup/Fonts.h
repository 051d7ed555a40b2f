// The product's fonts: copied into their own folder below Program Files and
// installed into the system from there.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// Does nothing when the -nofonts option turned the fonts off.
bool InstallFonts(CInstallContext& context);

}  // namespace Zendra
