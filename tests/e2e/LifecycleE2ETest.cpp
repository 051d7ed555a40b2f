// The product's life on a machine with Word and PowerPoint: an install that
// finds Word open, a repair, the removal, and an audit of what they left.
#include <windows.h>
// After windows.h, which it needs.
#include <wincrypt.h>

#include <filesystem>
#include <string>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "OfficeTestSupport.h"
#include "Residue.h"
#include "SetupResource.h"
#include "Signatures.h"
#include "TestSupport.h"

using namespace E2E;
using namespace TestSupport;
namespace fs = std::filesystem;
using ActionsTest::Contains;
using ActionsTest::Count;
using ActionsTest::FileExists;
using ActionsTest::ReadText;
using ActionsTest::SystemFontFile;

namespace {

const std::string cTemplate =
    cWordFolder + "\\Startup\\" + ActionsTest::cWordTemplate;
const std::string cAddInKey =
    ActionsTest::OfficeKey("16.0", "PowerPoint") +
    "\\AddIns\\Zendra 4 Commands for PowerPoint (32-bit)";
const char cNamespaces[] =
    "SOFTWARE\\Microsoft\\Internet Explorer\\XMLNamespace";
const char cMathML[] = "http://www.w3.org/1998/Math/MathML";
const char cProductKey[] = "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";

std::string Server(const std::string& classKey) {
  return Reg(HKEY_CLASSES_ROOT, classKey + "\\InprocServer32", nullptr);
}

// How many files of the source are in place with the same bytes: fonts in
// both fonts folders, the rest in the install folder.
int CompareInstalledFiles(const std::string& source) {
  int compared = 0;
  for (const auto& entry : fs::recursive_directory_iterator(source)) {
    if (!entry.is_regular_file()) continue;
    const std::string name = fs::relative(entry.path(), source).string();
    const std::string bytes = ReadText(entry.path().string());
    const bool font = entry.path().extension() == ".ttf";
    EXPECT_EQ(bytes, ReadText((font ? cFontsDir : cInstallDir) + "\\" + name));
    if (font) {
      EXPECT_EQ(bytes, ReadText(SystemFontFile(name))) << name;
    }
    ++compared;
  }
  return compared;
}

// The certificates (DER) in the machine's "TrustedPublisher" store whose
// subject holds `name`.
std::vector<std::vector<unsigned char>> TrustedPublishersNamed(
    const char* name) {
  HCERTSTORE store = ::CertOpenStore(
      CERT_STORE_PROV_SYSTEM_A, 0, 0,
      CERT_SYSTEM_STORE_LOCAL_MACHINE | CERT_STORE_READONLY_FLAG,
      "TrustedPublisher");
  std::vector<std::vector<unsigned char>> found;
  PCCERT_CONTEXT cert = nullptr;
  while (store && (cert = ::CertFindCertificateInStore(
                       store, X509_ASN_ENCODING, 0, CERT_FIND_SUBJECT_STR_A,
                       name, cert)))
    found.emplace_back(cert->pbCertEncoded,
                       cert->pbCertEncoded + cert->cbCertEncoded);
  if (store) ::CertCloseStore(store, 0);
  return found;
}

}  // namespace

