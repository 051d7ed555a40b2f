// Faults a real machine has, met by a real install or removal of the sample
// product, each case in a fresh prefix: a disk that fills up, an install
// that is killed, two runs at once, files held open or read-only. None may
// hang or crash, and a second run after the cause is gone must succeed.
#include <windows.h>
// After windows.h:
#include <tlhelp32.h>

#include <filesystem>
#include <string>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace E2E;
namespace fs = std::filesystem;
using ActionsTest::Contains;
using ActionsTest::Count;
using ActionsTest::FileExists;
using TestSupport::ChildProcess;

namespace {

const char cSmallDrive[] = "P:\\";

unsigned long long FreeBytes(const char* drive) {
  ULARGE_INTEGER free = {};
  return ::GetDiskFreeSpaceExA(drive, &free, nullptr, nullptr) ? free.QuadPart
                                                               : 0;
}

unsigned long long TreeBytes(const std::string& dir) {
  unsigned long long total = 0;
  for (const auto& entry : fs::recursive_directory_iterator(dir))
    if (entry.is_regular_file()) total += entry.file_size();
  return total;
}

// Takes all but `keep` bytes of the drive's free space.
void FillDrive(const std::string& junk, unsigned long long keep) {
  const unsigned long long take = FreeBytes(cSmallDrive) - keep;
  HANDLE file = ::CreateFileA(junk.c_str(), GENERIC_WRITE, 0, nullptr,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  std::string block(64 * 1024, 'x');
  for (unsigned long long written = 0; written < take;) {
    DWORD n = static_cast<DWORD>(
        std::min<unsigned long long>(block.size(), take - written));
    DWORD done = 0;
    if (!::WriteFile(file, block.data(), n, &done, nullptr) || done == 0) break;
    written += done;
  }
  ::CloseHandle(file);
}

bool ProcessRunning(const char* exeName) {
  HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  bool found = false;
  for (BOOL more = ::Process32First(snapshot, &entry); more && !found;
       more = ::Process32Next(snapshot, &entry))
    found = ::lstrcmpiA(entry.szExeFile, exeName) == 0;
  ::CloseHandle(snapshot);
  return found;
}

// Names and sizes of every file below `dir`.
std::string Listing(const std::string& dir) {
  std::string listing;
  for (const auto& entry : fs::recursive_directory_iterator(dir))
    listing += entry.path().string() + " " +
               std::to_string(entry.is_regular_file() ? entry.file_size() : 0) +
               "\n";
  return listing;
}

}  // namespace

TEST(Faults, TheDiskFillsDuringTheInstall) {
  if (::GetDriveTypeA(cSmallDrive) == DRIVE_NO_ROOT_DIR)
    GTEST_SKIP() << "no small drive P: (run-fresh.sh mounts it as root)";
  SourceFolder source;
  source.Standard();
  // Program Files is on the small drive, which has room for half the
  // product.
  ASSERT_TRUE(SetRegString(HKEY_LOCAL_MACHINE,
                           "Software\\Microsoft\\Windows\\CurrentVersion",
                           "ProgramFilesDir", cSmallDrive));
  const std::string junk = std::string(cSmallDrive) + "junk.bin";
  FillDrive(junk, TreeBytes(source.Dir()) / 2);

  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  const std::string log = ReadLog("Zendra Install 1.log");
  EXPECT_TRUE(Contains(log, "): Copying file\r\n")) << log;
  EXPECT_TRUE(Contains(log, "Installation failed!\r\n"));
  EXPECT_TRUE(Contains(log, "Zendra installation failed!"));
  std::string problem;
  EXPECT_TRUE(BlocksBalanced(log, &problem)) << problem;
  EXPECT_TRUE(Contains(Footer(log), "Exit code = 'exitFailure' (1)."));

  ASSERT_TRUE(::DeleteFileA(junk.c_str()));
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  EXPECT_TRUE(
      Contains(ReadLog("Zendra Install 2.log"), "Installation successful!"));
  EXPECT_TRUE(
      FileExists(std::string(cSmallDrive) + "Orvane\\Zendra\\About.gif"));
}

TEST(Faults, AKilledInstallIsCompletedByTheNext) {
  SourceFolder source;
  source.Standard();
  {
    ChildProcess setup(source.SetupExe(), "-s -i");
    // Killed once the components are being copied: the fonts are in.
    for (int i = 0; i < 600 && !FileExists(cInstallDir + "\\Zendra.dll"); ++i)
      ::Sleep(10);
    ASSERT_TRUE(FileExists(cInstallDir + "\\Zendra.dll"));
  }  // the child process is ended here
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  const std::string log = ReadLog("Zendra Install 2.log");
  EXPECT_TRUE(Contains(log, "Installation successful!")) << log;
  EXPECT_FALSE(FileExists(ActionsTest::SystemFontFile("lattice_01.ttf")));
  EXPECT_FALSE(FileExists(ActionsTest::SystemFontFile("qxextra_01.ttf")));
  int tokens = 0;
  for (const auto& name : ActionsTest::ValueNames(
           HKEY_LOCAL_MACHINE,
           "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet "
           "Settings\\User Agent\\Post Platform",
           KEY_WOW64_32KEY))
    tokens += Contains(name, "Zendra");
  EXPECT_EQ(1, tokens);
  EXPECT_EQ(ActionsTest::ReadText(source.Dir() + "\\About.gif"),
            ActionsTest::ReadText(cInstallDir + "\\About.gif"));
}

TEST(Faults, TwoRunsStartedTogether) {
  SourceFolder source;
  source.Standard();
  // A silent install of the sample takes a fraction of a second: on a busy
  // machine the second run could start after the first has ended. Three
  // thousand more support files keep the first copying for seconds, and the
  // second starts once the first owns the single-instance lock.
  for (int i = 0; i < 3000; ++i)
    ActionsTest::WriteText(
        source.Dir() + "\\Rules\\Extra " + std::to_string(i) + ".txt", "x");
  ChildProcess first(source.SetupExe(), "-s -i");
  ASSERT_TRUE(TestSupport::WaitForMutex("ORV:ZendraSetup"));
  ChildProcess second(source.SetupExe(), "-s -i");
  // The one that comes second says so even in a silent run, before it
  // knows it is one.
  HWND box = second.WaitForDialog("Zendra Setup", 60000);
  ASSERT_NE(nullptr, box);
  EXPECT_EQ("Zendra Setup is already running.",
            TestSupport::MessageBoxText(box));
  TestSupport::ClickControl(box, IDOK);
  EXPECT_EQ(0, second.WaitForExit(120000));
  EXPECT_EQ(0, first.WaitForExit(120000));
  // One of them installed; the other turned away before opening a log.
  EXPECT_TRUE(
      Contains(ReadLog("Zendra Install 1.log"), "Installation successful!"));
  EXPECT_FALSE(LogExists("Zendra Install 2.log"));
}

TEST(Faults, FilesHeldOpenOrReadOnlyDuringARemoval) {
  SourceFolder source;
  source.Standard();
  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  const std::string rules = cInstallDir + "\\Rules\\Rules.txt";
  ::SetFileAttributesA(rules.c_str(), FILE_ATTRIBUTE_READONLY);
  const std::string bho = cInstallDir + "\\ZendraBHO.dll";
  HANDLE held = ::CreateFileA(bho.c_str(), GENERIC_READ, 0, nullptr,
                              OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);

  ChildProcess removal(cInstallDir + "\\Setup.exe", "-s -u");
  EXPECT_EQ(1, removal.WaitForExit(60000));
  const std::string log = ReadLog("Zendra Uninstall.log");
  EXPECT_TRUE(Contains(log, "Failure: Unregister ZendraBHO.dll\r\n")) << log;
  EXPECT_TRUE(Contains(log, "Could not delete '" + bho + "'"));
  EXPECT_TRUE(Contains(log, "Zendra removal failed!"));
  // Everything else went, the read-only file too; Setup.exe goes once it
  // has ended.
  EXPECT_FALSE(FileExists(rules));
  EXPECT_FALSE(FileExists(cInstallDir + "\\Zendra.dll"));
  EXPECT_TRUE(WaitUntilGone(cInstallDir + "\\Setup.exe"));
  EXPECT_TRUE(FileExists(bho));
  ::CloseHandle(held);
}

// The product on a CD: it installs from there, but a removal started there
// is not started from the installed folder, so it touches nothing at all,
// on the drive or on the machine, and leaves no batch file running.
TEST(Faults, ARemovalStartedOnReadOnlyMediaTouchesNothing) {
  const std::string drive = "R:\\";
  if (::GetDriveTypeA(drive.c_str()) == DRIVE_NO_ROOT_DIR)
    GTEST_SKIP() << "no read-only drive R: (run-fresh.sh mounts it as root)";
  ActionsTest::InstallBrowserStandIn();
  ChildProcess install(drive + "Setup.exe", "-s -i");
  ASSERT_EQ(0, install.WaitForExit(60000));
  const std::string media = Listing(drive);

  ChildProcess removal(drive + "Setup.exe", "-s -u");
  EXPECT_EQ(1, removal.WaitForExit(60000));
  const std::string log = ReadLog("Zendra Uninstall.log");
  EXPECT_TRUE(Contains(log,
                       "Failure: Setup.exe runs from 'R:\\', not from "
                       "Zendra's installed folder '" +
                           cInstallDir + "': nothing is removed\r\n"))
      << log;
  EXPECT_TRUE(Contains(log, "Zendra removal failed!"));
  EXPECT_FALSE(Contains(log, "Start: Remove"));
  EXPECT_EQ(media, Listing(drive));
  EXPECT_TRUE(FileExists(cInstallDir + "\\Setup.exe"));
  EXPECT_FALSE(ProcessRunning("cmd.exe"));
  // The installed copy still removes itself.
  ChildProcess real(cInstallDir + "\\Setup.exe", "-s -u");
  EXPECT_EQ(0, real.WaitForExit(60000));
}

// The temporary folder on a nearly full disk: one page is left, which the
// log takes, so the batch file is made but its text can't be written. The
// removal is done all the same and the batch is still started (Wine can't
// start an empty batch file; Windows runs it, and it deletes nothing).
TEST(Faults, ABatchFileThatCannotBeWrittenIsStillStarted) {
  if (::GetDriveTypeA(cSmallDrive) == DRIVE_NO_ROOT_DIR)
    GTEST_SKIP() << "no small drive P: (run-fresh.sh mounts it as root)";
  SourceFolder source;
  source.Standard();
  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  const std::string temp = std::string(cSmallDrive) + "Temp";
  ASSERT_TRUE(::CreateDirectoryA(temp.c_str(), nullptr));
  ::SetEnvironmentVariableA("TEMP", temp.c_str());
  ::SetEnvironmentVariableA("TMP", temp.c_str());
  FillDrive(std::string(cSmallDrive) + "junk", 4096);

  ChildProcess removal(cInstallDir + "\\Setup.exe", "-s -u");
  removal.WaitForExit(60000);
  const std::string log = ReadLog("Zendra Uninstall.log");
  const std::size_t write = log.find("Failure: Write batch file\r\n");
  EXPECT_NE(std::string::npos, write) << log;
  EXPECT_NE(std::string::npos,
            log.find(": Run batch file to delete Setup and install directory",
                     write));
  EXPECT_FALSE(FileExists(cInstallDir + "\\Zendra.dll"));
  EXPECT_FALSE(ActionsTest::KeyExists(
      HKEY_CLASSES_ROOT, "CLSID\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}",
      KEY_WOW64_32KEY));
}
