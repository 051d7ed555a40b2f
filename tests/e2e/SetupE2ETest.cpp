// Setup.exe run as a user would, each case in a fresh Wine prefix with a
// real display: message boxes and dialogs are found, read and answered
// through their windows.
#include <windows.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "SetupResource.h"
#include "TestSupport.h"
#include "Version.h"

using namespace E2E;
using ActionsTest::Contains;
using ActionsTest::Count;
using TestSupport::ChildProcess;

namespace {

const char cAddRemoveText[] =
    "To remove Zendra, please use Add/Remove Programs in the Windows Control "
    "Panel.";
const char cIEKey[] = "SOFTWARE\\Microsoft\\Internet Explorer";
const char cClassKey[] = "CLSID\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";
const char cUserSettings[] = "SOFTWARE\\Orvane\\OVZN4";
const std::string cFirstInstallLog = "Zendra Install 1.log";

// Every log a case left must be well formed: balanced blocks, then the
// exit-code line and the error count.
void ExpectWellFormed(const std::string& name, int exitCode,
                      const char* exitName) {
  std::string log = ReadLog(name);
  ASSERT_FALSE(log.empty()) << name;
  std::string problem;
  EXPECT_TRUE(BlocksBalanced(log, &problem)) << name << ": " << problem;
  std::string footer = Footer(log);
  EXPECT_EQ(0u, footer.find(std::string("Exit code = '") + exitName + "' (" +
                            std::to_string(exitCode) +
                            ").\r\n\r\nZendra log ends (error count = "))
      << footer;
  EXPECT_EQ(").\r\n", footer.substr(footer.size() - 4)) << footer;
}

// A temporary folder longer than the system allows: both variables the
// system looks at, TMP first and then TEMP.
struct UnusableTemporaryFolder {
  const std::string tooLong = "C:\\" + std::string(300, 'T');
  TestSupport::ScopedEnvironment tmp{"TMP", tooLong};
  TestSupport::ScopedEnvironment temp{"TEMP", tooLong};
};

}  // namespace

TEST(CommandLine, NoArgumentsPointsToAddRemovePrograms) {
  SourceFolder source;
  source.Standard();
  ChildProcess setup(source.SetupExe(), "");
  HWND box = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, box) << "no message box appeared";
  EXPECT_EQ(cAddRemoveText, TestSupport::MessageBoxText(box));
  EXPECT_TRUE(TestSupport::HasIcon(box));
  SaveScreenshot(box, "bad-command-line");
  TestSupport::PressButton(box, "OK");
  EXPECT_EQ(2, setup.WaitForExit());
  EXPECT_TRUE(LogFiles().empty());  // no log before a mode is chosen
}

TEST(CommandLine, SilentRunWithBadModeShowsNothing) {
  SourceFolder source;
  source.Standard();
  bool showed = true;
  EXPECT_EQ(2, RunSetup(source, "-s -I", &showed));
  EXPECT_FALSE(showed);
}

TEST(CommandLine, OptionsOutOfOrderLeaveNoMode) {
  // -s is tested before -verbose: here it stands where the mode is expected,
  // so the run is not silent and shows the bad-command-line message.
  SourceFolder source;
  source.Standard();
  ChildProcess setup(source.SetupExe(), "-verbose -s -i");
  HWND box = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, box);
  EXPECT_EQ(cAddRemoveText, TestSupport::MessageBoxText(box));
  TestSupport::PressButton(box, "OK");
  EXPECT_EQ(2, setup.WaitForExit());
}

TEST(CommandLine, SecondInstanceIsTurnedAway) {
  SourceFolder source;
  source.Standard();
  ChildProcess first(source.SetupExe(), "");
  HWND firstBox = first.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, firstBox);

  ChildProcess second(source.SetupExe(), "-s -i");
  HWND secondBox = second.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, secondBox);
  // The check comes before the options: even a silent run says so.
  EXPECT_EQ("Zendra Setup is already running.",
            TestSupport::MessageBoxText(secondBox));
  EXPECT_FALSE(TestSupport::HasIcon(secondBox));
  SaveScreenshot(secondBox, "already-running");
  TestSupport::PressButton(secondBox, "OK");
  EXPECT_EQ(0, second.WaitForExit());

  TestSupport::PressButton(firstBox, "OK");
  EXPECT_EQ(2, first.WaitForExit());
}

