// Deletions a removal left for the next restart, for files another program
// held. An install into the same folder before that restart cancels them,
// or the restart would delete the new install's files.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// Cancels every deletion waiting for the restart of the install folder or
// of anything in it, each logged. Its result does not count.
bool CancelPendingDeletions(CInstallContext& context);

}  // namespace Zendra
