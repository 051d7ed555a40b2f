// A real removal after a real install, run as a user would, each case in a
// fresh prefix: what is gone afterwards, what stays, what the log says, and
// how the removal copes with a machine that is not as the install left it.
#include <windows.h>

#include <string>

#include "ActionsTestSupport.h"
#include "FileTestSupport.h"
#include "Harness.h"
#include "OfficeTestSupport.h"
#include "Residue.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace E2E;
using ActionsTest::Contains;
using ActionsTest::Count;
using ActionsTest::FileExists;
using ActionsTest::ReadText;
using TestSupport::ChildProcess;

namespace {

const std::string cInstalledSetup = cInstallDir + "\\Setup.exe";
const char cUninstallLog[] = "Zendra Uninstall.log";
const std::string cWordStartup = cWordFolder + "\\Startup";

bool KeyExists32(HKEY root, const std::string& key) {
  return ActionsTest::KeyExists(root, key, KEY_WOW64_32KEY);
}

int RunInstalledSetup(const std::string& arguments) {
  ChildProcess setup(cInstalledSetup, arguments);
  return setup.WaitForExit(60000);
}

void MakeOffice() {
  ActionsTest::MakeWordFolder(cWordFolder);
  ActionsTest::SetInstallRoot("16.0", "Word", cWordFolder + "\\");
  ASSERT_TRUE(ActionsTest::CreateKey(
      HKEY_LOCAL_MACHINE,
      ActionsTest::OfficeKey("16.0", "PowerPoint") + "\\InstallRoot",
      KEY_WOW64_32KEY));
}

void Install(const SourceFolder& source) {
  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  ASSERT_TRUE(FileExists(cInstalledSetup));
}

}  // namespace

TEST(RealRemoval, RemovalUndoesTheInstallAndDeletesItself) {
  SourceFolder source;
  source.Standard();
  MakeOffice();
  Install(source);
  ASSERT_TRUE(FileExists(std::string(cWordStartup) +
                         "\\Zendra 4 Commands for Word (32 bit).dotm"));
  const std::string olderCopy = TempDir() + "Zendra.ovc";
  ActionsTest::WriteText(olderCopy, "an older removal's copy");
  ::SetFileAttributesA(olderCopy.c_str(), FILE_ATTRIBUTE_READONLY);

  EXPECT_EQ(0, RunInstalledSetup("-s -u"));
  EXPECT_TRUE(WaitUntilGone(cInstallDir)) << "the install folder stays";
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));

  const std::string log = ReadLog(cUninstallLog);
  EXPECT_TRUE(Contains(log, "Zendra removed successfully.")) << log;
  EXPECT_EQ(0, Count(log, "Failure"));
  EXPECT_TRUE(Contains(log, "Success: Create batch file\r\n"));
  EXPECT_TRUE(Contains(log, "Success: Write batch file\r\n"));
  EXPECT_TRUE(Contains(log,
                       "Success: Run batch file to delete Setup and "
                       "install directory\r\n"));
  EXPECT_TRUE(Contains(log, "The OS is a 64 bit OS\r\n"));
  EXPECT_TRUE(
      Contains(log,
               "Success (Ok, 0x00000200): Delete the older Zendra.ovc in the "
               "temporary folder\r\n"));
  EXPECT_FALSE(FileExists(olderCopy));

  EXPECT_FALSE(KeyExists32(HKEY_CLASSES_ROOT, cProductClass));
  EXPECT_FALSE(KeyExists32(HKEY_LOCAL_MACHINE, cUninstallKey));
  EXPECT_FALSE(ActionsTest::ReadValue(
                   HKEY_LOCAL_MACHINE,
                   "SOFTWARE\\Microsoft\\Internet Explorer\\XMLNamespace",
                   "http://www.w3.org/1998/Math/MathML", KEY_WOW64_32KEY)
                   .found);
  EXPECT_FALSE(FileExists(std::string(cWordStartup) +
                          "\\Zendra 4 Commands for Word (32 bit).dotm"));
  EXPECT_FALSE(ActionsTest::KeyExists(
      HKEY_LOCAL_MACHINE,
      ActionsTest::OfficeKey("16.0", "PowerPoint") +
          "\\AddIns\\Zendra 4 Commands for PowerPoint (32-bit)",
      KEY_WOW64_64KEY));
  EXPECT_TRUE(ActionsTest::ValueNames(
                  HKEY_LOCAL_MACHINE,
                  "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet "
                  "Settings\\User Agent\\Post Platform",
                  KEY_WOW64_32KEY)
                  .empty());
  EXPECT_FALSE(ActionsTest::ReadValue(HKEY_LOCAL_MACHINE,
                                      "SOFTWARE\\Orvane\\OVZN4", "RO_VendorId",
                                      KEY_WOW64_32KEY)
                   .found);
  // The fonts stay: other programs' documents may use them.
  EXPECT_TRUE(FileExists(ActionsTest::SystemFontFile("lattice.ttf")));
}

