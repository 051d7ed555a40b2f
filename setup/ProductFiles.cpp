#include "ProductFiles.h"

#include "Components.h"
#include "FolderCopy.h"
#include "InstallLog.h"
#include "Product.h"
#include "TStr.h"

namespace Zendra {

using Tern::CLocalFileSystem;

namespace {

const char cCannotCreateFolder[] =
    "Unable to create Zendra folder (%s).\n\nYou must have permission to "
    "install software in order to install Zendra.\nPlease log on with the "
    "necessary permission, or contact your system administrator for help.";

const char* const cExtraFiles[4] = {"Setup.exe", "VersionCheck.exe",
                                    "About.gif", "Zendra.ovc"};

struct CSubfolder {
  const char* startLine;
  const char* path;  // "/" between folders
  const char* label;
};

CLocalFileSystem& LFS() { return CLocalFileSystem::Instance(); }

// "A/B" under `base`, creating each level when asked; `label` names the last.
bool FormSubfolder(const CPath& base, const char* subfolder, const char* label,
                   bool create, CPath& result) {
  result = base;
  const char* part = subfolder;
  while (*part) {
    const char* slash = Tern::Str::Find(part, '/');
    CStr name(part, slash ? static_cast<Tern::Int>(slash - part)
                          : Tern::Str::Length(part));
    if (!LogStatus(result.AppendComponent(name.Chars()), "AppendComponent"))
      return false;
    if (create && !CreateInstallDirectory(slash ? name.Chars() : label, result))
      return false;
    part = slash ? slash + 1 : part + name.Length();
  }
  return true;
}

bool InstallSubfolder(const CInstallContext& context,
                      const CSubfolder& subfolder) {
  CLogBlock block(subfolder.startLine);
  CPath src, dest;
  return FormSubfolder(context.setupDir, subfolder.path, subfolder.label, false,
                       src) &&
         FormSubfolder(context.installDir, subfolder.path, subfolder.label,
                       true, dest) &&
         CFolderCopy(dest, subfolder.label).Walk(src);
}

// Deletes every entry of a folder it can. The running Setup.exe can't go
// yet (the batch file deletes it later): that failure must not keep the
// entries after it.
class CDeleteEverythingVisitor : public Tern::CFileSystem::CVisitor {
 public:
  CError Visit(Tern::CFileSystem& fs, const CPath& entry) override {
    const CError deleted = fs.GetItemType(entry) == Tern::S_FSIsDirectory
                               ? fs.DeleteDirectory(entry, true)
                               : fs.RemoveFile(entry, true);
    // Told, not counted: Setup.exe itself is always among them.
    if (Tern::Failed(deleted))
      LogText("Could not delete '%s' (%s).\n", entry.OSToPathString().Chars(),
              Tern::ErrorName(deleted));
    return Tern::Ok;
  }
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
  return LogStatus(LFS().DeleteDirectoryContents(dir, true),
                   "Can't delete directory contents");
}

bool CreateInstallFolder(CInstallContext& context) {
  const CPath& dir = context.installDir;
  CLogBlock block("Create Zendra directory");
  if (LFS().GetItemType(dir) == Tern::S_FSIsDirectory) {
    LogText("directory '%s' already exists.\n", dir.OSToPathString().Chars());
    return true;
  }
  // The folders above it (Program Files\Orvane) may be missing too.
  if (LogStatus(LFS().CreateDirectoryPath(dir), "Create directory."))
    return true;
  CStr text;
  text.Format(cCannotCreateFolder, dir.OSToPathString().Chars());
  context.Message(text.Chars(), mkError);
  return false;
}

bool InstallComponentFiles(CInstallContext& context) {
  bool allCopied = true;
  for (const CComponent& component : cComponents) {
    LogText("Installing file: '%s'\n", component.file);
    if (!LogStep(
            CopyOneFile(component.file, context.setupDir, context.installDir),
            component.file))
      allCopied = false;
  }
  return allCopied;
}

bool InstallSpeechRules(CInstallContext& context) {
  return InstallSubfolder(
      context, {"Installing Speech Rule Files", "Rules", "Speech Rules"});
}

bool InstallOfficeSupportFiles(CInstallContext& context) {
  return InstallSubfolder(context, {"Installing Microsoft Office Support Files",
                                    "Office Support", "Office Support"});
}

bool InstallLibLouisTables(CInstallContext& context) {
  return InstallSubfolder(context, {"Installing LibLouis Files",
                                    "LibLouis/Tables", "LibLouis Tables"});
}

bool InstallExtraFiles(CInstallContext& context) {
  bool allCopied = true;
  for (const char* name : cExtraFiles)
    allCopied =
        CopyOneFile(name, context.setupDir, context.installDir) && allCopied;
  return allCopied;
}

void DeleteAllThatCanGo(const CPath& dir) {
  CDeleteEverythingVisitor everything;
  LFS().EnumerateDirectory(dir, "*", everything);
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
    }
  }
  LogText("Deleting contents of directory: %s.\n",
          installDir.OSToPathString().Chars());
  DeleteAllThatCanGo(installDir);  // failures not checked
  if (moved)
    LogStatus(LFS().RemoveFile(movedConfig, true), "Delete Zendra.ovc");
  return true;
}

}  // namespace Zendra
