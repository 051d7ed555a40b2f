// The application frame: one application object per process, its argument
// list with the option test, its phases, and (on Windows) the GUI frame with
// its hidden window, its message loop and the single-instance mutex.
#pragma once

#include <vector>

#include "TString.h"
#include "TTypes.h"
#if defined(_WIN32)
#include "TScopedResource_Win.h"
#endif

namespace Tern {

enum ExecPhase : Int {
  execInStartup = 0,
  execNormal = 1,
  execShuttingDown = 2,
};

// Event and idle-task machinery of the frame. The setup uses neither beyond
// start and end, so they carry no behaviour of their own here.
class CEventTarget {
 public:
  virtual ~CEventTarget() = default;
};

class CIdleTaskList {
 public:
  virtual ~CIdleTaskList() = default;
};

class CResSource {
 public:
  virtual ~CResSource() = default;
};

class CBasicResSource : public CResSource {};

// The process-wide executable module; a second instance is an internal error.
class CExecModule : public CEventTarget,
                    public CIdleTaskList,
                    public CBasicResSource {
 public:
  CExecModule();
  ~CExecModule() override;
  CExecModule(const CExecModule&) = delete;
  CExecModule& operator=(const CExecModule&) = delete;

  static CExecModule* Instance() { return cInstance; }

  ExecPhase GetPhase() const { return mPhase; }
  void SetPhase(ExecPhase phase) { mPhase = phase; }

  Int GetExitCode() const { return mExitCode; }
  void SetExitCode(Int exitCode) { mExitCode = exitCode; }

  // Command-line programs may use the current directory; GUI programs not.
  virtual bool IsCommandLineApp() const { return false; }

 private:
  static CExecModule* cInstance;
  ExecPhase mPhase = execInStartup;
  Int mExitCode = 0;
};

class CApplication : public CExecModule {
 public:
  explicit CApplication(const char* name);

  static CApplication* Current();

  const CStr& GetName() const { return mName; }

  void SetCommandLine(const char* cmdLine);
  const CStr& GetCommandLine() const { return mCommandLine; }
  Int GetArgCount() const { return static_cast<Int>(mArgs.size()); }
  const CStr& GetArg(Int index) const;
  void RemoveArg(Int index);
  // True when the argument at `index` is "-name" or "/name" exactly; the
  // matching argument is removed.
  bool HasOption(const char* name, Int index);
  // The arguments, each in double quotes, joined by single spaces.
  CStr GetCommandLineFromArgs() const;
  virtual CStr GetUsage() const;

  // The framework's main: start-up, the run, shut-down. Returns the exit code.
  virtual Int Main(const char* cmdLine);

 protected:
  // The application's whole behaviour, called once in the normal phase.
  virtual void Run() = 0;
  // Start-up work before the run; false ends the program at once.
  virtual bool InitInstance() { return true; }
  // Runs Run() in the normal phase; the GUI frame runs it from its loop.
  virtual void RunNormalPhase();

 private:
  CStr mName;
  CStr mCommandLine;
  std::vector<CStr> mArgs;
};

#if defined(_WIN32)

// A GUI application: its hidden window, of the class "OVAppWindow", receives
// the application's own messages. The class is registered and the window
// made when something first asks for it.
class CGUIApplication : public CApplication {
 public:
  explicit CGUIApplication(const char* name);
  ~CGUIApplication() override;

  // The module that holds the application code (an HINSTANCE).
  void* ModuleHandle() const;
  // The hidden window (an HWND), made on the first call; null when it can't
  // be made.
  void* AppWindow();

 private:
  void* mAppWindow = nullptr;
};

// A process-wide named mutex, created without initial ownership. It keeps
// the last error of its creation: 183 means another instance holds it.
class CNamedMutex {
 public:
  explicit CNamedMutex(const char* mutexName);
  CNamedMutex(const CNamedMutex&) = delete;
  CNamedMutex& operator=(const CNamedMutex&) = delete;

  UInt32 CreationError() const { return mLastError; }
  bool AlreadyExisted() const { return mLastError == 183; }

 private:
  CScopedKernelHandle mMutex;
  UInt32 mLastError = 0;
};

// ---- Message dialogs -------------------------------------------------------

// Flags of a message dialog: purpose, buttons and default button by field.
enum MessageDialogFlags : UInt32 {
  mdInformation = 0,
  mdWarning = 1,
  mdError = 2,
  mdNote = 3,  // information as well
  mdQuestion = 4,
  mdOK = 16,
  mdOKCancel = 32,
  mdYesNo = 48,
  mdYesNoCancel = 64,
  mdDefaultOK = 256,
  mdDefaultCancel = 512,
  mdDefaultYes = 768,
  mdDefaultNo = 1024,
  mdForeground = 0x10000,
  mdTaskModal = 0x20000,
};

enum MessageAnswer : Int { maOK = 0, maCancel = 1, maYes = 2, maNo = 3 };

// The platform message-box style for the flags (and a Help button when the
// help context id is above 0).
UInt32 MessageBoxStyle(UInt32 flags, Int helpContextId);
// The platform's answer (IDOK, ...) as a MessageAnswer.
Int MessageAnswerFrom(Int platformAnswer);

using HelpCallback = void(__stdcall*)(void* helpInfo);

// Shows the platform message box: owner (the foreground window when none),
// title and text required. Returns a MessageAnswer.
Int MessageDialog(void* owner, const char* title, const char* text,
                  UInt32 flags, Int helpContextId = 0,
                  HelpCallback helpCallback = nullptr);

#endif

}  // namespace Tern
