// The font installer against the real GDI, registry and Fonts folder of a
// fresh prefix (each case runs in its own), with the sample product's fonts.
#include <gtest/gtest.h>
#include <windows.h>
// After windows.h, which it needs.
#include <sddl.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "ActionsTestSupport.h"
#include "FileTestSupport.h"
#include "PlatformRegistry.h"
#include "TError.h"
#include "TFileSystem.h"
#include "TFontInstaller_Win.h"
#include "TStream.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace ActionsTest;
using Tern::CFontInstaller;
using Tern::CPath;

namespace {

struct SampleFont {
  const char* file;
  const char* family;
};

const SampleFont cSampleFonts[18] = {
    {"qxextra.ttf", "Zendra QX Extra"},
    {"lattice.ttf", "Zendra Lattice"},
    {"latticeb.ttf", "Zendra Lattice Bold"},
    {"latticebi.ttf", "Zendra Lattice Bold Italic"},
    {"latticei.ttf", "Zendra Lattice Italic"},
    {"latsym.ttf", "Zendra Lattice Sym"},
    {"latsymb.ttf", "Zendra Lattice Sym Bold"},
    {"latsymbi.ttf", "Zendra Lattice Sym Bold Italic"},
    {"latsymi.ttf", "Zendra Lattice Sym Italic"},
    {"laextra.ttf", "Zendra Lattice Extra"},
    {"laextrab.ttf", "Zendra Lattice Extra Bold"},
    {"lafrak.ttf", "Zendra Lattice Fraktur"},
    {"lafrakb.ttf", "Zendra Lattice Fraktur Bold"},
    {"lamat1.ttf", "Zendra Lattice Matrix One"},
    {"lamat1b.ttf", "Zendra Lattice Matrix One Bold"},
    {"lamat2.ttf", "Zendra Lattice Matrix Two"},
    {"lamat2b.ttf", "Zendra Lattice Matrix Two Bold"},
    {"gh_SimBraille_Nemeth_One.ttf", "Zendra Braille Nemeth"},
};

// A top-level window that counts the WM_FONTCHANGE messages it receives.
class FontChangeCounter {
 public:
  FontChangeCounter() {
    WNDCLASSA type = {};
    type.lpfnWndProc = Procedure;
    type.hInstance = ::GetModuleHandleA(nullptr);
    type.lpszClassName = "ZendraFontChangeCounter";
    ::RegisterClassA(&type);
    mWindow =
        ::CreateWindowA(type.lpszClassName, "font changes", WS_OVERLAPPED, 0, 0,
                        10, 10, nullptr, nullptr, type.hInstance, nullptr);
    cCount = 0;
  }
  ~FontChangeCounter() { ::DestroyWindow(mWindow); }
  // Dispatches what arrives for `ms` milliseconds, then gives the count.
  int CountAfter(DWORD ms) {
    const DWORD end = ::GetTickCount() + ms;
    while (static_cast<int>(end - ::GetTickCount()) > 0) {
      MSG msg;
      while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
        ::DispatchMessageA(&msg);
      ::Sleep(20);
    }
    return cCount;
  }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT msg, WPARAM w, LPARAM l) {
    if (msg == WM_FONTCHANGE) ++cCount;
    return ::DefWindowProcA(window, msg, w, l);
  }
  HWND mWindow;
  static int cCount;
};
int FontChangeCounter::cCount = 0;

// The system's fonts key, readable by all and writable by none while this
// lives; Wine checks a key's security when it is opened.
class UnwritableFontsKey {
 public:
  UnwritableFontsKey() {
    ::RegOpenKeyExA(HKEY_LOCAL_MACHINE,
                    "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", 0,
                    READ_CONTROL | WRITE_DAC, &mKey);
    DWORD size = 0;
    ::RegGetKeySecurity(mKey, DACL_SECURITY_INFORMATION, nullptr, &size);
    mOld.resize(size);
    ::RegGetKeySecurity(mKey, DACL_SECURITY_INFORMATION, mOld.data(), &size);
    PSECURITY_DESCRIPTOR readOnly = nullptr;  // everyone reads, none writes
    ::ConvertStringSecurityDescriptorToSecurityDescriptorA(
        "D:(A;;KR;;;WD)", SDDL_REVISION_1, &readOnly, nullptr);
    mDenied = readOnly && ::RegSetKeySecurity(mKey, DACL_SECURITY_INFORMATION,
                                              readOnly) == ERROR_SUCCESS;
    ::LocalFree(readOnly);
  }
  ~UnwritableFontsKey() {
    ::RegSetKeySecurity(mKey, DACL_SECURITY_INFORMATION, mOld.data());
    ::RegCloseKey(mKey);
  }
  bool Denied() const { return mDenied; }

 private:
  HKEY mKey = nullptr;
  std::vector<BYTE> mOld;
  bool mDenied = false;
};