TEST(Lifecycle, InstallRepairAndRemovalLeaveOnlyWhatTheyMeanTo) {
  SourceFolder source("Source With Spaces");
  source.Standard();
  MakeOffice();
  // Another Orvane product's font in the fonts folder the maker's products
  // share, with its Fonts value, and its own folder beside.
  const std::string otherFont = cFontsDir + "\\orvane_other.ttf";
  const std::string otherFolder =
      "C:\\Program Files (x86)\\Orvane\\Common\\Other Product";
  const std::string otherFile = otherFolder + "\\settings.ini";
  ActionsTest::MakeFolder(otherFolder);
  ActionsTest::MakeFolder(cFontsDir);
  ActionsTest::WriteText(otherFont, "another product's font");
  ActionsTest::WriteText(otherFile, "kept");
  const char cFontsKey[] =
      "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cFontsKey, "Orvane Other (TrueType)",
                     otherFont));
  const Residue::Snapshot before = Residue::Take();
  // Install logs take the first free number, a removal's replaces the last.
  ActionsTest::WriteText(TempDir() + "Zendra Install 1.log", "old one");
  ActionsTest::WriteText(TempDir() + "Zendra Install 3.log", "old three");
  ActionsTest::WriteText(TempDir() + "Zendra Uninstall.log", "an old one");

  // The install waits for Word to close, then asks about notifications.
  RunningWord word;
  ASSERT_NE(nullptr, word.Window());
  SetupRun install(source.SetupExe(), "-i");
  ASSERT_NE(nullptr, install.WaitForDialog());
  word.Close();
  Answer(install, "please close Word", IDOK, "close-word");  // Try Again
  HWND notify = install.WaitForDialog();
  ASSERT_NE(nullptr, notify);
  EXPECT_EQ(0u, ControlText(notify, IDC_NOTIFY_TEXT).find(cInstalled));
  EXPECT_FALSE(ControlEnabled(notify, IDOK));
  EXPECT_FALSE(ControlChecked(notify, IDC_NOTIFY_YES));
  EXPECT_FALSE(ControlChecked(notify, IDC_NOTIFY_NO));
  SaveScreenshot(notify, "notification-first");
  ClickControl(notify, IDC_NOTIFY_YES);
  EXPECT_TRUE(ControlEnabled(notify, IDOK));
  ClickControl(notify, IDOK);
  Outcome run = install.Finish();
  EXPECT_EQ("Zendra Install 2.log", run.logName);
  EXPECT_EQ("Y", Reg(HKEY_CURRENT_USER, cSettingsKey, "Notify"));
  // 19 files and 18 fonts, classes, entries, the trusted publisher.
  EXPECT_EQ(19 + 18, CompareInstalledFiles(source.Dir()));
  EXPECT_EQ("lattice.ttf",
            ActionsTest::FontsKeyValue("Zendra Lattice (TrueType)"));
  EXPECT_EQ(cInstallDir + "\\Zendra.dll", Server(cProductClass));
  EXPECT_EQ(cInstallDir + "\\ZendraBraille.dll",
            Server("CLSID\\{5F496A42-193E-4734-8FCA-1030514B457B}"));
  EXPECT_EQ("Zendra", Reg(HKEY_LOCAL_MACHINE, cUninstallKey, "DisplayName"));
  EXPECT_EQ(SETUP_PRODUCT_VERSION_TEXT,
            Reg(HKEY_LOCAL_MACHINE, cUninstallKey, "DisplayVersion"));
  EXPECT_EQ(cProductKey, Reg(HKEY_LOCAL_MACHINE, cNamespaces, cMathML));
  EXPECT_EQ(1, ProductTokens(cUserAgentKey9));
  EXPECT_EQ(ReadText(source.Dir() + "\\Office Support\\32\\" +
                     ActionsTest::cWordTemplate),
            ReadText(cTemplate));
  EXPECT_EQ(0xFFFFFFFFu, ActionsTest::ReadValue(HKEY_LOCAL_MACHINE, cAddInKey,
                                                "AutoLoad", KEY_WOW64_64KEY)
                             .number);
  // The publisher Setup adds is the one that signed what it installed.
  const std::string publisher =
      ReadText(WindowsPath(ArgValue("publisher-cer")));
  const Zendra::CSignature signature = Zendra::ReadSignature(
      Tern::CPath((cInstallDir + "\\Zendra.dll").c_str()));
  ASSERT_EQ(1u, TrustedPublishersNamed("Orvane").size());
  EXPECT_TRUE(TrustedPublishersNamed("Orvane")[0] == signature.signer);
  EXPECT_EQ(publisher,
            std::string(signature.signer.begin(), signature.signer.end()));
  // The one failure: no installed copy. A copy of the log lies beside.
  EXPECT_TRUE(Ended(
      run, 0,
      {"Close Word dialog: Try Again.", "Failure: Open CLSID key\r\n",
       "Zendra not installed.", "Install source folder = '" + source.Dir(),
       std::string("(Setup's product version) = '") +
           SETUP_PRODUCT_VERSION_TEXT,
       "'Program Files' directory = 'C:\\Program Files (x86)'.",
       "Installation successful!\r\n", cInstalled, "(error count = 1)"},
      {"MessageDialog"}));
  EXPECT_EQ(1, Count(run.log, "Failure"));
  EXPECT_EQ(run.log, ReadText(cInstallDir + "\\" + run.logName));
  // Word is looked for once, in the Word step.
  EXPECT_EQ(1, Count(run.log, "MS Word 16 (32-bit) found at"));
  EXPECT_EQ(1, Count(run.log,
                     "regKeyFound is False: REG*HKEY_LOCAL_MACHINE\\Software\\"
                     "Microsoft\\Office\\17.0\\Word\r\n"));
  EXPECT_EQ("another product's font", ReadText(otherFont));
  EXPECT_EQ("kept", ReadText(otherFile));
  EXPECT_EQ(otherFont, ActionsTest::FontsKeyValue("Orvane Other (TrueType)"));

  // The installed Setup.exe taken for a repair: it would replace its own
  // source, so it changes nothing and says where to run Setup from.
  EXPECT_TRUE(Ended(RunSetup(cInstallDir + "\\Setup.exe", "-s -i"), 1,
                    {"Zendra can't be installed from '" + cInstallDir +
                         "': that is where Zendra is installed",
                     "Zendra installation failed!"},
                    {"Deleting contents", "Copy '"}));
  EXPECT_EQ(19 + 18, CompareInstalledFiles(source.Dir()));

  // A repair writes the product over the installed copy: a file grown
  // since is cut back, a read-only one replaced, one of its own kept out.
  const std::string rules = cInstallDir + "\\Rules\\Rules.txt",
                    table = cInstallDir + "\\LibLouis\\Tables\\de-g0.utb",
                    stray = cInstallDir + "\\Rules\\Navigation\\mine.rules";
  ActionsTest::WriteText(rules, ReadText(rules) + " and more besides");
  ::SetFileAttributesA(table.c_str(), FILE_ATTRIBUTE_READONLY);
  ActionsTest::WriteText(stray, "not the product's");
  // A repair finds the installed copy and the stored answer; nothing twice.
  SetupRun repair(source.SetupExe(), "-i");
  notify = repair.WaitForDialog();
  ASSERT_NE(nullptr, notify);
  EXPECT_TRUE(ControlChecked(notify, IDC_NOTIFY_YES));
  EXPECT_TRUE(ControlEnabled(notify, IDOK));
  ClickControl(notify, IDC_NOTIFY_NO);
  ClickControl(notify, IDOK);
  run = repair.Finish();
  EXPECT_EQ("Zendra Install 5.log", run.logName);
  EXPECT_EQ("old one", ReadText(TempDir() + "Zendra Install 1.log"));
  EXPECT_EQ("old three", ReadText(TempDir() + "Zendra Install 3.log"));
  EXPECT_TRUE(Ended(run, 0,
                    {"Start: Create Fonts directory {\r\n    directory '" +
                         cFontsDir + "' already exists.\r\n",
                     "Start: Create LibLouis Tables directory {",
                     "InstalledVersion = '4.2.0.0'.",
                     "server path from InprocServer32 key = '" + cInstallDir +
                         "\\Zendra.dll'.",
                     "Zendra already installed.", cInstalled},
                    {"upgraded"}));
  EXPECT_EQ(19 + 18, CompareInstalledFiles(source.Dir()));
  EXPECT_EQ(fs::last_write_time(source.Dir() + "\\Rules\\Rules.txt"),
            fs::last_write_time(rules));
  EXPECT_EQ(0u, ::GetFileAttributesA(table.c_str()) & FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(FileExists(stray));
  EXPECT_EQ("N", Reg(HKEY_CURRENT_USER, cSettingsKey, "Notify"));
  EXPECT_FALSE(FileExists(SystemFontFile("lattice_01.ttf")));
  EXPECT_EQ(1, ProductTokens(cUserAgentKey9));

  // The removal as Add/Remove Programs starts it, while a browser has a
  // component loaded: that file goes at the next restart. An earlier
  // removal's configuration, read-only, makes way for this one's.
  HMODULE browser = ::LoadLibraryA((cInstallDir + "\\ZendraBHO.dll").c_str());
  ASSERT_NE(nullptr, browser);
  const std::string olderCopy = TempDir() + "Zendra.ovc";
  ActionsTest::WriteText(olderCopy, "an older removal's copy");
  ::SetFileAttributesA(olderCopy.c_str(), FILE_ATTRIBUTE_READONLY);
  SetupRun removal("C:\\windows\\system32\\uninstaller.exe",
                   std::string("--remove ") + cProductKey);
  HWND box = WaitForAnyWindow("Zendra Setup", 60000);  // Setup's, not its
  ASSERT_NE(nullptr, box);
  EXPECT_EQ(
      "Zendra removed successfully.\n\nSome of its files are in use: they are "
      "deleted when Windows restarts, which finishes the removal.",
      MessageBoxText(box));
  SaveScreenshot(box, "removed");
  ClickControl(box, IDOK);
  run = removal.Finish();
  EXPECT_TRUE(WaitUntilGone(cInstallDir + "\\Setup.exe"));
  ::FreeLibrary(browser);
  Restart();
  EXPECT_FALSE(fs::exists(cInstallDir)) << "the install folder stays";
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));
  EXPECT_EQ("Zendra Uninstall.log", run.logName);
  EXPECT_TRUE(Ended(
      run, 0,  // the uninstaller's exit code, and Setup's in the log
      {"Zendra removed successfully.", "Success: Create batch file\r\n",
       "Success: Write batch file\r\n",
       "Success: Run batch file to delete Setup and install directory\r\n",
       "The OS is a 64 bit OS\r\n",
       "Success (Ok, 0x00000200): Delete the older Zendra.ovc in the "
       "temporary folder\r\n"},
      {"Failure", "an old one"}));
  // Gone: all but what the product keeps on purpose (the audit's list), and
  // Wine's records. The older configuration, the class, every entry, the
  // Word template and the add-in's key among it.
  for (const std::string& line : Residue::Unexpected(before, Residue::Take()))
    ADD_FAILURE() << line;
}
