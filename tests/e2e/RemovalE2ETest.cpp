// Installs and removals on a machine with Word and PowerPoint: from a
// read-only source, after an install killed halfway, from a copy started
// elsewhere, and on a machine that changed since the install.
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "OfficeTestSupport.h"
#include "TestSupport.h"

using namespace E2E;
namespace fs = std::filesystem;
using ActionsTest::Count;
using ActionsTest::FileExists;
using ActionsTest::ReadText;
using ActionsTest::SystemFontFile;
using ActionsTest::WriteText;
using TestSupport::ChildProcess;

namespace {

const std::string cInstalledSetup = cInstallDir + "\\Setup.exe";
const std::string cTemplate =
    cWordFolder + "\\Startup\\" + ActionsTest::cWordTemplate;

std::vector<std::string> FilesBelow(const std::string& dir) {
  std::vector<std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(dir))
    if (entry.is_regular_file()) files.push_back(entry.path().string());
  return files;
}

// The fonts in the product's fonts folder and the system's.
std::vector<std::string> FontFiles() {
  std::vector<std::string> files = FilesBelow(cFontsDir);
  for (std::size_t i = 0, n = files.size(); i < n; ++i)
    files.push_back(SystemFontFile(fs::path(files[i]).filename().string()));
  return files;
}

void MakeReadOnly(const std::string& path) {
  ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
}

bool ClassExists() {
  return ActionsTest::KeyExists(HKEY_CLASSES_ROOT, cProductClass);
}

}  // namespace

