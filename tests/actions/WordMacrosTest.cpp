// The Word macro template on a test machine with Word in several folders.
#include <windows.h>

#include <atomic>
#include <string>
#include <thread>

#include "Harness.h"
#include "OfficeTestSupport.h"
#include "TVarList.h"
#include "WindowDriver.h"
#include "ZNOfficeMacros.h"

using namespace ActionsTest;

namespace {

const std::string cSource =
    std::string(cInstallDir) + "\\Office Support\\32\\" + cWordTemplate;

std::string InStartup(const std::string& root) {
  return root + "\\Startup\\" + cWordTemplate;
}

using WordMacros = OfficeCase;

}  // namespace

TEST_F(WordMacros, TemplateReachesEveryVersionFoundAndGoesAgain) {
  MakeWordFolder("C:\\Office16");
  SetInstallRoot("16.0", "Word", "C:\\Office16\\");
  MakeWordFolder("C:\\Office14");
  SetInstallRoot("14.0", "Word", "\"C:\\Office14\"");  // quoted, no backslash
  MakeWordFolder("C:\\Office12");
  SetInstallRoot("12.0", "Word", "");  // empty: the Common key's counts
  SetInstallRoot("12.0", "Common", "C:\\Office12");
  ASSERT_TRUE(CreateKey(HKEY_LOCAL_MACHINE, OfficeKey("15.0", "Word"),
                        KEY_WOW64_32KEY));  // no InstallRoot
  App().SetSilent(true);
  CaseLog log;
  EXPECT_TRUE(Zendra::InstallMSWordMacros(App()));
  for (const char* root : {"C:\\Office16", "C:\\Office14", "C:\\Office12"})
    EXPECT_EQ("Word macros, version 4\n", ReadText(InStartup(root))) << root;
  // A template held open stays and fails the removal; once it is free, a
  // second removal takes it and counts the others as gone.
  HANDLE held =
      ::CreateFileA(InStartup("C:\\Office14").c_str(), GENERIC_READ,
                    FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_FALSE(Zendra::RemoveMSWordMacros());
  EXPECT_TRUE(FileExists(InStartup("C:\\Office14")));
  ::CloseHandle(held);
  EXPECT_TRUE(Zendra::RemoveMSWordMacros());
  std::string text = log.Finish();
  for (const char* root : {"C:\\Office16", "C:\\Office14", "C:\\Office12"})
    EXPECT_FALSE(FileExists(InStartup(root))) << root;

  EXPECT_EQ(1, Count(text, "The OS is a 64 bit OS\r\n"));
  EXPECT_EQ(1, Count(text, "\r\nInstalling MS Word macros...\r\n"));
  EXPECT_TRUE(Contains(
      text,
      "regKeyFound is False: "
      "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Office\\17.0\\Word\r\n"));
  EXPECT_TRUE(Contains(text,
                       "C:\\Office16\\WINWORD.EXE: was determined to be "
                       "32-bit\r\npath: C:\\Office16\\, gotPath: True, "
                       "is64BitOS: True\r\n  MS Word 16 (32-bit) found "
                       "at C:\\Office16\\\r\n"))
      << text;
  EXPECT_EQ(3,
            Count(text, "  MS Word 14 (32-bit) found at C:\\Office14\\\r\n"));
  EXPECT_EQ(3,
            Count(text, "  MS Word 12 (32-bit) found at C:\\Office12\\\r\n"));
  EXPECT_EQ(3, Count(text,
                     "path: , gotPath: False, is64BitOS: True\r\n"
                     "  MS Word 15 (32-bit) NOT found\r\n"));
  EXPECT_TRUE(Contains(text, "Copying " + cSource + " to " +
                                 InStartup("C:\\Office14") + "\r\n"));
  EXPECT_EQ(3, Count(text, "Copying "));
  EXPECT_EQ(1, Count(text, "Deleting " + InStartup("C:\\Office12") +
                               ", result = success\r\n"));
  EXPECT_EQ(1, Count(text, "Deleting " + InStartup("C:\\Office14") +
                               ", result = failure\r\n"));
  EXPECT_EQ(2, Count(text, ": not there (already gone), result = success\r\n"));
  EXPECT_EQ(5, Count(text, ", result = success\r\n"));
  EXPECT_FALSE(Contains(text, "Failure")) << text;
}

TEST_F(WordMacros, TwoVersionsSharingAFolderGetItOnce) {
  MakeWordFolder("C:\\OfficeShared");
  SetInstallRoot("16.0", "Word", "C:\\OfficeShared\\");
  SetInstallRoot("15.0", "Word", "C:\\OfficeShared\\");
  App().SetSilent(true);
  CaseLog log;
  EXPECT_TRUE(Zendra::InstallMSWordMacros(App()));
  EXPECT_TRUE(FileExists(InStartup("C:\\OfficeShared")));
  EXPECT_TRUE(Zendra::RemoveMSWordMacros());
  EXPECT_FALSE(FileExists(InStartup("C:\\OfficeShared")));
  std::string text = log.Finish();
  EXPECT_EQ(1, Count(text, "Copying ")) << text;
  EXPECT_EQ(1, Count(text,
                     "    The startup folder for Microsoft Word 2013 is also "
                     "used by Microsoft Word 2016. Zendra 4 Commands for Word "
                     "(32 bit).dotm was not installed.\r\n"))
      << text;
  // The second version's template went with the first's.
  EXPECT_EQ(1, Count(text, "Deleting " + InStartup("C:\\OfficeShared") +
                               ", result = success\r\n"));
  EXPECT_EQ(1, Count(text, "Deleting " + InStartup("C:\\OfficeShared") +
                               ": not there (already gone), result = "
                               "success\r\n"));
}

TEST_F(WordMacros, FoldersThatCannotTakeItAreExplainedInTheLog) {
  SetInstallRoot("16.0", "Word", "C:\\ZendraLocked\\ReadOnlyRoot\\");
  SetInstallRoot("15.0", "Word", "C:\\ZendraLocked\\TargetRoot\\");
  MakeWordFolder("C:\\NoStartup", false);
  SetInstallRoot("14.0", "Word", "C:\\NoStartup\\");
  MakeWordFolder("C:\\Office12");
  SetInstallRoot("12.0", "Word", "C:\\Office12\\");
  App().SetSilent(true);
  CaseLog log;
  EXPECT_FALSE(Zendra::InstallMSWordMacros(App()));
  std::string text = log.Finish();
  EXPECT_TRUE(FileExists(InStartup("C:\\Office12")));  // the others go on
  EXPECT_EQ("an older template\n",
            ReadText(InStartup("C:\\ZendraLocked\\TargetRoot")));
  EXPECT_FALSE(FileExists(InStartup("C:\\ZendraLocked\\ReadOnlyRoot")));
  EXPECT_EQ(3, Count(text, "InstallMSWordMacrosError\r\n")) << text;
  const std::string couldnt = std::string("    Couldn't install ") +
                              cWordTemplate + " to the target folder, ";
  EXPECT_TRUE(Contains(text, couldnt +
                                 "C:\\ZendraLocked\\ReadOnlyRoot\\Startup, "
                                 "because the folder is locked.\r\n"))
      << text;
  EXPECT_TRUE(Contains(text, couldnt +
                                 "C:\\ZendraLocked\\TargetRoot\\Startup, "
                                 "because the target file is read-only.\r\n"));
  EXPECT_TRUE(Contains(text, couldnt +
                                 "C:\\NoStartup\\Startup, because the folder "
                                 "doesn't exist.\r\n"));
  // No WINWORD.EXE in the locked roots: its bitness is unknown, and the
  // template is tried all the same.
  EXPECT_TRUE(Contains(text,
                       "C:\\ZendraLocked\\ReadOnlyRoot\\WINWORD.EXE: "
                       "GetBinaryType failed\r\nBitness mismatch: "
                       "C:\\ZendraLocked\\ReadOnlyRoot\\WINWORD.EXE, "
                       "GetBinaryType: unknown, startupPath->wordBitness: "
                       "32\r\n"));
  EXPECT_FALSE(Contains(text, "MessageDialog"));  // silent
}

TEST_F(WordMacros, SixtyFourBitWordIsLeftAlone) {
  MakeFolder("C:\\Office64\\Startup");
  ASSERT_TRUE(::CopyFileA("C:\\windows\\sysnative\\notepad.exe",
                          "C:\\Office64\\WINWORD.EXE", FALSE));
  SetInstallRoot("16.0", "Word", "C:\\Office64\\");
  App().SetSilent(true);
  CaseLog log;
  EXPECT_TRUE(Zendra::InstallMSWordMacros(App()));
  std::string text = log.Finish();
  EXPECT_FALSE(FileExists(InStartup("C:\\Office64")));
  EXPECT_TRUE(Contains(text,
                       "C:\\Office64\\WINWORD.EXE: was determined to be "
                       "64-bit\r\nBitness mismatch: C:\\Office64\\WINWORD.EXE, "
                       "GetBinaryType: 64, startupPath->wordBitness: 32\r\n"))
      << text;
  EXPECT_FALSE(Contains(text, "Copying "));
}

namespace {

// Answers the setup's message boxes from another thread while the test's
// thread shows them: reads each, saves a picture, presses OK.
class MessageBoxAnswerer {
 public:
  MessageBoxAnswerer() : mThread([this] { Run(); }) {}
  ~MessageBoxAnswerer() { Stop(); }
  void Stop() {
    mStop = true;
    if (mThread.joinable()) mThread.join();
  }
  std::vector<std::string> Texts() const { return mTexts; }
  int Pictures() const { return mPictures; }

 private:
  static BOOL CALLBACK Find(HWND window, LPARAM found) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    char title[64] = "";
    ::GetWindowTextA(window, title, sizeof title);
    if (process != ::GetCurrentProcessId() || !::IsWindowVisible(window) ||
        std::string(title) != "Zendra Setup")
      return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
  }

  void Run() {
    while (!mStop) {
      HWND box = nullptr;
      ::EnumWindows(Find, reinterpret_cast<LPARAM>(&box));
      if (!box) {
        ::Sleep(100);
        continue;
      }
      ::Sleep(300);  // fully drawn
      mTexts.push_back(TestSupport::MessageBoxText(box));
      if (TestSupport::HasIcon(box) &&
          E2E::SaveScreenshot(
              box, "word-macro-warning-" + std::to_string(mTexts.size())))
        ++mPictures;
      TestSupport::PressButton(box, "OK");
      ::Sleep(300);
    }
  }

  std::atomic<bool> mStop{false};
  std::vector<std::string> mTexts;
  int mPictures = 0;
  std::thread mThread;
};

std::string Warning(const std::string& reason, const std::string& action) {
  return "Zendra Setup could not install Zendra's Commands for Microsoft Word "
         "2016 because " +
         reason +
         ".\n\nYou can ignore this message if you have removed Word 2016 or "
         "are not interested in using it with Zendra.\n\nTo correct this "
         "problem:\n- Click OK to continue\n- When Zendra Setup has "
         "finished, " +
         action +
         " (you may have to contact your Network Administrator to do this)\n- "
         "Finally, run Zendra Setup again";
}

}  // namespace

