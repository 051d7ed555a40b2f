// The browser, uninstall and OEM registry entries, each case in a fresh
// prefix: every value read back with its type and data, and the log lines.
#include <windows.h>

#include <ctime>
#include <string>

#include "ActionsTestSupport.h"
#include "TFileSystem.h"
#include "TVarList.h"
#include "Version.h"
#include "ZNRegistryEntries.h"

using namespace ActionsTest;

namespace {

const char cCLSID[] = "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";
const char cFilterCLSID[] = "{5A1C7E36-2B94-4F6D-9E21-7C3B0D84A6F1}";
const char cInstallDir[] = "C:\\Program Files (x86)\\Orvane\\Zendra";
const std::string cUninstallKey =
    std::string("Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\") +
    cCLSID;
const char cUserAgentKey[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\User "
    "Agent\\Post Platform";
const char cUserAgent9Key[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet "
    "Settings\\5.0\\User Agent\\Post Platform";
const char cAcceptedKey[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Accepted "
    "Documents";
const char cFilterKey[] = "PROTOCOLS\\Filter";
const REGSAM c32 = KEY_WOW64_32KEY;

void ExpectString(const std::string& key, const char* name,
                  const std::string& data, HKEY root = HKEY_LOCAL_MACHINE) {
  RegValue value = ReadValue(root, key, name, c32);
  EXPECT_TRUE(value.found) << key << " " << name;
  EXPECT_EQ(static_cast<DWORD>(REG_SZ), value.type) << name;
  EXPECT_EQ(data, value.text) << name;
}

void ExpectNumber(const std::string& key, const char* name, DWORD data,
                  HKEY root = HKEY_LOCAL_MACHINE) {
  RegValue value = ReadValue(root, key, name, c32);
  EXPECT_TRUE(value.found) << key << " " << name;
  EXPECT_EQ(static_cast<DWORD>(REG_DWORD), value.type) << name;
  EXPECT_EQ(data, value.number) << name;
}

std::string Today() {
  char date[16];
  std::time_t now = std::time(nullptr);
  std::strftime(date, sizeof date, "%Y%m%d", std::localtime(&now));
  return date;
}

}  // namespace

TEST(RegistryEntries, BrowserAndPanelEntriesReadBack) {
  CaseLog log;
  const Tern::CPath installDir(cInstallDir);
  EXPECT_TRUE(Zendra::AddToPreApprovedList());
  EXPECT_TRUE(Zendra::AddVersionCheckElevation(installDir));
  EXPECT_TRUE(Zendra::AddEnterpriseMode());
  EXPECT_TRUE(Zendra::AddCompatibilityWarningKey(installDir));
  std::string text = log.Finish();

  EXPECT_TRUE(KeyExists(
      HKEY_LOCAL_MACHINE,
      std::string("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\"
                  "PreApproved\\") +
          cCLSID,
      c32));
  const std::string elevation =
      std::string(
          "SOFTWARE\\Microsoft\\Internet Explorer\\Low "
          "Rights\\ElevationPolicy\\") +
      cCLSID;
  ExpectNumber(elevation, "Policy", 3);
  ExpectString(elevation, "AppName", "VersionCheck.exe");
  ExpectString(elevation, "AppPath", cInstallDir);
  ExpectString(
      "Software\\Policies\\Microsoft\\Internet Explorer\\Main\\EnterpriseMode",
      "Enable", "");
  ExpectNumber(
      "Software\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\"
      "Compatibility Assistant\\Persisted",
      "C:\\Program Files (x86)\\Orvane\\Zendra\\ZendraPanel.cpl", 16,
      HKEY_CURRENT_USER);

  for (const char* step :
       {"Add registry entry for PreApproved List",
        "Add registry entry to elevate VersionCheck privledges",
        "Add registry entry for Enterprise Mode",
        "Add registry entry to prevent Control Panel Compatibility Warning"})
    EXPECT_TRUE(Contains(text, std::string("Start: ") + step + " {")) << step;
  EXPECT_FALSE(Contains(text, "Failure")) << text;
}

TEST(RegistryEntries, UninstallEntryHoldsTwelveValues) {
  CaseLog log;
  const Tern::CPath installDir(cInstallDir);
  EXPECT_FALSE(Zendra::AddUninstallEntries(installDir, "not a version"));
  EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cUninstallKey, c32));
  EXPECT_TRUE(Zendra::AddUninstallEntries(installDir));
  std::string text = log.Finish();

  const std::string setupExe = std::string(cInstallDir) + "\\Setup.exe";
  const std::string fileVersion = SETUP_FILE_VERSION_TEXT;  // "4.2.0.0"
  const DWORD major = std::stoul(fileVersion);
  const DWORD minor = std::stoul(fileVersion.substr(fileVersion.find('.') + 1));
  ExpectString(cUninstallKey, "DisplayName", "Zendra");
  ExpectString(cUninstallKey, "DisplayIcon", setupExe);
  ExpectString(cUninstallKey, "UninstallString", setupExe + " -u");
  ExpectString(cUninstallKey, "Publisher", "Orvane, Inc.");
  ExpectString(cUninstallKey, "DisplayVersion", SETUP_PRODUCT_VERSION_TEXT);
  ExpectNumber(cUninstallKey, "VersionMajor", major);
  ExpectNumber(cUninstallKey, "VersionMinor", minor);
  ExpectString(cUninstallKey, "InstallDate", Today());
  for (const char* name :
       {"HelpLink", "HelpTelephone", "URLInfoAbout", "URLUpdateInfo"})
    EXPECT_FALSE(
        ReadValue(HKEY_LOCAL_MACHINE, cUninstallKey, name, c32).text.empty())
        << name;
  EXPECT_EQ(
      ReadValue(HKEY_LOCAL_MACHINE, cUninstallKey, "URLInfoAbout", c32).text,
      ReadValue(HKEY_LOCAL_MACHINE, cUninstallKey, "URLUpdateInfo", c32).text);
  EXPECT_EQ(12u, ValueNames(HKEY_LOCAL_MACHINE, cUninstallKey, c32).size());

  EXPECT_EQ(1, Count(text, "Failure: Invalid executable version\r\n")) << text;
  EXPECT_TRUE(Contains(text, "uninstall command line = '" + setupExe + " -u'"));
  EXPECT_TRUE(Contains(text, "install date = " + Today() + "\r\n"));
  EXPECT_EQ(1, Count(text, "Failure")) << text;
}

TEST(RegistryEntries, AcceptedDocumentsLoseOnlyTheXhtmlType) {
  ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, cAcceptedKey, "a", "text/html"));
  ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, cAcceptedKey, "b",
                          "application/xhtml+xml"));
  ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, cAcceptedKey, "c", "image/png"));
  CaseLog log;
  EXPECT_TRUE(Zendra::RemoveFromAcceptedDocuments());
  std::vector<std::string> left =
      ValueNames(HKEY_LOCAL_MACHINE, cAcceptedKey, c32);
  EXPECT_EQ((std::vector<std::string>{"a", "c"}), left);
  EXPECT_EQ("image/png",
            ReadValue(HKEY_LOCAL_MACHINE, cAcceptedKey, "c", c32).text);

  // Without the value there is nothing to do, and nothing else changes.
  EXPECT_TRUE(Zendra::RemoveFromAcceptedDocuments());
  EXPECT_EQ(left, ValueNames(HKEY_LOCAL_MACHINE, cAcceptedKey, c32));
  std::string text = log.Finish();
  EXPECT_EQ(1, Count(text, "Deleting value 'b' = 'application/xhtml+xml'."));
  EXPECT_FALSE(Contains(text, "Failure")) << text;
}

