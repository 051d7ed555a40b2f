// The install's steps seen from outside: a machine prepared with other
// programs' entries, Office versions, fonts and faults, Setup.exe run on it as
// a user would, and its exit code, log, registry and files read back. Each
// case runs in a fresh prefix (run-fresh.sh --locked-folders).
#include <windows.h>
// After windows.h, which it needs.
#include <sddl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "OfficeTestSupport.h"

using namespace ActionsTest;
using namespace E2E;

namespace {

const HKEY cMachine = HKEY_LOCAL_MACHINE;
const REGSAM c64 = KEY_WOW64_64KEY;
const char cLog[] = "Zendra Install 1.log";
const char cFontsKey[] =
    "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
const char cMimeFilterClass[] = "{5A1C7E36-2B94-4F6D-9E21-7C3B0D84A6F1}";
const char* const cUserAgentKeys[] = {cUserAgentKey, cUserAgentKey9};
const char* const cWordRoots[] = {"C:\\Office16", "C:\\Office14",
                                  "C:\\Office12"};

// A value as a 32-bit program reads it: its text, or its number.
std::string Text(const std::string& key, const char* name, HKEY root = cMachine,
                 REGSAM view = KEY_WOW64_32KEY) {
  return ReadValue(root, key, name, view).text;
}
DWORD Number(const std::string& key, const char* name, HKEY root = cMachine,
             REGSAM view = KEY_WOW64_32KEY) {
  return ReadValue(root, key, name, view).number;
}
// The names of the machine key's values, sorted.
std::vector<std::string> Names(const std::string& key) {
  std::vector<std::string> names = ValueNames(cMachine, key, KEY_WOW64_32KEY);
  std::sort(names.begin(), names.end());
  return names;
}

std::string AddInKey(const char* office) {
  return OfficeKey(office, "PowerPoint") +
         "\\AddIns\\Zendra 4 Commands for PowerPoint (32-bit)";
}
std::string InStartup(const std::string& root) {
  return root + "\\Startup\\" + cWordTemplate;
}

// The run failed at `step`, for the reason `detail` the log gives.
void ExpectFailedAt(const std::string& log, const std::string& detail,
                    const std::string& step) {
  EXPECT_TRUE(Contains(log, detail)) << log;
  EXPECT_TRUE(Contains(log, "Failure: " + step + "\r\n")) << log;
}

// Answers each message box of an interactive run with OK until the run
// ends; gives their texts in order.
std::vector<std::string> AnswerEveryBox(TestSupport::ChildProcess& setup) {
  std::vector<std::string> texts;
  while (HWND box = setup.WaitForDialog("Zendra Setup", 60000)) {
    texts.push_back(TestSupport::MessageBoxText(box));
    TestSupport::ClickControl(box, IDOK);
    for (int i = 0; i < 200 && ::IsWindow(box); ++i) ::Sleep(50);
  }
  return texts;
}

// Lets everyone read the system's fonts key and no one write it; Wine
// checks a key's security when it is opened.
void MakeFontsKeyReadOnly() {
  HKEY key = nullptr;
  PSECURITY_DESCRIPTOR readOnly = nullptr;
  ASSERT_FALSE(::RegOpenKeyExA(cMachine, cFontsKey, 0, WRITE_DAC, &key));
  ASSERT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorA(
      "D:(A;;KR;;;WD)", SDDL_REVISION_1, &readOnly, nullptr));
  EXPECT_FALSE(::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, readOnly));
  ::LocalFree(readOnly);
  ::RegCloseKey(key);
}

int RunSetup(const SourceFolder& source, const std::string& arguments) {
  return E2E::RunSetup(source.SetupExe(), arguments).exitCode;
}
std::string ReadLog(const std::string& name) {
  return ReadText(TempDir() + name);
}

}  // namespace

