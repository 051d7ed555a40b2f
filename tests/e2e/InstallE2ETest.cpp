// A real install of the sample product, run as a user would, each case in a
// fresh prefix: what lands on disk and in the registry, what the log says,
// and how the install ends when the machine or the source is not as it
// should be.
#include <windows.h>
// After windows.h, which it needs.
#include <wincrypt.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "OfficeTestSupport.h"
#include "SetupResource.h"
#include "TestSupport.h"
#include "Version.h"
#include "WindowDriver.h"

using namespace E2E;
namespace fs = std::filesystem;
using ActionsTest::Contains;
using ActionsTest::Count;
using ActionsTest::cWordTemplate;
using ActionsTest::ReadText;
using TestSupport::ChildProcess;

namespace {

const char cLog[] = "Zendra Install 1.log";
const char cRunningWordLine[] =
    "Microsoft Word is running and this is either a silent install or user "
    "quit install.";

const char* const cComponents[] = {"Zendra.dll", "ZendraMimer.dll",
                                   "ZendraBHO.dll", "ZendraPanel.cpl",
                                   "ZendraBraille.dll"};
const char* const cSubfolders[] = {"Rules", "Office Support",
                                   "LibLouis\\Tables"};
const char* const cExtras[] = {"Setup.exe", "VersionCheck.exe", "About.gif",
                               "Zendra.ovc"};

std::string Value32(HKEY root, const std::string& key, const char* name) {
  ActionsTest::RegValue value =
      ActionsTest::ReadValue(root, key, name, KEY_WOW64_32KEY);
  return value.found ? value.text : "<none>";
}

// Every file of the source tree `relative` is in the install folder with
// the same bytes; the number of files compared goes to `count`.
void ExpectSameTree(const std::string& source, const std::string& relative,
                    int& count) {
  for (const auto& entry :
       fs::recursive_directory_iterator(source + "\\" + relative)) {
    if (!entry.is_regular_file()) continue;
    const std::string rel = fs::relative(entry.path(), source).string();
    EXPECT_EQ(ReadText(entry.path().string()),
              ReadText(cInstallDir + "\\" + rel))
        << rel;
    ++count;
  }
}

// Copies the tree `from` into the new folder `to` through the wide API.
void CopyTreeW(const fs::path& from, const std::wstring& to) {
  ASSERT_TRUE(::CreateDirectoryW(to.c_str(), nullptr));
  for (const auto& entry : fs::directory_iterator(from)) {
    const std::wstring target = to + L"\\" + entry.path().filename().wstring();
    if (entry.is_directory())
      CopyTreeW(entry.path(), target);
    else
      ASSERT_TRUE(::CopyFileW(entry.path().c_str(), target.c_str(), TRUE));
  }
}

int TrustedPublishersNamed(const char* name) {
  HCERTSTORE store = ::CertOpenStore(
      CERT_STORE_PROV_SYSTEM_A, 0, 0,
      CERT_SYSTEM_STORE_LOCAL_MACHINE | CERT_STORE_READONLY_FLAG,
      "TrustedPublisher");
  if (!store) return 0;
  int found = 0;
  PCCERT_CONTEXT cert = nullptr;
  while ((cert = ::CertEnumCertificatesInStore(store, cert))) {
    char subject[256] = "";
    ::CertGetNameStringA(cert, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr,
                         subject, sizeof subject);
    if (Contains(subject, name)) ++found;
  }
  ::CertCloseStore(store, 0);
  return found;
}

// What Wine's Add/Remove Programs lists, one "{key}|||name" line each.
std::string UninstallerList() {
  const std::string listing = TempDir() + "uninstaller.txt";
  ChildProcess list("C:\\windows\\system32\\cmd.exe",
                    "/c uninstaller --list > \"" + listing + "\"");
  list.WaitForExit(60000);
  return ReadText(listing);
}

// Word 2016 with its Startup folder, and PowerPoint 2016.
void MakeOffice() {
  ActionsTest::MakeWordFolder(cWordFolder);
  ActionsTest::SetInstallRoot("16.0", "Word", std::string(cWordFolder) + "\\");
  ASSERT_TRUE(ActionsTest::CreateKey(
      HKEY_LOCAL_MACHINE,
      ActionsTest::OfficeKey("16.0", "PowerPoint") + "\\InstallRoot",
      KEY_WOW64_32KEY));
}

// A running Word: the fake Word's "OpusApp" window, until it is closed.
class RunningWord {
 public:
  RunningWord()
      : mProcess(TestSupport::WindowsPath(TestSupport::ArgValue("fake-word")),
                 "Document1 - Word") {
    for (int i = 0; i < 100 && !Window(); ++i) ::Sleep(50);
  }
  ~RunningWord() { Close(); }
  HWND Window() const { return ::FindWindowA("OpusApp", nullptr); }
  void Close() {
    if (HWND window = Window()) ::PostMessageA(window, WM_CLOSE, 0, 0);
    mProcess.WaitForExit(10000);
  }