TEST(RealRemoval, WinesUninstallerRunsTheUninstallString) {
  SourceFolder source;
  source.Standard();
  Install(source);
  ChildProcess uninstaller("C:\\windows\\system32\\uninstaller.exe",
                           "--remove {5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}");
  // The removal it starts is interactive: its closing message is answered.
  HWND box = TestSupport::WaitForAnyWindow("Zendra Setup", 60000);
  ASSERT_NE(nullptr, box);
  EXPECT_EQ("Zendra removed successfully.", TestSupport::MessageBoxText(box));
  TestSupport::ClickControl(box, IDOK);
  EXPECT_EQ(0, uninstaller.WaitForExit(60000));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_FALSE(KeyExists32(HKEY_CLASSES_ROOT, cProductClass));
  const std::string listing = TempDir() + "uninstaller.txt";
  ChildProcess list("C:\\windows\\system32\\cmd.exe",
                    "/c uninstaller --list > \"" + listing + "\"");
  list.WaitForExit(60000);
  EXPECT_FALSE(Contains(ReadText(listing), "Zendra"));
}

// Setup.exe started anywhere but the installed folder (a copy in the
// user's downloads, beside the user's own work) removes nothing: a removal
// empties the folder it runs from. Put back into the installed folder that
// someone emptied, it removes the rest and counts what was missing.
TEST(RealRemoval, OnlyTheInstalledFolderRemovesEvenWhenItWasEmptied) {
  SourceFolder source;
  source.Standard();
  Install(source);
  SourceFolder downloads("Downloads");
  const std::string thesis = downloads.Dir() + "\\thesis.docx";
  ActionsTest::WriteText(thesis, "the user's work");
  ASSERT_TRUE(ActionsTest::CopyInto(cInstalledSetup, downloads.SetupExe()));
  ASSERT_TRUE(ActionsTest::CopyInto(cInstallDir + "\\Zendra.ovc",
                                    downloads.Dir() + "\\Zendra.ovc"));

  EXPECT_EQ(1, RunSetup(downloads, "-s -u"));
  std::string log = ReadLog(cUninstallLog);
  EXPECT_TRUE(Contains(log, "Failure: Setup.exe runs from '" + downloads.Dir() +
                                "', not from Zendra's installed folder '" +
                                cInstallDir + "': nothing is removed\r\n"))
      << log;
  EXPECT_TRUE(Contains(log, "Zendra removal failed!"));
  EXPECT_EQ("the user's work", ReadText(thesis));
  EXPECT_TRUE(FileExists(downloads.SetupExe()));
  EXPECT_TRUE(KeyExists32(HKEY_LOCAL_MACHINE, cUninstallKey));
  EXPECT_TRUE(KeyExists32(HKEY_CLASSES_ROOT, cProductClass));

  TestSupport::RemoveTree(cInstallDir);
  ActionsTest::MakeFolder(cInstallDir);
  ASSERT_TRUE(ActionsTest::CopyInto(downloads.SetupExe(), cInstalledSetup));
  EXPECT_EQ(1, RunInstalledSetup("-s -u"));
  log = ReadLog(cUninstallLog);
  EXPECT_EQ(5, Count(log, "Failure (E_NotFound, 0x80000202): Load DLL")) << log;
  EXPECT_TRUE(Contains(log, "Zendra removal failed!"));
  EXPECT_FALSE(KeyExists32(HKEY_LOCAL_MACHINE, cUninstallKey));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_TRUE(FileExists(thesis));
}

TEST(RealRemoval, AnInteractiveRemovalSaysSo) {
  SourceFolder source;
  source.Standard();
  Install(source);
  ChildProcess setup(cInstalledSetup, "-u");
  HWND box = setup.WaitForDialog("Zendra Setup", 60000);
  ASSERT_NE(nullptr, box);
  EXPECT_EQ("Zendra removed successfully.", TestSupport::MessageBoxText(box));
  SaveScreenshot(box, "removed");
  TestSupport::ClickControl(box, IDOK);
  EXPECT_EQ(0, setup.WaitForExit(60000));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
}

