// The platform-independent half of the local file system: the names of the
// special directories and the queries that need no platform call.
#include "TFileSystem.h"
#include "TStr.h"

namespace Tern {

namespace {

// In the order of the directory types.
const char* const cDirNames[] = {
    "TempDir",
    "DebugLogDir",
    "FontsDir",
    "AppDir",
    "AppPrivateDir",
    "ModuleDir",
    "UserAppDataDir",
    "MachineAppDataDir",
    "UserDocDir",
    "CurrentDir",
    "LogDir",
    "WinOSDir",
    "WinProgramFilesDir",
    "WinCommonFilesDir",
};

}  // namespace

Int CLocalFileSystem::DirTypeFromName(const char* dirName) {
  for (Int i = 0; i < CountOf(cDirNames); ++i)
    if (Str::Equal(dirName, cDirNames[i])) return i;
  return -1;
}

CLocalFileSystem& CLocalFileSystem::Instance() {
  static CLocalFileSystem instance;
  return instance;
}

CError CLocalFileSystem::GetDirectory(const char* dirName, CPath& dir) {
  TERN_ASSERT(dirName);
  Int type = dirName ? DirTypeFromName(dirName) : -1;
  if (type < 0) {
    TERN_FAIL("bad dir type");
    return E_BadArgument;
  }
  return GetDirectory(type, dir);
}

}  // namespace Tern
