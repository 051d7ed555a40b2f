#include "OfficeTestSupport.h"

namespace ActionsTest {

const char cWordTemplate[] = "Zendra 4 Commands for Word (32 bit).dotm";

std::string OfficeKey(const char* office, const char* app) {
  return std::string("Software\\Microsoft\\Office\\") + office + "\\" + app;
}

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
