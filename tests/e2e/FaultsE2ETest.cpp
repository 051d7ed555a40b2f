// A small disk that fills up (drive P:) and the product on read-only media
// (drive R:), met by installs and removals one after another.
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "TestSupport.h"

using namespace E2E;
namespace fs = std::filesystem;
using ActionsTest::FileExists;

namespace {

const std::string cSmallDrive = "P:\\";
const std::string cMedia = "R:\\";

// Takes all but `keep` bytes of the small drive's free space.
void FillDrive(const std::string& junk, unsigned long long keep) {
  ULARGE_INTEGER free = {};
  ASSERT_TRUE(
      ::GetDiskFreeSpaceExA(cSmallDrive.c_str(), &free, nullptr, nullptr));
  std::ofstream(junk, std::ios::binary)
      << std::string(free.QuadPart - keep, 'x');
}

}  // namespace

TEST(Faults, ADiskThatFillsUpAndReadOnlyMedia) {
  if (::GetDriveTypeA(cSmallDrive.c_str()) == DRIVE_NO_ROOT_DIR ||
      ::GetDriveTypeA(cMedia.c_str()) == DRIVE_NO_ROOT_DIR)
    GTEST_SKIP() << "no drive P: or R: (run-fresh.sh mounts them as root)";
  SourceFolder source;
  source.Standard();

  // Program Files on the small drive, with room for half the product.
  const char cVersionKey[] = "Software\\Microsoft\\Windows\\CurrentVersion";
  const std::string programFiles =
      Reg(HKEY_LOCAL_MACHINE, cVersionKey, "ProgramFilesDir");
  ASSERT_TRUE(
      SetReg(HKEY_LOCAL_MACHINE, cVersionKey, "ProgramFilesDir", cSmallDrive));
  unsigned long long product = 0;
  for (const auto& entry : fs::recursive_directory_iterator(source.Dir()))
    product += entry.is_regular_file() ? entry.file_size() : 0;
  FillDrive(cSmallDrive + "junk.bin", product / 2);
  EXPECT_TRUE(Ended(RunSetup(source.SetupExe(), "-s -i"), 1,
                    {"): Copying file\r\n", "Installation failed!\r\n",
                     "Zendra installation failed!"}));
  ASSERT_TRUE(::DeleteFileA((cSmallDrive + "junk.bin").c_str()));
  EXPECT_TRUE(Ended(RunSetup(source.SetupExe(), "-s -i"), 0,
                    {"Installation successful!"}));
  const std::string installed = cSmallDrive + "Orvane\\Zendra";
  EXPECT_TRUE(FileExists(installed + "\\About.gif"));

  // A removal from the media (a drive's root) is not from the installed
  // folder: it touches nothing, not even a batch file's start. The
  // installed copy still removes.
  EXPECT_TRUE(Ended(RunSetup(cMedia + "Setup.exe", "-s -u"), 1,
                    {"Failure: Setup.exe runs from 'R:\\', not from Zendra's "
                     "installed folder '" +
                         installed + "': nothing is removed\r\n",
                     "Zendra removal failed!"},
                    {"Start: Remove"}));
  EXPECT_TRUE(FileExists(installed + "\\Setup.exe"));
  EXPECT_TRUE(Ended(RunSetup(installed + "\\Setup.exe", "-s -u"), 0));
  EXPECT_TRUE(WaitUntilGone(installed));

  // The temporary folder on the full drive: the log takes the last page,
  // the batch file's text and the configuration's copy can't be written.
  // What could not be written whole is deleted; Setup.exe, which only the
  // batch file can delete, stays, and the removal says it failed. Once
  // there is room, a second removal finishes.
  ASSERT_TRUE(
      SetReg(HKEY_LOCAL_MACHINE, cVersionKey, "ProgramFilesDir", programFiles));
  EXPECT_TRUE(Ended(RunSetup(cMedia + "Setup.exe", "-s -i"), 0));
  const std::string temp = cSmallDrive + "Temp\\";
  TempFolderSetting tempSetting(std::wstring(temp.begin(), temp.end()));
  FillDrive(cSmallDrive + "junk", 4096);
  // The log may end early: no footer to check.
  EXPECT_EQ(1, TestSupport::ChildProcess(cInstallDir + "\\Setup.exe", "-s -u")
                   .WaitForExit(60000));
  const std::string log = ActionsTest::ReadText(temp + "Zendra Uninstall.log");
  EXPECT_NE(std::string::npos, log.find("Failure: Write batch file\r\n"))
      << log;
  EXPECT_EQ(std::string::npos, log.find("Run batch file")) << log;
  for (const char* husk : {"OVDELSU.BAT", "Zendra.ovc"})
    EXPECT_FALSE(FileExists(temp + husk)) << husk;
  EXPECT_FALSE(FileExists(cInstallDir + "\\Zendra.dll"));
  EXPECT_TRUE(FileExists(cInstallDir + "\\Setup.exe"));
  EXPECT_FALSE(ActionsTest::KeyExists(HKEY_CLASSES_ROOT, cProductClass));
  ASSERT_TRUE(::DeleteFileA((cSmallDrive + "junk").c_str()));
  EXPECT_TRUE(Ended(RunSetup(cInstallDir + "\\Setup.exe", "-s -u"), 0,
                    {"Zendra removed successfully."}));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  for (const char* husk : {"OVDELSU.BAT", "Zendra.ovc"})
    EXPECT_TRUE(WaitUntilGone(temp + husk)) << husk;
}
