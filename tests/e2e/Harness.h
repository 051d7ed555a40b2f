// End-to-end harness: lays out an install source folder from the built
// sample product, runs Setup.exe as a user would and reads back what each
// run did. A scenario takes a fresh Wine prefix (run-fresh.sh) through many
// runs, one after another.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <map>
#include <string>
#include <vector>

#include "Version.h"
#include "WindowDriver.h"

namespace E2E {

// Where the product lands on the test machine, a 64-bit Windows; the Word
// 2016 scenarios put there; the product's keys (32-bit view).
inline const std::string cInstallDir =
    "C:\\Program Files (x86)\\Orvane\\Zendra";
inline const std::string cFontsDir =
    "C:\\Program Files (x86)\\Orvane\\Common\\Fonts\\TrueType";
inline const std::string cWordFolder =
    "C:\\Program Files (x86)\\Microsoft Office\\Office16";
inline const char cProductClass[] =
    "CLSID\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";
inline const char cUninstallKey[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
    "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";
inline const char cSettingsKey[] = "SOFTWARE\\Orvane\\OVZN4";
inline const char cUserAgentKey[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\"
    "User Agent\\Post Platform";
inline const char cUserAgentKey9[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\5.0\\"
    "User Agent\\Post Platform";
inline const std::string cInstalled = std::string("Zendra ") +
                                      SETUP_PRODUCT_VERSION_TEXT +
                                      " installed successfully.";

// The folder C:\ZendraE2E\<name>, made afresh.
class SourceFolder {
 public:
  explicit SourceFolder(const std::string& name = "Source");
  const std::string& Dir() const { return mDir; }
  std::string SetupExe() const { return mDir + "\\Setup.exe"; }
  // Writes Zendra.ovc with the ovc program: NAME=VALUE pairs ("%" prefix:
  // read-only). True when ovc succeeded.
  bool WriteConfig(const std::vector<std::string>& variables) const;
  // Copies in the built product as it ships (--sample-dir=...); the machine
  // gets the browser's library, which the install registers with.
  void Standard() const;

 private:
  std::string mDir;
};

// What one run of Setup.exe did.
struct Outcome {
  int exitCode = -1;    // -1: it did not end in time and was killed
  std::string logName;  // the log it wrote or rewrote; empty when none
  std::string log;
};

// One run of Setup.exe (or of a program that starts it), started at once.
class SetupRun {
 public:
  SetupRun(const std::string& exe, const std::string& arguments);
  SetupRun(const std::wstring& exe, const std::string& arguments);
  // The run's next visible "Zendra Setup" window; null when none came.
  HWND WaitForDialog() { return mProcess.WaitForDialog("Zendra Setup", 60000); }
  // Waits for the end. A log the run wrote must be well formed: each block
  // it starts is closed, then come the exit code and the error count.
  Outcome Finish(bool windowless = false);

 private:
  std::map<std::string, std::string> mLogsBefore;
  TestSupport::ChildProcess mProcess;
};

// A run that shows no window: nobody would answer one.
Outcome RunSetup(const std::string& exe, const std::string& arguments);

// A silent run started from Linux by `wine`, which alone keeps a short (8.3)
// path as given; it has ended, and its exit code, when `logName` says so.
Outcome RunFromLinux(const std::string& exe, const std::string& arguments,
                     const std::string& logName);

// The run ended with `exitCode`, each of `present` in its log, none of
// `absent`.
::testing::AssertionResult Ended(const Outcome& run, int exitCode,
                                 const std::vector<std::string>& present = {},
                                 const std::vector<std::string>& absent = {});

// The run's next dialog says `text`; it is saved as picture `screenshot`
// when one is named, and answered with the button `id`.
void Answer(SetupRun& run, const std::string& text, int id = IDOK,
            const char* screenshot = nullptr);

// Waits up to 30 s for `path` to go, as a removal's batch file deletes
// Setup.exe and its folder once Setup has ended.
bool WaitUntilGone(const std::string& path);

// TEMP and TMP of the runs started meanwhile; the folder is made.
class TempFolderSetting {
 public:
  explicit TempFolderSetting(const std::wstring& dir);

 private:
  TestSupport::ScopedEnvironment mTemp, mTmp;
};

// Windows restarting, as far as the product is concerned: what waits for
// the restart to be deleted is deleted (wineboot -r).
void Restart();

// The temporary folder (a trailing backslash; its short form when the ANSI
// code page can't write it), its "Zendra *.log" files.
std::string TempDir();
std::vector<std::string> LogFiles();

// A string value as a 32-bit program sees it ("<none>" when missing), and
// one written, not through the code under test.
std::string Reg(HKEY root, const std::string& key, const char* name);
bool SetReg(HKEY root, const std::string& key, const char* name,
            const std::string& value);

// Word 2016 with its Startup folder, and PowerPoint 2016.
void MakeOffice();
// How many of the browser's user agent tokens under `key` are the product's.
int ProductTokens(const std::string& key);

// A running Word: the fake Word's "OpusApp" window, until it is closed.
class RunningWord {
 public:
  RunningWord();
  ~RunningWord() { Close(); }
  HWND Window() const { return ::FindWindowA("OpusApp", nullptr); }
  void Close();

 private:
  TestSupport::ChildProcess mProcess;
};

using TestSupport::SaveScreenshot;  // as the install actions' tests call it

}  // namespace E2E
