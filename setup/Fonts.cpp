#include "Fonts.h"

#include <windows.h>

#include "FilesInUse.h"
#include "FolderCopy.h"
#include "InstallLog.h"
#include "Product.h"
#include "TFontInstaller_Win.h"

namespace Zendra {

using Tern::CLocalFileSystem;

namespace {

const char* const cFontFiles[18] = {
    "qxextra.ttf",   "lattice.ttf",  "latticeb.ttf",
    "latticebi.ttf", "latticei.ttf", "latsym.ttf",
    "latsymb.ttf",   "latsymbi.ttf", "latsymi.ttf",
    "laextra.ttf",   "laextrab.ttf", "lafrak.ttf",
    "lafrakb.ttf",   "lamat1.ttf",   "lamat1b.ttf",
    "lamat2.ttf",    "lamat2b.ttf",  "gh_SimBraille_Nemeth_One.ttf"};

const char cQXExtra[] = "qxextra.ttf";
const Tern::UInt32 cCurrentQXExtraVersion = 0x40000;  // 4.0
const char cQXExtraWarning[] =
    "An error occurred updating the QX Extra font. You will need to manually "
    "install this font by dragging it from the Zendra Fonts folder to the "
    "Windows Fonts folder.";

// Whether the code means that an installed font could not be replaced.
bool CouldNotReplace(CError code) {
  return code == Tern::E_CantRemoveFontFromOS || code == Tern::E_NoAccess;
}

// Judges one font's failed install: true when the install may go on as if
// it had succeeded.
bool FontFailureIsAcceptable(const char* name, CError code,
                             Tern::UInt32 installedVersion) {
  LogText("Cannot install font: '%s' (error: '%s', 0x%08lX).\n", name,
          Tern::ErrorName(code), static_cast<unsigned long>(code.Code()));
  if (!CouldNotReplace(code)) return false;
  if (::lstrcmpiA(name, cQXExtra) != 0) {
    LogText("Failed to replace %s, not necessary so continue installation.\n",
            name);
    return true;
  }
  if (installedVersion >= cCurrentQXExtraVersion) {
    LogText("Current version of QX Extra detected, skip warning.\n");
    return true;
  }
  LogText("Old version of QX Extra detected, warn user to manually install.\n");
  // Shown even in a silent run: only a person can put this font in place.
  ::MessageBoxA(nullptr, cQXExtraWarning, cSetupCaption,
                MB_OK | MB_ICONWARNING | MB_SETFOREGROUND);
  return false;
}

// The folder is shared with the maker's other products: only the product's
// own fonts go, read-only ones too, so that fresh copies take their place.
bool DeleteProductFonts(const CPath& fontsDir) {
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  bool ok = true;
  for (const char* name : cFontFiles) {
    CPath font = fontsDir;
    CError deleted = font.AppendComponent(name);
    if (Tern::Succeeded(deleted)) deleted = lfs.RemoveFile(font, true);
    ok = (deleted == Tern::E_NotFound || LogStatus(deleted, name)) && ok;
  }
  return ok;
}

}  // namespace

bool FindHeldFont(const CPath& fontsDir, CPath& held) {
  for (const char* name : cFontFiles) {
    CPath font = fontsDir;
    if (Tern::Succeeded(font.AppendComponent(name)) && IsHeldFile(font)) {
      held = font;
      return true;
    }
  }
  return false;
}

bool InstallFonts(CInstallContext& context) {
  if (!context.installFonts) return true;
  const CPath& fontsDir = context.fontsDir;
  LogText("InstallFonts( src = '%s', dest = '%s' )\n",
          context.setupDir.OSToPathString().Chars(),
          fontsDir.OSToPathString().Chars());
  if (!CreateInstallDirectory(context, "Fonts", fontsDir) ||
      !LogStep(DeleteProductFonts(fontsDir),
               "Failed to delete Zendra's fonts in the Fonts folder."))
    return false;

  bool ok = true;
  Tern::CFontInstaller installer(CurrentLog());
  installer.Start();
  for (const char* name : cFontFiles) {
    if (!CopyOneFile(name, context.setupDir, fontsDir)) {
      ok = false;
      continue;
    }
    CPath copied = fontsDir;
    copied.AppendComponent(name);
    Tern::UInt32 installedVersion = 0;
    CError code = installer.Install(copied, installedVersion);
    if (Tern::Failed(code) &&
        !FontFailureIsAcceptable(name, code, installedVersion))
      ok = false;
  }
  installer.End();
  return ok;
}

void NoteFontPaths(const CInstallContext& context, CLongestPath& longest) {
  if (!context.installFonts) return;
  CPath systemFonts;
  const bool known = Tern::Succeeded(CLocalFileSystem::Instance().GetDirectory(
      CLocalFileSystem::dtFontsDir, systemFonts));
  for (const char* name : cFontFiles) {
    longest.NoteSource(context.setupDir, name);
    longest.Note(context.fontsDir, name);
    if (known) longest.Note(systemFonts, name);
  }
}

}  // namespace Zendra