TEST_F(WordMacros, ReadOnlyFolderIsExplainedToTheUser) {
  SetInstallRoot("16.0", "Word", "C:\\ZendraLocked\\ReadOnlyRoot\\");
  CaseLog log;
  std::vector<std::string> texts;
  int pictures = 0;
  {
    MessageBoxAnswerer answerer;
    EXPECT_FALSE(Zendra::InstallMSWordMacros(App()));
    Tern::CVarList::Global().Set("NoROMacroErrs", "1");
    EXPECT_FALSE(Zendra::InstallMSWordMacros(App()));
    ::Sleep(500);
    answerer.Stop();
    texts = answerer.Texts();
    pictures = answerer.Pictures();
  }
  std::string text = log.Finish();
  ASSERT_EQ(2u, texts.size());
  EXPECT_EQ(Warning("Word's Startup folder is read-only",
                    "make sure Word 2016's Startup folder is not read-only"),
            texts[0]);
  EXPECT_EQ(Warning("Word's Startup folder can't be written to",
                    "make sure Word 2016's Startup folder exists and is not "
                    "read-only"),
            texts[1]);
  EXPECT_EQ(2, pictures);
  EXPECT_EQ(2, Count(text, "MessageDialog: displayed\r\n")) << text;
  // The log keeps the real reason.
  EXPECT_EQ(2, Count(text, "because the folder is locked.\r\n"));
  // The report's texts do not stay behind to fill later messages.
  Tern::CStr left;
  for (const char* name : {"Reason", "Action", "MacroFile"})
    EXPECT_FALSE(Tern::CVarList::Global().Get(name, left)) << name;
}

TEST(RunningWord, AWindowOfClassOpusAppIsWord) {
  const std::string fakeWord =
      TestSupport::WindowsPath(TestSupport::ArgValue("fake-word"));
  CaseLog log;
  EXPECT_FALSE(Zendra::IsWordRunning());
  for (const char* title : {"Document1 - Word", ""}) {
    TestSupport::ChildProcess word(fakeWord, title);
    HWND window = nullptr;
    for (int i = 0; i < 100 && !window; ++i, ::Sleep(100))
      window = ::FindWindowA("OpusApp", nullptr);
    ASSERT_NE(nullptr, window);
    EXPECT_TRUE(Zendra::IsWordRunning());
    ::PostMessageA(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(0, word.WaitForExit(10000));
  }
  EXPECT_FALSE(Zendra::IsWordRunning());
  std::string text = log.Finish();
  EXPECT_EQ(2, Count(text, "Microsoft Word:  is not running. \r\n")) << text;
  EXPECT_EQ(1, Count(text,
                     "Microsoft Word:  is running with a title of:  "
                     "Document1 - Word\r\n"))
      << text;
  EXPECT_EQ(1, Count(text,
                     "Microsoft Word:  is running with a title of:  "
                     "(No Title)\r\n"))
      << text;
}
