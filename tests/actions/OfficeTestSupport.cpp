#include "OfficeTestSupport.h"

#include "TApplication.h"
#include "TVarList.h"

namespace ActionsTest {

const char cInstallDir[] = "C:\\ZendraTest\\Zendra";
const char cWordTemplate[] = "Zendra 4 Commands for Word (32 bit).dotm";
const char cPowerPointAddIn[] =
    "Zendra 4 Commands for PowerPoint (32-bit).ppam";

std::string OfficeKey(const char* office, const char* app) {
  return std::string("Software\\Microsoft\\Office\\") + office + "\\" + app;
}

void OfficeCase::SetUp() {
  mContext = Zendra::CInstallContext();
  const std::string support = std::string(cInstallDir) + "\\Office Support\\32";
  MakeFolder(support);
  WriteText(support + "\\" + cWordTemplate, "Word macros, version 4\n");
  WriteText(support + "\\" + cPowerPointAddIn, "PowerPoint add-in\n");
  mContext.installDir = Tern::CPath(cInstallDir);
  Tern::CVarList::Global().Set("SetupName", "Zendra Setup");
  Tern::CVarList::Global().Set("AppName", "Zendra");
}

void OfficeCase::TearDown() {}

void SetInstallRoot(const char* office, const char* app,
                    const std::string& path) {
  ASSERT_TRUE(WriteString(HKEY_LOCAL_MACHINE,
                          OfficeKey(office, app) + "\\InstallRoot", "PATH",
                          path, KEY_WOW64_32KEY));
}

void MakeWordFolder(const std::string& folder, bool withStartup) {
  MakeFolder(withStartup ? folder + "\\Startup" : folder);
  ASSERT_TRUE(CopyBuilt("fake-word", folder + "\\WINWORD.EXE"));
}

}  // namespace ActionsTest
