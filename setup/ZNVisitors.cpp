#include "ZNVisitors.h"

#include "InstallLog.h"
#include "Setup.h"
#include "ZNFiles.h"

namespace Zendra {

using Tern::CLocalFileSystem;

bool CreateInstallDirectory(const char* label, const CPath& dir) {
  LogText("creating %s directory = '%s'\n", label,
          dir.OSToPathString().Chars());
  return LogStatus(CLocalFileSystem::Instance().CreateDirectoryPath(dir),
                   "Create directory.");
}

CZendraFileInstallVisitor::CZendraFileInstallVisitor(CZendraSetupApp& app,
                                                     const CPath& destDir,
                                                     const char* label)
    : mApp(app), mDestDir(destDir), mLabel(label) {}

bool CZendraFileInstallVisitor::VisitFile(const CPath& file) {
  LogText("copying %s file\n", mLabel.Chars());
  CStr name;
  CPath srcDir;
  if (!LogStatus(file.GetComponentString(CPath::ctFile, name),
                 "GetComponent") ||
      !LogStatus(file.GetComponent(CPath::ctDir, srcDir), "GetComponent"))
    return false;
  return CopyOneFile(mApp, name.Chars(), srcDir, mDestDir);
}

CZendraDirVisitor::CZendraDirVisitor(CZendraSetupApp& app, const CPath& destDir,
                                     const char* label)
    : mApp(app),
      mDestDir(destDir),
      mLabel(label),
      mFiles(app, destDir, label) {}

bool CZendraDirVisitor::Walk(const CPath& srcDir) {
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

CError CZendraDirVisitor::WalkTree(const CPath& srcDir) {
  CError walked =
      CLocalFileSystem::Instance().EnumerateDirectory(srcDir, "*", *this);
  if (walked != Tern::Failure) LogStatus(walked, "Walk source folder");
  return walked;
}

Tern::CError CZendraDirVisitor::Visit(Tern::CFileSystem& fs,
                                      const CPath& entry) {
  const CError type = fs.GetItemType(entry);
  if (type == Tern::S_FSIsFile)
    return mFiles.VisitFile(entry) ? Tern::Ok : Tern::Failure;
  if (type != Tern::S_FSIsDirectory) {
    LogStatus(type, "GetNodeType");
    return Tern::Failure;
  }
  CStr name;
  CPath destSub = mDestDir;
  CError err = entry.GetComponentString(CPath::ctFile, name);
  if (Tern::Succeeded(err)) err = destSub.AppendComponent(name.Chars());
  if (!LogStatus(err, "Form destination subdirectory")) return Tern::Failure;
  CStr subLabel = mLabel;
  subLabel += " subdirectory";
  if (!CreateInstallDirectory(subLabel.Chars(), destSub)) return Tern::Failure;
  CZendraDirVisitor sub(mApp, destSub, mLabel.Chars());
  return sub.WalkTree(entry);
}

}  // namespace Zendra