TEST(Configuration, MissingFileEndsTheRunWithoutLog) {
  SourceFolder source;
  source.AddSetup();
  bool showed = true;
  EXPECT_EQ(1, RunSetup(source, "-s -i", &showed));
  EXPECT_FALSE(showed);
  EXPECT_TRUE(LogFiles().empty());
}

TEST(Configuration, OnlyMajorVersionFourIsMerged) {
  SourceFolder source;
  source.Standard();
  // Without a configuration the OEM settings come from the registry.
  for (const char* name :
       {"VendorId", "LicenseeAboutText1", "LicenseeAboutText2", "BUILD_NUMBER"})
    ASSERT_TRUE(SetRegString(HKEY_LOCAL_MACHINE, "SOFTWARE\\Orvane", name,
                             "from the registry"));
  ASSERT_TRUE(source.WriteConfig({"OVCMajVersion=3", "OldSetting=from three"}));
  EXPECT_EQ(0, RunSetup(source, "-s -verbose -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(Contains(log, "Start: Dumping global variables {")) << log;
  EXPECT_TRUE(Contains(log, "ProductName\t=\t\"Zendra\""));
  EXPECT_FALSE(Contains(log, "OldSetting"));
  EXPECT_FALSE(Contains(log, "OVCMajVersion"));
  EXPECT_EQ("from the registry",
            GetRegString(HKEY_LOCAL_MACHINE, cUserSettings, "RO_VendorId"));

  ASSERT_TRUE(source.WriteProductConfig({"%NewSetting=from four"}));
  EXPECT_EQ(0, RunSetup(source, "-s -verbose -i"));
  log = ReadLog("Zendra Install 2.log");
  EXPECT_TRUE(Contains(log, "NewSetting (READ-ONLY)\t=\t\"from four\"")) << log;
  EXPECT_TRUE(Contains(log, "OVCMajVersion\t=\t\"4\""));
  ExpectWellFormed("Zendra Install 2.log", 0, "exitOk");
}

TEST(Configuration, DamagedFileEndsTheRun) {
  SourceFolder source;
  source.AddSetup();
  std::ofstream(source.Dir() + "\\Zendra.ovc", std::ios::binary)
      << "not a configuration";
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  EXPECT_TRUE(LogFiles().empty());
}

TEST(Install, OldInternetExplorerIsRefused) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(
      SetRegString(HKEY_LOCAL_MACHINE, cIEKey, "Version", "5.50.4807.2300"));
  EXPECT_EQ(6, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  std::size_t version = log.find(
      "MessageDialog (suppressed due to -s option):\r\nZendra requires "
      "Internet "
      "Explorer version 6.0 or later.");
  std::size_t failed = log.find(
      "MessageDialog (suppressed due to -s option):\r\nZendra installation "
      "failed!");
  ASSERT_NE(std::string::npos, version) << log;
  ASSERT_NE(std::string::npos, failed) << log;
  EXPECT_LT(version, failed);
  EXPECT_TRUE(Contains(log, TempDir() + cFirstInstallLog)) << "names the log";
  ExpectWellFormed(cFirstInstallLog, 6, "exitBadIEVersion");
}

TEST(Install, MissingInternetExplorerVersionIsRefused) {
  SourceFolder source;
  source.Standard();
  ::RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, cIEKey, "Version");
  EXPECT_EQ(6, RunSetup(source, "-s -i"));
}

TEST(Install, InternetExplorerVersionWithoutADotIsTakenWhole) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(SetRegString(HKEY_LOCAL_MACHINE, cIEKey, "Version", "11"));
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_FALSE(Contains(log, "Zendra requires Internet Explorer")) << log;
  EXPECT_TRUE(Contains(log, std::string("Zendra ") +
                                SETUP_PRODUCT_VERSION_TEXT +
                                " installed successfully."))
      << log;
  ExpectWellFormed(cFirstInstallLog, 0, "exitOk");
}

TEST(Install, NewerInstalledVersionIsKept) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(SetRegString(HKEY_CLASSES_ROOT,
                           std::string(cClassKey) + "\\InstalledVersion",
                           nullptr, "9.99"));
  ASSERT_TRUE(SetRegString(
      HKEY_CLASSES_ROOT, std::string(cClassKey) + "\\InprocServer32", nullptr,
      "C:\\Program Files (x86)\\Orvane\\Zendra\\Zendra.dll"));
  EXPECT_EQ(5, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(Contains(log, "InstalledVersion = '9.99'.")) << log;
  EXPECT_TRUE(Contains(log,
                       "server path from InprocServer32 key = 'C:\\Program "
                       "Files (x86)\\Orvane\\Zendra\\Zendra.dll'."));
  EXPECT_TRUE(Contains(log, "Zendra already installed."));
  EXPECT_TRUE(Contains(log, "A newer version of Zendra is already installed."));
  ExpectWellFormed(cFirstInstallLog, 5, "exitNewerVersion");
}

TEST(Install, NotInstalledCountsOneFailure) {
  SourceFolder source;
  source.Standard();
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(Contains(log, "Failure: Open CLSID key")) << log;
  EXPECT_TRUE(Contains(log, "Zendra not installed."));
  EXPECT_TRUE(
      Contains(log, "Install source folder = 'C:\\ZendraE2E\\Source'."));
  EXPECT_TRUE(Contains(log, std::string("(Setup's product version) = '") +
                                SETUP_PRODUCT_VERSION_TEXT + "'."));
  EXPECT_TRUE(
      Contains(log, "'Program Files' directory = 'C:\\Program Files (x86)'."))
      << log;
  EXPECT_TRUE(Contains(log, std::string("Zendra ") +
                                SETUP_PRODUCT_VERSION_TEXT +
                                " installed successfully."));
  EXPECT_TRUE(Contains(log, "(error count = 1)"));
  ExpectWellFormed(cFirstInstallLog, 0, "exitOk");
}

TEST(Install, UnparsableInstalledVersionIsNotInstalled) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(SetRegString(HKEY_CLASSES_ROOT,
                           std::string(cClassKey) + "\\InstalledVersion",
                           nullptr, "four point two"));
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(Contains(log,
                       "Failure (E_BadSyntax, 0x80000208): Convert "
                       "InstalledVersion value"))
      << log;
  EXPECT_TRUE(Contains(log, "Zendra not installed."));
}

