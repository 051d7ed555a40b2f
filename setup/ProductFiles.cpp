#include "ProductFiles.h"

#include <windows.h>

#include "Components.h"
#include "FilesInUse.h"
#include "FolderCopy.h"
#include "InstallLog.h"
#include "Product.h"
#include "TStr.h"

namespace Zendra {

using Tern::CLocalFileSystem;

namespace {

const char* const cExtraFiles[4] = {"Setup.exe", "VersionCheck.exe",
                                    "About.gif", "Zendra.ovc"};

struct CSubfolder {
  const char* startLine;
  const char* path;  // "/" between folders
  const char* label;
};
const CSubfolder cSpeechRules = {"Installing Speech Rule Files", "Rules",
                                 "Speech Rules"};
const CSubfolder cOfficeSupport = {"Installing Microsoft Office Support Files",
                                   "Office Support", "Office Support"};
const CSubfolder cLibLouisTables = {"Installing LibLouis Files",
                                    "LibLouis/Tables", "LibLouis Tables"};

CLocalFileSystem& LFS() { return CLocalFileSystem::Instance(); }

// "A/B" under `base`, creating each level when given the context; `label`
// names the last.
bool FormSubfolder(const CPath& base, const char* subfolder, const char* label,
                   const CInstallContext* create, CPath& result) {
  result = base;
  const char* part = subfolder;
  while (*part) {
    const char* slash = Tern::Str::Find(part, '/');
    CStr name(part, slash ? static_cast<Tern::Int>(slash - part)
                          : Tern::Str::Length(part));
    if (!LogStatus(result.AppendComponent(name.Chars()), "AppendComponent"))
      return false;
    if (create &&
        !CreateInstallDirectory(*create, slash ? name.Chars() : label, result))
      return false;
    part = slash ? slash + 1 : part + name.Length();
  }
  return true;
}

bool InstallSubfolder(const CInstallContext& context,
                      const CSubfolder& subfolder) {
  CLogBlock block(subfolder.startLine);
  CPath src, dest;
  return FormSubfolder(context.setupDir, subfolder.path, subfolder.label,
                       nullptr, src) &&
         FormSubfolder(context.installDir, subfolder.path, subfolder.label,
                       &context, dest) &&
         CFolderCopy(context, dest, subfolder.label).Walk(src);
}

// Has what is left of `entry` deleted at the next restart, a folder after
// everything in it; each item logged by name. The number scheduled.
Tern::Int RemoveAtRestart(const CPath& entry) {
  struct CLeftovers : Tern::CFileSystem::CVisitor {
    CError Visit(Tern::CFileSystem&, const CPath& item, CError) override {
      scheduled += RemoveAtRestart(item);
      return Tern::Ok;
    }
    Tern::Int scheduled = 0;
  } leftovers;
  if (LFS().GetItemType(entry) == Tern::S_FSIsDirectory)
    LFS().EnumerateDirectory(entry, "*", leftovers);
  const CStr path = entry.OSToPathString();
  CStr step("Delete at the next restart: ");
  step += path;
  if (!LogStatus(LFS().RemoveAtRestart(entry), step.Chars()))
    return leftovers.scheduled;
  LogText(
      "'%s' is deleted when Windows restarts, which finishes the removal.\n",
      path.Chars());
  return leftovers.scheduled + 1;
}

// Deletes every entry of a folder it can; what another program holds goes
// at the next restart. The running Setup.exe can't go yet either: the batch
// file deletes it once Setup has ended.
class CDeleteEverythingVisitor : public Tern::CFileSystem::CVisitor {
 public:
  CDeleteEverythingVisitor() { LFS().GetProgramFile(mRunning); }
  CError Visit(Tern::CFileSystem& fs, const CPath& entry,
               CError type) override {
    const CError deleted = type == Tern::S_FSIsDirectory
                               ? fs.DeleteDirectory(entry, true)
                               : fs.RemoveFile(entry, true);
    // Told, not counted: Setup.exe itself is always among them.
    if (Tern::Failed(deleted)) {
      LogText("Could not delete '%s' (%s).\n", entry.OSToPathString().Chars(),
              Tern::ErrorName(deleted));
      if (!LFS().IsSameItem(entry, mRunning))  // may be a short name
        scheduled += RemoveAtRestart(entry);
    }
    return Tern::Ok;
  }
  Tern::Int scheduled = 0;