 private:
  ChildProcess mProcess;
};

void WaitUntilGone(HWND window) {
  for (int i = 0; i < 200 && ::IsWindow(window); ++i) ::Sleep(50);
}

}  // namespace

TEST(RealInstall, SilentInstallPutsEverythingInPlace) {
  SourceFolder source("Source With Spaces");
  source.Standard();
  MakeOffice();
  ASSERT_EQ(0, RunSetup(source, "-s -i"));

  // Files: the components, the subfolder trees and the extra files.
  int compared = 0;
  for (const char* name : cComponents) {
    EXPECT_EQ(ReadText(source.Dir() + "\\" + name),
              ReadText(cInstallDir + "\\" + name))
        << name;
    ++compared;
  }
  for (const char* tree : cSubfolders)
    ExpectSameTree(source.Dir(), tree, compared);
  for (const char* name : cExtras) {
    EXPECT_EQ(ReadText(source.Dir() + "\\" + name),
              ReadText(cInstallDir + "\\" + name))
        << name;
    ++compared;
  }
  EXPECT_EQ(5 + 10 + 4, compared);

  // Fonts, in the product's folder and the system's.
  EXPECT_EQ(ReadText(source.Dir() + "\\qxextra.ttf"),
            ReadText(cFontsDir + "\\qxextra.ttf"));
  EXPECT_EQ(
      ReadText(source.Dir() + "\\gh_SimBraille_Nemeth_One.ttf"),
      ReadText(ActionsTest::SystemFontFile("gh_SimBraille_Nemeth_One.ttf")));
  EXPECT_EQ("lattice.ttf",
            ActionsTest::FontsKeyValue("Zendra Lattice (TrueType)"));

  // Classes, pointing into the install folder.
  EXPECT_EQ(cInstallDir + "\\Zendra.dll",
            Value32(HKEY_CLASSES_ROOT,
                    std::string(cProductClass) + "\\InprocServer32", nullptr));
  EXPECT_EQ(cInstallDir + "\\ZendraBraille.dll",
            Value32(HKEY_CLASSES_ROOT,
                    "CLSID\\{5F496A42-193E-4734-8FCA-1030514B457B}\\"
                    "InprocServer32",
                    nullptr));

  // The uninstall entry, the browser's and Office's entries, the publisher.
  EXPECT_EQ("Zendra",
            Value32(HKEY_LOCAL_MACHINE, cUninstallKey, "DisplayName"));
  EXPECT_EQ("{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}",
            Value32(HKEY_LOCAL_MACHINE,
                    "SOFTWARE\\Microsoft\\Internet Explorer\\XMLNamespace",
                    "http://www.w3.org/1998/Math/MathML"));
  EXPECT_NE("<none>",
            Value32(HKEY_LOCAL_MACHINE,
                    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet "
                    "Settings\\5.0\\User Agent\\Post Platform",
                    "Zendra 4.02"));
  EXPECT_EQ(ReadText(cInstallDir + "\\Office Support\\32\\" + cWordTemplate),
            ReadText(std::string(cWordFolder) + "\\Startup\\" + cWordTemplate));
  ActionsTest::RegValue autoLoad = ActionsTest::ReadValue(
      HKEY_LOCAL_MACHINE,
      ActionsTest::OfficeKey("16.0", "PowerPoint") +
          "\\AddIns\\Zendra 4 Commands for PowerPoint (32-bit)",
      "AutoLoad", KEY_WOW64_64KEY);
  EXPECT_EQ(0xFFFFFFFFu, autoLoad.number);
  EXPECT_EQ(1, TrustedPublishersNamed("Orvane"));

  // The log says so, and a copy lies beside the product.
  const std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log, "Installation successful!\r\n")) << log;
  // The one failure: no installed copy was found before.
  EXPECT_EQ(1, Count(log, "Failure"));
  EXPECT_TRUE(Contains(log, "Failure: Open CLSID key\r\n"));
  EXPECT_TRUE(Contains(log, "Exit code = 'exitOk' (0)."));
  EXPECT_EQ(log, ReadText(cInstallDir + "\\" + cLog));
  std::string problem;
  EXPECT_TRUE(BlocksBalanced(log, &problem)) << problem;

  EXPECT_TRUE(Contains(UninstallerList(),
                       "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}|||Zendra"));
}

