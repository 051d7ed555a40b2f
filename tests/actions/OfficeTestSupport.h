// A test machine's Office: Word and PowerPoint keys in the registry view a
// 32-bit program reads, Office folders with their Startup folders and a
// 32-bit WINWORD.EXE, and the product's install folder with the add-ins.
#pragma once

#include <memory>
#include <string>

#include "ActionsTestSupport.h"
#include "InstallContext.h"

namespace ActionsTest {

extern const char cInstallDir[];       // C:\ZendraTest\Zendra
extern const char cWordTemplate[];     // the macro template's file name
extern const char cPowerPointAddIn[];  // the add-in's file name

// "Software\Microsoft\Office\<office>\<app>"
std::string OfficeKey(const char* office, const char* app);

// The application object of the case, installing into cInstallDir, with
// the source files in place and the settings messages are composed from.
class OfficeCase : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  Zendra::CInstallContext& Context() { return mContext; }

 private:
  Zendra::CInstallContext mContext;
};

// "PATH" of <app>\InstallRoot of an Office version.
void SetInstallRoot(const char* office, const char* app,
                    const std::string& path);
// An Office folder with WINWORD.EXE (the fake Word) and, when asked, an
// empty Startup folder.
void MakeWordFolder(const std::string& folder, bool withStartup = true);

}  // namespace ActionsTest
