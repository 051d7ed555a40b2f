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

// Whether every character of the text is plain ASCII, which reads the same
// in every code page.
bool IsAscii(const CStr& text) {
  for (const char* c = text.Chars(); *c; ++c)
    if (static_cast<unsigned char>(*c) >= 0x80) return false;
  return true;
}

// The path as cmd.exe reads it from a batch file, in the OEM code page, where
// Setup writes the ANSI one: as it is when plain ASCII, else its short (8.3)
// form, which is, or else the same characters in the OEM code page. False
// when none can name it: a batch file must not delete what a changed letter
// names.
bool BatchPath(const CStr& path, CStr& result) {
  result = path;
  if (IsAscii(result)) return true;
  char shortPath[MAX_PATH] = "";
  const DWORD n = ::GetShortPathNameA(path.Chars(), shortPath, MAX_PATH);
  if (n > 0 && n < MAX_PATH) result = shortPath;
  if (IsAscii(result)) return true;
  wchar_t wide[MAX_PATH] = L"";
  char oem[2 * MAX_PATH] = "";
  BOOL lossy = FALSE;
  if (!::MultiByteToWideChar(CP_ACP, 0, path.Chars(), -1, wide, MAX_PATH) ||
      !::WideCharToMultiByte(CP_OEMCP, WC_NO_BEST_FIT_CHARS, wide, -1, oem,
                             sizeof oem, nullptr, &lossy) ||
      lossy)
    return false;
  result = oem;
  return true;
}

// The batch file's text, each path as cmd.exe will read it.
bool BatchText(const CStr& batch, const CStr& setup, const CStr& dir,
               CStr& text) {
  CStr batchPath, setupPath, dirPath;
  if (!LogStep(BatchPath(batch, batchPath) && BatchPath(setup, setupPath) &&
                   BatchPath(dir, dirPath),
               "Name the paths in the batch file's code page"))
    return false;
  text.Format(cBatchText, setupPath.Chars(), setupPath.Chars(), dirPath.Chars(),
              batchPath.Chars());
  return true;
}

// A batch file that can't be written whole is deleted, not run: a partial
// one could stop anywhere in its loop.
bool CreateBatchFile(const CStr& batch, const CStr& setup, const CStr& dir) {
  {
    CScopedFileHandle file(::CreateFileA(
        batch.Chars(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!LogStep(file.IsValid(), "Create batch file", false)) return false;
    CStr text;
    DWORD written = 0;
    if (BatchText(batch, setup, dir, text) &&
        LogStep(
            ::WriteFile(file.Get(), text.Chars(),
                        static_cast<DWORD>(text.Length()), &written, nullptr) &&
                written == static_cast<DWORD>(text.Length()) && file.Close(),
            "Write batch file", false))
      return true;
  }
  LogStep(::DeleteFileA(batch.Chars()) != FALSE,
          "Delete the batch file that could not be written", false);
  return false;
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
