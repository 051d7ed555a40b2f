// Setup.exe run as a user would: the runs it turns away before installing
// anything, and installs that follow what the command line, the
// configuration file and the registry ask for.
#include <windows.h>

#include <string>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "SetupResource.h"
#include "TestSupport.h"

using namespace E2E;
using namespace TestSupport;
using ActionsTest::Contains;
using ActionsTest::FileExists;

namespace {

const char cIEKey[] = "SOFTWARE\\Microsoft\\Internet Explorer";
const char cOrvaneKey[] = "SOFTWARE\\Orvane";
const std::string cVersionKey =
    std::string(cProductClass) + "\\InstalledVersion";
const char cRunningWord[] = "Microsoft Word is running";

// A damaged configuration file; the library's own tests go through the
// kinds of damage, this one shows that Setup ends the run on one.
const std::pair<const char*, std::string (*)(std::string)> cDamages[] = {
    {"cut short", [](std::string b) { return b.substr(0, b.size() / 2 + 3); }},
};

}  // namespace

TEST(Refusals, RunsSetupTurnsAwayChangeNothing) {
  SourceFolder source;
  source.Standard();
  const std::string setup = source.SetupExe();

  // No mode (-s is tested before -verbose): a silent run ends quietly, any
  // other points to Add/Remove Programs.
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -I"), 2));
  SetupRun outOfOrder(setup, "-verbose -s -i");
  Answer(outOfOrder, "please use Add/Remove Programs");
  EXPECT_TRUE(Ended(outOfOrder.Finish(), 2));
  // Meanwhile a second Setup, even a silent one, is turned away.
  SetupRun first(setup, "");
  HWND box = first.WaitForDialog();
  ASSERT_NE(nullptr, box);
  EXPECT_TRUE(Contains(MessageBoxText(box), "please use Add/Remove Programs"));
  EXPECT_TRUE(HasIcon(box));
  SaveScreenshot(box, "bad-command-line");
  SetupRun second(setup, "-s -i");
  HWND secondBox = second.WaitForDialog();
  ASSERT_NE(nullptr, secondBox);
  EXPECT_FALSE(HasIcon(secondBox));
  Answer(second, "Zendra Setup is already running.", IDOK, "already-running");
  EXPECT_TRUE(Ended(second.Finish(), 0));
  ClickControl(box, IDOK);
  EXPECT_TRUE(Ended(first.Finish(), 2));

  // The configuration is read first: missing or damaged, it ends the run.
  SourceFolder bare("Bare");
  ASSERT_TRUE(ActionsTest::CopyInto(source.SetupExe(), bare.SetupExe()));
  EXPECT_TRUE(Ended(RunSetup(bare.SetupExe(), "-s -i"), 1));
  const std::string config = source.Dir() + "\\Zendra.ovc";
  const std::string good = ActionsTest::ReadText(config);
  for (const auto& [what, damage] : cDamages) {
    ActionsTest::WriteText(config, damage(good));
    EXPECT_TRUE(Ended(RunSetup(setup, "-s -i"), 1)) << what;
  }
  ActionsTest::WriteText(config, good);
  EXPECT_TRUE(LogFiles().empty()) << "no log before a mode and a configuration";

  // No log can be opened in a temporary folder longer than the system
  // allows: nothing is done, and the exit code says so; a run that is not
  // silent names the log it meant.
  {
    TempFolderSetting tooLong(L"C:\\" + std::wstring(300, L'T'));
    EXPECT_TRUE(Ended(RunSetup(setup, "-s -i"), 1));
    SetupRun shown(setup, "-i");
    Answer(shown, "installation failed!\n\nSee \"Zendra Install 1.log\"");
    EXPECT_TRUE(Ended(shown.Finish(), 1));
  }

  // An Internet Explorer older than 6, or none.
  const std::string ieVersion = Reg(HKEY_LOCAL_MACHINE, cIEKey, "Version");
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cIEKey, "Version", "5.50.4807.2300"));
  Outcome run = RunSetup(setup, "-s -i");
  const std::string silent = "MessageDialog (suppressed due to -s option):\r\n";
  EXPECT_TRUE(Ended(run, 6,
                    {silent +
                         "Zendra requires Internet Explorer version 6.0 "
                         "or later.\r\n" +
                         silent + "Zendra installation failed!",
                     TempDir() + run.logName}));  // names the log
  ::RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, cIEKey, "Version");
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -i"), 6));
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cIEKey, "Version", ieVersion));

  // Another program's MIME filter for one of the product's types.
  ASSERT_TRUE(SetReg(HKEY_CLASSES_ROOT, "PROTOCOLS\\Filter\\text/xml", "CLSID",
                     "{11111111-2222-3333-4444-555555555555}"));
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -i"), 1,
                    {"Filter clashes!!!", "Installation failed!\r\n"},
                    {"Installing file:"}));
  EXPECT_FALSE(FileExists(cInstallDir + "\\Zendra.dll"));
  EXPECT_FALSE(FileExists(ActionsTest::SystemFontFile("qxextra.ttf")));

  // With nothing installed, a protocol handler removal deletes the folder it
  // runs from only when the product was installed there.
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -uph"), 0,
                    {"Keeping '" + source.Dir() +
                         "' and everything in it: it is not a folder Zendra "
                         "was installed in.\r\n",
                     "Protocol handler removed successfully."},
                    {"Deleting contents of directory", "Remove the Setup"}));
  EXPECT_TRUE(FileExists(setup));
  ActionsTest::MakeFolder(cInstallDir);
  for (const char* file : {"\\Setup.exe", "\\Zendra.ovc"})
    ASSERT_TRUE(ActionsTest::CopyInto(source.Dir() + file, cInstallDir + file));
  EXPECT_TRUE(Ended(RunSetup(cInstallDir + "\\Setup.exe", "-s -uph"), 0,
                    {"Deleting contents of directory: " + cInstallDir,
                     "Protocol handler removed successfully."},
                    {"Start: Removing Setup"}));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
}