// The machine has a newer copy of one of the product's fonts, an empty file
// under another's name (a copy killed halfway), and the browser's document
// types.
TEST(Entries, TheInstallWritesItsOwnAndKeepsWhatOtherProgramsWrote) {
  SourceFolder source;
  source.Standard();
  const std::string newer = TestFontFile("newer", "latticeb.ttf");
  ASSERT_TRUE(CopyInto(newer, SystemFontFile("latticeb.ttf")));
  ASSERT_TRUE(WriteString(cMachine, cFontsKey, "Zendra Lattice Bold (TrueType)",
                          "latticeb.ttf"));
  WriteText(SystemFontFile("lamat1.ttf"), "");
  const std::string accepted =
      "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet "
      "Settings\\Accepted Documents";
  ASSERT_TRUE(WriteString(cMachine, accepted, "a", "text/html"));
  ASSERT_TRUE(WriteString(cMachine, accepted, "b", "application/xhtml+xml"));
  ASSERT_TRUE(WriteString(cMachine, accepted, "c", "image/png"));

  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  const std::string log = ReadLog(cLog);
  EXPECT_EQ(5, Count(log, "Success (Ok, 0x00000200): Register DLL\r\n"));
  EXPECT_EQ(ReadText(newer), ReadText(SystemFontFile("latticeb.ttf")));
  EXPECT_TRUE(Contains(log, "Not installing font as existing font is newer"));
  EXPECT_EQ("lamat1.ttf", FontsKeyValue("Zendra Lattice Matrix One "
                                        "(TrueType)"));
  EXPECT_EQ(ReadText(source.Dir() + "\\lamat1.ttf"),
            ReadText(SystemFontFile("lamat1.ttf")));
  EXPECT_FALSE(FileExists(SystemFontFile("lamat1_01.ttf")));
  EXPECT_EQ((std::vector<std::string>{"a", "c"}), Names(accepted));

  const std::string product = std::string(cProductClass).substr(6);
  EXPECT_TRUE(KeyExists(cMachine,
                        "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\"
                        "PreApproved\\" +
                            product,
                        KEY_WOW64_32KEY));
  const std::string elevation =
      "SOFTWARE\\Microsoft\\Internet Explorer\\Low Rights\\ElevationPolicy\\" +
      product;
  EXPECT_EQ(3u, Number(elevation, "Policy"));
  EXPECT_EQ("VersionCheck.exe", Text(elevation, "AppName"));
  EXPECT_EQ(cInstallDir, Text(elevation, "AppPath"));
  EXPECT_EQ(static_cast<DWORD>(REG_SZ),
            ReadValue(cMachine,
                      "Software\\Policies\\Microsoft\\Internet "
                      "Explorer\\Main\\EnterpriseMode",
                      "Enable")
                .type);
  EXPECT_EQ(16u, Number("Software\\Microsoft\\Windows NT\\CurrentVersion\\"
                        "AppCompatFlags\\Compatibility Assistant\\Persisted",
                        (cInstallDir + "\\ZendraPanel.cpl").c_str(),
                        HKEY_CURRENT_USER));

  EXPECT_EQ(cInstallDir + "\\Setup.exe", Text(cUninstallKey, "DisplayIcon"));
  EXPECT_EQ("Orvane, Inc.", Text(cUninstallKey, "Publisher"));
}