 private:
  CPath mRunning;
};

// "A\\B" for the subfolder path "A/B".
CStr WindowsPath(const char* subfolder) {
  CStr path;
  for (const char* c = subfolder; *c; ++c) path += *c == '/' ? '\\' : *c;
  return path;
}

// What follows "<folder>\\" in `path`, in any case; null when `path` is not
// below that folder.
const char* Below(const CStr& folder, const char* path) {
  const int length = static_cast<int>(folder.Length());
  if (Tern::Str::Length(path) <= length + 1 || path[length] != '\\' ||
      ::CompareStringA(LOCALE_INVARIANT, NORM_IGNORECASE, path, length,
                       folder.Chars(), length) != CSTR_EQUAL)
    return nullptr;
  return path + length + 1;
}

// Whether the install copies `file`, below the install folder, again: a
// file of the top folder that it copies there, or one of a subfolder tree
// that the source folder holds at the same place.
bool InstallWritesAgain(const CInstallContext& context, const CPath& file) {
  const CStr path = file.OSToPathString();
  const char* relative =
      Below(context.installDir.OSToPathString(), path.Chars());
  if (!relative) return false;
  if (!Tern::Str::Find(relative, '\\')) {
    for (const CComponent& component : cComponents)
      if (::lstrcmpiA(relative, component.file) == 0) return true;
    for (const char* name : cExtraFiles)
      if (::lstrcmpiA(relative, name) == 0) return true;
    return false;
  }
  for (const CSubfolder* subfolder :
       {&cSpeechRules, &cOfficeSupport, &cLibLouisTables}) {
    if (!Below(WindowsPath(subfolder->path), relative)) continue;
    CStr source = context.setupDir.OSToPathString();
    source += '\\';
    source += relative;
    return LFS().GetItemType(CPath(source.Chars())) == Tern::S_FSIsFile;
  }
  return false;
}

// Deletes what is below a folder but the files a claim holds still, and the
// folders above them; stops at the first failure.
class CEmptyingVisitor : public Tern::CFileSystem::CVisitor {
 public:
  explicit CEmptyingVisitor(const CFolderClaim& claim) : mClaim(claim) {}
  CError Visit(Tern::CFileSystem& fs, const CPath& entry,
               CError type) override {
    if (type == Tern::S_FSIsDirectory)
      result = mClaim.HoldsAnyBelow(entry)
                   ? fs.EnumerateDirectory(entry, "*", *this)
                   : fs.DeleteDirectory(entry, true);
    else if (!mClaim.Holds(entry))
      result = fs.RemoveFile(entry, true);
    return result;
  }
  CError result = Tern::Ok;

