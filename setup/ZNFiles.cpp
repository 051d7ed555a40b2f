#include "ZNFiles.h"

#include "InstallLog.h"
#include "Setup.h"
#include "TStr.h"
#include "ZNComponents.h"
#include "ZNVisitors.h"

namespace Zendra {

using Tern::CLocalFileSystem;

const CSubfolderStep cSubfolderSteps[3] = {
    {"Installing Speech Rule Files", "Rules", "Speech Rules",
     "Unable to install speech rules"},
    {"Installing Microsoft Office Support Files", "Office Support",
     "Office Support", "Unable to install Office Support files"},
    {"Installing LibLouis Files", "LibLouis/Tables", "LibLouis Tables",
     "Unable to install liblouis tables"},
};

const char* const cExtraFiles[4] = {"Setup.exe", "VersionCheck.exe",
                                    "About.gif", "Zendra.ovc"};

bool CopyOneFile(CZendraSetupApp&, const char* name, const CPath& srcDir,
                 const CPath& destDir) {
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
  return LogStatus(CLocalFileSystem::Instance().Copy(src, dest, true),
                   "Copying file");
}

bool InstallMainFiles(CZendraSetupApp& app) {
  bool allCopied = true;
  for (const char* name : cComponentFiles) {
    LogText("Installing file: '%s'\n", name);
    if (!app.CheckStep(CopyOneFile(app, name, app.SetupDir(), app.InstallDir()),
                       name))
      allCopied = false;
  }
  return allCopied;
}

namespace {

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

}  // namespace

bool InstallSubfolder(CZendraSetupApp& app, const CSubfolderStep& step) {
  CLogBlock block(step.startLine);
  CPath src, dest;
  if (!FormSubfolder(app.SetupDir(), step.subfolder, step.label, false, src) ||
      !FormSubfolder(app.InstallDir(), step.subfolder, step.label, true, dest))
    return false;
  CZendraDirVisitor walker(app, dest, step.label);
  return walker.Walk(src);
}

bool InstallExtraFiles(CZendraSetupApp& app) {
  bool allCopied = true;
  for (const char* name : cExtraFiles)
    allCopied =
        CopyOneFile(app, name, app.SetupDir(), app.InstallDir()) && allCopied;
  return allCopied;
}

}  // namespace Zendra
