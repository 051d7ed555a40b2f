// The batch starts at idle priority while Setup raises its own, so that
// Setup ends first; the batch's loop also copes with the other order.
#include "SelfDelete.h"

#include <windows.h>

#include <string>

#include "InstallLog.h"
#include "TScopedResource_Win.h"

namespace Zendra {

using Tern::CLocalFileSystem;
using Tern::CScopedFileHandle;
using Tern::CScopedKernelHandle;

namespace {

const char cBatchName[] = "OVDELSU.BAT";
const char cBatchText[] =
    ":Repeat\r\ndel \"%s\"\r\nif exist \"%s\" goto Repeat\r\nrmdir "
    "\"%s\"\r\ndel \"%s\"\r\n";
const DWORD cSuspendedAtIdle = CREATE_SUSPENDED | IDLE_PRIORITY_CLASS;  // 68

// False only when the file can't be created: a failed write is logged, and
// the batch still runs (an empty or partial one deletes nothing it should
// not, and ends).
bool CreateBatchFile(const CStr& batch, const CStr& setup, const CStr& dir) {
  CScopedFileHandle file(::CreateFileA(
      batch.Chars(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!LogStep(file.IsValid(), "Create batch file", false)) return false;
  CStr text;
  text.Format(cBatchText, setup.Chars(), setup.Chars(), dir.Chars(),
              batch.Chars());
  DWORD written = 0;
  const BOOL wrote =
      ::WriteFile(file.Get(), text.Chars(), static_cast<DWORD>(text.Length()),
                  &written, nullptr);
  LogStep(wrote && written == static_cast<DWORD>(text.Length()),
          "Write batch file", false);
  return true;
}

// Starts the batch suspended at idle priority, lets Setup win the race, then
// lets the batch run.
bool StartBatch(const CStr& batch, const CStr& tempDir) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info = {};
  // CreateProcessA may write into the command line it is given.
  std::string commandLine = batch.Chars();
  const BOOL started = ::CreateProcessA(
      nullptr, &commandLine[0], nullptr, nullptr, FALSE, cSuspendedAtIdle,
      nullptr, tempDir.Chars(), &startup, &info);
  if (!LogStep(started != FALSE,
               "Run batch file to delete Setup and install directory", false))
    return false;
  CScopedKernelHandle process(info.hProcess), thread(info.hThread);
  LogStep(::SetThreadPriority(thread.Get(), THREAD_PRIORITY_IDLE) != FALSE,
          "Set batch process priority");
  LogStep(::SetThreadPriority(::GetCurrentThread(),
                              THREAD_PRIORITY_TIME_CRITICAL) != FALSE,
          "Set Setup process priority");
  LogStep(
      ::SetPriorityClass(::GetCurrentProcess(), HIGH_PRIORITY_CLASS) != FALSE,
      "Set Setup process priority class");
  LogStep(process.Close(), "Close process handle");
  LogStep(::ResumeThread(thread.Get()) != static_cast<DWORD>(-1),
          "call ResumeThread");
  LogStep(thread.Close(), "Close thread handle");
  return true;
}

}  // namespace

bool RemoveSetupProgram(CInstallContext& context) {
  CLogBlock block("Remove the Setup program");
  CPath setup = context.installDir, tempDir, batch;
  if (!LogStatus(setup.AppendComponent("Setup.exe"), "Append Setup", false) ||
      !LogStatus(CLocalFileSystem::Instance().GetDirectory(
                     CLocalFileSystem::dtTempDir, tempDir),
                 "Find system's temp directory", false))
    return false;
  batch = tempDir;
  if (!LogStatus(batch.AppendComponent(cBatchName),
                 "Append bat file to temp file path", false))
    return false;
  const CStr batchText = batch.OSToPathString();
  if (!CreateBatchFile(batchText, setup.OSToPathString(),
                       context.installDir.OSToPathString()))
    return false;
  return StartBatch(batchText, tempDir.OSToPathString());
}

}  // namespace Zendra