TEST(InstallOptions, WhatTheCommandLineConfigurationAndRegistryAskFor) {
  SourceFolder source;
  source.Standard();
  const std::string setup = source.SetupExe();

  // No fonts, no version checks; the browser's version "11" taken whole; a
  // configuration of another major version ignored, the OEM settings then
  // read from the registry. A silent run stores no notification answer.
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cIEKey, "Version", "11"));
  for (const char* name :
       {"VendorId", "LicenseeAboutText1", "LicenseeAboutText2", "BUILD_NUMBER"})
    ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cOrvaneKey, name, "registry"));
  ASSERT_TRUE(source.WriteConfig({"OVCMajVersion=3", "OldSetting=three"}));
  // A developer's Setup.exe without a signature checks no program's.
  const std::string signedSetup = ActionsTest::ReadText(setup);
  ASSERT_TRUE(ActionsTest::CopyInto(
      WindowsPath(ArgValue("signature-fixtures")) + "\\unsigned\\Setup.exe",
      setup));
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -verbose -i -nofonts -noversioncheck"),
                    0,
                    {cInstalled, "Start: Dumping global variables {",
                     "ProductName\t=\t\"Zendra\"",
                     "Setup.exe is not signed: the product's programs are not "
                     "checked for their publisher's signature.\r\n"},
                    {"Zendra requires Internet Explorer", "InstallFonts(",
                     "OldSetting", "OVCMajVersion"}));
  EXPECT_FALSE(FileExists(ActionsTest::SystemFontFile("qxextra.ttf")));
  EXPECT_EQ("<none>", ActionsTest::FontsKeyValue("Zendra QX Extra (TrueType)"));
  EXPECT_EQ("0", Reg(HKEY_LOCAL_MACHINE, cSettingsKey, "DoVersionChecks"));
  EXPECT_EQ("registry", Reg(HKEY_LOCAL_MACHINE, cSettingsKey, "RO_VendorId"));
  EXPECT_EQ("<none>", Reg(HKEY_CURRENT_USER, cSettingsKey, "Notify"));
  ActionsTest::WriteText(setup, signedSetup);

  // An installed version that can't be read counts as none. Version 4's
  // configuration is merged, its answer stored by a silent run too; the
  // registry asks for the deliberate internal error.
  ASSERT_TRUE(
      SetReg(HKEY_CLASSES_ROOT, cVersionKey, nullptr, "four point two"));
  ASSERT_TRUE(source.WriteConfig({"OVCMajVersion=4", "AppName=Zendra",
                                  "SetupName=Zendra Setup", "%NewSetting=four",
                                  "Notify=Y"}));
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cOrvaneKey, "Crash", "1"));
  EXPECT_TRUE(Ended(
      RunSetup(setup, "-s -verbose -i"), 0,
      {"Failure (E_BadSyntax, 0x80000208): Convert InstalledVersion value",
       "Zendra not installed.", "NewSetting (READ-ONLY)\t=\t\"four\"",
       "OVCMajVersion\t=\t\"4\"", "Assert( Crash test requested (-crash) );",
       cInstalled}));
  EXPECT_EQ("Y", Reg(HKEY_CURRENT_USER, cSettingsKey, "Notify"));

  // An older version is upgraded; -crash reports the error's place.
  ::RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, cOrvaneKey, "Crash");
  const std::string installed = Reg(HKEY_CLASSES_ROOT, cVersionKey, nullptr);
  ASSERT_TRUE(SetReg(HKEY_CLASSES_ROOT, cVersionKey, nullptr, "1.00"));
  EXPECT_TRUE(Ended(RunSetup(setup, "-crash -s -i"), 0,
                    {std::string("Zendra successfully upgraded to version ") +
                         SETUP_PRODUCT_VERSION_TEXT + ".",
                     "\r\nAssert( Crash test requested (-crash) );\r\n",
                     "File: setup/", ", Line#: "}));
  // A newer installed version is kept.
  ASSERT_TRUE(SetReg(HKEY_CLASSES_ROOT, cVersionKey, nullptr, "9.99"));
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -i"), 5,
                    {"InstalledVersion = '9.99'.",
                     "server path from InprocServer32 key = '" + cInstallDir +
                         "\\Zendra.dll'.",
                     "Zendra already installed.",
                     "A newer version of Zendra is already installed."}));
  ASSERT_TRUE(SetReg(HKEY_CLASSES_ROOT, cVersionKey, nullptr, installed));

  // While Word runs, a silent install stops quietly before the add-ins; an
  // interactive one asks to close Word, and stops when told to.
  {
    RunningWord word;
    ASSERT_NE(nullptr, word.Window());
    EXPECT_TRUE(Ended(RunSetup(setup, "-s -i"), 1,
                      {cRunningWord, "Zendra installation failed!"},
                      {"Installation failed!"}));
    SetupRun asked(setup, "-i");
    Answer(asked, "please close Word", IDCANCEL);  // Exit Setup
    Answer(asked, "Zendra installation failed!", IDOK, "install-failed");
    EXPECT_TRUE(
        Ended(asked.Finish(), 1, {cRunningWord}, {"Installation failed!"}));
  }

  // The configuration's notification answer is preselected ("/i" is "-i").
  ::RegDeleteKeyValueA(HKEY_CURRENT_USER, cSettingsKey, "Notify");
  ASSERT_TRUE(source.WriteConfig({"OVCMajVersion=4", "AppName=Zendra",
                                  "SetupName=Zendra Setup", "Notify=N"}));
  SetupRun preset(setup, "/i");
  HWND dialog = preset.WaitForDialog();
  ASSERT_NE(nullptr, dialog);
  EXPECT_TRUE(ControlChecked(dialog, IDC_NOTIFY_NO));
  EXPECT_FALSE(ControlChecked(dialog, IDC_NOTIFY_YES));
  EXPECT_TRUE(ControlEnabled(dialog, IDOK));
  ClickControl(dialog, IDOK);
  EXPECT_TRUE(Ended(preset.Finish(), 0));
  EXPECT_EQ("N", Reg(HKEY_CURRENT_USER, cSettingsKey, "Notify"));

  // Components in use: the install goes to the first free numbered folder.
  const std::string maker = "C:\\Program Files (x86)\\Orvane";
  ActionsTest::WriteText(maker + "\\Zendra001", "a file, not a folder");
  HANDLE locked =
      ::CreateFileA((cInstallDir + "\\Zendra.dll").c_str(), GENERIC_READ, 0,
                    nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, locked);
  const Outcome run = RunSetup(setup, "-s -i");
  ::CloseHandle(locked);
  EXPECT_TRUE(
      Ended(run, 0,
            {"Zendra.dll in use = 1, ZendraMimer.dll in use = 0",
             "Install directory '" + maker + "\\Zendra001' already exists.",
             "Installation directory = '" + maker + "\\Zendra002'."}));

  // With the product installed, a protocol handler removal deletes nothing.
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -uph"), 0,
                    {"Protocol handler removed successfully."},
                    {"Deleting contents of directory"}));
  EXPECT_TRUE(FileExists(setup));
}