TEST(Install, OlderInstalledVersionIsUpgraded) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(SetRegString(HKEY_CLASSES_ROOT,
                           std::string(cClassKey) + "\\InstalledVersion",
                           nullptr, "1.00"));
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(
      Contains(log, std::string("Zendra successfully upgraded to version ") +
                        SETUP_PRODUCT_VERSION_TEXT + "."))
      << log;

  // The same version again is "installed", not "upgraded".
  ASSERT_TRUE(SetRegString(HKEY_CLASSES_ROOT,
                           std::string(cClassKey) + "\\InstalledVersion",
                           nullptr, SETUP_PRODUCT_VERSION_TEXT));
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  log = ReadLog("Zendra Install 2.log");
  EXPECT_TRUE(Contains(log, std::string("Zendra ") +
                                SETUP_PRODUCT_VERSION_TEXT +
                                " installed successfully."))
      << log;
}

TEST(Install, LockedComponentLeadsToANumberedFolder) {
  const std::string maker = "C:\\Program Files (x86)\\Orvane";
  ::CreateDirectoryA(maker.c_str(), nullptr);
  ::CreateDirectoryA((maker + "\\Zendra").c_str(), nullptr);
  std::ofstream(maker + "\\Zendra\\Zendra.dll") << "component";
  std::ofstream(maker + "\\Zendra001") << "a file, not a folder";
  HANDLE locked =
      ::CreateFileA((maker + "\\Zendra\\Zendra.dll").c_str(), GENERIC_READ, 0,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, locked);

  SourceFolder source;
  source.Standard();
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  ::CloseHandle(locked);
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(
      Contains(log, "Zendra.dll in use = 1, ZendraMimer.dll in use = 0"))
      << log;
  EXPECT_TRUE(Contains(
      log, "Install directory '" + maker + "\\Zendra001' already exists."));
  EXPECT_TRUE(
      Contains(log, "Installation directory = '" + maker + "\\Zendra002'."));
  ExpectWellFormed(cFirstInstallLog, 0, "exitOk");
}

