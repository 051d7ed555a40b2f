// The install and the removal, each an ordered table of steps run in turn.
#pragma once

#include "InstallContext.h"

namespace Zendra {

enum InstallOutcome {
  ioSucceeded,
  ioFailed,
  // Ended before it changed anything (another MIME filter claims the
  // product's types, a file is in use, a path too long) or before it could
  // finish (Word kept running).
  ioNotFinished,
};

// Installs the product into context.installDir.
InstallOutcome RunInstall(CInstallContext& context);
// Removes the product installed in context.installDir, ending with the
// self-deletion of Setup. False when a step that counts failed.
bool RunRemoval(CInstallContext& context);

}  // namespace Zendra
