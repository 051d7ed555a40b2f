#include <windows.h>

#include "Platform.h"
#include "TFontFile.h"
#include "TFontInstaller_Win.h"
#include "TFormat.h"
#include "TRegistry_Win.h"
#include "TStr.h"
#include "TStream.h"

namespace Tern {

bool CFontInstaller::cInstantiated = false;

namespace {

const char cTrueTypeSuffix[] = " (TrueType)";
const char cRegularTrueTypeSuffix[] = " Regular (TrueType)";

// A log template filled by name; the font names and paths are never
// expanded against the program's variables.
class CLogTemplate : public CFormat {
 public:
  explicit CLogTemplate(const char* templ)
      : CFormat(templ, nullptr, fmtNoGlobalExpansion) {}
};

CStr Concat(const char* a, const char* b) {
  CStr text(a);
  text += b;
  return text;
}

bool IsNTFamily() { return (::GetVersion() & 0x80000000u) == 0; }

int CALLBACK CountFamily(const LOGFONTA*, const TEXTMETRICA*, DWORD,
                         LPARAM count) {
  ++*reinterpret_cast<Int*>(count);
  return 1;
}

CStr FileNameOf(const char* pathText) {
  CPath path(pathText);
  CStr name;
  if (!path.IsValid() || Failed(path.GetComponentString(CPath::ctFile, name)))
    return CStr(pathText);
  return name;
}

// The value of the fonts key whose data names `fileName`, compared by file
// name without regard to case.
bool FindValueForFile(CWinRegKey& fonts, const CStr& fileName, CStr& found) {
  CStr name, data;
  for (Int i = 0; fonts.EnumValue(i, name); ++i) {
    if (fonts.GetString(name.Chars(), data) &&
        ::lstrcmpiA(FileNameOf(data.Chars()).Chars(), fileName.Chars()) == 0) {
      found = name;
      return true;
    }
  }
  return false;
}

}  // namespace

CFontInstaller::CFontInstaller(CStream* log) : mLog(log) {
  if (cInstantiated) TERN_FAIL("! cInstantiated");
  cInstantiated = true;
}

CFontInstaller::~CFontInstaller() { cInstantiated = false; }

bool CFontInstaller::OpenFontsKey(CWinRegKey& fonts, Int mode,
                                  const char* reason) {
  if (fonts.Open(FontsKeyPath().Chars(), mode)) return true;
  CLogTemplate line("<reason>: Could not open fonts registry key <regKey>");
  line.Item("reason", reason);
  line.Item("regKey", FontsKeyPath().Chars());
  Line(line.Result().Chars());
  return false;
}

void CFontInstaller::Line(const char* text) {
  if (!mLog) return;
  mLog->Printf("%s\n", text);
  mLog->Flush();
}

CStr CFontInstaller::FontsKeyPath() {
  CStr path("HKEY_LOCAL_MACHINE\\Software\\Microsoft\\");
  path += IsNTFamily() ? "Windows NT" : "Windows";
  path += "\\CurrentVersion\\Fonts";
  return path;
}

void CFontInstaller::Start() {
  Line("\nFont installation start {");
  if (mLog) mLog->IncIndent();
}

void CFontInstaller::End() {
  Line("Broadcasting WM_FONTCHANGE.");
  ::PostMessageA(HWND_BROADCAST, WM_FONTCHANGE, 0, 0);
  if (!mLog) return;
  if (mLog->GetIndentLevel() > 0)
    mLog->DecIndent();
  else
    TERN_FAIL("mIndentLevel > 0");
  Line("} Font installation end.\n");
}

CError CFontInstaller::GetInstalledFontFile(const char* fontName, CPath& file) {
  TERN_ASSERT(fontName && *fontName);
  if (!fontName || !*fontName) return E_BadArgument;
  CWinRegKey fonts;
  if (!OpenFontsKey(fonts, rmRead, "GetInstalledFontFile")) {
    return E_NotFound;
  }
  CStr data;
  if (!fonts.GetString(Concat(fontName, cTrueTypeSuffix).Chars(), data) &&
      !fonts.GetString(Concat(fontName, cRegularTrueTypeSuffix).Chars(), data))
    return E_NotFound;
  CPath given(data.Chars());
  if (given.IsValid() && given.IsFullPath()) {
    file = given;
    return Ok;
  }
  CError err = CLocalFileSystem::Instance().GetDirectory(
      CLocalFileSystem::dtFontsDir, file);
  if (Failed(err)) return err;
  return file.AppendComponent(data.Chars());
}

bool CFontInstaller::IsInstalled(const char* fontName) {
  TERN_ASSERT(fontName && *fontName);
  if (!fontName || !*fontName) return false;
  LOGFONTA face = {};
  face.lfCharSet = DEFAULT_CHARSET;
  ::lstrcpynA(face.lfFaceName, fontName, LF_FACESIZE);
  if (!mMemoryDC.IsValid()) mMemoryDC.Reset(::CreateCompatibleDC(nullptr));
  Int families = 0;
  ::EnumFontFamiliesExA(mMemoryDC.Get(), &face, CountFamily,
                        reinterpret_cast<LPARAM>(&families), 0);
  return families > 0;
}

CError CFontInstaller::InstallFont(const char* fontName,
                                   const CPath& fontPath) {
  const CStr fontFile = fontPath.OSToPathString();
  const int added = ::AddFontResourceA(fontFile.Chars());
  if (added == 0) {
    CLogTemplate line(
        "InstallFont: Could not add font to font table. Font = <fontFile>, "
        "result = <result>");
    line.Item("fontFile", fontFile.Chars());
    line.Item("result", static_cast<Int32>(added));
    Line(line.Result().Chars());
    return E_CantAddFontToOS;
  }
  // A registry fault, which a caller must not take for an installed font
  // that could not be replaced.
  CWinRegKey fonts;
  if (!OpenFontsKey(fonts, rmWrite, "InstallFont"))
    return E_CantRemoveFontFromRegistry;
  const CStr regValue = Concat(fontName, cTrueTypeSuffix);
  CStr fileName;
  fontPath.GetComponentString(CPath::ctFile, fileName);
  if (!fonts.SetString(regValue.Chars(), fileName.Chars())) {
    CLogTemplate line(
        "InstallFont: Could not write font's registry key <regValue>, result = "
        "<result>");
    line.Item("regValue", regValue.Chars());
    line.Item("result", ErrorName(Failure));
    Line(line.Result().Chars());
    return Failure;
  }
  return Ok;
}

CError CFontInstaller::EnsureUniqueFontName(CPath& dest) {
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  CStr origName, extension;
  dest.GetComponentString(CPath::ctName, origName);
  dest.GetComponentString(CPath::ctExtension, extension);
  CPath dir;
  CError err = dest.GetComponent(CPath::ctDir, dir);
  for (Int modNum = 1; Succeeded(err); ++modNum) {
    err = lfs.GetItemType(dest);
    if (err == E_NotFound) return Ok;
    if (Failed(err)) break;  // only "exists" makes another name worth trying
    CFormat name("<OrigName>_<ModNum:02d>", nullptr,
                 CFormat::fmtNoGlobalExpansion);
    name.Item("OrigName", origName.Chars());
    name.Item("ModNum", modNum);
    CStr file = name.Result();
    if (!extension.IsEmpty()) file += Concat(".", extension.Chars());
    dest = dir;
    err = dest.AppendComponent(file.Chars());
  }
  return err;
}

CError CFontInstaller::LogFailure(const char* templ, const CStr& srcText,
                                  CError status) {
  CLogTemplate line(templ);
  line.Item("font", srcText.Chars());
  line.Item("error", ErrorName(status));
  Line(line.Result().Chars());
  return status;
}

// The font's own name in the system's fonts folder, or a numbered one when
// that is taken.
CError CFontInstaller::SystemFontTarget(const CPath& src, const CStr& srcText,
                                        CPath& dest) {
  CError status = CLocalFileSystem::Instance().GetDirectory(
      CLocalFileSystem::dtFontsDir, dest);
  if (Failed(status))
    return LogFailure(
        "Could not find the system's Fonts folder for <font>, error <error>",
        srcText, status);
  CStr fileName;
  status = src.GetComponentString(CPath::ctFile, fileName);
  if (Succeeded(status)) status = dest.AppendComponent(fileName.Chars());
  if (Failed(status))
    return LogFailure(
        "Could not form the path of <font> in the Fonts folder, error "
        "<error>",
        srcText, status);
  // Mostly the name is free, and one question settles it.
  if (CLocalFileSystem::Instance().GetItemType(dest) == E_NotFound) return Ok;
  RemoveStrayFile(dest);
  status = EnsureUniqueFontName(dest);
  if (Failed(status))
    return LogFailure("EnsureUniqueFontName failed with error <error>", srcText,
                      status);
  return Ok;
}

CError CFontInstaller::Install(const CPath& srcFontFilePath,
                               UInt32& installedVersion) {
  installedVersion = 0;
  TERN_ASSERT(srcFontFilePath.IsValid());
  CStr srcText;
  if (Failed(srcFontFilePath.OSToPathString(srcText))) return E_BadArgument;
  if (mLog) {
    mLog->Printf("Installing font from '%s' {\n", srcText.Chars());
    mLog->IncIndent();
  }
  CError status = InstallSteps(srcFontFilePath, srcText, installedVersion);
  if (mLog) mLog->DecIndent();
  Line("}");
  return status;
}

CError CFontInstaller::InstallSteps(const CPath& src, const CStr& srcText,
                                    UInt32& installedVersion) {
  CFontFacts facts;
  CError status = ReadFontFacts(srcText.Chars(), facts);
  if (Failed(status)) return status;
  if (!IsInstalled(facts.name.Chars())) {
    Line("Font NOT already installed");
  } else {
    status = ReplaceInstalled(src, facts, installedVersion);
    if (status != Ok) return status;  // a failure, or the font stays
  }
  CPath dest;
  status = SystemFontTarget(src, srcText, dest);
  if (Failed(status)) return status;
  status = CLocalFileSystem::Instance().CopyIntoPlace(src, dest);
  if (Failed(status)) {
    CLogTemplate line(
        "Could not copy font file <src> to <dest>, error <error>");
    line.Item("src", src);
    line.Item("dest", dest);
    line.Item("error", ErrorName(status));
    Line(line.Result().Chars());
    return status;
  }
  status = InstallFont(facts.name.Chars(), dest);
  if (Succeeded(status)) Line("Font successfully installed");
  return status;
}

// The font is installed already: keep a newer copy, else remove the
// installed one so that this file takes its place. Equal versions are
// replaced on purpose, so that a damaged installed copy can be repaired.
CError CFontInstaller::ReplaceInstalled(const CPath& src,
                                        const CFontFacts& facts,
                                        UInt32& installedVersion) {
  Line("Font already installed");
  CPath installedFile;
  if (Failed(GetInstalledFontFile(facts.name.Chars(), installedFile)) &&
      !AdoptUnregisteredFile(src, facts, installedFile)) {
    Line(
        "Can't get font's file - perhaps font is listed in FontSubstitutes. "
        "Skipping font.");
    return S_FontSkipped;
  }
  CFontFacts installed;
  ReadFontFacts(installedFile.OSToPathString().Chars(), installed);
  installedVersion = installed.version;
  CLogTemplate line(
      "Current font version = <curVersion:08x>, installer font version = "
      "<insVersion:08x>");
  line.Item("curVersion", installed.version);
  line.Item("insVersion", facts.version);
  Line(line.Result().Chars());
  if (installed.version > facts.version) {
    Line("Not installing font as existing font is newer");
    return S_NewerFont;
  }
  Line("Replacing existing installed font");
  return RemoveTrueTypeFont(installedFile);
}

bool CFontInstaller::IsUnregistered(const CPath& file) {
  CWinRegKey fonts;
  CStr fileName, value;
  return Succeeded(file.GetComponentString(CPath::ctFile, fileName)) &&
         fonts.Open(FontsKeyPath().Chars(), rmRead) &&
         !FindValueForFile(fonts, fileName, value);
}

// The font's file in the fonts folder under the source's name, with no
// value naming it: a run killed between the copy and the value leaves it so,
// and so does a user who drags the font in by hand. Writing the value
// finishes that install.
bool CFontInstaller::AdoptUnregisteredFile(const CPath& src,
                                           const CFontFacts& facts,
                                           CPath& file) {
  CStr fileName;
  CFontFacts found;
  if (Failed(CLocalFileSystem::Instance().GetDirectory(
          CLocalFileSystem::dtFontsDir, file)) ||
      Failed(src.GetComponentString(CPath::ctFile, fileName)) ||
      Failed(file.AppendComponent(fileName.Chars())) ||
      Failed(ReadFontFacts(file.OSToPathString().Chars(), found)) ||
      !(found.name == facts.name) || !IsUnregistered(file))
    return false;
  CLogTemplate line(
      "Font file <file> has no Fonts value: finishing its install");
  line.Item("file", file);
  Line(line.Result().Chars());
  return Succeeded(InstallFont(facts.name.Chars(), file));
}

// A file under the font's own name that no value names and that is no
// readable font is what a run killed while copying leaves: it is replaced,
// so that the font keeps its own name rather than a numbered one beside it.
void CFontInstaller::RemoveStrayFile(const CPath& dest) {
  CFontFacts facts;
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  if (lfs.GetItemType(dest) != S_FSIsFile ||
      Succeeded(ReadFontFacts(dest.OSToPathString().Chars(), facts)) ||
      !IsUnregistered(dest))
    return;
  CLogTemplate line(
      "Replacing <file>, which no value names and which is no readable font, "
      "result = <result>");
  line.Item("file", dest);
  line.Item("result", ErrorName(lfs.RemoveFile(dest, true)));
  Line(line.Result().Chars());
}

CError CFontInstaller::RemoveTrueTypeFont(const CPath& fontPath) {
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  CPath winFontsDir, parentDir, fontName, fontFullPath;
  if (Failed(lfs.GetDirectory(CLocalFileSystem::dtFontsDir, winFontsDir)))
    TERN_FAIL(
        "Succeeded( LFS.GetDirectory(CLocalFileSystem::dtFontsDir,winFontsDir) "
        ")");
  if (Failed(fontPath.GetComponent(CPath::ctDir, parentDir)))
    TERN_FAIL("Succeeded( fontPath.GetComponent(ctDir,parentDir) )");
  if (Failed(fontPath.GetComponent(CPath::ctFile, fontName)))
    TERN_FAIL("Succeeded( fontPath.GetComponent(ctFile,fontName) )");
  const CStr fontNameStr = fontName.ExtraPart();
  fontFullPath = winFontsDir;
  if (Failed(fontFullPath.AppendComponent(fontNameStr.Chars()))) {
    TERN_FAIL("Succeeded( fontFullPath.AppendComponent(fontNameStr) )");
    return E_BadArgument;
  }

  CWinRegKey fonts;
  if (!OpenFontsKey(fonts, rmWrite, "RemoveTrueTypeFont")) {
    return E_FontNotInstalled;
  }
  CStr regValue;
  if (!FindValueForFile(fonts, fontNameStr, regValue)) {
    Line("Cannot remove font, not found via registry enumeration");
    return E_FontNotInstalled;
  }
  const CStr fullText = fontFullPath.OSToPathString();
  if (!::RemoveFontResourceA(fullText.Chars())) {
    const DWORD error = ::GetLastError();
    if (mLog) {
      mLog->Printf(
          "RemoveFontResource failed for %s, GetLastError() = 0x%08X "
          "(%s).\n",
          fullText.Chars(), static_cast<unsigned>(error),
          Platform::SystemErrorText(error).Chars());
    }
    return E_CantRemoveFontFromOS;
  }
  CError removed = lfs.RemoveFile(fontFullPath, true);
  if (Failed(removed)) {
    CLogTemplate line(
        "Could not delete font file <fontFullPath>, result = : <result>");
    line.Item("fontFullPath", fontFullPath);
    line.Item("result", ErrorName(removed));
    Line(line.Result().Chars());
    // The file stays, so the font stays installed as it was.
    ::AddFontResourceA(fullText.Chars());
    return E_CantRemoveFontFromOS;
  }
  if (!fonts.DeleteValue(regValue.Chars())) {
    CLogTemplate line("Could not delete font's registry entry: <regKey>");
    line.Item("regKey", regValue.Chars());
    Line(line.Result().Chars());
    return E_CantRemoveFontFromRegistry;
  }
  Line("Font successfully removed");
  return Ok;
}

}  // namespace Tern