TEST(Removal, AfterAReadOnlySourceAndOnAMachineThatChanged) {
  MakeOffice();
  SourceFolder readOnly("Read-only");
  readOnly.Standard();
  for (const std::string& file : FilesBelow(readOnly.Dir())) MakeReadOnly(file);

  // What Setup copies from a read-only source is writable.
  ASSERT_TRUE(Ended(RunSetup(readOnly.SetupExe(), "-s -i"), 0));
  std::vector<std::string> copies = FilesBelow(cInstallDir);
  for (const std::string& font : FontFiles()) copies.push_back(font);
  copies.push_back(cTemplate);
  for (const std::string& copy : copies)  // there, and not read-only
    EXPECT_FALSE(::GetFileAttributesA(copy.c_str()) & FILE_ATTRIBUTE_READONLY)
        << copy;

  // What it deletes goes even when read-only: fonts, the Word template.
  for (const std::string& font : FontFiles()) MakeReadOnly(font);
  EXPECT_TRUE(Ended(RunSetup(readOnly.SetupExe(), "-s -i"), 0,
                    {"Installation successful!"},
                    {"Could not delete font file"}));
  EXPECT_FALSE(FileExists(SystemFontFile("lattice_01.ttf")));
  MakeReadOnly(cTemplate);
  EXPECT_TRUE(Ended(RunSetup(cInstalledSetup, "-s -u"), 0,
                    {"Zendra removed successfully."}, {"result = failure"}));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));
  EXPECT_FALSE(FileExists(cTemplate));
  EXPECT_FALSE(FileExists(TempDir() + "Zendra.ovc"));

  // An install killed while copying the components (past the fonts folder
  // the removal kept) is completed by the next; nothing is added twice.
  SourceFolder source;
  source.Standard();
  {
    ChildProcess killed(source.SetupExe(), "-s -i");
    for (int i = 0; i < 600 && !FileExists(cInstallDir + "\\Zendra.dll"); ++i)
      ::Sleep(10);
    ASSERT_TRUE(FileExists(cInstallDir + "\\Zendra.dll"));
  }  // ended here
  ASSERT_TRUE(Ended(RunSetup(source.SetupExe(), "-s -i"), 0,
                    {"Installation successful!"}));
  EXPECT_FALSE(FileExists(SystemFontFile("lattice_01.ttf")));
  EXPECT_FALSE(FileExists(SystemFontFile("qxextra_01.ttf")));
  EXPECT_EQ(1, ProductTokens(cUserAgentKey));
  EXPECT_EQ(ReadText(source.Dir() + "\\About.gif"),
            ReadText(cInstallDir + "\\About.gif"));

  // A copy of Setup.exe beside the user's work removes nothing: a removal
  // empties the folder it runs from.
  SourceFolder downloads("Downloads");
  const std::string thesis = downloads.Dir() + "\\thesis.docx";
  WriteText(thesis, "the user's work");
  ASSERT_TRUE(ActionsTest::CopyInto(cInstalledSetup, downloads.SetupExe()));
  ASSERT_TRUE(ActionsTest::CopyInto(cInstallDir + "\\Zendra.ovc",
                                    downloads.Dir() + "\\Zendra.ovc"));
  EXPECT_TRUE(Ended(RunSetup(downloads.SetupExe(), "-s -verbose -u"), 1,
                    {"Failure: Setup.exe runs from '" + downloads.Dir() +
                         "', not from Zendra's installed folder '" +
                         cInstallDir + "': nothing is removed\r\n",
                     "Zendra removal failed!", "Dumping global variables"}));
  EXPECT_EQ("the user's work", ReadText(thesis));
  EXPECT_TRUE(FileExists(downloads.SetupExe()));
  EXPECT_TRUE(ActionsTest::KeyExists(HKEY_LOCAL_MACHINE, cUninstallKey));
  EXPECT_TRUE(ClassExists());

  // A component held open, two missing, one damaged, a read-only file, the
  // user's files, no configuration; a stale batch file, an earlier
  // removal's configuration (kept: no newer one), a stuck add-in key. Each
  // failure counts, what is gone already doesn't, the rest goes all the
  // same; what is held goes at the next restart.
  const std::string bho = cInstallDir + "\\ZendraBHO.dll";
  const std::string stuck = ActionsTest::OfficeKey("16.0", "PowerPoint") +
                            "\\AddIns\\Zendra 4 Commands for PowerPoint "
                            "(32-bit)\\Stuck";
  HANDLE held = ::CreateFileA(bho.c_str(), GENERIC_READ, 0, nullptr,
                              OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);
  for (const char* gone : {"ZendraMimer.dll", "ZendraPanel.cpl", "Zendra.ovc"})
    ASSERT_TRUE(::DeleteFileA((cInstallDir + "\\" + gone).c_str())) << gone;
  WriteText(cInstallDir + "\\ZendraBraille.dll", "not a library");
  const std::string rules = cInstallDir + "\\Rules\\Rules.txt";
  MakeReadOnly(rules);
  ActionsTest::MakeFolder(cInstallDir + "\\User Files");
  WriteText(cInstallDir + "\\User Files\\mine.txt", "mine");
  WriteText(TempDir() + "OVDELSU.BAT", "echo stale\r\n");
  const std::string olderCopy = TempDir() + "Zendra.ovc";
  WriteText(olderCopy, "an older removal's copy");
  ASSERT_TRUE(
      ActionsTest::CreateKey(HKEY_LOCAL_MACHINE, stuck, KEY_WOW64_64KEY));
  const Outcome run = RunSetup(cInstalledSetup, "-s -u");
  EXPECT_TRUE(Ended(
      run, 1,
      {"Failure: Unregister ZendraBHO.dll\r\n",
       "Could not delete '" + bho + "'",
       "'" + bho +
           "' is deleted when Windows restarts, which finishes the "
           "removal.\r\n",
       "Unregister ZendraMimer.dll: already gone.\r\n",
       "Failure: Unregister Braille Library\r\n", "): Move Zendra.ovc\r\n",
       "Failure: Unable to remove PowerPoint Macros\r\n",
       "Success: Create batch file\r\n", "Zendra removal failed!"},
      {"Delete Zendra.ovc", "Delete the older Zendra.ovc"}));
  EXPECT_EQ(0, Count(run.log, "Failure (E_NotFound, 0x80000202): Load DLL"));
  EXPECT_TRUE(WaitUntilGone(cInstalledSetup));
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));
  EXPECT_EQ("an older removal's copy", ReadText(olderCopy));
  EXPECT_FALSE(ClassExists());
  EXPECT_FALSE(ActionsTest::KeyExists(HKEY_LOCAL_MACHINE, cUninstallKey));
  for (const std::string& gone : {rules, cInstallDir + "\\Zendra.dll",
                                  cInstallDir + "\\User Files\\mine.txt"})
    EXPECT_FALSE(FileExists(gone)) << gone;
  EXPECT_TRUE(FileExists(bho));
  EXPECT_TRUE(FileExists(thesis));
  ::CloseHandle(held);

  // An install before that restart takes the folder back: the restart
  // deletes nothing of it.
  ASSERT_EQ(ERROR_SUCCESS, ::RegDeleteKeyExA(HKEY_LOCAL_MACHINE, stuck.c_str(),
                                             KEY_WOW64_64KEY, 0));
  for (int i = 0; i < 500; ++i)
    WriteText(source.Dir() + "\\Rules\\" + std::to_string(i) + ".txt", "x");
  ASSERT_TRUE(Ended(RunSetup(source.SetupExe(), "-s -i"), 0,
                    {"Cancelled the deletion at restart of '" + bho + "'."}));
  Restart();
  EXPECT_TRUE(FileExists(bho));

  // A removal killed while it deletes files: the next finishes the job, and
  // what the first removed already is no failure.
  {
    ChildProcess killed(cInstalledSetup, "-s -u");
    for (int i = 0; i < 3000 && FileExists(cInstallDir + "\\Zendra.ovc"); ++i)
      ::Sleep(5);
    ASSERT_FALSE(FileExists(cInstallDir + "\\Zendra.ovc"));
  }  // ended here
  // Started through the folder's short name, it is still the installed one.
  char shortSetup[MAX_PATH] = "";
  ASSERT_NE(0u,
            ::GetShortPathNameA(cInstalledSetup.c_str(), shortSetup, MAX_PATH));
  ASSERT_EQ(std::string::npos, std::string(shortSetup).find("Program Files"));
  EXPECT_TRUE(Ended(RunFromLinux(shortSetup, "-s -u", "Zendra Uninstall.log"),
                    0,
                    {"Delete Zendra registry key and subkeys: already gone.",
                     "Delete XMLNamespace registry value.: already gone.",
                     "Zendra removed successfully."}));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_FALSE(ClassExists());

  // Letters outside ASCII in Program Files and in the temporary folder:
  // cmd.exe reads the batch file in another code page than Setup's, and
  // still deletes what Setup means.
  const char cVersionKey[] = "Software\\Microsoft\\Windows\\CurrentVersion";
  const std::string programFiles =
      Reg(HKEY_LOCAL_MACHINE, cVersionKey, "ProgramFilesDir");
  const std::string accented = "C:\\Programme \xC4mter";
  ASSERT_TRUE(
      SetReg(HKEY_LOCAL_MACHINE, cVersionKey, "ProgramFilesDir", accented));
  TempFolderSetting temp(L"C:\\Temp Files\\J\u00fcrgen \u00c4mter");
  ASSERT_TRUE(Ended(RunSetup(source.SetupExe(), "-s -i"), 0));
  const std::string installed = accented + "\\Orvane\\Zendra";
  EXPECT_TRUE(Ended(RunSetup(installed + "\\Setup.exe", "-s -u"), 0,
                    {"Zendra removed successfully."}));
  EXPECT_TRUE(WaitUntilGone(installed));
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));
  EXPECT_FALSE(ActionsTest::KeyExists(HKEY_LOCAL_MACHINE, cUninstallKey));
  ASSERT_TRUE(
      SetReg(HKEY_LOCAL_MACHINE, cVersionKey, "ProgramFilesDir", programFiles));
}
