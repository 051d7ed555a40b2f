// Runs the built Setup.exe as a user would, under Wine with a real display:
// its message boxes are found, read and answered through their windows.
#include <windows.h>

#include <string>

#include "Setup.h"
#include "TVersion.h"
#include "TestSupport.h"
#include "Version.h"
#include "WindowDriver.h"

using namespace TestSupport;

namespace {

const char cAddRemoveText[] =
    "To remove Zendra, please use Add/Remove Programs in the Windows Control "
    "Panel.";

std::string SetupExe() { return WindowsPath(ArgValue("setup-exe")); }

}  // namespace

TEST(SetupExe, NoArgumentsPointsToAddRemovePrograms) {
  ChildProcess setup(SetupExe(), "");
  HWND box = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, box) << "no message box appeared";
  EXPECT_EQ(cAddRemoveText, MessageBoxText(box));
  EXPECT_TRUE(HasIcon(box));
  PressButton(box, "OK");
  EXPECT_EQ(Zendra::exitBadCmdLine, setup.WaitForExit());
}

TEST(SetupExe, SilentRunWithBadModeShowsNothing) {
  ChildProcess setup(SetupExe(), "-s -I");
  EXPECT_EQ(Zendra::exitBadCmdLine, setup.WaitForExit());
  EXPECT_FALSE(setup.EverShowedWindow());
}

TEST(SetupExe, OptionsOutOfOrderLeaveNoMode) {
  // -s is tested before -verbose: here it stands where the mode is expected,
  // so the run is not silent and shows the bad-command-line message.
  ChildProcess setup(SetupExe(), "-verbose -s -i");
  HWND box = setup.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, box);
  EXPECT_EQ(cAddRemoveText, MessageBoxText(box));
  PressButton(box, "OK");
  EXPECT_EQ(Zendra::exitBadCmdLine, setup.WaitForExit());
}

TEST(SetupExe, SecondInstanceIsTurnedAway) {
  ChildProcess first(SetupExe(), "");
  HWND firstBox = first.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, firstBox);

  ChildProcess second(SetupExe(), "-s -i");
  HWND secondBox = second.WaitForDialog("Zendra Setup");
  ASSERT_NE(nullptr, secondBox);
  // The check comes before the options: even a silent run says so.
  EXPECT_EQ("Zendra Setup is already running.", MessageBoxText(secondBox));
  EXPECT_FALSE(HasIcon(secondBox));
  PressButton(secondBox, "OK");
  EXPECT_EQ(Zendra::exitOk, second.WaitForExit());

  PressButton(firstBox, "OK");
  EXPECT_EQ(Zendra::exitBadCmdLine, first.WaitForExit());
}

TEST(SetupExe, VersionResourceCarriesTheProductVersion) {
  Tern::CStr product, file;
  ASSERT_TRUE(Tern::CVersion::GetVersionInfo(
      SetupExe().c_str(), Tern::CVersion::viProductVersion, product));
  ASSERT_TRUE(Tern::CVersion::GetVersionInfo(
      SetupExe().c_str(), Tern::CVersion::viFileVersion, file));
  EXPECT_STREQ(SETUP_PRODUCT_VERSION_TEXT, product.Chars());
  EXPECT_STREQ(SETUP_FILE_VERSION_TEXT, file.Chars());

  // The display text and the dotted text name the same version.
  Tern::CVersion fromProduct, fromFile;
  ASSERT_EQ(Tern::Ok, fromProduct.Parse(product.Chars()));
  ASSERT_EQ(Tern::Ok, fromFile.Parse(file.Chars()));
  EXPECT_FALSE(fromProduct.IsGreater(fromFile));
  EXPECT_FALSE(fromFile.IsGreater(fromProduct));
  EXPECT_STREQ(product.Chars(), fromFile.Text().Chars());
}

TEST(VersionInfo, OnlyTheUSEnglishBlockCounts) {
  const std::string german = WindowsPath(ArgValue("german-exe"));
  Tern::CStr text("untouched");
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      german.c_str(), Tern::CVersion::viFileVersion, text));
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      german.c_str(), Tern::CVersion::viProductVersion, text));
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      "C:\\no such file.exe", Tern::CVersion::viFileVersion, text));
  EXPECT_STREQ("untouched", text.Chars());
}

TEST(ExitCodes, NamesAsLogged) {
  const char* names[] = {
      "exitOk",           "exitFailure",      "exitBadCmdLine",  "exitInUse",
      "exitNoPermission", "exitNewerVersion", "exitBadIEVersion"};
  for (int code = 0; code <= 6; ++code)
    EXPECT_STREQ(names[code], Zendra::ExitCodeName(code));
  EXPECT_ASSERTION(Zendra::ExitCodeName(7), "unknown exit code");
  ReportingAssertions reporting;
  EXPECT_STREQ("(unknown)", Zendra::ExitCodeName(-1));
}
