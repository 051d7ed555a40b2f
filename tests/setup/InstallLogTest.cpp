// The install log in process: file names, blocks, step lines, the footer.
#include <windows.h>

#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "InstallLog.h"
#include "ExitCode.h"
#include "TVarList.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace Zendra;

namespace {

std::string TempDir() {
  char buf[MAX_PATH] = "";
  ::GetTempPathA(sizeof buf, buf);
  return buf;
}

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

void RemoveLogs() {
  for (const char* name : {"Zendra Install 1.log", "Zendra Install 2.log",
                           "Zendra Install 3.log", "Zendra Uninstall.log"})
    ::DeleteFileA((TempDir() + name).c_str());
}

class InstallLogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    RemoveLogs();
    ResetErrorCount();
  }
  void TearDown() override {
    CloseLog(false, 0);
    RemoveLogs();
  }
};

// The body of a log: what follows the header line.
std::string Body(const std::string& log) {
  std::size_t start = log.find("\r\n\r\n");
  return start == std::string::npos ? log : log.substr(start + 4);
}

std::vector<std::string> gReports;
void CollectReport(const char* text) { gReports.push_back(text); }

bool StepInBlock(bool fail) {
  CLogBlock block("Inner step");
  if (fail) return LogStep(false, "left early");
  LogText("not reached when failing\n");
  return true;
}

}  // namespace

TEST_F(InstallLogTest, NumberedNamesTakeTheFirstFreeNumber) {
  std::ofstream(TempDir() + "Zendra Install 1.log") << "one";
  std::ofstream(TempDir() + "Zendra Install 3.log") << "three";
  ASSERT_TRUE(OpenLog("Zendra Install <Num>.log", true));
  EXPECT_STREQ((TempDir() + "Zendra Install 2.log").c_str(),
               LogPath().OSToPathString().Chars());
  CloseLog(false, exitOk);
  EXPECT_EQ("one", ReadText(TempDir() + "Zendra Install 1.log"));

  std::ofstream(TempDir() + "Zendra Uninstall.log") << "older removal";
  ASSERT_TRUE(OpenLog("Zendra Uninstall.log", false));
  CloseLog(false, exitOk);
  std::string log = ReadText(TempDir() + "Zendra Uninstall.log");
  EXPECT_EQ(0u, log.find("Zendra log started ("));
  EXPECT_EQ(std::string::npos, log.find("older removal"));
}

TEST_F(InstallLogTest, BlocksIndentAndCloseAlsoWhenLeftEarly) {
  ASSERT_TRUE(OpenLog("Zendra Install <Num>.log", true));
  {
    CLogBlock outer("Outer step");
    EXPECT_FALSE(StepInBlock(true));
    LogStep(true, "reported", false);
    LogStep(true, "quiet", true);
    LogStatus(Tern::S_FSIsFile, "status reported", false);
    LogStatus(Tern::E_NotFound, "status failed");
  }
  LogText("after %d blocks\n", 2);
  CloseLog(false, exitFailure);
  std::string log = ReadText(TempDir() + "Zendra Install 1.log");
  EXPECT_EQ(
      "\r\nStart: Outer step {\r\n"
      "    \r\n"
      "    Start: Inner step {\r\n"
      "        Failure: left early\r\n"
      "    } End: Inner step\r\n"
      "    \r\n"
      "    Success: reported\r\n"
      "    Success (S_FSIsFile, 0x00000402): status reported\r\n"
      "    Failure (E_NotFound, 0x80000202): status failed\r\n"
      "} End: Outer step\r\n"
      "\r\n"
      "after 2 blocks\r\n"
      "Exit code = 'exitFailure' (1).\r\n"
      "\r\n"
      "Zendra log ends (error count = 2).\r\n",
      Body(log));
}

TEST_F(InstallLogTest, VerboseDumpAndCopyToTheInstallFolder) {
  Tern::CVarList::Global().Set("LogTestSetting", "value \"quoted\"");
  const std::string dest = TempDir() + "ZendraLogCopy";
  ::CreateDirectoryA(dest.c_str(), nullptr);
  ASSERT_TRUE(OpenLog("Zendra Uninstall.log", false));
  CPath destDir(dest.c_str());
  CloseLog(true, exitNewerVersion, &destDir);
  std::string log = ReadText(TempDir() + "Zendra Uninstall.log");
  EXPECT_NE(
      std::string::npos,
      log.find("Start: Dumping global variables {\r\n    LogTestSetting\t=\t"
               "\"value \"quoted\"\"\r\n"))
      << log;
  EXPECT_NE(std::string::npos, log.find("Exit code = 'exitNewerVersion' (5)."));
  EXPECT_EQ(log, ReadText(dest + "\\Zendra Uninstall.log"));
  ::DeleteFileA((dest + "\\Zendra Uninstall.log").c_str());
  ::RemoveDirectoryA(dest.c_str());
}

TEST_F(InstallLogTest, ABlockOfAClosedLogLeavesTheNextLogAlone) {
  // Opened over and over the same way, logs soon take turns in the same few
  // places of the heap. The blocks here hold no memory of their own (no
  // name), so that the spanning block does not change that rhythm.
  for (int round = 0; round < 6; ++round) {
    ASSERT_TRUE(OpenLog("Zendra Uninstall.log", false));
    CLogBlock("").End();
  }
  const CLogStream* first = CurrentLog();
  std::optional<CLogBlock> spanning;
  spanning.emplace("");
  int tries = 0;
  do {
    ASSERT_TRUE(OpenLog("Zendra Uninstall.log", false));
  } while (CurrentLog() != first && ++tries < 10);
  if (CurrentLog() != first)
    GTEST_SKIP() << "no log took the memory of the block's log";
  LogText("in the new log\n");
  spanning.reset();  // neither asserts nor writes into the new log
  CloseLog(false, exitOk);
  std::string log = ReadText(TempDir() + "Zendra Uninstall.log");
  EXPECT_EQ(
      "in the new log\r\n"
      "Exit code = 'exitOk' (0).\r\n"
      "\r\n"
      "Zendra log ends (error count = 0).\r\n",
      Body(log));
}

// A temporary folder longer than the system allows can't be resolved: the
// search for a free number ends at once, no log is opened, and the intended
// path is the first name.
TEST_F(InstallLogTest, UnusableTemporaryFolderOpensNoLog) {
  const std::string realTemp = TempDir();
  const std::string tooLong = "C:\\" + std::string(300, 'T');
  bool opened = true;
  TestSupport::ReportingAssertions reporting;
  gReports.clear();
  Tern::SetDebugOutputSink(CollectReport);
  {
    TestSupport::ScopedEnvironment tmp("TMP", tooLong), temp("TEMP", tooLong);
    ASSERT_EQ(0u, ::GetTempPathA(MAX_PATH, std::vector<char>(MAX_PATH).data()));
    opened = OpenLog("Zendra Install <Num>.log", true);
  }
  Tern::SetDebugOutputSink(nullptr);
  EXPECT_FALSE(opened);
  EXPECT_FALSE(IsLogOpen());
  EXPECT_STREQ("Zendra Install 1.log", LogPath().OSToPathString().Chars());
  ASSERT_FALSE(gReports.empty());
  EXPECT_NE(std::string::npos,
            gReports.back().find("Assert( can't get the temporary folder for "
                                 "the log 'Zendra Install 1.log' ("))
      << gReports.back();
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES,
            ::GetFileAttributesA((realTemp + "Zendra Install 1.log").c_str()));
}
