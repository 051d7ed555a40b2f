// The setup's pieces in process: its version resource and its string table,
// as built into this test program from Setup.rc.
#include <windows.h>

#include <string>

#include "InstallLocation.h"
#include "SetupResource.h"
#include "StringTable.h"
#include "TVersion.h"
#include "TestSupport.h"
#include "Version.h"
#include "WindowDriver.h"

using namespace TestSupport;

TEST(SetupExe, VersionResourceCarriesOneProductVersion) {
  const std::string setup = WindowsPath(ArgValue("setup-exe"));
  Tern::CStr product, file;
  ASSERT_TRUE(Tern::CVersion::GetVersionInfo(
      setup.c_str(), Tern::CVersion::viProductVersion, product));
  ASSERT_TRUE(Tern::CVersion::GetVersionInfo(
      setup.c_str(), Tern::CVersion::viFileVersion, file));
  EXPECT_STREQ(SETUP_PRODUCT_VERSION_TEXT, product.Chars());
  // The display text and the dotted text name the same version.
  Tern::CVersion fromProduct, fromFile;
  ASSERT_EQ(Tern::Ok, fromProduct.Parse(product.Chars()));
  ASSERT_EQ(Tern::Ok, fromFile.Parse(file.Chars()));
  EXPECT_STREQ(product.Chars(), fromFile.Text().Chars());
}

TEST(VersionInfo, OnlyTheUSEnglishBlockCounts) {
  const std::string german = WindowsPath(ArgValue("german-exe"));
  Tern::CStr text("untouched");
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      german.c_str(), Tern::CVersion::viProductVersion, text));
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      "C:\\no such file.exe", Tern::CVersion::viFileVersion, text));
  EXPECT_STREQ("untouched", text.Chars());
}

// Every Word row's warning is whole: its block ends before the next row's,
// names its own Word version, and has a reason and an action for each kind
// of failure.
TEST(Strings, EachWordRowHasItsWholeWarning) {
  const char* years[] = {"2007", "2010", "2013", "2016", "2016"};
  for (int row = 0; row < 5; ++row) {
    SCOPED_TRACE(row);
    const unsigned offset = IDS_BLOCK_STRIDE * row;
    const std::string message =
        Zendra::GetResBlock(IDS_WORD_MESSAGE_BASE + offset).Chars();
    EXPECT_NE(std::string::npos,
              message.find(std::string("Microsoft Word ") + years[row] +
                           " because <Reason>"));
    EXPECT_NE(std::string::npos, message.find("run <SetupName> again"));
    for (unsigned kind = 0; kind < 4; ++kind)
      EXPECT_FALSE(Zendra::GetResStr(IDS_WORD_REASON_BASE + offset + kind)
                       .IsEmpty());
  }
  ReportingAssertions reporting;
  EXPECT_TRUE(Zendra::GetResStr(9999).IsEmpty());
}

TEST(InstallLocation, TheConfigurationIsBesideTheProgram) {
  Tern::CPath config;
  ASSERT_TRUE(Zendra::CInstallLocation::GetConfigPath(config));
  char module[MAX_PATH] = "";
  ::GetModuleFileNameA(nullptr, module, sizeof module);
  std::string expected(module);
  expected = expected.substr(0, expected.rfind('\\') + 1) + "zendra.ovc";
  EXPECT_STREQ(expected.c_str(), config.OSToPathString().Chars());
}
