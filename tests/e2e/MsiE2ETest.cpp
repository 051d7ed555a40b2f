// The Windows Installer package of the sample product, and one of a release
// without a font, run as deployment tools run them: msiexec /qn, logged.
#include <windows.h>

#include <string>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "OfficeTestSupport.h"
#include "Residue.h"
#include "TestSupport.h"

using namespace E2E;
using ActionsTest::Contains;
using ActionsTest::FileExists;
using ActionsTest::ReadText;
using TestSupport::ArgValue;
using TestSupport::WindowsPath;

namespace {

const std::string cWork = "C:\\ZendraE2E\\";
const char cPackageKey[] = "SOFTWARE\\Orvane\\OVZN4";

// msiexec with `arguments` and a verbose log `logName` in the work folder:
// its exit code and the log's text.
std::pair<int, std::string> Msiexec(const std::string& arguments,
                                    const std::string& logName) {
  TestSupport::ChildProcess msiexec(
      "C:\\windows\\system32\\msiexec.exe",
      arguments + " /qn /l*v \"" + cWork + logName + "\"");
  const int exitCode = msiexec.WaitForExit(180000);
  std::string log;  // UTF-16 as msiexec writes it; the text is ASCII
  for (char c : ReadText(cWork + logName))
    if (c) log += c;
  return {exitCode, log};
}

// The products Add/Remove Programs lists whose name holds "Zendra".
int ZendraEntriesListed() {
  TestSupport::ChildProcess list(
      "C:\\windows\\system32\\cmd.exe",
      "/c uninstaller --list > " + cWork + "programs.txt");
  list.WaitForExit(60000);
  return ActionsTest::Count(ReadText(cWork + "programs.txt"), "Zendra");
}

}  // namespace

TEST(Msi, DeployedRepairedAndRemovedAsDeploymentToolsDo) {
  MakeOffice();
  ActionsTest::InstallBrowserStandIn();
  SourceFolder work("");
  ASSERT_TRUE(ActionsTest::CopyInto(WindowsPath(ArgValue("sample-msi")),
                                    cWork + "Zendra.msi"));
  ASSERT_TRUE(ActionsTest::CopyInto(
      WindowsPath(ArgValue("msi-fixtures")) + "\\Zendra-no-font.msi",
      cWork + "Zendra-no-font.msi"));
  const Residue::Snapshot before = Residue::Take();

  // A release that lacks a font: Setup refuses, and so does the package,
  // which leaves nothing registered.
  auto [failed, failedLog] =
      Msiexec("/i " + cWork + "Zendra-no-font.msi", "no-font.log");
  EXPECT_NE(0, failed);
  EXPECT_TRUE(Contains(failedLog,
                       "-s -i ended with exit code 1 (exitFailure: a step "
                       "failed, or nothing could be done; Setup's log says "
                       "which); Setup's log: C:\\users\\"))
      << failedLog;
  EXPECT_FALSE(FileExists(cInstallDir + "\\Zendra.dll"));
  EXPECT_EQ(0, ZendraEntriesListed());

  // The install: the machine as Setup.exe -s -i leaves it, one entry.
  auto [installed, installLog] =
      Msiexec("/i " + cWork + "Zendra.msi NOVERSIONCHECK=1", "install.log");
  EXPECT_EQ(0, installed) << installLog;
  EXPECT_TRUE(Contains(installLog,
                       "Setup.exe\" -s -i -noversioncheck ended with "
                       "exit code 0 (exitOk: done)"));
  EXPECT_EQ(cInstallDir + "\\Zendra.dll",
            Reg(HKEY_CLASSES_ROOT,
                std::string(cProductClass) + "\\InprocServer32", nullptr));
  EXPECT_EQ(1, ZendraEntriesListed());
  EXPECT_TRUE(FileExists(ActionsTest::SystemFontFile("lattice.ttf")));
  EXPECT_EQ("0", Reg(HKEY_LOCAL_MACHINE, cPackageKey, "DoVersionChecks"));
  EXPECT_TRUE(
      Contains(Reg(HKEY_LOCAL_MACHINE, cPackageKey, "MsiProductCode"), "{"));
  // Each user who signs in later gets the install's part for the user.
  EXPECT_TRUE(Contains(Reg(HKEY_LOCAL_MACHINE,
                           "Software\\Microsoft\\Active Setup\\Installed "
                           "Components\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}",
                           "StubPath"),
                       cInstallDir + "\\ZendraPanel.cpl\" /t REG_DWORD"));

  // Setup.exe leaves the removal to the package; a repair runs its install.
  EXPECT_TRUE(Ended(RunSetup(cInstallDir + "\\Setup.exe", "-s -u"), 1,
                    {"was installed by its Windows Installer package {"}));
  EXPECT_TRUE(FileExists(cInstallDir + "\\Zendra.dll"));
  // (As msiexec /fa, which Wine's msiexec answers with 1605.)
  auto [repaired, repairLog] =
      Msiexec("/i " + cWork + "Zendra.msi REINSTALL=ALL REINSTALLMODE=amus",
              "repair.log");
  EXPECT_EQ(0, repaired);
  EXPECT_TRUE(Contains(repairLog, "-s -i ended with exit code 0"));

  // The removal: Setup.exe -s -u, then the package's own files; what stays
  // is what a removal keeps.
  const std::string code =
      Reg(HKEY_LOCAL_MACHINE, cPackageKey, "MsiProductCode");
  auto [removed, removalLog] = Msiexec("/x " + code, "removal.log");
  EXPECT_EQ(0, removed) << removalLog;
  EXPECT_TRUE(Contains(removalLog, "Setup.exe\" -s -u ended with exit code 0"));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_EQ(0, ZendraEntriesListed());
  for (const std::string& line : Residue::Unexpected(before, Residue::Take()))
    ADD_FAILURE() << line;

  // A later Zendra, installed by its Setup.exe: the earlier package fails
  // with Setup's reason, and the installed copy stays as it was.
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(Ended(RunSetup(source.SetupExe(), "-s -i -nofonts"), 0));
  ASSERT_TRUE(SetReg(HKEY_CLASSES_ROOT,
                     std::string(cProductClass) + "\\InstalledVersion", nullptr,
                     "9.99"));
  auto [refused, refusedLog] =
      Msiexec("/i " + cWork + "Zendra.msi", "older.log");
  EXPECT_NE(0, refused);
  EXPECT_TRUE(Contains(refusedLog,
                       "exit code 5 (exitNewerVersion: A newer "
                       "version of Zendra is already installed"));
  EXPECT_EQ(1, ZendraEntriesListed());  // Setup's own entry
  EXPECT_TRUE(FileExists(cInstallDir + "\\Zendra.dll"));
}
