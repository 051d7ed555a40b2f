// End-to-end harness: lays out an install source folder from the built sample
// product (or just Setup.exe and a Zendra.ovc written by ovc), runs Setup.exe
// as a user would, and reads back its exit code, its logs in the temporary
// folder and the registry. Each case runs in a fresh Wine prefix
// (run-fresh.sh).
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "WindowDriver.h"

namespace E2E {

// The source folder C:\ZendraE2E\<name>, made afresh.
class SourceFolder {
 public:
  explicit SourceFolder(const std::string& name = "Source");
  const std::string& Dir() const { return mDir; }
  std::string SetupExe() const { return mDir + "\\Setup.exe"; }

  // Copies the built Setup.exe in.
  void AddSetup() const;
  // Writes Zendra.ovc with the ovc program: NAME=VALUE pairs ("%" prefix:
  // read-only). True when ovc succeeded.
  bool WriteConfig(const std::vector<std::string>& variables) const;
  // Zendra.ovc as the product ships it (major version 4, the names, the OEM
  // settings) plus `extra` NAME=VALUE pairs.
  bool WriteProductConfig(const std::vector<std::string>& extra) const;
  // The whole sample product, as it ships: Setup.exe, the components, fonts,
  // subfolders and a Zendra.ovc of major version 4 (--sample-dir=...). The
  // machine gets the browser's library the install registers with.
  void Standard() const;

 private:
  std::string mDir;
};

// Runs the folder's Setup.exe with `arguments` and waits for it to end.
int RunSetup(const SourceFolder& source, const std::string& arguments,
             bool* showedWindow = nullptr);

// Where the product lands on the test machine, a 64-bit Windows.
inline const std::string cInstallDir =
    "C:\\Program Files (x86)\\Orvane\\Zendra";
inline const std::string cFontsDir =
    "C:\\Program Files (x86)\\Orvane\\Common\\Fonts\\TrueType";
// The folder of the Word 2016 that cases put on the machine.
inline const std::string cWordFolder =
    "C:\\Program Files (x86)\\Microsoft Office\\Office16";
// The product's class and its Add/Remove Programs entry (32-bit view).
inline const char cProductClass[] =
    "CLSID\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";
inline const char cUninstallKey[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
    "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";

// Waits up to `seconds` for `path` to go: a removal's batch file deletes
// Setup.exe and its folder once Setup has ended.
bool WaitUntilGone(const std::string& path, int seconds = 30);

// The system's temporary folder, with a trailing backslash.
std::string TempDir();
std::string ReadLog(const std::string& fileName);  // empty when missing
bool LogExists(const std::string& fileName);
void WriteLog(const std::string& fileName, const std::string& text);
std::vector<std::string> LogFiles();  // names of "Zendra *.log" files

// Every "Start: X {" is closed by its "} End: X", in order.
bool BlocksBalanced(const std::string& log, std::string* problem = nullptr);
// The exit-code line and the footer, as the log ends.
std::string Footer(const std::string& log);

// Registry access that does not go through the code under test.
bool SetRegString(HKEY root, const std::string& subKey, const char* name,
                  const std::string& value);
std::string GetRegString(HKEY root, const std::string& subKey,
                         const char* name);  // "<none>" when missing
void DeleteRegTree(HKEY root, const std::string& subKey);

// Saves a picture of the window to the screenshot folder given to the test
// program (--screenshots=DIR) as NAME.bmp; false without such a folder.
bool SaveScreenshot(HWND window, const std::string& name);

}  // namespace E2E