class FontInstallerTest : public ::testing::Test {
 protected:
  void SetUp() override { mLog.SetIndentWidth(4); }
  std::string Log() const { return mLog.GetText().Chars(); }

  Tern::CError Install(const std::string& windowsPath,
                       Tern::UInt32* installedVersion = nullptr) {
    Tern::UInt32 version = 0xDEAD;
    Tern::CError status =
        mInstaller.Install(CPath(windowsPath.c_str()), version);
    if (installedVersion) *installedVersion = version;
    return status;
  }

  Tern::CStringStream mLog{Tern::smText};
  CFontInstaller mInstaller{&mLog};
};

}  // namespace

TEST_F(FontInstallerTest, ABatchOfAllEighteenFontsInstallsWithOneBroadcast) {
  FontChangeCounter counter;
  mInstaller.Start();
  for (const SampleFont& font : cSampleFonts)
    EXPECT_EQ(Tern::Ok, Install(SampleFile(font.file))) << font.file;
  mInstaller.End();
  EXPECT_EQ(1, counter.CountAfter(500));

  for (const SampleFont& font : cSampleFonts) {
    EXPECT_EQ(ReadText(SampleFile(font.file)),
              ReadText(SystemFontFile(font.file)))
        << font.file;
    EXPECT_EQ(font.file,
              FontsKeyValue(std::string(font.family) + " (TrueType)"));
    EXPECT_TRUE(GdiHasFamily(font.family)) << font.family;
  }
  const std::string log = Log();
  EXPECT_EQ(0u, log.find("\r\nFont installation start {\r\n"));
  EXPECT_TRUE(Contains(log, "    Installing font from '" +
                                SampleFile("qxextra.ttf") +
                                "' {\r\n"
                                "        Font NOT already installed\r\n"
                                "        Font successfully installed\r\n"
                                "    }\r\n"));
  EXPECT_EQ(18, Count(log, "Font successfully installed"));
  EXPECT_TRUE(Contains(log,
                       "    Broadcasting WM_FONTCHANGE.\r\n"
                       "} Font installation end.\r\n"));
}

TEST_F(FontInstallerTest, EqualVersionsReplaceAndANewerInstalledFontIsKept) {
  ASSERT_EQ(Tern::Ok, Install(SampleFile("lattice.ttf")));
  Tern::UInt32 installed = 0;
  EXPECT_EQ(Tern::Ok, Install(SampleFile("lattice.ttf"), &installed));
  EXPECT_EQ(0x40000u, installed);
  std::string log = Log();
  EXPECT_TRUE(Contains(log, "Font already installed\r\n"));
  EXPECT_TRUE(Contains(log,
                       "Current font version = 00040000, installer font "
                       "version = 00040000\r\n"
                       "    Replacing existing installed font\r\n"
                       "    Font successfully removed\r\n"))
      << log;
  EXPECT_EQ("lattice.ttf", FontsKeyValue("Zendra Lattice (TrueType)"));
  EXPECT_TRUE(GdiHasFamily("Zendra Lattice"));

  // An installed copy newer by one is kept, byte for byte.
  ASSERT_EQ(Tern::Ok, Install(TestFontFile("newer", "latticeb.ttf")));
  EXPECT_EQ(Tern::S_NewerFont, Install(SampleFile("latticeb.ttf"), &installed));
  EXPECT_EQ(0x40001u, installed);
  EXPECT_TRUE(Contains(Log(),
                       "Current font version = 00040001, installer font "
                       "version = 00040000\r\n"
                       "    Not installing font as existing font is "
                       "newer\r\n"))
      << Log();
  EXPECT_EQ(ReadText(TestFontFile("newer", "latticeb.ttf")),
            ReadText(SystemFontFile("latticeb.ttf")));
}

TEST_F(FontInstallerTest, AFontKnownOnlyAsASubstituteIsSkipped) {
  // Wine reads the substitutes when a process starts: the install runs in a
  // second copy of this program, started after the value is set.
  if (TestSupport::ArgValue("child") == "substitute") {
    Tern::CError status = Install(SampleFile("lattice.ttf"));
    std::string log = Log();
    std::printf("%s", log.c_str());
    std::exit(status == Tern::E_NotFound &&
                      Contains(log,
                               "Font already installed\r\n    Can't "
                               "get font's file - perhaps font is "
                               "listed in FontSubstitutes. Skipping "
                               "font.\r\n")
                  ? 0
                  : 1);
  }
  // The substitute stands for a font that is installed.
  ASSERT_EQ(Tern::Ok, Install(SampleFile("latticeb.ttf")));
  HKEY key = nullptr;
  ASSERT_EQ(
      ERROR_SUCCESS,
      ::RegCreateKeyExA(
          HKEY_LOCAL_MACHINE,
          "Software\\Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes", 0,
          nullptr, 0, KEY_WRITE, nullptr, &key, nullptr));
  const char bold[] = "Zendra Lattice Bold";
  ::RegSetValueExA(key, "Zendra Lattice", 0, REG_SZ,
                   reinterpret_cast<const BYTE*>(bold), sizeof bold);
  ::RegCloseKey(key);
  ASSERT_EQ(
      bold,
      TestSupport::RegistryString(
          HKEY_LOCAL_MACHINE,
          "Software\\Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes",
          "Zendra Lattice", KEY_WOW64_64KEY));

  char self[MAX_PATH] = "";
  ::GetModuleFileNameA(nullptr, self, MAX_PATH);
  std::string args =
      "--gtest_filter=FontInstallerTest.AFontKnownOnlyAsASubstituteIsSkipped "
      "--child=substitute";
  for (const auto& arg : TestSupport::Args())
    if (arg.rfind("--sample-dir=", 0) == 0) args += " \"" + arg + "\"";
  TestSupport::ChildProcess child(self, args);
  EXPECT_EQ(0, child.WaitForExit(60000));
  EXPECT_FALSE(TestSupport::PathExists(SystemFontFile("lattice.ttf")));
  EXPECT_EQ("<none>", FontsKeyValue("Zendra Lattice (TrueType)"));
}

