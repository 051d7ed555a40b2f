// Installs that fail, one after another on one machine: each says which
// step failed, and the next run completes the install.
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "TestSupport.h"

using namespace E2E;
using namespace TestSupport;
namespace fs = std::filesystem;
using ActionsTest::FileExists;
using ActionsTest::ReadText;
using ActionsTest::SystemFontFile;
using ActionsTest::WriteText;

namespace {

// Opens a file as another program would, sharing it as `share` allows.
HANDLE Hold(const std::string& path, DWORD share) {
  return ::CreateFileA(path.c_str(), GENERIC_READ, share, nullptr,
                       OPEN_EXISTING, 0, nullptr);
}

}  // namespace

TEST(InstallRecovery, EachFailureSaysWhyAndTheNextRunCompletesTheInstall) {
  SourceFolder source;
  source.Standard();
  const std::string setup = source.SetupExe();
  // Leftovers in the install folder, one held open by another program.
  ActionsTest::MakeFolder(cInstallDir + "\\Old Stuff");
  for (const char* leftover : {"Old Stuff\\notes.txt", "Zendra.dll",
                               "read-only.txt", "VersionCheck.exe"})
    WriteText(cInstallDir + "\\" + leftover, "left over");
  ::SetFileAttributesA((cInstallDir + "\\read-only.txt").c_str(),
                       FILE_ATTRIBUTE_READONLY);
  HANDLE heldFile = Hold(cInstallDir + "\\VersionCheck.exe", FILE_SHARE_READ);
  // Installed fonts: a current Lattice, held open, and an older QX Extra.
  ASSERT_TRUE(ActionsTest::CopyInto(ActionsTest::SampleFile("lattice.ttf"),
                                    SystemFontFile("lattice.ttf")));
  ASSERT_TRUE(
      ActionsTest::CopyInto(ActionsTest::TestFontFile("older", "qxextra.ttf"),
                            SystemFontFile("qxextra.ttf")));
  const char cFontsKey[] =
      "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cFontsKey, "Zendra Lattice (TrueType)",
                     "lattice.ttf"));
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE, cFontsKey,
                     "Zendra QX Extra (TrueType)", "qxextra.ttf"));
  HANDLE heldFont = Hold(SystemFontFile("lattice.ttf"), 0);
  // A font of a killed run, a copy without its value; a family known only by
  // a substitute name.
  ASSERT_TRUE(ActionsTest::CopyInto(ActionsTest::SampleFile("latticei.ttf"),
                                    SystemFontFile("latticei.ttf")));
  ASSERT_TRUE(SetReg(HKEY_LOCAL_MACHINE,
                     "Software\\Microsoft\\Windows NT\\CurrentVersion\\"
                     "FontSubstitutes",
                     "Zendra Lattice Sym", "Zendra Lattice"));
  ASSERT_NE(INVALID_HANDLE_VALUE, heldFile);
  ASSERT_NE(INVALID_HANDLE_VALUE, heldFont);

  // The older QX Extra fails the install before the install folder is
  // touched; even a silent run asks the user to put it in place by hand.
  SetupRun fonts(setup, "-s -i");
  Answer(fonts, "An error occurred updating the QX Extra font.", IDOK,
         "qxextra-warning");
  EXPECT_TRUE(Ended(
      fonts.Finish(), 1,
      {"Failed to replace lattice.ttf, not necessary so continue "
       "installation.\r\n",
       "Old version of QX Extra detected, warn user to manually install.\r\n",
       "Font file " + SystemFontFile("latticei.ttf") + " has no Fonts value",
       "Can't get font's file - perhaps font is listed in FontSubstitutes. "
       "Skipping font.",
       "Failure: Installation of Zendra fonts\r\n", "Installation failed!"},
      {"Deleting contents of directory"}));
  EXPECT_FALSE(FileExists(SystemFontFile("latticei_01.ttf")));
  EXPECT_EQ("latticei.ttf",
            ActionsTest::FontsKeyValue("Zendra Lattice Italic (TrueType)"));
  // Done as asked: a current font that can't be replaced is no failure. The
  // held leftover keeps the install out of its folder: it goes to the next
  // numbered one, which the next install in the usual folder deletes.
  ASSERT_TRUE(ActionsTest::CopyInto(cFontsDir + "\\qxextra.ttf",
                                    SystemFontFile("qxextra.ttf")));
  EXPECT_TRUE(
      Ended(RunSetup(setup, "-s -i"), 0,
            {"Cannot install font: 'lattice.ttf'",
             "'" + cInstallDir + "\\VersionCheck.exe' is in use by another",
             "Installation directory = '" + cInstallDir + "001'."},
            {"Failure: Installation of Zendra fonts"}));
  ::CloseHandle(heldFile);
  // From a source folder so deep that its deepest file doesn't fit: nothing
  // changes, and the log names the path.
  const std::string deep = "C:\\" + std::string(220, 'd');
  ASSERT_TRUE(::CreateDirectoryA(deep.c_str(), nullptr));
  ASSERT_TRUE(::MoveFileA(source.Dir().c_str(), (deep + "\\S").c_str()));
  EXPECT_TRUE(Ended(RunSetup(deep + "\\S\\Setup.exe", "-s -i"), 1,
                    {"Zendra can't be installed from here: the path '" + deep +
                         "\\S\\Office Support\\",
                     "Installation failed!"},
                    {"Deleting", "unknown Windows error"}));
  ASSERT_TRUE(::MoveFileA((deep + "\\S").c_str(), source.Dir().c_str()));
  EXPECT_EQ("left over", ReadText(cInstallDir + "\\VersionCheck.exe"));

  // Parts of the source missing (moved away), or a program not as its
  // publisher signed it (one byte changed, or another file in its place):
  // the install names the first and changes nothing.
  const std::string fixtures = WindowsPath(ArgValue("signature-fixtures"));
  const struct {
    const char* item;
    std::string replacement;
    const char* why;
  } cSourceFaults[] = {
      {"lafrak.ttf", "", "is missing."},
      {"ZendraBHO.dll", "", "is missing."},
      {"LibLouis\\Tables", "", "is missing."},
      {"About.gif", "", "is missing."},
      {"ZendraMimer.dll", "altered", "was altered after it was signed."},
      {"ZendraBHO.dll", fixtures + "\\unsigned\\ZendraBHO.dll",
       "is not signed."},
      {"VersionCheck.exe", fixtures + "\\other\\VersionCheck.exe",
       "is signed by someone else ('Other Test Publisher')."},
  };
  for (const auto& [item, replacement, why] : cSourceFaults) {
    const std::string path = source.Dir() + "\\" + item;
    ASSERT_TRUE(::MoveFileA(path.c_str(), (path + ".away").c_str()));
    if (replacement == "altered") {
      std::string bytes = ReadText(path + ".away");
      bytes[bytes.size() / 2] ^= 0x5A;
      WriteText(path, bytes);
    } else if (!replacement.empty()) {
      ASSERT_TRUE(ActionsTest::CopyInto(replacement, path));
    }
    EXPECT_TRUE(Ended(
        RunSetup(setup, "-s -i"), 1,
        {"Failure: Zendra can't be installed from here: '" + path + "' " + why,
         "Installation failed!\r\n", "Zendra installation failed!"},
        {"Deleting", "Copy '"}))
        << item;
    ::DeleteFileA(path.c_str());
    ASSERT_TRUE(::MoveFileA((path + ".away").c_str(), path.c_str()));
  }
  EXPECT_EQ("left over", ReadText(cInstallDir + "\\VersionCheck.exe"));
  EXPECT_TRUE(FileExists(cFontsDir + "\\lafrak.ttf"));

  // From a folder the ANSI code page can't name, via its short path.
  const std::wstring parent = L"C:\\Pr\u00fcfung";
  const std::wstring unusual = parent + L"\\Qu\u00e9 \u6570\u5b66";
  const std::wstring usual(source.Dir().begin(), source.Dir().end());
  ASSERT_TRUE(::CreateDirectoryW(parent.c_str(), nullptr));
  ASSERT_TRUE(::MoveFileW(usual.c_str(), unusual.c_str()));
  wchar_t shortPath[MAX_PATH] = L"";
  ASSERT_NE(0u, ::GetShortPathNameW(unusual.c_str(), shortPath, MAX_PATH));
  {
    // The user's temporary folder too: the log is found by its short name.
    TempFolderSetting temp(parent + L"\\\u4e34\u65f6");
    const Outcome run =
        SetupRun(unusual + L"\\Setup.exe", "-s -i").Finish(true);
    EXPECT_TRUE(Ended(
        run, 0,
        {"Install source folder = '" + fs::path(shortPath).string() + "'.\r\n",
         "Cannot install font: 'lattice.ttf'",
         "Installation successful!\r\n"}));
    EXPECT_EQ("Zendra Install 1.log", run.logName);
  }
  ::CloseHandle(heldFont);
  ASSERT_TRUE(::MoveFileW(unusual.c_str(), usual.c_str()));
  for (const char* leftover : {"Old Stuff\\notes.txt", "read-only.txt"})
    EXPECT_FALSE(FileExists(cInstallDir + "\\" + leftover)) << leftover;
  EXPECT_FALSE(fs::exists(cInstallDir + "001"));
  EXPECT_EQ(ReadText(source.Dir() + "\\VersionCheck.exe"),
            ReadText(cInstallDir + "\\VersionCheck.exe"));

  // A repair while the product's library is loaded goes to a numbered
  // folder; the removal, once nothing holds it, takes both.
  HMODULE loaded = ::LoadLibraryA((cInstallDir + "\\Zendra.dll").c_str());
  ASSERT_NE(nullptr, loaded);
  EXPECT_TRUE(Ended(RunSetup(setup, "-s -i"), 0,
                    {"Installation directory = '" + cInstallDir + "001'."}));
  ::FreeLibrary(loaded);
  EXPECT_TRUE(
      Ended(RunSetup(cInstallDir + "001\\Setup.exe", "-s -u"), 0,
            {"Deleting the earlier install folder '" + cInstallDir + "'."}));
  EXPECT_TRUE(WaitUntilGone(cInstallDir + "001"));
  EXPECT_FALSE(fs::exists(cInstallDir));
}
