// What an install can know before it changes anything: that nothing holds
// the files it replaces and that every path it reads and writes fits.
// A repair that would fail halfway fails here instead, leaving the machine
// as it was.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// False, with the reason logged and told, when the install can't finish.
bool InstallCanFinish(CInstallContext& context);

}  // namespace Zendra
