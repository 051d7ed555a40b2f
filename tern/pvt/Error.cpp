#include <utility>
#include <vector>

#include "TError.h"

namespace Tern {

namespace {

// Head of the list of registered tables. Zero-initialised before any dynamic
// initialisation, so tables may register in any order.
const CErrorModuleTable* gFirstTable = nullptr;

}  // namespace

CErrorModuleTable::CErrorModuleTable(const char* modName, Int modId,
                                     Int entryCount, const CErrorEntry* entries)
    : mModuleName(modName ? modName : ""),
      mModuleId(modId),
      mEntryCount(entryCount),
      mEntries(entries),
      mNext(gFirstTable) {
  if (!modName) TERN_FAIL("modName");
  if (FindModuleTable(modId)) TERN_FAIL("! FindModuleTable(modId)");
  gFirstTable = this;
}

const CErrorModuleTable* CErrorModuleTable::First() { return gFirstTable; }

const CErrorEntry* CErrorModuleTable::FindEntry(CError error) const {
  if (error.Module() != mModuleId) TERN_FAIL("error.Module() == mModuleId");
  for (Int i = 0; i < mEntryCount; ++i)
    if (mEntries[i].code == error.Code()) return &mEntries[i];
  return nullptr;
}

const CErrorModuleTable* FindModuleTable(Int modId) {
  for (const CErrorModuleTable* t = gFirstTable; t; t = t->Next())
    if (t->ModuleId() == modId) return t;
  return nullptr;
}

const char* ErrorName(CError error) {
  const CErrorModuleTable* table = FindModuleTable(error.Module());
  const CErrorEntry* entry = table ? table->FindEntry(error) : nullptr;
  return entry ? entry->name : "(unknown error)";
}

// ---- The five module tables ------------------------------------------------
// All in this one file, so that a static link always keeps them.

namespace {

// Ok and Failure are filled in from the exported constants during static
// initialisation; the rest is constant data.
CErrorEntry gGenEntries[] = {
    {0, "Ok"},
    {S_End.Code(), "S_End"},
    {S_Busy.Code(), "S_Busy"},
    {0, "Failure"},
    {E_AlreadyExists.Code(), "E_AlreadyExists"},
    {E_NotFound.Code(), "E_NotFound"},
    {E_NoAccess.Code(), "E_NoAccess"},
    {E_BadArgument.Code(), "E_BadArgument"},
    {E_BadName.Code(), "E_BadName"},
    {E_AlreadyOpen.Code(), "E_AlreadyOpen"},
    {E_NotOpen.Code(), "E_NotOpen"},
    {E_BadSyntax.Code(), "E_BadSyntax"},
    {E_Read.Code(), "E_Read"},
    {E_Write.Code(), "E_Write"},
    {E_Alloc.Code(), "E_Alloc"},
    {E_Version.Code(), "E_Version"},
    {E_BadData.Code(), "E_BadData"},
    {E_UnexpectedEOF.Code(), "E_UnexpectedEOF"},
    {E_Timeout.Code(), "E_Timeout"},
    {E_BadLogonName.Code(), "E_BadLogonName"},
    {E_BadLogonPassword.Code(), "E_BadLogonPassword"},
    {E_UserCancel.Code(), "E_UserCancel"},
    {E_Memory.Code(), "E_Memory"},
    {E_TooMuchData.Code(), "E_TooMuchData"},
};

const CErrorEntry gFileSystemEntries[] = {
    {S_FSIsDirectory.Code(), "S_FSIsDirectory"},
    {S_FSIsFile.Code(), "S_FSIsFile"},
    {E_DirNotEmpty.Code(), "E_DirNotEmpty"},
    {E_DiskFull.Code(), "E_DiskFull"},
    {E_FSNotDirectory.Code(), "E_FSNotDirectory"},
    {E_FSNotFile.Code(), "E_FSNotFile"},
    {E_BadUserId.Code(), "E_BadUserId"},
    {E_BadPassword.Code(), "E_BadPassword"},
    {E_BadHostName.Code(), "E_BadHostName"},
    {E_NotConnected.Code(), "E_NotConnected"},
};

const CErrorEntry gRegEntries[] = {
    {S_RegIsDirectory.Code(), "S_RegIsDirectory"},
    {S_RegIsValue.Code(), "S_RegIsValue"},
};

const CErrorEntry gFontInstallerEntries[] = {
    {S_NewerFont.Code(), "S_NewerFont"},
    {S_FontSkipped.Code(), "S_FontSkipped"},
    {E_BadFontFile.Code(), "E_BadFontFile"},
    {E_CantAddFontToOS.Code(), "E_CantAddFontToOS"},
    {E_CantRemoveFontFromOS.Code(), "E_CantRemoveFontFromOS"},
    {E_FontNotInstalled.Code(), "E_FontNotInstalled"},
    {E_CantRemoveFontFromRegistry.Code(), "E_CantRemoveFontFromRegistry"},
};

const CErrorEntry gInternetEntries[] = {
    {E_InternetBadHTTPStatus.Code(), "E_InternetBadHTTPStatus"},
    {E_InternetResourceNotText.Code(), "E_InternetResourceNotText"},
};

const CErrorEntry* GenEntriesWithConstants() {
  gGenEntries[0].code = Ok.Code();
  gGenEntries[3].code = Failure.Code();
  return gGenEntries;
}

const CErrorModuleTable gGenTable("Gen", modGen, CountOf(gGenEntries),
                                  GenEntriesWithConstants());
const CErrorModuleTable gFileSystemTable("FileSystem", modFileSystem,
                                         CountOf(gFileSystemEntries),
                                         gFileSystemEntries);
const CErrorModuleTable gRegTable("Reg", modReg, CountOf(gRegEntries),
                                  gRegEntries);
const CErrorModuleTable gFontInstallerTable("FontInstaller", modFontInstaller,
                                            CountOf(gFontInstallerEntries),
                                            gFontInstallerEntries);
const CErrorModuleTable gInternetTable("Internet", modInternet,
                                       CountOf(gInternetEntries),
                                       gInternetEntries);

// ---- Windows error numbers -------------------------------------------------

using WindowsErrorTable = std::vector<std::pair<UInt32, CError>>;

// Searched in this order; the first match wins.
WindowsErrorTable BuildWindowsErrorTable() {
  return {
      {2, E_NotFound},
      {3, E_NotFound},
      {53, E_NotFound},
      {20, E_NotFound},
      {126, E_NotFound},
      {64, E_NotFound},
      {14, E_Alloc},
      {80, E_AlreadyExists},
      {183, E_AlreadyExists},
      {160, E_BadArgument},
      {111, E_BadArgument},
      {87, E_BadArgument},
      {6, E_BadArgument},
      {123, E_BadArgument},
      {67, E_BadArgument},
      {5, E_NoAccess},
      {32, E_NoAccess},
      {65, E_NoAccess},
      {86, E_BadName},
      {110, E_NotOpen},
      {145, E_DirNotEmpty},
      {16, Failure},
      // A full disk is an ordinary failure, not an internal error: a log on
      // that disk must not report its own failed writes as one.
      {112, E_DiskFull},
      {39, E_DiskFull},
      // Ordinary failures of paths and of files other programs hold.
      {206, E_BadName},
      {161, E_BadName},
      {33, E_NoAccess},
      {19, E_NoAccess},
      {1224, E_NoAccess},
  };
}

}  // namespace

bool MapWindowsError(UInt32 windowsError, CError* mapped) {
  if (windowsError == 0) {
    *mapped = Ok;
    return true;
  }
  static const WindowsErrorTable table = BuildWindowsErrorTable();
  for (const auto& row : table) {
    if (row.first == windowsError) {
      *mapped = row.second;
      return true;
    }
  }
  return false;
}

}  // namespace Tern
