// Shared pieces of the tests that run Setup.exe on a prepared machine:
// registry and file access that does not go through the code under test,
// the built test files, and the browser's stand-in.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "TestSupport.h"

namespace ActionsTest {

bool Contains(const std::string& text, const std::string& part);
int Count(const std::string& text, const std::string& part);

// One registry value as stored. `view` is 0, KEY_WOW64_32KEY or
// KEY_WOW64_64KEY.
struct RegValue {
  bool found = false;
  DWORD type = REG_NONE;
  std::string text;  // REG_SZ data
  DWORD number = 0;  // REG_DWORD data
};
RegValue ReadValue(HKEY root, const std::string& subKey, const char* name,
                   REGSAM view = 0);
bool KeyExists(HKEY root, const std::string& subKey, REGSAM view = 0);
std::vector<std::string> ValueNames(HKEY root, const std::string& subKey,
                                    REGSAM view = 0);
bool WriteString(HKEY root, const std::string& subKey, const char* name,
                 const std::string& value, REGSAM view = 0);
bool CreateKey(HKEY root, const std::string& subKey, REGSAM view = 0);

// Folders and files of the test machine.
void MakeFolder(const std::string& path);  // with the folders above it
void WriteText(const std::string& path, const std::string& text);
std::string ReadText(const std::string& path);  // empty when missing
bool FileExists(const std::string& path);
// Copies a file built for the tests (given as "--name=unix path").
bool CopyBuilt(const char* argName, const std::string& to);

// The built sample product's files (--sample-dir=...), and fonts made with
// other revisions (--fonts-newer=..., --fonts-older=...), as Windows paths.
std::string SampleFile(const std::string& name);
std::string TestFontFile(const char* set, const std::string& name);
// C:\windows\Fonts\<name>, and the data of a value of the system's fonts key.
std::string SystemFontFile(const std::string& name);
std::string FontsKeyValue(const std::string& valueName);
bool CopyInto(const std::string& from, const std::string& to);

// Puts the browser's stand-in mshtml.dll (--mshtml-standin=...) where the
// system's library is, and tells Wine to load that file rather than its own.
bool InstallBrowserStandIn();

}  // namespace ActionsTest
