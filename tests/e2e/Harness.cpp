#include "Harness.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "ActionsTestSupport.h"
#include "OfficeTestSupport.h"
#include "PlatformRegistry.h"
#include "TestSupport.h"

namespace E2E {

namespace fs = std::filesystem;
using TestSupport::ArgValue;
using TestSupport::WindowsPath;

SourceFolder::SourceFolder(const std::string& name)
    : mDir("C:\\ZendraE2E\\" + name) {
  std::error_code ec;
  fs::remove_all(mDir, ec);
  fs::create_directories(mDir, ec);
}

bool SourceFolder::WriteConfig(
    const std::vector<std::string>& variables) const {
  std::string args = "write \"" + mDir + "\\Zendra.ovc\"";
  for (const auto& v : variables) args += " \"" + v + "\"";
  TestSupport::ChildProcess ovc(WindowsPath(ArgValue("ovc-exe")), args);
  return ovc.WaitForExit() == 0;
}

void SourceFolder::Standard() const {
  ActionsTest::InstallBrowserStandIn();  // the browser on the machine
  std::error_code ec;
  fs::copy(WindowsPath(ArgValue("sample-dir")), mDir,
           fs::copy_options::recursive | fs::copy_options::overwrite_existing,
           ec);
}

namespace {

std::map<std::string, std::string> CurrentLogs() {
  std::map<std::string, std::string> logs;
  for (const std::string& name : LogFiles())
    logs[name] = ActionsTest::ReadText(TempDir() + name);
  return logs;
}

void WaitUntilClosed(HWND window) {
  for (int i = 0; i < 200 && ::IsWindow(window); ++i) ::Sleep(50);
}

// The first "Start: X {" not closed by its "} End: X", in order.
std::string UnbalancedBlock(const std::string& log) {
  std::vector<std::string> open;
  std::istringstream lines(log);
  std::string line;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::string text =
        line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
    if (text.rfind("Start: ", 0) == 0 && text.size() > 9 &&
        text.compare(text.size() - 2, 2, " {") == 0) {
      open.push_back(text.substr(7, text.size() - 9));
    } else if (text.rfind("} End: ", 0) == 0) {
      if (open.empty() || open.back() != text.substr(7)) return text;
      open.pop_back();
    }
  }
  return open.empty() ? "" : open.back();
}

// The exit code a log's footer names, the log's last lines; -1 while the log
// has no such footer.
int FooterExitCode(const std::string& log) {
  static const std::regex footer(
      "Exit code = '\\w+' \\((-?\\d+)\\)\\.\r\n\r\nZendra log ends "
      "\\(error count = \\d+\\)\\.\r\n$");
  std::smatch match;
  return std::regex_search(log, match, footer) ? std::stoi(match[1]) : -1;
}

}  // namespace

SetupRun::SetupRun(const std::string& exe, const std::string& arguments)
    : mLogsBefore(CurrentLogs()), mProcess(exe, arguments) {}

SetupRun::SetupRun(const std::wstring& exe, const std::string& arguments)
    : mLogsBefore(CurrentLogs()), mProcess(exe, arguments) {}

Outcome SetupRun::Finish(bool windowless) {
  Outcome run;
  run.exitCode = mProcess.WaitForExit(120000);
  if (windowless) {
    EXPECT_FALSE(mProcess.EverShowedWindow());
  }
  for (const auto& [name, text] : CurrentLogs()) {
    auto before = mLogsBefore.find(name);
    if (before != mLogsBefore.end() && before->second == text) continue;
    run.logName = name;
    run.log = text;
  }
  if (run.log.empty()) return run;
  EXPECT_EQ("", UnbalancedBlock(run.log)) << run.logName;
  EXPECT_EQ(run.exitCode, FooterExitCode(run.log))
      << run.logName << " ends:\n"
      << run.log.substr(std::min(run.log.rfind("Exit code"), run.log.size()));
  return run;
}

Outcome RunSetup(const std::string& exe, const std::string& arguments) {
  return SetupRun(exe, arguments).Finish(true);
}