TEST_F(FontInstallerTest, NameClashesGetNumberedFilesAndRemovalUndoesIt) {
  // Files of the same name that are no fonts at all.
  TestSupport::WriteFileBytes(SystemFontFile("lattice.ttf"), {'n', 'o'});
  ASSERT_EQ(Tern::Ok, Install(SampleFile("lattice.ttf")));
  EXPECT_EQ("lattice_01.ttf", FontsKeyValue("Zendra Lattice (TrueType)"));
  EXPECT_EQ(ReadText(SampleFile("lattice.ttf")),
            ReadText(SystemFontFile("lattice_01.ttf")));

  EXPECT_EQ(Tern::Ok, mInstaller.RemoveTrueTypeFont(
                          CPath(SystemFontFile("lattice_01.ttf").c_str())));
  EXPECT_FALSE(TestSupport::PathExists(SystemFontFile("lattice_01.ttf")));
  EXPECT_EQ("<none>", FontsKeyValue("Zendra Lattice (TrueType)"));
  EXPECT_FALSE(GdiHasFamily("Zendra Lattice"));
  EXPECT_TRUE(Contains(Log(), "Font successfully removed\r\n"));

  TestSupport::WriteFileBytes(SystemFontFile("lattice_01.ttf"), {'n', 'o'});
  ASSERT_EQ(Tern::Ok, Install(SampleFile("lattice.ttf")));
  EXPECT_EQ("lattice_02.ttf", FontsKeyValue("Zendra Lattice (TrueType)"));
  EXPECT_TRUE(GdiHasFamily("Zendra Lattice"));

  // A font that is not registered can't be removed; nothing is touched.
  EXPECT_EQ(Tern::E_FontNotInstalled,
            mInstaller.RemoveTrueTypeFont(
                CPath(SystemFontFile("lattice.ttf").c_str())));
  EXPECT_TRUE(Contains(Log(),
                       "Cannot remove font, not found via registry "
                       "enumeration\r\n"));
  EXPECT_TRUE(TestSupport::PathExists(SystemFontFile("lattice.ttf")));
}

TEST_F(FontInstallerTest, BadFilesFaultsOfTheMachineAndMisuseAreReported) {
  EXPECT_EQ(Tern::E_NotFound, Install(SampleFile("no such font.ttf")));
  EXPECT_EQ(Tern::E_BadFontFile, Install(SampleFile("About.gif")));
  const std::string log = Log();
  EXPECT_EQ(2, Count(log, "' {\r\n}\r\n")) << log;  // each closes its block
  EXPECT_FALSE(Contains(log, "Font successfully installed"));

  // Without a system Fonts folder: the failure names what is missing.
  const std::string lattice = SampleFile("lattice.ttf");
  ASSERT_TRUE(::MoveFileA("C:\\windows\\Fonts", "C:\\windows\\Fonts.away"));
  EXPECT_TRUE(Tern::Failed(Install(lattice)));
  ::MoveFileA("C:\\windows\\Fonts.away", "C:\\windows\\Fonts");
  EXPECT_TRUE(Contains(
      Log(), "Could not find the system's Fonts folder for " + lattice))
      << Log();
  // A registry fault is no font that could not be replaced.
  {
    UnwritableFontsKey unwritable;
    ASSERT_TRUE(unwritable.Denied());
    const Tern::CError status = Install(lattice);
    EXPECT_TRUE(Tern::Failed(status));
    EXPECT_NE(Tern::E_NoAccess, status);
    EXPECT_NE(Tern::E_CantRemoveFontFromOS, status);
  }
  EXPECT_TRUE(
      Contains(Log(), "InstallFont: Could not open fonts registry key"));

  EXPECT_ASSERTION(CFontInstaller second(&mLog), "! cInstantiated");
  EXPECT_ASSERTION(mInstaller.End(), "mIndentLevel > 0");
}
