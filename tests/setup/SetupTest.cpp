// Setup.exe's version resource, which the install compares and the
// uninstall entry shows.
#include <windows.h>

#include <string>

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