TEST(Logs, InstallLogsTakeTheFirstFreeNumber) {
  WriteLog("Zendra Install 1.log", "old one");
  WriteLog("Zendra Install 3.log", "old three");
  SourceFolder source;
  source.Standard();
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  EXPECT_EQ("old one", ReadLog("Zendra Install 1.log"));
  EXPECT_EQ("old three", ReadLog("Zendra Install 3.log"));
  ExpectWellFormed("Zendra Install 2.log", 0, "exitOk");
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  ExpectWellFormed("Zendra Install 4.log", 0, "exitOk");
}

TEST(Logs, ProtocolHandlerRemovalOnAnInstalledMachineDeletesNothing) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(SetRegString(HKEY_CLASSES_ROOT,
                           std::string(cClassKey) + "\\InstalledVersion",
                           nullptr, "4.00"));
  EXPECT_EQ(0, RunSetup(source, "-s -uph"));
  std::string log = ReadLog("Zendra Uninstall.log");
  EXPECT_TRUE(Contains(log, "Protocol handler removed successfully.")) << log;
  EXPECT_FALSE(Contains(log, "Deleting contents of directory"));
  EXPECT_NE(INVALID_FILE_ATTRIBUTES,
            ::GetFileAttributesA(source.SetupExe().c_str()));
  ExpectWellFormed("Zendra Uninstall.log", 0, "exitOk");
}

TEST(NotificationDialog, ChoosingEnablesOkAndStoresTheAnswer) {
  SourceFolder source;
  source.Standard();
  ChildProcess setup(source.SetupExe(), "-i");
  HWND dialog = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, dialog);
  EXPECT_EQ(
      std::string("Zendra ") + SETUP_PRODUCT_VERSION_TEXT +
          " installed successfully.\n\nYou must restart Internet Explorer "
          "and PowerPoint\nto use Zendra.",
      TestSupport::ControlText(dialog, IDC_NOTIFY_TEXT));
  EXPECT_FALSE(TestSupport::ControlEnabled(dialog, IDOK));
  EXPECT_FALSE(TestSupport::ControlChecked(dialog, IDC_NOTIFY_YES));
  EXPECT_FALSE(TestSupport::ControlChecked(dialog, IDC_NOTIFY_NO));
  SaveScreenshot(dialog, "notification-first");
  TestSupport::ClickControl(dialog, IDC_NOTIFY_YES);
  EXPECT_TRUE(TestSupport::ControlEnabled(dialog, IDOK));
  SaveScreenshot(dialog, "notification-yes");
  TestSupport::ClickControl(dialog, IDOK);
  EXPECT_EQ(0, setup.WaitForExit());
  EXPECT_EQ("Y", GetRegString(HKEY_CURRENT_USER, cUserSettings, "Notify"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_FALSE(Contains(log, "MessageDialog")) << "the dialog is not a message";
}

TEST(NotificationDialog, PresetNoIsSelected) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(source.WriteProductConfig({"Notify=N"}));
  ChildProcess setup(source.SetupExe(), "/i");
  HWND dialog = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, dialog);
  EXPECT_TRUE(TestSupport::ControlChecked(dialog, IDC_NOTIFY_NO));
  EXPECT_FALSE(TestSupport::ControlChecked(dialog, IDC_NOTIFY_YES));
  EXPECT_TRUE(TestSupport::ControlEnabled(dialog, IDOK));
  SaveScreenshot(dialog, "notification-preset-no");
  TestSupport::ClickControl(dialog, IDOK);
  EXPECT_EQ(0, setup.WaitForExit());
  EXPECT_EQ("N", GetRegString(HKEY_CURRENT_USER, cUserSettings, "Notify"));
}

