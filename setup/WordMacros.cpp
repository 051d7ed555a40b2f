#include "WordMacros.h"

#include <windows.h>

#include <vector>

#include "InstallLog.h"
#include "OfficeRegistry.h"
#include "SetupResource.h"
#include "StringTable.h"
#include "TError.h"
#include "TFormat.h"
#include "TVarList.h"

namespace Zendra {

using Tern::CFormat;
using Tern::CLocalFileSystem;

namespace {

const char cWordMacroFile[] = "Zendra 4 Commands for Word (32 bit).dotm";

}  // namespace

bool IsWordRunning() {
  HWND word = ::FindWindowA("OpusApp", nullptr);
  char title[512] = "";
  if (word) ::GetWindowTextA(word, title, sizeof title);
  CFormat line("<APP>:  is <RUNNING> <TITLE>\n", nullptr,
               CFormat::fmtNoGlobalExpansion);
  line.Item("APP", "Microsoft Word");
  line.Item("RUNNING", word ? "running with a title of: " : "not running.");
  line.Item("TITLE", !word ? "" : (*title ? title : "(No Title)"));
  LogText("%s", line.Result().Chars());
  return word != nullptr;
}

namespace {

struct WordRow {
  unsigned nameID;
  Int officeVersion;
  Int bitness;
  const char* wordKey;
  const char* commonKey;
  const char* installRootName;
  const char* pathValue;
  const char* commonPathValue;
  const char* macroFile;
  const char* sourceSubfolder;
};

// Walked from the last row to the first. The last row repeats the 2016 name
// and version for the 17.0 keys.
const WordRow InstallWord[5] = {
    {273, 12, 32, ZENDRA_OFFICE_KEY("12.0", "Word"),
     ZENDRA_OFFICE_KEY("12.0", "Common"), "InstallRoot", "PATH", "PATH",
     cWordMacroFile, "Office Support/32"},
    {274, 14, 32, ZENDRA_OFFICE_KEY("14.0", "Word"),
     ZENDRA_OFFICE_KEY("14.0", "Common"), "InstallRoot", "PATH", "PATH",
     cWordMacroFile, "Office Support/32"},
    {275, 15, 32, ZENDRA_OFFICE_KEY("15.0", "Word"),
     ZENDRA_OFFICE_KEY("15.0", "Common"), "InstallRoot", "PATH", "PATH",
     cWordMacroFile, "Office Support/32"},
    {276, 16, 32, ZENDRA_OFFICE_KEY("16.0", "Word"),
     ZENDRA_OFFICE_KEY("16.0", "Common"), "InstallRoot", "PATH", "PATH",
     cWordMacroFile, "Office Support/32"},
    {276, 16, 32, ZENDRA_OFFICE_KEY("17.0", "Word"),
     ZENDRA_OFFICE_KEY("17.0", "Common"), "InstallRoot", "PATH", "PATH",
     cWordMacroFile, "Office Support/32"},
};

const Int cWordRowCount = 5;

// Why a copy failed, as indexes into each row's reason and action strings.
enum MacroFailure : Int {
  mfCantWrite = 0,
  mfNoFolder = 1,
  mfFolderReadOnly = 2,
  mfTargetReadOnly = 3,
};

const char* const cFailureLogText[] = {
    "the folder can't be written to (the folder exists, but is NOT read-only)",
    "the folder doesn't exist",
    "the folder is locked",
    "the target file is read-only",
};

// One Word version as found on this machine.
struct WordVersion {
  bool present = false;
  bool installed = false;
  CStr startupFolder;  // ends in "Startup"
};

// The Startup folders met so far, with the row that owns each.
struct StartupEntry {
  CStr folder;
  Int row;
};
using StartupList = std::vector<StartupEntry>;

Int StartupOwner(const StartupList& startupList, const CStr& folder) {
  for (const StartupEntry& entry : startupList)
    if (::lstrcmpiA(entry.folder.Chars(), folder.Chars()) == 0)
      return entry.row;
  return -1;
}

void LogLine(CFormat& line) { LogText("%s", line.Result().Chars()); }

CFormat LogTemplate(const char* text) {
  return CFormat(text, nullptr, CFormat::fmtNoGlobalExpansion);
}

// Reads "PATH" of the key's "InstallRoot" subkey.
bool ReadInstallRoot(const char* rowKey, const WordRow& row,
                     const char* valueName, CStr& path) {
  COfficeKey key;
  if (!IniParsePath(rowKey, key)) return false;
  key.subKey += "\\";
  key.subKey += row.installRootName;
  return ReadOfficeString(key, valueName, path);
}

// Without one pair of surrounding quotes, ending in a backslash.
void NormalizeInstallRoot(CStr& path) {
  const Int n = path.Length();
  if (n >= 2 && path[0] == '"' && path[n - 1] == '"') path = path.Mid(1, n - 2);
  if (path.IsEmpty() || path[path.Length() - 1] != '\\') path += "\\";
}

// "32", "64" or "unknown", logged as the image was found when `logged`.
CStr ImageBitness(const CStr& exe, bool logged) {
  DWORD type = 0;
  if (!::GetBinaryTypeA(exe.Chars(), &type)) {
    if (logged) LogText("%s: GetBinaryType failed\n", exe.Chars());
    return "unknown";
  }
  const char* bits = type == SCS_64BIT_BINARY ? "64" : "32";
  if (logged) LogText("%s: was determined to be %s-bit\n", exe.Chars(), bits);
  return bits;
}

// False when Word's image is known to be of another bitness than the row's:
// a 32-bit template is then of no use to it.
bool BitnessMatches(const CStr& installRoot, const WordRow& row, bool logged) {
  CStr exe = installRoot;
  exe += "WINWORD.EXE";
  const CStr gbt = ImageBitness(exe, logged);
  CStr swb;
  swb.Format("%d", static_cast<int>(row.bitness));
  if (gbt == swb) return true;
  if (!logged) return gbt == "unknown";
  CFormat line = LogTemplate(
      "Bitness mismatch: <path>, GetBinaryType: <gbt>, "
      "startupPath->wordBitness: <swb>\n");
  line.Item("path", exe.Chars());
  line.Item("gbt", gbt.Chars());
  line.Item("swb", swb.Chars());
  LogLine(line);
  return gbt == "unknown";
}

void LogFindResult(const WordRow& row, const CStr& path, bool gotPath,
                   bool is64BitOS) {
  CFormat pathLine =
      LogTemplate("path: <path>, gotPath: <gotPath>, is64BitOS: <is64BitOS>\n");
  pathLine.Item("path", path.Chars());
  pathLine.Item("gotPath", gotPath);
  pathLine.Item("is64BitOS", is64BitOS);
  LogLine(pathLine);
  CFormat found =
      LogTemplate("  MS Word <WordVer> (<Bitness>-bit) <Found><Path>\n");
  found.Item("WordVer", row.officeVersion);
  found.Item("Bitness", row.bitness);
  found.Item("Found", gotPath ? "found at " : "NOT found");
  found.Item("Path", gotPath ? path.Chars() : "");
  LogLine(found);
}

// The row's Startup folder: from "PATH" of the Word key's "InstallRoot",
// else of the Common key's. False when the version is not there. The Word
// steps log what they find (`logged`); the check before any change asks
// the same quietly, so that each finding is logged once, in its step.
bool FindStartupFolder(const WordRow& row, CStr& startupFolder, bool logged) {
  const bool is64BitOS = OSIs64Bit();
  COfficeKey wordKey;
  if (!IniParsePath(row.wordKey, wordKey) ||
      !RegKeyExists(wordKey, OfficeView())) {
    if (logged &&
        !FoundInOtherView(row.wordKey, GetResStr(row.nameID), "macro template"))
      LogText("regKeyFound is False: %s\n", row.wordKey);
    return false;
  }
  CStr path;
  const bool gotPath =
      ReadInstallRoot(row.wordKey, row, row.pathValue, path) ||
      ReadInstallRoot(row.commonKey, row, row.commonPathValue, path);
  if (gotPath) NormalizeInstallRoot(path);
  const bool usable =
      gotPath && (!is64BitOS || BitnessMatches(path, row, logged));
  if (logged) LogFindResult(row, path, gotPath, is64BitOS);
  startupFolder = path;
  startupFolder += "Startup";
  return usable;
}

// Finds every version, from the last row to the first; the first row met
// with a folder owns it.
void FindWordVersions(WordVersion (&versions)[cWordRowCount],
                      StartupList& startupList) {
  for (Int r = cWordRowCount - 1; r >= 0; --r) {
    WordVersion& version = versions[r];
    version.present =
        FindStartupFolder(InstallWord[r], version.startupFolder, true);
    if (version.present && StartupOwner(startupList, version.startupFolder) < 0)
      startupList.push_back({version.startupFolder, r});
  }
}

MacroFailure ExamineTarget(const CPath& folder, const CPath& target) {
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  if (lfs.GetItemType(folder) != Tern::S_FSIsDirectory) return mfNoFolder;
  bool readOnly = false;
  if (Tern::Succeeded(
          lfs.GetAttribute(folder, CLocalFileSystem::akReadOnly, readOnly)) &&
      readOnly)
    return mfFolderReadOnly;
  if (lfs.GetItemType(target) == Tern::S_FSIsFile &&
      Tern::Succeeded(
          lfs.GetAttribute(target, CLocalFileSystem::akReadOnly, readOnly)) &&
      readOnly)
    return mfTargetReadOnly;
  return mfCantWrite;
}

// The warning composed from the row's blocks in the string table.
void ShowMacroError(const CInstallContext& context, Int row,
                    MacroFailure failure) {
  bool noReadOnlyErrors = false;
  Tern::CVarList& vars = Tern::CVarList::Global();
  vars.GetBool("NoROMacroErrs", noReadOnlyErrors);
  if (noReadOnlyErrors &&
      (failure == mfFolderReadOnly || failure == mfTargetReadOnly))
    failure = mfCantWrite;
  // The report's own texts are filled in first, from a list of their own,
  // so that they do not outlive the report in the global list.
  const unsigned offset = IDS_BLOCK_STRIDE * row;
  Tern::CVarList report;
  report.Set("Reason",
             GetResStr(IDS_WORD_REASON_BASE + offset + failure).Chars());
  report.Set("Action",
             GetResStr(IDS_WORD_ACTION_BASE + offset + failure).Chars());
  report.Set("MacroFile", InstallWord[row].macroFile);
  CStr message = GetResBlock(IDS_WORD_MESSAGE_BASE + offset);
  report.Expand(message);
  vars.Expand(message);
  context.Message(message.Chars(), mkWarning);
}

void InstallMSWordMacrosError(const CInstallContext& context, Int row,
                              const CPath& folder, const CPath& target) {
  LogText("InstallMSWordMacrosError\n");
  const MacroFailure failure = ExamineTarget(folder, target);
  CFormat line = LogTemplate(
      "    Couldn't install <MacroFile> to the target folder, "
      "<StartupFolder>, because <Reason>.\n");
  line.Item("MacroFile", InstallWord[row].macroFile);
  line.Item("StartupFolder", folder.OSToPathString().Chars());
  line.Item("Reason", cFailureLogText[failure]);
  LogLine(line);
  if (!context.silent) ShowMacroError(context, row, failure);
}

bool SharedFolder(Int row, const StartupList& startupList,
                  const WordVersion& version) {
  const Int owner = StartupOwner(startupList, version.startupFolder);
  if (owner < 0 || owner == row) return false;
  CFormat line = LogTemplate(
      "    The startup folder for <Product> is also used by "
      "<ProdUsingFolder>. <MacroFile> was not installed.\n");
  line.Item("Product", GetResStr(InstallWord[row].nameID).Chars());
  line.Item("ProdUsingFolder", GetResStr(InstallWord[owner].nameID).Chars());
  line.Item("MacroFile", InstallWord[row].macroFile);
  LogLine(line);
  return true;
}

bool CopyMacros(const CInstallContext& context, Int row, WordVersion& version) {
  const WordRow& word = InstallWord[row];
  CPath source = context.installDir, folder(version.startupFolder.Chars());
  CPath target = folder;
  if (!LogStatus(source.Append(CPath(word.sourceSubfolder)),
                 "Append the macros' folder") ||
      !LogStatus(source.AppendComponent(word.macroFile),
                 "Append the macro file name") ||
      !LogStatus(target.AppendComponent(word.macroFile),
                 "Append the macro file name"))
    return false;
  LogText("Copying %s to %s\n", source.OSToPathString().Chars(),
          target.OSToPathString().Chars());
  if (Tern::Succeeded(
          CLocalFileSystem::Instance().CopyOneFile(source, target, true))) {
    version.installed = true;
    return true;
  }
  InstallMSWordMacrosError(context, row, folder, target);
  return false;
}

}  // namespace

bool InstallMSWordMacros(CInstallContext& context) {
  LogText("\nInstalling MS Word macros...\n");
  LogOSBitness();
  WordVersion versions[cWordRowCount];
  StartupList startupList;
  FindWordVersions(versions, startupList);
  bool ok = true;
  for (Int r = cWordRowCount - 1; r >= 0; --r) {
    if (!versions[r].present || SharedFolder(r, startupList, versions[r]))
      continue;
    ok = CopyMacros(context, r, versions[r]) && ok;
  }
  return ok;
}

namespace {

// A template that is not there (another version's folder was the same, or
// someone deleted it) counts as deleted.
bool DeleteTemplate(const CPath& target) {
  CLocalFileSystem& lfs = CLocalFileSystem::Instance();
  const CStr path = target.OSToPathString();
  if (lfs.GetItemType(target) == Tern::E_NotFound) {
    LogText("Deleting %s: not there (already gone), result = success\n",
            path.Chars());
    return true;
  }
  const bool deleted = Tern::Succeeded(lfs.RemoveFile(target, true));
  LogText("Deleting %s, result = %s\n", path.Chars(),
          deleted ? "success" : "failure");
  return deleted;
}

}  // namespace

bool RemoveMSWordMacros(CInstallContext&) {
  LogOSBitness();
  bool ok = true;
  for (Int r = cWordRowCount - 1; r >= 0; --r) {
    CStr folder;
    if (!FindStartupFolder(InstallWord[r], folder, true)) continue;
    CPath target(folder.Chars());
    ok = LogStatus(target.AppendComponent(InstallWord[r].macroFile),
                   "Append the macro file name") &&
         DeleteTemplate(target) && ok;
  }
  return ok;
}

void NoteWordMacroPaths(CLongestPath& longest) {
  for (Int r = 0; r < cWordRowCount; ++r) {
    CStr folder;
    if (FindStartupFolder(InstallWord[r], folder, false))
      longest.Note(CPath(folder.Chars()), InstallWord[r].macroFile);
  }
}

}  // namespace Zendra
