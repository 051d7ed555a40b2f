// The PowerPoint add-in and the Office registry helpers.
#include <windows.h>

#include "OfficeTestSupport.h"
#include "TVarList.h"
#include "ZNOfficeRegistry.h"
#include "ZNPowerPoint.h"

using namespace ActionsTest;

namespace {

using PowerPoint = OfficeCase;

const char cAddInName[] = "Zendra 4 Commands for PowerPoint (32-bit)";

std::string AddInKey(const char* office) {
  return OfficeKey(office, "PowerPoint") + "\\AddIns\\" + cAddInName;
}

std::string AddInPath() {
  return std::string(cInstallDir) + "\\Office Support\\32\\" + cPowerPointAddIn;
}

void MakePowerPoint(const char* office) {
  ASSERT_TRUE(CreateKey(HKEY_LOCAL_MACHINE,
                        OfficeKey(office, "PowerPoint") + "\\InstallRoot",
                        KEY_WOW64_32KEY));
}

}  // namespace

TEST_F(PowerPoint, AddInLandsInThe64BitViewForVersionsFound) {
  MakePowerPoint("14.0");
  MakePowerPoint("16.0");
  ASSERT_TRUE(CreateKey(HKEY_LOCAL_MACHINE, OfficeKey("15.0", "PowerPoint"),
                        KEY_WOW64_32KEY));  // no InstallRoot
  const std::string otherAddIn =
      OfficeKey("16.0", "PowerPoint") + "\\AddIns\\Other";
  ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE, otherAddIn, "Path", "C:\\o.ppam",
                          KEY_WOW64_64KEY));
  CaseLog log;
  EXPECT_TRUE(Zendra::InstallMSPowerPtAddIns(Tern::CPath(cInstallDir)));
  for (const char* office : {"14.0", "16.0"}) {
    RegValue autoLoad = ReadValue(HKEY_LOCAL_MACHINE, AddInKey(office),
                                  "AutoLoad", KEY_WOW64_64KEY);
    EXPECT_EQ(static_cast<DWORD>(REG_DWORD), autoLoad.type) << office;
    EXPECT_EQ(0xFFFFFFFFu, autoLoad.number) << office;
    RegValue path = ReadValue(HKEY_LOCAL_MACHINE, AddInKey(office), "Path",
                              KEY_WOW64_64KEY);
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), path.type);
    EXPECT_EQ(AddInPath(), path.text);
    EXPECT_FALSE(
        KeyExists(HKEY_LOCAL_MACHINE, AddInKey(office), KEY_WOW64_32KEY));
  }
  for (const char* office : {"12.0", "15.0", "17.0"})
    for (REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY})
      EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, AddInKey(office), view))
          << office;

  // A key with a subkey can't be deleted: the removal says so and goes on.
  ASSERT_TRUE(CreateKey(HKEY_LOCAL_MACHINE, AddInKey("14.0") + "\\Stuck",
                        KEY_WOW64_64KEY));
  EXPECT_FALSE(Zendra::RemoveMSPowerPtAddIns());
  EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, AddInKey("14.0"), KEY_WOW64_64KEY));
  EXPECT_FALSE(
      KeyExists(HKEY_LOCAL_MACHINE, AddInKey("16.0"), KEY_WOW64_64KEY));
  EXPECT_EQ(
      "C:\\o.ppam",
      ReadValue(HKEY_LOCAL_MACHINE, otherAddIn, "Path", KEY_WOW64_64KEY).text);

  std::string text = log.Finish();
  for (const char* year : {"2007", "2013", "2019"})
    EXPECT_EQ(1,
              Count(text, std::string("InstallMSPowerPtAddIns NOT installing: "
                                      "Microsoft PowerPoint ") +
                              year + "\r\n"))
        << text;
  EXPECT_TRUE(
      Contains(text,
               "InstallMSPowerPtAddIns installing: Microsoft PowerPoint 2010, "
               "Filename: " +
                   AddInPath() + ", appKeyStr: " + AddInKey("14.0") +
                   ", addInName: " + cAddInName + "\r\n"))
      << text;
  EXPECT_TRUE(Contains(
      text,
      "Start: Check versions of PowerPoint and adding macros for them {"));
  EXPECT_EQ(1, Count(text, "Deleting " + AddInKey("16.0") +
                               ", result = success\r\n"));
  EXPECT_EQ(1, Count(text, "Deleting " + AddInKey("14.0") +
                               ", result = failure\r\n"));
  EXPECT_FALSE(Contains(text, "Failure")) << text;
}

TEST_F(PowerPoint, OnA32BitSystemTheOnlyViewIsUsed) {
  Tern::CVarList::Global().Set("OSIs64Bit", "0");
  MakePowerPoint("16.0");
  CaseLog log;
  EXPECT_TRUE(Zendra::InstallMSPowerPtAddIns(Tern::CPath(cInstallDir)));
  EXPECT_EQ(AddInPath(), ReadValue(HKEY_LOCAL_MACHINE, AddInKey("16.0"), "Path",
                                   KEY_WOW64_32KEY)
                             .text);
  EXPECT_FALSE(
      KeyExists(HKEY_LOCAL_MACHINE, AddInKey("16.0"), KEY_WOW64_64KEY));
  Zendra::RemoveMSPowerPtAddIns();
  EXPECT_FALSE(
      KeyExists(HKEY_LOCAL_MACHINE, AddInKey("16.0"), KEY_WOW64_32KEY));
}

TEST(OfficeRegistry, PathsAndFailuresAreWordedAsLogged) {
  HKEY root = nullptr;
  Tern::CStr subKey;
  EXPECT_TRUE(Zendra::IniParsePath(
      "REG*HKEY_CURRENT_USER\\Software\\Orvane\\Test", root, subKey));
  EXPECT_EQ(HKEY_CURRENT_USER, root);
  EXPECT_STREQ("Software\\Orvane\\Test", subKey.Chars());
  for (const char* bad :
       {"HKEY_CURRENT_USER\\Software", "REG*HKEY_NOWHERE\\Software",
        "REG*HKEY_CURRENT_USER", "REG*\\Software", ""})
    EXPECT_FALSE(Zendra::IniParsePath(bad, root, subKey)) << bad;

  CaseLog log;
  EXPECT_TRUE(Zendra::RegCreateKeyValue(HKEY_CURRENT_USER, "Software\\Orvane",
                                        "", "default text", false));
  EXPECT_EQ("default text",
            ReadValue(HKEY_CURRENT_USER, "Software\\Orvane", nullptr).text);
  const std::string longName(300, 'x');
  EXPECT_FALSE(Zendra::RegCreateKeyValue(
      HKEY_CURRENT_USER, ("Software\\" + longName).c_str(), "Value", 7, false));
  std::string text = log.Finish();
  EXPECT_TRUE(Contains(text,
                       "Failure: RegCreateKeyValue couldn't create key, "
                       "\"0x80000001\\Software\\" +
                           longName + "\".\r\n"))
      << text;
}