// Word 2016 and 2013 share a folder, 2010's path is quoted and lacks the
// closing backslash, 2007's is in the Common key, the 17.0 key has no install
// root; PowerPoint 2010 and 2016 are there, 2013 has no install root. Other
// add-ins and user-agent tokens are there already, and an older Zendra's.
TEST(Office, EveryVersionFoundGetsTheAddInsAndTheRemovalTakesOnlyThose) {
  SourceFolder source;
  source.Standard();
  for (const char* root : cWordRoots) MakeWordFolder(root);
  SetInstallRoot("16.0", "Word", "C:\\Office16\\");
  SetInstallRoot("15.0", "Word", "C:\\Office16\\");
  SetInstallRoot("14.0", "Word", "\"C:\\Office14\"");
  SetInstallRoot("12.0", "Word", "");
  SetInstallRoot("12.0", "Common", "C:\\Office12");
  ASSERT_TRUE(CreateKey(cMachine, OfficeKey("17.0", "Word"), KEY_WOW64_32KEY));
  for (const char* office : {"14.0", "16.0"})
    SetInstallRoot(office, "PowerPoint", "");
  ASSERT_TRUE(
      CreateKey(cMachine, OfficeKey("15.0", "PowerPoint"), KEY_WOW64_32KEY));
  ASSERT_TRUE(
      CreateKey(cMachine, OfficeKey("12.0", "PowerPoint\\InstallRoot"), c64));
  const std::string other = OfficeKey("16.0", "PowerPoint") + "\\AddIns\\Other";
  ASSERT_TRUE(WriteString(cMachine, other, "Path", "C:\\o.ppam", c64));
  for (const char* key : cUserAgentKeys) {
    ASSERT_TRUE(WriteString(cMachine, key, "Zendra 3.10", ""));
    ASSERT_TRUE(WriteString(cMachine, key, "Other 1.0", "kept"));
  }
  ASSERT_TRUE(WriteString(cMachine, cSettingsKey, "DoVersionChecks", "0"));

  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  const std::string support = cInstallDir + "\\Office Support\\32\\";
  const std::string macros = ReadText(support + cWordTemplate);
  ASSERT_FALSE(macros.empty());
  for (const char* root : cWordRoots)
    EXPECT_EQ(macros, ReadText(InStartup(root))) << root;
  const std::string addIn =
      support + "Zendra 4 Commands for PowerPoint (32-bit).ppam";
  EXPECT_TRUE(FileExists(addIn));
  for (const char* office : {"14.0", "16.0"}) {
    EXPECT_EQ(0xFFFFFFFFu, Number(AddInKey(office), "AutoLoad", cMachine, c64));
    EXPECT_EQ(addIn, Text(AddInKey(office), "Path", cMachine, c64)) << office;
  }
  for (const char* office : {"12.0", "15.0", "17.0"})
    for (REGSAM view : {static_cast<REGSAM>(KEY_WOW64_32KEY), c64})
      EXPECT_FALSE(KeyExists(cMachine, AddInKey(office), view)) << office;
  EXPECT_TRUE(Contains(ReadLog(cLog),
                       "PowerPoint 2007 found in the 64-bit registry view only "
                       "(REG*HKEY_LOCAL_MACHINE\\Software\\Microsoft\\"
                       "Office\\12.0\\PowerPoint\\InstallRoot): Bitness "
                       "mismatch"));
  const std::string token = "Zendra " + Text(cUninstallKey, "DisplayVersion");
  for (const char* key : cUserAgentKeys)
    EXPECT_EQ((std::vector<std::string>{"Other 1.0", token}), Names(key));

  // A template another program holds open stays, and fails the removal; the
  // removal goes on with the rest.
  const std::string held = InStartup("C:\\Office14");
  HANDLE file = ::CreateFileA(held.c_str(), GENERIC_READ, FILE_SHARE_READ,
                              nullptr, OPEN_EXISTING, 0, nullptr);
  TestSupport::ChildProcess removal(cInstallDir + "\\Setup.exe", "-s -u");
  EXPECT_EQ(1, removal.WaitForExit(60000));
  ::CloseHandle(file);
  const std::string removalLog = ReadLog("Zendra Uninstall.log");
  EXPECT_TRUE(
      Contains(removalLog, "Failure: Unable to remove Word Macros\r\n"));
  // The shared folder's template, gone with the first version's, is no
  // failure of the second's.
  EXPECT_EQ(1, Count(removalLog, "result = failure")) << removalLog;
  EXPECT_TRUE(FileExists(held));
  for (const char* root : {"C:\\Office16", "C:\\Office12"})
    EXPECT_FALSE(FileExists(InStartup(root))) << root;
  for (const char* office : {"14.0", "16.0"})
    EXPECT_FALSE(KeyExists(cMachine, AddInKey(office), c64)) << office;
  EXPECT_EQ("C:\\o.ppam", Text(other, "Path", cMachine, c64));
  for (const char* key : cUserAgentKeys) {
    EXPECT_EQ(std::vector<std::string>{"Other 1.0"}, Names(key));
    EXPECT_EQ("kept", Text(key, "Other 1.0"));
  }
  EXPECT_EQ(std::vector<std::string>{"DoVersionChecks"}, Names(cSettingsKey));
}

