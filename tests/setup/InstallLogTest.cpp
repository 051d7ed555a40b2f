// The install log in process: blocks, step lines, the footer.
#include <windows.h>

#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "ExitCode.h"
#include "InstallLog.h"
#include "TestSupport.h"

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

bool StepInBlock(bool fail) {
  CLogBlock block("Inner step");
  if (fail) return LogStep(false, "left early");
  LogText("not reached when failing\n");
  return true;
}

}  // namespace

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
