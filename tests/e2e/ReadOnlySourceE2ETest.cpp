// An install from a source whose files are read-only, as on a CD or a share:
// what Setup puts on the machine must be writable, and what it deletes goes
// even when it is read-only, so that a repair, a removal and any later
// install work.
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ActionsTestSupport.h"
#include "Harness.h"
#include "OfficeTestSupport.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace E2E;
namespace fs = std::filesystem;
using ActionsTest::Contains;
using ActionsTest::FileExists;
using ActionsTest::SystemFontFile;

namespace {

const std::string cTemplate =
    cWordFolder + "\\Startup\\" + ActionsTest::cWordTemplate;

std::vector<std::string> FilesBelow(const std::string& dir) {
  std::vector<std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(dir))
    if (entry.is_regular_file()) files.push_back(entry.path().string());
  return files;
}

std::vector<std::string> FontNames() {
  std::vector<std::string> names;
  for (const std::string& font : FilesBelow(cFontsDir))
    names.push_back(fs::path(font).filename().string());
  return names;
}

// There, and not read-only.
bool Writable(const std::string& path) {
  const DWORD attributes = ::GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         !(attributes & FILE_ATTRIBUTE_READONLY);
}

void MakeReadOnly(const std::string& path) {
  ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
}

}  // namespace

TEST(ReadOnlySource, WhatSetupCopiesIsWritableAndGoesAgain) {
  SourceFolder source;
  source.Standard();
  ActionsTest::MakeWordFolder(cWordFolder);
  ActionsTest::SetInstallRoot("16.0", "Word", cWordFolder + "\\");
  for (const std::string& file : FilesBelow(source.Dir())) MakeReadOnly(file);

  ASSERT_EQ(0, RunSetup(source, "-s -i"));
  std::vector<std::string> copies = FilesBelow(cInstallDir);
  for (const std::string& font : FontNames()) {
    copies.push_back(cFontsDir + "\\" + font);
    copies.push_back(SystemFontFile(font));
  }
  copies.push_back(cTemplate);
  for (const std::string& copy : copies) EXPECT_TRUE(Writable(copy)) << copy;

  // The fonts as an older Setup left them: read-only in both folders.
  for (const std::string& font : FontNames()) {
    MakeReadOnly(cFontsDir + "\\" + font);
    MakeReadOnly(SystemFontFile(font));
  }
  EXPECT_EQ(0, RunSetup(source, "-s -i"));
  const std::string repair = ReadLog("Zendra Install 2.log");
  EXPECT_TRUE(Contains(repair, "Installation successful!")) << repair;
  EXPECT_FALSE(Contains(repair, "Could not delete font file"));
  EXPECT_FALSE(FileExists(SystemFontFile("lattice_01.ttf")));

  MakeReadOnly(cTemplate);
  TestSupport::ChildProcess removal(cInstallDir + "\\Setup.exe", "-s -u");
  EXPECT_EQ(0, removal.WaitForExit(60000));
  EXPECT_TRUE(WaitUntilGone(cInstallDir));
  EXPECT_TRUE(WaitUntilGone(TempDir() + "OVDELSU.BAT"));
  const std::string removalLog = ReadLog("Zendra Uninstall.log");
  EXPECT_TRUE(Contains(removalLog, "Zendra removed successfully."))
      << removalLog;
  EXPECT_FALSE(Contains(removalLog, "result = failure"));
  EXPECT_FALSE(FileExists(cTemplate));
  EXPECT_FALSE(FileExists(TempDir() + "Zendra.ovc"));

  // The fonts folder stays: the next install, from anywhere, empties it.
  SourceFolder writable("Writable");
  writable.Standard();
  EXPECT_EQ(0, RunSetup(writable, "-s -i"));
}