// Word 2016's Startup folder is read-only and 2013's holds a read-only
// template (run-fresh.sh lays both out), 2010's has no Startup folder, and
// 2007 is a 64-bit Word, which has no use for the 32-bit template; so is
// the Word registered only in the 64-bit registry view.
TEST(WordMacros, FoldersThatCannotTakeTheTemplateAreExplained) {
  SourceFolder source;
  source.Standard();
  SetInstallRoot("16.0", "Word", "C:\\ZendraLocked\\ReadOnlyRoot\\");
  SetInstallRoot("15.0", "Word", "C:\\ZendraLocked\\TargetRoot\\");
  MakeWordFolder("C:\\NoStartup", false);
  SetInstallRoot("14.0", "Word", "C:\\NoStartup\\");
  MakeFolder("C:\\Office64\\Startup");
  ASSERT_TRUE(CopyInto("C:\\windows\\sysnative\\notepad.exe",
                       "C:\\Office64\\WINWORD.EXE"));
  SetInstallRoot("12.0", "Word", "C:\\Office64\\");
  ASSERT_TRUE(WriteString(cMachine, OfficeKey("17.0", "Word") + "\\InstallRoot",
                          "PATH", "C:\\Office64\\", c64));

  TestSupport::ChildProcess setup(source.SetupExe(), "-i");
  std::vector<std::string> boxes = AnswerEveryBox(setup);
  EXPECT_EQ(1, setup.WaitForExit(60000));
  ASSERT_EQ(4u, boxes.size());
  EXPECT_TRUE(Contains(
      boxes[0], "Word 2016 because Word's Startup folder is read-only."));
  EXPECT_TRUE(
      Contains(boxes[1], "Word 2013 because the target file is read-only."));
  EXPECT_TRUE(Contains(boxes[1], std::string("\"") + cWordTemplate + "\""));
  EXPECT_TRUE(Contains(
      boxes[2], "Word 2010 because Word's Startup folder does not exist."));
  for (const std::string& text : boxes)
    EXPECT_FALSE(Contains(text, "<")) << text;  // every placeholder filled
  EXPECT_TRUE(Contains(boxes[3], "Zendra installation failed!"));
  const std::string log = ReadLog(cLog);
  EXPECT_TRUE(Contains(log,
                       "ReadOnlyRoot\\Startup, because the folder is "
                       "locked.\r\n"))
      << log;
  EXPECT_TRUE(Contains(log, "Failure: Unable to copy Word Macros\r\n"));
  EXPECT_TRUE(Contains(log,
                       " found in the 64-bit registry view only (REG*HKEY_"
                       "LOCAL_MACHINE\\Software\\Microsoft\\Office\\17.0\\"
                       "Word): Bitness mismatch"))
      << log;
  EXPECT_FALSE(Contains(log, "Office\\17.0\\Word\r\n"));
  EXPECT_EQ("an older template\n",
            ReadText(InStartup("C:\\ZendraLocked\\TargetRoot")));
  EXPECT_FALSE(FileExists(InStartup("C:\\Office64")));
}