Outcome RunFromLinux(const std::string& exe, const std::string& arguments,
                     const std::string& logName) {
  const std::string log = TempDir() + logName;
  ::DeleteFileA(log.c_str());
  std::string commandLine =
      "\"" + WindowsPath(ArgValue("wine")) + "\" \"" + exe + "\" " + arguments;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  Outcome run;
  if (!::CreateProcessA(nullptr, &commandLine[0], nullptr, nullptr, FALSE, 0,
                        nullptr, nullptr, &startup, &started))
    return run;
  ::CloseHandle(started.hThread);
  ::CloseHandle(started.hProcess);
  for (int i = 0; i < 1200 && run.exitCode < 0; ++i, ::Sleep(100))
    run.exitCode = FooterExitCode(run.log = ActionsTest::ReadText(log));
  run.logName = logName;
  return run;
}

::testing::AssertionResult Ended(const Outcome& run, int exitCode,
                                 const std::vector<std::string>& present,
                                 const std::vector<std::string>& absent) {
  std::string wrong;
  if (run.exitCode != exitCode)
    wrong = "exit code " + std::to_string(run.exitCode) + "\n";
  for (const std::string& text : present)
    if (run.log.find(text) == std::string::npos)
      wrong += "missing: " + text + "\n";
  for (const std::string& text : absent)
    if (run.log.find(text) != std::string::npos)
      wrong += "present: " + text + "\n";
  if (wrong.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "in '" << run.logName << "':\n"
                                       << wrong << run.log;
}

void Answer(SetupRun& run, const std::string& text, int id,
            const char* screenshot) {
  HWND dialog = run.WaitForDialog();
  ASSERT_NE(nullptr, dialog) << "no dialog saying " << text;
  const std::string shown = TestSupport::MessageBoxText(dialog);
  EXPECT_NE(std::string::npos, shown.find(text)) << shown;
  if (screenshot) SaveScreenshot(dialog, screenshot);
  TestSupport::ClickControl(dialog, id);
  WaitUntilClosed(dialog);
}

bool WaitUntilGone(const std::string& path) {
  for (int i = 0; i < 300; ++i, ::Sleep(100))
    if (::GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES)
      return true;
  return false;
}

void Restart() {
  TestSupport::ChildProcess boot("C:\\windows\\system32\\wineboot.exe", "-r");
  EXPECT_EQ(0, boot.WaitForExit(120000));
}

std::string TempDir() {
  wchar_t temp[MAX_PATH] = L"", shortTemp[MAX_PATH] = L"";
  ::GetTempPathW(MAX_PATH, temp);
  char buf[2 * MAX_PATH] = "";
  BOOL lossy = FALSE;
  ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, temp, -1, buf, sizeof buf,
                        nullptr, &lossy);
  if (lossy && ::GetShortPathNameW(temp, shortTemp, MAX_PATH))
    ::WideCharToMultiByte(CP_ACP, 0, shortTemp, -1, buf, sizeof buf, nullptr,
                          nullptr);
  return buf;
}

TempFolderSetting::TempFolderSetting(const std::wstring& dir)
    : mTemp(L"TEMP", dir), mTmp(L"TMP", dir) {
  std::error_code ec;
  fs::create_directories(dir, ec);
}

std::vector<std::string> LogFiles() {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(TempDir(), ec)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("Zendra ", 0) == 0 && entry.path().extension() == ".log")
      names.push_back(name);
  }
  return names;
}

std::string Reg(HKEY root, const std::string& key, const char* name) {
  return TestSupport::RegistryString(root, key, name);
}

bool SetReg(HKEY root, const std::string& key, const char* name,
            const std::string& value) {
  return ActionsTest::WriteString(root, key, name, value);
}

void MakeOffice() {
  ActionsTest::MakeWordFolder(cWordFolder);
  ActionsTest::SetInstallRoot("16.0", "Word", cWordFolder + "\\");
  ASSERT_TRUE(ActionsTest::CreateKey(
      HKEY_LOCAL_MACHINE,
      ActionsTest::OfficeKey("16.0", "PowerPoint") + "\\InstallRoot",
      KEY_WOW64_32KEY));
}

int ProductTokens(const std::string& key) {
  int tokens = 0;
  for (const std::string& name :
       ActionsTest::ValueNames(HKEY_LOCAL_MACHINE, key, KEY_WOW64_32KEY))
    tokens += name.find("Zendra") != std::string::npos;
  return tokens;
}

RunningWord::RunningWord()
    : mProcess(WindowsPath(ArgValue("fake-word")), "Document1 - Word") {
  for (int i = 0; i < 100 && !Window(); ++i) ::Sleep(50);
}

void RunningWord::Close() {
  if (HWND window = Window()) ::PostMessageA(window, WM_CLOSE, 0, 0);
  mProcess.WaitForExit(10000);
}

}  // namespace E2E
