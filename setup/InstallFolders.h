// The product's install folders beside one another in the maker's folder:
// "Zendra", and the numbered ones an install takes while files of the
// usual one are in use.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// "Zendra", or "Zendra" and three digits.
bool IsInstallFolderName(const Tern::CStr& name);

// Deletes the product's other install folders that nothing holds any
// more, so that numbered copies don't pile up; a folder still in use
// stays. Its result does not count.
bool DeleteOtherInstallFolders(CInstallContext& context);

}  // namespace Zendra