TEST(RealInstall, ReinstallFindsTheInstalledCopyFromItsComponent) {
  SourceFolder source;
  source.Standard();
  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  const std::string log = ReadLog("Zendra Install 2.log");
  EXPECT_TRUE(Contains(log, "InstalledVersion = '4.2.0.0'.")) << log;
  EXPECT_TRUE(Contains(log, "server path from InprocServer32 key = '" +
                                cInstallDir + "\\Zendra.dll'."));
  EXPECT_TRUE(Contains(log, "Zendra already installed."));
  EXPECT_TRUE(Contains(log, "Zendra 4.02 installed successfully."));
  EXPECT_FALSE(Contains(log, "upgraded"));
  // No second copy of anything: one token, one value per font.
  EXPECT_EQ(1, Count(log, "Installation successful!"));
  EXPECT_FALSE(
      ActionsTest::FileExists(ActionsTest::SystemFontFile("lattice_01.ttf")));
  const auto tokens = ActionsTest::ValueNames(
      HKEY_LOCAL_MACHINE,
      "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet "
      "Settings\\5.0\\User Agent\\Post Platform",
      KEY_WOW64_32KEY);
  int zendraTokens = 0;
  for (const auto& name : tokens) zendraTokens += Contains(name, "Zendra");
  EXPECT_EQ(1, zendraTokens);
}

TEST(RealInstall, BrokenSourcesFailWithTheirStepAndASecondRunSucceeds) {
  SourceFolder source;
  source.Standard();
  const std::string gif = source.Dir() + "\\About.gif";
  const std::string hidden = source.Dir() + "\\About.gif.away";
  ASSERT_TRUE(::MoveFileA(gif.c_str(), hidden.c_str()));
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cLog);
  // The components and the subfolders were copied before the extras failed.
  EXPECT_TRUE(ActionsTest::FileExists(cInstallDir + "\\ZendraBraille.dll"));
  EXPECT_TRUE(ActionsTest::FileExists(cInstallDir +
                                      "\\LibLouis\\Tables\\en-us-g1.ctb"));
  EXPECT_TRUE(Contains(log, "Copy 'About.gif' from '" + source.Dir())) << log;
  EXPECT_TRUE(Contains(log, "): Copying file\r\n"));
  EXPECT_TRUE(Contains(log, "Installation failed!\r\n"));
  EXPECT_TRUE(Contains(log, "Zendra installation failed!"));
  EXPECT_TRUE(Contains(log, "Exit code = 'exitFailure' (1)."));
  ASSERT_TRUE(::MoveFileA(hidden.c_str(), gif.c_str()));

  // A missing component, then a missing subfolder.
  const std::string bho = source.Dir() + "\\ZendraBHO.dll";
  ASSERT_TRUE(::MoveFileA(bho.c_str(), (bho + ".away").c_str()));
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  log = ReadLog("Zendra Install 2.log");
  EXPECT_TRUE(Contains(log, "Failure: ZendraBHO.dll\r\n")) << log;
  EXPECT_TRUE(Contains(log, "Failure: Unable to install files\r\n"));
  ASSERT_TRUE(::MoveFileA((bho + ".away").c_str(), bho.c_str()));
  const std::string tables = source.Dir() + "\\LibLouis";
  ASSERT_TRUE(::MoveFileA(tables.c_str(), (tables + ".away").c_str()));
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  log = ReadLog("Zendra Install 3.log");
  EXPECT_TRUE(Contains(log, "Failure: Unable to install liblouis tables\r\n"))
      << log;
  ASSERT_TRUE(::MoveFileA((tables + ".away").c_str(), tables.c_str()));

  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  EXPECT_TRUE(
      Contains(ReadLog("Zendra Install 4.log"), "Installation successful!"));
}

TEST(RealInstall, AClashingMimeFilterStopsBeforeAnythingIsCopied) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(SetRegString(HKEY_CLASSES_ROOT, "PROTOCOLS\\Filter\\text/xml",
                           "CLSID", "{11111111-2222-3333-4444-555555555555}"));
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  const std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log, "Filter clashes!!!")) << log;
  EXPECT_TRUE(Contains(log, "Installation failed!\r\n"));
  EXPECT_FALSE(Contains(log, "Installing file:"));
  EXPECT_FALSE(ActionsTest::FileExists(cInstallDir + "\\Zendra.dll"));
  EXPECT_FALSE(
      ActionsTest::FileExists(ActionsTest::SystemFontFile("qxextra.ttf")));
}