TEST(UserAgent, TokenAddedTwiceIsThereOnceAndRemovalKeepsTheOthers) {
  for (const char* key : {cUserAgentKey, cUserAgent9Key}) {
    ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, key, "Zendra 3.10", ""));
    ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, key, "MS-RTC LM 8", ""));
    ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, key, "Other 1.0", "kept"));
  }
  const Tern::CStr token = Zendra::UserAgentToken(SETUP_PRODUCT_VERSION_TEXT);
  EXPECT_STREQ((std::string("Zendra ") + SETUP_PRODUCT_VERSION_TEXT).c_str(),
               token.Chars());
  CaseLog log;
  for (auto which : {Zendra::uakIE, Zendra::uakIE9}) {
    EXPECT_TRUE(Zendra::AddUserAgentToken(which, token.Chars()));
    EXPECT_TRUE(Zendra::AddUserAgentToken(which, token.Chars()));
  }
  for (const char* key : {cUserAgentKey, cUserAgent9Key}) {
    EXPECT_EQ(
        (std::vector<std::string>{"MS-RTC LM 8", "Other 1.0", token.Chars()}),
        ValueNames(HKEY_LOCAL_MACHINE, key, c32))
        << key;
    ExpectString(key, token.Chars(), "");
  }
  EXPECT_TRUE(Zendra::RemoveUserAgentToken(Zendra::uakIE));
  EXPECT_EQ((std::vector<std::string>{"MS-RTC LM 8", "Other 1.0"}),
            ValueNames(HKEY_LOCAL_MACHINE, cUserAgentKey, c32));
  ExpectString(cUserAgentKey, "Other 1.0", "kept");
  EXPECT_EQ(3u, ValueNames(HKEY_LOCAL_MACHINE, cUserAgent9Key, c32).size());
  EXPECT_TRUE(Zendra::RemoveUserAgentToken(Zendra::uakIE9));
  EXPECT_EQ(2u, ValueNames(HKEY_LOCAL_MACHINE, cUserAgent9Key, c32).size());

  std::string text = log.Finish();
  EXPECT_EQ(3, Count(text, "Start: Adding or deleting user agent token {"));
  EXPECT_EQ(3, Count(text, "Start: Adding or deleting IE9 user agent token {"));
  EXPECT_EQ(2, Count(text, "valueName = Zendra 3.10\r\n"));
  EXPECT_EQ(6, Count(text, "valueName = Other 1.0\r\n"));
  EXPECT_EQ(4, Count(text, "adding Zendra token '" +
                               std::string(token.Chars()) + "'"));
  EXPECT_FALSE(Contains(text, "Failure")) << text;
}