TEST(NotificationDialog, SilentRunWritesOnlyAKnownAnswer) {
  SourceFolder source;
  source.Standard();
  bool showed = true;
  EXPECT_EQ(0, RunSetup(source, "-s -i", &showed));
  EXPECT_FALSE(showed);
  EXPECT_EQ("<none>", GetRegString(HKEY_CURRENT_USER, cUserSettings, "Notify"));

  ASSERT_TRUE(source.WriteProductConfig({"Notify=Y"}));
  EXPECT_EQ(0, RunSetup(source, "-s -i", &showed));
  EXPECT_FALSE(showed);
  EXPECT_EQ("Y", GetRegString(HKEY_CURRENT_USER, cUserSettings, "Notify"));
}

TEST(NotificationDialog, ReinstallPreselectsTheStoredAnswer) {
  SourceFolder source;
  source.Standard();  // no "Notify" in the configuration
  {
    ChildProcess setup(source.SetupExe(), "-i");
    HWND dialog = setup.WaitForDialog("Zendra Setup");
    ASSERT_NE(nullptr, dialog);
    TestSupport::ClickControl(dialog, IDC_NOTIFY_NO);
    TestSupport::ClickControl(dialog, IDOK);
    EXPECT_EQ(0, setup.WaitForExit());
  }
  ASSERT_EQ("N", GetRegString(HKEY_CURRENT_USER, cUserSettings, "Notify"));
  ChildProcess setup(source.SetupExe(), "-i");
  HWND dialog = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, dialog);
  EXPECT_TRUE(TestSupport::ControlChecked(dialog, IDC_NOTIFY_NO));
  EXPECT_FALSE(TestSupport::ControlChecked(dialog, IDC_NOTIFY_YES));
  EXPECT_TRUE(TestSupport::ControlEnabled(dialog, IDOK));
  SaveScreenshot(dialog, "notification-reinstall");
  TestSupport::ClickControl(dialog, IDC_NOTIFY_YES);
  TestSupport::ClickControl(dialog, IDOK);
  EXPECT_EQ(0, setup.WaitForExit());
  EXPECT_EQ("Y", GetRegString(HKEY_CURRENT_USER, cUserSettings, "Notify"));
}

TEST(Configuration, CrashValueInTheRegistrySetsTheCrashFlag) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(
      SetRegString(HKEY_LOCAL_MACHINE, "SOFTWARE\\Orvane", "Crash", "1"));
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(Contains(log, "Assert( Crash test requested (-crash) );")) << log;
  ExpectWellFormed(cFirstInstallLog, 0, "exitOk");
}

TEST(Logs, InternalErrorsAreReportedAndTheRunGoesOn) {
  SourceFolder source;
  source.Standard();
  EXPECT_EQ(0, RunSetup(source, "-crash -s -i"));
  std::string log = ReadLog(cFirstInstallLog);
  EXPECT_TRUE(Contains(log, "\r\nAssert( Crash test requested (-crash) );\r\n"))
      << log;
  EXPECT_TRUE(Contains(log, "File: setup/Setup.cpp, Line#: ")) << log;
  ExpectWellFormed(cFirstInstallLog, 0, "exitOk");
}

TEST(Logs, UnusableTemporaryFolderEndsTheSilentRun) {
  SourceFolder source;
  source.Standard();
  const std::string realTemp = TempDir();
  int code = -1;
  bool showed = true;
  {
    UnusableTemporaryFolder temp;
    ChildProcess setup(source.SetupExe(), "-s -i");
    code = setup.WaitForExit(20000);  // -1: it had to be killed
    showed = setup.EverShowedWindow();
  }
  // The log can't be opened, so the preparation fails and the exit code
  // stays as it was.
  EXPECT_EQ(0, code);
  EXPECT_FALSE(showed);
  EXPECT_TRUE(LogFiles().empty());
  EXPECT_EQ(realTemp, TempDir());
}