 private:
  const CFolderClaim& mClaim;
};

}  // namespace

bool DeleteProtocolHandlers(CInstallContext& context) {
  CPath makerDir, handlers;
  if (Tern::Failed(context.installDir.GetComponent(CPath::ctDir, makerDir)))
    return true;
  handlers = makerDir;
  handlers.AppendComponent(cCommonFolder);
  handlers.AppendComponent("Protocol Handlers");
  LogText("Deleting Common\\Protocol Handlers directory: %s.\n",
          handlers.OSToPathString().Chars());
  LFS().DeleteDirectory(handlers, true);  // unchecked
  return true;
}

bool EmptyInstallFolder(CInstallContext& context) {
  const CPath& dir = context.installDir;
  LogText("Deleting contents of directory: %s.\n",
          dir.OSToPathString().Chars());
  if (LFS().GetItemType(dir) != Tern::S_FSIsDirectory) return true;
  CFolderClaim* claim = context.installDirClaim;
  if (!claim || !claim->Covers(dir))
    return LogStatus(LFS().DeleteDirectoryContents(dir, true),
                     "Can't delete directory contents");
  // The claimed files the install writes again stay, to be written over
  // through their handles; the other claimed files go through theirs, and
  // anything else by name.
  claim->DeleteFilesExcept([&context](const CPath& file) {
    return InstallWritesAgain(context, file);
  });
  CEmptyingVisitor emptying(*claim);
  LFS().EnumerateDirectory(dir, "*", emptying);
  return LogStatus(emptying.result, "Can't delete directory contents");
}

bool CreateInstallFolder(CInstallContext& context) {
  return CreateDirectoryBlock(context, "Zendra", context.installDir);
}

bool InstallComponentFiles(CInstallContext& context) {
  bool allCopied = true;
  for (const CComponent& component : cComponents) {
    LogText("Installing file: '%s'\n", component.file);
    if (!LogStep(CopyOneFile(component.file, context.setupDir,
                             context.installDir, context.installDirClaim),
                 component.file))
      allCopied = false;
  }
  return allCopied;
}

bool InstallSpeechRules(CInstallContext& context) {
  return InstallSubfolder(context, cSpeechRules);
}

bool InstallOfficeSupportFiles(CInstallContext& context) {
  return InstallSubfolder(context, cOfficeSupport);
}

bool InstallLibLouisTables(CInstallContext& context) {
  return InstallSubfolder(context, cLibLouisTables);
}

bool InstallExtraFiles(CInstallContext& context) {
  bool allCopied = true;
  for (const char* name : cExtraFiles)
    allCopied = CopyOneFile(name, context.setupDir, context.installDir,
                            context.installDirClaim) &&
                allCopied;
  return allCopied;
}

void NoteInstallPaths(const CInstallContext& context, CLongestPath& longest) {
  for (const CComponent& component : cComponents) {
    longest.NoteSource(context.setupDir, component.file);
    longest.Note(context.installDir, component.file);
  }
  for (const char* name : cExtraFiles) {
    longest.NoteSource(context.setupDir, name);
    longest.Note(context.installDir, name);
  }
  for (const CSubfolder* subfolder :
       {&cSpeechRules, &cOfficeSupport, &cLibLouisTables}) {
    const CStr relative = WindowsPath(subfolder->path);
    CStr src = context.setupDir.OSToPathString(),
         dest = context.installDir.OSToPathString();
    src += '\\';
    dest += '\\';
    src += relative;
    dest += relative;
    longest.NoteTree(src, dest);
  }
}

bool DeleteAllThatCanGo(const CPath& dir) {
  CDeleteEverythingVisitor everything;
  LFS().EnumerateDirectory(dir, "*", everything);
  if (everything.scheduled == 0) return false;
  // The batch file can't remove the folder while those files are in it.
  RemoveAtRestart(dir);
  return true;
}

bool DeleteInstalledFiles(CInstallContext& context) {
  const CPath& installDir = context.installDir;
  CPath tempDir, movedConfig, config = installDir;
  bool moved = false;
  if (LogStatus(LFS().GetDirectory(CLocalFileSystem::dtTempDir, tempDir),
                "Get temporary directory")) {
    movedConfig = tempDir;
    if (LogStatus(movedConfig.AppendComponent("Zendra.ovc"),
                  "Append Zendra.ovc") &&
        LogStatus(config.AppendComponent("Zendra.ovc"), "Append Zendra.ovc")) {
      if (LFS().GetItemType(config) == Tern::S_FSIsFile &&
          LFS().GetItemType(movedConfig) == Tern::S_FSIsFile)
        LogStatus(LFS().RemoveFile(movedConfig, true),
                  "Delete the older Zendra.ovc in the temporary folder", false);
      moved = LogStatus(LFS().Move(config, movedConfig), "Move Zendra.ovc");
      // A move to another drive copies: one that failed (a full disk) may
      // leave a part of the file there, while the original is still here.
      if (!moved && LFS().GetItemType(config) == Tern::S_FSIsFile &&
          LFS().GetItemType(movedConfig) == Tern::S_FSIsFile)
        LogStatus(LFS().RemoveFile(movedConfig, true),
                  "Delete the Zendra.ovc that could not be moved whole", false);
    }
  }
  LogText("Deleting contents of directory: %s.\n",
          installDir.OSToPathString().Chars());
  // Failures are not checked: what can't go now goes at the next restart.
  context.restartFinishesRemoval = DeleteAllThatCanGo(installDir);
  if (moved)
    LogStatus(LFS().RemoveFile(movedConfig, true), "Delete Zendra.ovc");
  return true;
}

}  // namespace Zendra