TEST(OEM, SettingsFromTheListOrTheRegistryBecomeReadOnlyValues) {
  Tern::CVarList& vars = Tern::CVarList::Global();
  vars.AddSearchLocation("HKEY_LOCAL_MACHINE", "SOFTWARE\\Orvane");
  vars.Set("VendorId", "ACME-7");
  vars.Set("LicenseeAboutText1", "Licensed to ACME");
  vars.Set("BUILD_NUMBER", "1234");
  const std::string ovzn4 = "SOFTWARE\\Orvane\\OVZN4";
  CaseLog log;
  EXPECT_FALSE(Zendra::AddOEMEntries());  // LicenseeAboutText2 is nowhere
  ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, "SOFTWARE\\Orvane",
                          "LicenseeAboutText2", "from the registry"));
  EXPECT_TRUE(Zendra::AddOEMEntries());
  ExpectString(ovzn4, "RO_VendorId", "ACME-7");
  ExpectString(ovzn4, "RO_LicenseeAboutText1", "Licensed to ACME");
  ExpectString(ovzn4, "RO_LicenseeAboutText2", "from the registry");
  ExpectString(ovzn4, "RO_BUILD_NUMBER", "1234");

  ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, ovzn4, "DoVersionChecks", "0"));
  EXPECT_TRUE(Zendra::RemoveOEMEntries());
  EXPECT_EQ((std::vector<std::string>{"DoVersionChecks"}),
            ValueNames(HKEY_LOCAL_MACHINE, ovzn4, c32));
  std::string text = log.Finish();
  EXPECT_EQ(1, Count(text, "Failure: Unable to read LicenseeAboutText2\r\n"))
      << text;
  EXPECT_EQ(2, Count(text, "RO_VendorId ACME-7\r\n"));
  EXPECT_EQ(1, Count(text, "RO_LicenseeAboutText2 from the registry\r\n"));
  EXPECT_EQ(3, Count(text, "Start: Add/Remove registry entries for OEMS {"));
}

TEST(MimeFilter, EachTypeClaimedByAnotherFilterClashes) {
  const char* types[] = {"text/xml",
                         "text/xml; charset=utf-8",
                         "text/xml; charset=iso-8859-1",
                         "application/xhtml+xml",
                         "application/xhtml+xml; charset=utf-8",
                         "application/xhtml+xml; charset=iso-8859-1"};
  const std::string other = "{11111111-2222-3333-4444-555555555555}";
  const std::string filters = cFilterKey;
  for (const char* type : types)
    ASSERT_TRUE(WriteString(HKEY_CLASSES_ROOT, filters + "\\" + type, "CLSID",
                            cFilterCLSID));
  ASSERT_TRUE(CreateKey(HKEY_CLASSES_ROOT, filters + "\\text/plain"));
  ASSERT_TRUE(
      WriteString(HKEY_CLASSES_ROOT, filters + "\\text/html", "CLSID", other));
  {
    CaseLog log;
    EXPECT_FALSE(Zendra::MimeFilterClashes());
    std::string text = log.Finish();
    EXPECT_EQ(6, Count(text, "', status = 2.\r\n")) << text;
    EXPECT_FALSE(Contains(text, "Filter clashes!!!"));
  }
  for (const char* type : types) {
    const std::string key = filters + "\\" + type;
    ASSERT_TRUE(WriteString(HKEY_CLASSES_ROOT, key, "CLSID", other));
    CaseLog log;
    EXPECT_TRUE(Zendra::MimeFilterClashes()) << type;
    std::string text = log.Finish();
    EXPECT_TRUE(
        Contains(text, std::string("For type = '") + type +
                           "', status = 3.\r\n    Filter clashes!!!\r\n"))
        << text;
    EXPECT_EQ(1, Count(text, "Filter clashes!!!")) << type;
    ASSERT_TRUE(WriteString(HKEY_CLASSES_ROOT, key, "CLSID", cFilterCLSID));
  }
  // A type key without a class, or no key at all, is no clash.
  ::RegDeleteKeyA(HKEY_CLASSES_ROOT, (filters + "\\text/xml").c_str());
  ASSERT_TRUE(CreateKey(HKEY_CLASSES_ROOT, filters + "\\text/xml"));
  ::RegDeleteKeyA(HKEY_CLASSES_ROOT,
                  (filters + "\\application/xhtml+xml").c_str());
  CaseLog log;
  EXPECT_FALSE(Zendra::MimeFilterClashes());
  std::string text = log.Finish();
  EXPECT_TRUE(Contains(text, "For type = 'text/xml', status = 1.")) << text;
  EXPECT_TRUE(Contains(text, "For type = 'application/xhtml+xml', status = 0."))
      << text;
}
