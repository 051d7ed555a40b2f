// A test machine's Office: Word and PowerPoint keys in the registry view a
// 32-bit program reads, and Office folders with a 32-bit WINWORD.EXE.
#pragma once

#include <string>

#include "ActionsTestSupport.h"

namespace ActionsTest {

extern const char cWordTemplate[];  // the macro template's file name

// "Software\Microsoft\Office\<office>\<app>"
std::string OfficeKey(const char* office, const char* app);

// "PATH" of <app>\InstallRoot of an Office version.
void SetInstallRoot(const char* office, const char* app,
                    const std::string& path);
// An Office folder with WINWORD.EXE (the fake Word) and, when asked, an
// empty Startup folder.
void MakeWordFolder(const std::string& folder, bool withStartup = true);

}  // namespace ActionsTest
