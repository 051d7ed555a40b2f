// The font installer on the prefix's Fonts folder: the font's name taken by
// another font, and no room in the path for a numbered name.
#include <windows.h>

#include <string>

#include "TFontInstaller_Win.h"
#include "TStream.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace Tern;

TEST(FontInstaller, NoFreeNameInTheFontsFolderIsLogged) {
  const std::string sample =
      TestSupport::WindowsPath(TestSupport::ArgValue("sample-dir"));
  char fonts[MAX_PATH] = "";
  ASSERT_NE(0u, ::GetWindowsDirectoryA(fonts, MAX_PATH));
  const std::string fontsDir = std::string(fonts) + "\\Fonts\\";
  // The longest name that fits the path limit there; "_01" does not.
  const std::string name = std::string(259 - fontsDir.size() - 4, 'f') + ".ttf";
  const std::string src = "C:\\ZendraFontTest\\" + name;
  ASSERT_TRUE(::CreateDirectoryA("C:\\ZendraFontTest", nullptr) ||
              ::GetLastError() == ERROR_ALREADY_EXISTS);
  ASSERT_TRUE(
      ::CopyFileA((sample + "\\lattice.ttf").c_str(), src.c_str(), FALSE));
  ASSERT_TRUE(::CopyFileA((sample + "\\latsym.ttf").c_str(),
                          (fontsDir + name).c_str(), FALSE));

  CStringStream log;
  UInt32 installedVersion = 0;
  {
    CFontInstaller installer(&log);
    EXPECT_TRUE(
        Failed(installer.Install(CPath(src.c_str()), installedVersion)));
  }
  const std::string text = log.GetText().Chars();
  EXPECT_NE(std::string::npos,
            text.find("EnsureUniqueFontName failed with error E_"))
      << text;
  ::DeleteFileA((fontsDir + name).c_str());
  ::DeleteFileA(src.c_str());
  ::RemoveDirectoryA("C:\\ZendraFontTest");
}
