// Shared pieces of the install-action tests: the install log of one case,
// registry access that does not go through the code under test, and a
// fresh folder tree on drive C.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "TestSupport.h"

namespace ActionsTest {

// Opens the install log "Zendra Actions.log" for the case (and counts its
// failures from zero); Finish closes it and gives its text.
class CaseLog {
 public:
  CaseLog();
  ~CaseLog();
  std::string Finish();

 private:
  bool mOpen = true;
};

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
bool WriteNumber(HKEY root, const std::string& subKey, const char* name,
                 DWORD value, REGSAM view = 0);
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
// Whether GDI enumerates a family of that face name in this process.
bool GdiHasFamily(const std::string& face);
bool CopyInto(const std::string& from, const std::string& to);

// Puts the browser's stand-in mshtml.dll (--mshtml-standin=...) where the
// system's library is; `override` also tells Wine to load that file rather
// than its own, as it must for the browser to be there.
bool InstallBrowserStandIn(bool override = true);

}  // namespace ActionsTest