TEST(RealInstall, InstallFolderLeftoversAreReplacedAndAHeldOneStopsIt) {
  SourceFolder source;
  source.Standard();
  ActionsTest::MakeFolder(cInstallDir + "\\Old Stuff");
  ActionsTest::WriteText(cInstallDir + "\\Old Stuff\\notes.txt", "mine");
  ActionsTest::WriteText(cInstallDir + "\\Zendra.dll", "an older Zendra");
  ActionsTest::WriteText(cInstallDir + "\\read-only.txt", "read-only");
  ::SetFileAttributesA((cInstallDir + "\\read-only.txt").c_str(),
                       FILE_ATTRIBUTE_READONLY);
  const std::string heldFile = cInstallDir + "\\held.txt";
  ActionsTest::WriteText(heldFile, "open in another program");
  HANDLE held = ::CreateFileA(heldFile.c_str(), GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log, "Deleting contents of directory: " + cInstallDir))
      << log;
  EXPECT_TRUE(Contains(log, "): Can't delete directory contents\r\n"));
  EXPECT_TRUE(Contains(log, "Installation failed!"));

  ::CloseHandle(held);
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  EXPECT_FALSE(ActionsTest::FileExists(cInstallDir + "\\Old Stuff\\notes.txt"));
  EXPECT_FALSE(ActionsTest::FileExists(cInstallDir + "\\read-only.txt"));
  EXPECT_FALSE(ActionsTest::FileExists(heldFile));
  EXPECT_EQ(ReadText(source.Dir() + "\\Zendra.dll"),
            ReadText(cInstallDir + "\\Zendra.dll"));
}

TEST(RealInstall, ASourceOutsideTheCodePageRunsFromItsShortPath) {
  SourceFolder source;
  source.Standard();
  // Two characters of the last folder are in no Western ANSI code page.
  const std::wstring parent = L"C:\\Pr\u00fcfung";
  const std::wstring unusual = parent + L"\\Qu\u00e9 \u6570\u5b66";
  ASSERT_TRUE(::CreateDirectoryW(parent.c_str(), nullptr));
  CopyTreeW(source.Dir(), unusual);
  ChildProcess setup(unusual + L"\\Setup.exe", "-s -i");
  EXPECT_EQ(0, setup.WaitForExit(60000));
  wchar_t shortPath[MAX_PATH] = L"";
  ASSERT_NE(0u, ::GetShortPathNameW(unusual.c_str(), shortPath, MAX_PATH));
  const std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log, "Install source folder = '" +
                                fs::path(shortPath).string() + "'.\r\n"))
      << log;
  EXPECT_TRUE(Contains(log, "Installation successful!\r\n"));
  EXPECT_EQ(SETUP_PRODUCT_VERSION_TEXT,
            Value32(HKEY_LOCAL_MACHINE, cUninstallKey, "DisplayVersion"));
}

TEST(RealInstall, NoFontsAndNoVersionCheck) {
  SourceFolder source;
  source.Standard();
  ASSERT_EQ(0, RunSetup(source, "-s -i -nofonts -noversioncheck"));
  EXPECT_FALSE(
      ActionsTest::FileExists(ActionsTest::SystemFontFile("qxextra.ttf")));
  EXPECT_EQ("<none>", ActionsTest::FontsKeyValue("Zendra QX Extra (TrueType)"));
  EXPECT_FALSE(Contains(ReadLog(cLog), "InstallFonts("));
  EXPECT_EQ("0", Value32(HKEY_LOCAL_MACHINE, "SOFTWARE\\Orvane\\OVZN4",
                         "DoVersionChecks"));
}

