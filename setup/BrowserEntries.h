// The browser's and Windows' registry entries that let the product run:
// pre-approval, the elevation policy of VersionCheck.exe, Enterprise Mode,
// the compatibility assistant, the XHTML documents the browser takes, and
// the check for another MIME filter on the product's types. Each step
// writes its own log block, reports each failed call and returns false at
// the first failure, leaving what it wrote before. A removal leaves them:
// they are harmless without the product.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// True when another filter claims one of the product's MIME types.
bool MimeFilterClashes();

bool AddToPreApprovedList(CInstallContext& context);
// The elevation policy of VersionCheck.exe in the install folder.
bool AddVersionCheckElevation(CInstallContext& context);
bool AddEnterpriseMode(CInstallContext& context);
// Keeps the compatibility assistant quiet about ZendraPanel.cpl.
bool AddCompatibilityWarningKey(CInstallContext& context);
// Deletes the "Accepted Documents" values that hold "application/xhtml+xml".
bool RemoveFromAcceptedDocuments(CInstallContext& context);

}  // namespace Zendra
