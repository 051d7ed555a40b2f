// Whether other programs hold the product's files: a file that is held
// can't be replaced or deleted now.
#pragma once

#include "TFileSystem.h"

namespace Zendra {

// True when the file exists and another program holds it; not logged.
bool IsHeldFile(const Tern::CPath& path);
// The same, logged.
bool FileIsInUse(const Tern::CPath& path);
// The first file below `dir` (at any depth) that another program holds;
// false when there is none. Not logged.
bool FindFileInUse(const Tern::CPath& dir, Tern::CPath& held);
// True when any file in the install folder is in use: the components
// (each logged) or any other file (the first one met logged).
bool InstallFolderInUse(const Tern::CPath& installDir);

}  // namespace Zendra