TEST(RealInstall, InstalledFontsThatCannotBeReplaced) {
  // A current lattice.ttf and an older QX Extra, installed and held open.
  SourceFolder source;
  source.Standard();
  for (const char* font : {"lattice.ttf", "qxextra.ttf"}) {
    const std::string from = std::string(font) == "qxextra.ttf"
                                 ? ActionsTest::TestFontFile("older", font)
                                 : ActionsTest::SampleFile(font);
    ASSERT_TRUE(ActionsTest::CopyInto(from, ActionsTest::SystemFontFile(font)));
  }
  const std::string fonts =
      "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
  ASSERT_TRUE(SetRegString(HKEY_LOCAL_MACHINE, fonts,
                           "Zendra Lattice (TrueType)", "lattice.ttf"));
  ASSERT_TRUE(SetRegString(HKEY_LOCAL_MACHINE, fonts,
                           "Zendra QX Extra (TrueType)", "qxextra.ttf"));
  HANDLE held =
      ::CreateFileA(ActionsTest::SystemFontFile("lattice.ttf").c_str(),
                    GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);

  // Even a silent install shows the QX Extra message: answer it.
  ChildProcess setup(source.SetupExe(), "-s -i");
  HWND box = setup.WaitForDialog("Zendra Setup", 60000);
  ASSERT_NE(nullptr, box);
  EXPECT_TRUE(Contains(TestSupport::MessageBoxText(box),
                       "An error occurred updating the QX Extra font."));
  SaveScreenshot(box, "qxextra-warning");
  TestSupport::ClickControl(box, IDOK);
  EXPECT_EQ(1, setup.WaitForExit(60000));
  ::CloseHandle(held);

  const std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log,
                       "Failed to replace lattice.ttf, not necessary so "
                       "continue installation.\r\n"))
      << log;
  EXPECT_TRUE(Contains(log,
                       "Old version of QX Extra detected, warn user to "
                       "manually install.\r\n"));
  EXPECT_TRUE(Contains(log, "Failure: Installation of Zendra fonts\r\n"));
  EXPECT_TRUE(Contains(log, "Installation failed!"));
}

TEST(RealInstall, ACurrentFontThatCannotBeReplacedIsNoFailure) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(
      ActionsTest::CopyInto(ActionsTest::SampleFile("lattice.ttf"),
                            ActionsTest::SystemFontFile("lattice.ttf")));
  ASSERT_TRUE(
      SetRegString(HKEY_LOCAL_MACHINE,
                   "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts",
                   "Zendra Lattice (TrueType)", "lattice.ttf"));
  HANDLE held =
      ::CreateFileA(ActionsTest::SystemFontFile("lattice.ttf").c_str(),
                    GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  ::CloseHandle(held);
  const std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log, "Cannot install font: 'lattice.ttf'")) << log;
  EXPECT_TRUE(Contains(log, "Installation successful!"));
}

TEST(RealInstall, RunningWordEndsASilentInstallQuietly) {
  SourceFolder source;
  source.Standard();
  RunningWord word;
  ASSERT_NE(nullptr, word.Window());
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  const std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log, cRunningWordLine)) << log;
  EXPECT_FALSE(Contains(log, "Installation failed!"));
  EXPECT_TRUE(Contains(log, "Zendra installation failed!"));
}

TEST(RealInstall, CloseWordDialogWaitsForWordOrEndsTheInstall) {
  SourceFolder source;
  source.Standard();
  {
    RunningWord word;
    ChildProcess setup(source.SetupExe(), "-i");
    HWND dialog = setup.WaitForDialog("Zendra Setup", 60000);
    ASSERT_NE(nullptr, dialog);
    EXPECT_TRUE(Contains(TestSupport::MessageBoxText(dialog),
                         "Because Zendra Setup installs (or removes) software "
                         "into Microsoft Word, please close Word"));
    SaveScreenshot(dialog, "close-word");
    word.Close();
    TestSupport::ClickControl(dialog, IDOK);  // Try Again
    WaitUntilGone(dialog);
    HWND notify = setup.WaitForDialog("Zendra Setup", 60000);
    ASSERT_NE(nullptr, notify);
    TestSupport::ClickControl(notify, IDC_NOTIFY_YES);
    TestSupport::ClickControl(notify, IDOK);
    EXPECT_EQ(0, setup.WaitForExit(60000));
  }
  EXPECT_TRUE(Contains(ReadLog(cLog), "Installation successful!"));

  RunningWord word;
  ChildProcess setup(source.SetupExe(), "-i");
  HWND dialog = setup.WaitForDialog("Zendra Setup", 60000);
  ASSERT_NE(nullptr, dialog);
  TestSupport::ClickControl(dialog, IDCANCEL);  // Exit Setup
  WaitUntilGone(dialog);
  HWND failed = setup.WaitForDialog("Zendra Setup", 60000);
  ASSERT_NE(nullptr, failed);
  EXPECT_TRUE(Contains(TestSupport::MessageBoxText(failed),
                       "Zendra installation failed!"));
  SaveScreenshot(failed, "install-failed");
  TestSupport::ClickControl(failed, IDOK);
  EXPECT_EQ(1, setup.WaitForExit(60000));
  const std::string log = ReadLog("Zendra Install 2.log");
  EXPECT_TRUE(Contains(log, cRunningWordLine)) << log;
  EXPECT_FALSE(Contains(log, "Installation failed!"));
}
