#include "FolderCopy.h"

#include "FilesInUse.h"
#include "InstallLog.h"

namespace Zendra {

using Tern::CLocalFileSystem;

bool CopyOneFile(const char* name, const CPath& srcDir, const CPath& destDir,
                 CFolderClaim* claim) {
  TERN_ASSERT(name && *name);
  TERN_ASSERT(srcDir.IsValid());
  TERN_ASSERT(destDir.IsValid());
  if (!name || !*name || !srcDir.IsValid() || !destDir.IsValid()) return false;
  LogText("Copy '%s' from '%s' to '%s'.\n", name,
          srcDir.OSToPathString().Chars(), destDir.OSToPathString().Chars());
  CPath src = srcDir, dest = destDir;
  if (!LogStatus(src.AppendComponent(name), "Append filename to srcDir") ||
      !LogStatus(dest.AppendComponent(name), "Append filename to destDir"))
    return false;
  // Straight onto the full name: the destination is never a folder here.
  const CError copied =
      claim && claim->Holds(dest)
          ? claim->WriteOver(dest, src)
          : CLocalFileSystem::Instance().CopyOneFile(src, dest, true);
  return LogStatus(copied, "Copying file");
}

namespace {

const char cCannotCreateFolder[] =
    "Unable to create Zendra folder (%s).\n\nYou must have permission to "
    "install software in order to install Zendra.\nPlease log on with the "
    "necessary permission, or contact your system administrator for help.";

}  // namespace

// Made first and asked about only when that fails: most folders an install
// needs are new.
bool CreateDirectoryBlock(const CInstallContext& context, const char* label,
                          const CPath& dir) {
  CStr blockName;
  blockName.Format("Create %s directory", label);
  CLogBlock block(blockName.Chars());
  const CStr path = dir.OSToPathString();
  const CError made = CLocalFileSystem::Instance().CreateDirectoryPath(dir);
  if (made == Tern::S_FSIsDirectory)
    LogText("directory '%s' already exists.\n", path.Chars());
  if (LogStatus(made, "Create directory.")) return true;
  CStr text;
  text.Format(cCannotCreateFolder, path.Chars());
  context.Message(text.Chars(), mkError);
  return false;
}

bool CreateInstallDirectory(const CInstallContext& context, const char* label,
                            const CPath& dir) {
  LogText("creating %s directory = '%s'\n", label,
          dir.OSToPathString().Chars());
  return CreateDirectoryBlock(context, label, dir);
}

CFolderCopy::CFolderCopy(const CInstallContext& context, const CPath& destDir,
                         const char* label)
    : mContext(context), mDestDir(destDir), mLabel(label) {}

bool CFolderCopy::Walk(const CPath& srcDir) {
  CError type = CLocalFileSystem::Instance().GetItemType(srcDir);
  if (type != Tern::S_FSIsDirectory) {
    LogText("Source folder '%s' is missing.\n",
            srcDir.OSToPathString().Chars());
    return LogStatus(Tern::Succeeded(type) ? Tern::E_FSNotDirectory : type,
                     "Walk source folder");
  }
  // Failures inside the tree were logged where they happened.
  return Tern::Succeeded(WalkTree(srcDir));
}

CError CFolderCopy::WalkTree(const CPath& srcDir) {
  CError walked =
      CLocalFileSystem::Instance().EnumerateDirectory(srcDir, "*", *this);
  if (walked != Tern::Failure) LogStatus(walked, "Walk source folder");
  return walked;
}

bool CFolderCopy::CopyFile(const CPath& file) {
  LogText("copying %s file\n", mLabel.Chars());
  CStr name;
  CPath srcDir;
  if (!LogStatus(file.GetComponentString(CPath::ctFile, name),
                 "GetComponent") ||
      !LogStatus(file.GetComponent(CPath::ctDir, srcDir), "GetComponent"))
    return false;
  return CopyOneFile(name.Chars(), srcDir, mDestDir, mContext.installDirClaim);
}

CError CFolderCopy::Visit(Tern::CFileSystem&, const CPath& entry, CError type) {
  if (type != Tern::S_FSIsDirectory)
    return CopyFile(entry) ? Tern::Ok : Tern::Failure;
  CStr name;
  CPath destSub = mDestDir;
  CError err = entry.GetComponentString(CPath::ctFile, name);
  if (Tern::Succeeded(err)) err = destSub.AppendComponent(name.Chars());
  if (!LogStatus(err, "Form destination subdirectory")) return Tern::Failure;
  CStr subLabel = mLabel;
  subLabel += " subdirectory";
  if (!CreateInstallDirectory(mContext, subLabel.Chars(), destSub))
    return Tern::Failure;
  CFolderCopy sub(mContext, destSub, mLabel.Chars());
  return sub.WalkTree(entry);
}

}  // namespace Zendra
