// Installs TrueType fonts into the system's fonts folder and removes them.
// An installed copy is replaced only by a file that is not older. Every step
// goes into the log stream given at construction; running programs hear of
// the change once, when the batch ends.
#pragma once

#include "TError.h"
#include "TFileSystem.h"
#include "TScopedResource_Win.h"
#include "TString.h"

namespace Tern {

class CStream;
class CWinRegKey;
struct CFontFacts;

class CFontInstaller {
 public:
  // One installer at a time. `log` may be null: then nothing is written.
  explicit CFontInstaller(CStream* log);
  ~CFontInstaller();
  CFontInstaller(const CFontInstaller&) = delete;
  CFontInstaller& operator=(const CFontInstaller&) = delete;

  // Opens the batch's log block.
  void Start();
  // Installs the font file; `installedVersion` gets the revision of the copy
  // that was installed before (0 when there was none). S_NewerFont when that
  // copy is newer and stays.
  CError Install(const CPath& srcFontFilePath, UInt32& installedVersion);
  // Removes an installed font: from the system, its file and its registry
  // value. `fontPath` names the file; only its name is used.
  CError RemoveTrueTypeFont(const CPath& fontPath);
  // Tells every top-level window (WM_FONTCHANGE) and closes the log block.
  void End();

  // The file registered for the font's name, "<name> (TrueType)" or
  // "<name> Regular (TrueType)"; a bare name lies in the fonts folder.
  CError GetInstalledFontFile(const char* fontName, CPath& file);
  // True when GDI enumerates a family of that face name.
  bool IsInstalled(const char* fontName);
  // Adds the installed file to the system's font table and registers it.
  CError InstallFont(const char* fontName, const CPath& fontPath);

  // "HKEY_LOCAL_MACHINE\Software\Microsoft\<OSType>\CurrentVersion\Fonts".
  static CStr FontsKeyPath();

 private:
  void Line(const char* text);
  // Opens the fonts key; says so in the log, naming `reason`, when it can't.
  bool OpenFontsKey(CWinRegKey& fonts, Int mode, const char* reason);
  CError InstallSteps(const CPath& src, const CStr& srcText,
                      UInt32& installedVersion);
  CError ReplaceInstalled(const CPath& src, const CFontFacts& facts,
                          UInt32& installedVersion);
  // Whether no value of the fonts key names the file.
  bool IsUnregistered(const CPath& file);
  bool AdoptUnregisteredFile(const CPath& src, const CFontFacts& facts,
                             CPath& file);
  void RemoveStrayFile(const CPath& dest);
  CError EnsureUniqueFontName(CPath& dest);
  CError SystemFontTarget(const CPath& src, const CStr& srcText, CPath& dest);
  // Logs the template with "font" and "error" filled in; returns `status`.
  CError LogFailure(const char* templ, const CStr& srcText, CError status);

  CStream* mLog;
  // Where IsInstalled enumerates: one memory device context for the batch.
  CScopedMemoryDC mMemoryDC;
  static bool cInstantiated;
};

}  // namespace Tern