// A file where the product's fonts folder goes, a source font that is no
// font and a fonts key no one may write, settings
// without the second licensee text, a component without its registration
// entry point, a browser without the namespace registration, and another
// MIME filter on one of the product's types: each run fails at the first
// fault still there, and once all are mended the install succeeds.
TEST(Faults, EachStepsFaultEndsTheInstallUntilMended) {
  SourceFolder source;
  source.Standard();
  ASSERT_TRUE(
      CopyInto(source.Dir() + "\\About.gif", source.Dir() + "\\lafrak.ttf"));
  MakeFontsKeyReadOnly();
  ASSERT_TRUE(source.WriteConfig(
      {"OVCMajVersion=4", "AppName=Zendra", "SetupName=Zendra Setup",
       "VendorId=ACME-7", "LicenseeAboutText1=Licensed", "BUILD_NUMBER=12"}));
  const std::string bho = source.Dir() + "\\ZendraBHO.dll";
  ASSERT_TRUE(CopyBuilt("plain-dll", bho));
  ASSERT_TRUE(WriteString(HKEY_CURRENT_USER, "Software\\Wine\\DllOverrides",
                          "mshtml", "builtin"));

  MakeFolder(cFontsDir.substr(0, cFontsDir.rfind('\\')));
  WriteText(cFontsDir, "in the way");
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  ExpectFailedAt(ReadLog(cLog),
                 "Start: Create Fonts directory {\r\n    Failure "
                 "(E_FSNotDirectory, 0x80000403): Create directory.\r\n"
                 "    MessageDialog (suppressed due to -s option):\r\n"
                 "    Unable to create Zendra folder (" +
                     cFontsDir + ").",
                 "Installation of Zendra fonts");
  ASSERT_TRUE(::DeleteFileA(cFontsDir.c_str()));
  EXPECT_EQ(1, RunSetup(source, "-s -i"));
  const std::string fonts = ReadLog("Zendra Install 2.log");
  ExpectFailedAt(fonts,
                 "Cannot install font: 'lafrak.ttf' (error: 'E_BadFontFile'",
                 "Installation of Zendra fonts");
  EXPECT_TRUE(
      Contains(fonts, "InstallFont: Could not open fonts registry key"));
  // The fonts stay as that run left them: the later runs leave them out.
  EXPECT_EQ(1, RunSetup(source, "-s -i -nofonts"));
  ExpectFailedAt(ReadLog("Zendra Install 3.log"),
                 "Failure: Unable to read LicenseeAboutText2",
                 "Unable to add registry entries");
  // The machine's setting is taken before the user's.
  ASSERT_TRUE(WriteString(cMachine, cSettingsKey, "LicenseeAboutText2",
                          "the machine's"));
  ASSERT_TRUE(WriteString(HKEY_CURRENT_USER, "SOFTWARE\\Orvane",
                          "LicenseeAboutText2", "the user's"));
  EXPECT_EQ(1, RunSetup(source, "-s -i -nofonts"));
  ExpectFailedAt(ReadLog("Zendra Install 4.log"),
                 "Success (Ok, 0x00000200): Load DLL\r\n"
                 "    Failure (E_NotFound, 0x80000202): Register DLL\r\n",
                 "Unable to register ZendraBHO");
  ASSERT_TRUE(CopyInto(SampleFile("ZendraBHO.dll"), bho));
  EXPECT_EQ(1, RunSetup(source, "-s -i -nofonts"));
  ExpectFailedAt(ReadLog("Zendra Install 5.log"),
                 "Failure: Find IERegisterXMLNS in mshtml.dll",
                 "Unable to add XMLNamespace.");
  ASSERT_TRUE(InstallBrowserStandIn());
  // The last of the six types the product's filter claims; a clash on the
  // first is in the end-to-end install tests.
  const std::string type =
      "PROTOCOLS\\Filter\\application/xhtml+xml; charset=iso-8859-1";
  ASSERT_EQ(cMimeFilterClass, Text(type, "CLSID", HKEY_CLASSES_ROOT));
  ASSERT_TRUE(WriteString(HKEY_CLASSES_ROOT, type, "CLSID", "{1234}"));
  EXPECT_EQ(1, RunSetup(source, "-s -i -nofonts"));
  EXPECT_TRUE(Contains(ReadLog("Zendra Install 6.log"), "Filter clashes!!!"));
  ASSERT_TRUE(WriteString(HKEY_CLASSES_ROOT, type, "CLSID", cMimeFilterClass));

  EXPECT_EQ(0, RunSetup(source, "-s -i -nofonts"));
  EXPECT_TRUE(
      Contains(ReadLog("Zendra Install 7.log"), "Installation successful!"));
  EXPECT_EQ("the machine's", Text(cSettingsKey, "RO_LicenseeAboutText2"));
  EXPECT_EQ("ACME-7", Text(cSettingsKey, "RO_VendorId"));
}