TEST(Logs, UnusableTemporaryFolderNamesTheIntendedLog) {
  SourceFolder source;
  source.Standard();
  UnusableTemporaryFolder temp;
  ChildProcess setup(source.SetupExe(), "-i");
  HWND box = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, box) << "no message box appeared";
  EXPECT_EQ(
      "Zendra installation failed!\n\nSee \"Zendra Install 1.log\" for details",
      TestSupport::MessageBoxText(box));
  SaveScreenshot(box, "unusable-temporary-folder");
  TestSupport::PressButton(box, "OK");
  EXPECT_EQ(0, setup.WaitForExit(20000));
}

// ---- Damaged configuration files --------------------------------------------

namespace {

// The file format's byte scrambling: add 0x3F, swap the nibbles.
unsigned char Scramble(unsigned char b) {
  const unsigned char s = static_cast<unsigned char>(b + 0x3F);
  return static_cast<unsigned char>((s << 4) | (s >> 4));
}
unsigned char Unscramble(unsigned char s) {
  const unsigned char r = static_cast<unsigned char>((s << 4) | (s >> 4));
  return static_cast<unsigned char>(r - 0x3F);
}

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in),
                     std::istreambuf_iterator<char>());
}

// Lays out the sample product with its Zendra.ovc changed by `damage`, runs
// a silent install and expects it to end by itself with exit code 1, before
// any log or any change: the configuration is read first.
void ExpectDamagedConfigurationRefused(
    const std::function<std::string(std::string)>& damage) {
  SourceFolder source;
  source.Standard();
  const std::string config = source.Dir() + "\\Zendra.ovc";
  const std::string good = ReadBytes(config);
  ASSERT_GT(good.size(), 40u);
  const std::string bad = damage(good);
  ASSERT_NE(good, bad);
  std::ofstream(config, std::ios::binary | std::ios::trunc) << bad;
  ASSERT_EQ(bad, ReadBytes(config));

  bool showed = true;
  EXPECT_EQ(1, RunSetup(source, "-s -i", &showed));  // -1: it had to be killed
  EXPECT_FALSE(showed);
  EXPECT_TRUE(LogFiles().empty());
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES,
            ::GetFileAttributesA("C:\\Program Files (x86)\\Orvane\\Zendra"));
}

}  // namespace

TEST(DamagedConfiguration, EmptyFile) {
  ExpectDamagedConfigurationRefused([](std::string) { return std::string(); });
}

TEST(DamagedConfiguration, WrongHeader) {
  // "Orvane Configuration File 1.0" becomes "Orvane Configuration File 2.0".
  ExpectDamagedConfigurationRefused([](std::string bytes) {
    const std::size_t at = std::string("Orvane Configuration File ").size();
    EXPECT_EQ('1', Unscramble(static_cast<unsigned char>(bytes[at])));
    bytes[at] = static_cast<char>(Scramble('2'));
    return bytes;
  });
}

TEST(DamagedConfiguration, Truncated) {
  // Cut inside the variable list: no end marker, no checksum.
  ExpectDamagedConfigurationRefused(
      [](std::string bytes) { return bytes.substr(0, bytes.size() / 2 + 3); });
}

TEST(DamagedConfiguration, ChecksumChanged) {
  // The last digit of the checksum text, just before its NUL.
  ExpectDamagedConfigurationRefused([](std::string bytes) {
    const std::size_t at = bytes.size() - 2;
    const unsigned char digit =
        Unscramble(static_cast<unsigned char>(bytes[at]));
    EXPECT_TRUE(digit >= '0' && digit <= '9');
    bytes[at] = static_cast<char>(Scramble(digit == '9' ? '0' : digit + 1));
    return bytes;
  });
}

TEST(DamagedConfiguration, RandomBytes) {
  ExpectDamagedConfigurationRefused([](std::string bytes) {
    std::uint32_t state = 0x2545F491u;
    for (char& b : bytes) {  // the same length, other bytes
      state ^= state << 13;
      state ^= state >> 17;
      state ^= state << 5;
      b = static_cast<char>(state >> 24);
    }
    return bytes;
  });
}