TEST(RealRemoval, LeftoversAndMissingFilesAreHandledAndCounted) {
  SourceFolder source;
  source.Standard();
  MakeOffice();
  Install(source);
  // Files the install never put there, no configuration file, a stale
  // batch file, and a component that can no longer unregister.
  ActionsTest::MakeFolder(cInstallDir + "\\User Files");
  ActionsTest::WriteText(cInstallDir + "\\User Files\\mine.txt", "mine");
  ASSERT_TRUE(::DeleteFileA((cInstallDir + "\\Zendra.ovc").c_str()));
  ActionsTest::WriteText(TempDir() + "OVDELSU.BAT", "echo stale\r\n");
  ActionsTest::WriteText(cInstallDir + "\\ZendraBraille.dll", "not a library");
  // An earlier removal's configuration, which must not go without a newer
  // one to take its place; a PowerPoint add-in key that can't be deleted.
  const std::string olderCopy = TempDir() + "Zendra.ovc";
  ActionsTest::WriteText(olderCopy, "an older removal's copy");
  const std::string addIn =
      ActionsTest::OfficeKey("16.0", "PowerPoint") +
      "\\AddIns\\Zendra 4 Commands for PowerPoint (32-bit)";
  ASSERT_TRUE(ActionsTest::CreateKey(HKEY_LOCAL_MACHINE, addIn + "\\Stuck",
                                     KEY_WOW64_64KEY));

  EXPECT_EQ(1, RunInstalledSetup("-s -u"));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));
  const std::string log = ReadLog(cUninstallLog);
  EXPECT_TRUE(Contains(log, "): Move Zendra.ovc\r\n")) << log;
  EXPECT_FALSE(Contains(log, "Delete Zendra.ovc"));
  EXPECT_FALSE(Contains(log, "Delete the older Zendra.ovc"));
  EXPECT_EQ("an older removal's copy", ReadText(olderCopy));
  EXPECT_TRUE(Contains(log, "Failure: Unable to remove PowerPoint Macros\r\n"));
  EXPECT_TRUE(Contains(log, "Failure: Unregister Braille Library\r\n"));
  EXPECT_TRUE(Contains(log, "Success: Create batch file\r\n"));
  EXPECT_TRUE(Contains(log, "Zendra removal failed!"));
  EXPECT_TRUE(Contains(log, "Exit code = 'exitFailure' (1)."));
  // The other components went all the same.
  EXPECT_FALSE(KeyExists32(HKEY_CLASSES_ROOT, cProductClass));
}

TEST(RealRemoval, RemovalsShareOneLog) {
  WriteLog(cUninstallLog, "from an earlier removal");
  SourceFolder source;
  source.Standard();
  Install(source);
  EXPECT_EQ(0, RunInstalledSetup("-s -u"));
  // A second removal right after the first, from the source folder: with
  // nothing installed, only the install folder could remove.
  EXPECT_EQ(1, RunSetup(source, "-s -verbose -u"));
  const std::string log = ReadLog(cUninstallLog);
  EXPECT_FALSE(Contains(log, "from an earlier removal"));
  EXPECT_EQ(1, Count(log, "Zendra log started"));
  EXPECT_TRUE(Contains(log, "Dumping global variables")) << log;
  EXPECT_TRUE(Contains(log, "Setup.exe runs from '" + source.Dir() +
                                "', not from Zendra's installed folder '" +
                                cInstallDir + "'"));
  EXPECT_TRUE(Contains(log, "Zendra removal failed!"));
  EXPECT_EQ(1u, LogFiles().size() - 1) << "one install log, one removal log";
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_TRUE(FileExists(source.SetupExe()));
}

TEST(RealRemoval, ProtocolHandlerRemovalWithoutTheProductDeletesItsFolder) {
  SourceFolder source;
  source.Standard();
  EXPECT_EQ(0, RunSetup(source, "-s -uph"));
  EXPECT_TRUE(WaitUntilGone(source.Dir()));
  const std::string log = ReadLog(cUninstallLog);
  EXPECT_TRUE(Contains(log, "Deleting contents of directory: " + source.Dir()))
      << log;
  EXPECT_TRUE(Contains(log, "Protocol handler removed successfully."));
  EXPECT_FALSE(Contains(log, "Start: Removing Setup"));
}

TEST(RealRemoval, InstallAndRemovalLeaveOnlyWhatTheyMeanTo) {
  SourceFolder source;
  source.Standard();
  MakeOffice();
  const Residue::Snapshot before = Residue::Take();
  Install(source);
  EXPECT_EQ(0, RunInstalledSetup("-s -u"));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));
  const Residue::Snapshot after = Residue::Take();
  for (const std::string& line : Residue::Unexpected(before, after))
    ADD_FAILURE() << line;
}
