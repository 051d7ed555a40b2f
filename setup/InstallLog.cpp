#include "InstallLog.h"

#include <cstdarg>
#include <ctime>
#include <memory>

#include "ExitCode.h"
#include "TApplication.h"
#include "TFormat.h"
#include "TRegistry_Win.h"
#include "TVarList.h"

namespace Zendra {

using Tern::CLocalFileSystem;

namespace {

// A plain pointer: no destructor that could run after the application's.
CLogStream* gLog = nullptr;
CPath gLogPath;
UInt32 gErrorCount = 0;

// Each block level indents by this many spaces.
const Int cIndentWidth = 4;

// The file name for number `num` ("Num" filled in), or the name as it stands
// when the log is not numbered.
CStr LogFileName(const char* pattern, bool numbered, Int num) {
  if (!numbered) return CStr(pattern);
  Tern::CFormat name(pattern, nullptr, Tern::CFormat::fmtNoGlobalExpansion);
  name.Item("Num", num);
  return name.Result();
}

// The log's path in `tempDir`: the name as it stands, or the first number
// whose file does not exist. Only "exists" moves on to the next number; any
// other answer of the lookup ends the search with that answer, and `path` is
// then the name the search stopped at.
CError NextLogPath(const CPath& tempDir, const char* pattern, bool numbered,
                   CPath& path) {
  for (Int num = 1;; ++num) {
    path = tempDir;
    CError err =
        path.AppendComponent(LogFileName(pattern, numbered, num).Chars());
    if (Tern::Failed(err) || !numbered) return err;
    CError type = CLocalFileSystem::Instance().GetItemType(path);
    if (type == Tern::E_NotFound) return Tern::Ok;
    if (type != Tern::S_FSIsFile && type != Tern::S_FSIsDirectory)
      return Tern::Failed(type) ? type : Tern::Failure;
  }
}

void WriteHeader(CLogStream& log) {
  char when[128] = "";
  std::time_t now = std::time(nullptr);
  std::strftime(when, sizeof when, "%c", std::localtime(&now));
  log.Printf("Zendra log started (%s).\n\n", when);
}

void CountError() { ++gErrorCount; }

}  // namespace

bool OpenLog(const char* fileNamePattern, bool numbered) {
  if (gLog) {  // closed as the program would: footer, no copy
    const Tern::CApplication* app = Tern::CApplication::Current();
    CloseLog(false, app ? app->GetExitCode() : 0);
  }
  CPath tempDir;
  CError err = CLocalFileSystem::Instance().GetDirectory(
      CLocalFileSystem::dtTempDir, tempDir);
  if (Tern::Failed(err)) {
    // Without a temporary folder there is no place for the log: its intended
    // path is the first name alone.
    gLogPath.Set(LogFileName(fileNamePattern, numbered, 1).Chars());
    Tern::SetSourcePosition(__FILE__, __LINE__);
    Tern::AssertFailed("can't get the temporary folder for the log '%s' (%s)",
                       gLogPath.OSToPathString().Chars(), Tern::ErrorName(err));
    return false;
  }
  err = NextLogPath(tempDir, fileNamePattern, numbered, gLogPath);
  if (Tern::Failed(err)) {
    Tern::SetSourcePosition(__FILE__, __LINE__);
    Tern::AssertFailed("can't find a free name for the log '%s' (%s)",
                       gLogPath.OSToPathString().Chars(), Tern::ErrorName(err));
    return false;
  }

  auto log = std::make_unique<CLogStream>(gLogPath);
  err = log->Open(gLogPath.OSToPathString().Chars(),
                  Tern::fsmCreateAlways | Tern::smWriteOnly | Tern::smText);
  if (Tern::Failed(err)) {
    Tern::AssertFailed("can't open the log file '%s' (%s)",
                       gLogPath.OSToPathString().Chars(), Tern::ErrorName(err));
    return false;
  }
  log->SetEOLType(Tern::eolCRLF);
  log->SetIndentWidth(cIndentWidth);
  gLog = log.release();
  WriteHeader(*gLog);
  return true;
}

bool IsLogOpen() { return gLog != nullptr; }
CLogStream* CurrentLog() { return gLog; }
const CPath& LogPath() { return gLogPath; }
UInt32 ErrorCount() { return gErrorCount; }
void ResetErrorCount() { gErrorCount = 0; }

void CloseLog(bool verbose, Int exitCode, const CPath* destDir) {
  if (!gLog) return;
  if (verbose) {
    CLogBlock block("Dumping global variables");
    Tern::CVarList::Global().Dump(*gLog);
  }
  gLog->Printf("Exit code = '%s' (%d).\n", ExitCodeName(exitCode),
               static_cast<int>(exitCode));
  gLog->Printf("\nZendra log ends (error count = %d).\n",
               static_cast<int>(gErrorCount));
  delete gLog;  // closes the file
  gLog = nullptr;

  if (destDir &&
      Tern::Succeeded(CLocalFileSystem::Instance().RequireDirectory(*destDir)))
    CLocalFileSystem::Instance().Copy(gLogPath, *destDir, true);
}

UInt32 CLogStream::cLastSerial = 0;

CLogBlock::CLogBlock(const char* name)
    : mName(name), mLogSerial(gLog ? gLog->Serial() : 0) {
  if (!gLog) return;
  gLog->Printf("\nStart: %s {\n", mName.Chars());
  gLog->IncIndent();
  gLog->Flush();
}

void CLogBlock::End() {
  const UInt32 serial = mLogSerial;
  mLogSerial = 0;
  // The log may have been closed, and another opened, inside the block.
  if (serial == 0 || !gLog || gLog->Serial() != serial) return;
  if (gLog->GetIndentLevel() > 0)
    gLog->DecIndent();
  else
    TERN_FAIL("mIndentLevel > 0");
  gLog->Printf("} End: %s\n\n", mName.Chars());
  gLog->Flush();  // a run that is killed later still has the whole block
}

bool LogStep(bool ok, const char* message) {
  if (ok) return ok;
  CountError();
  if (gLog) {
    gLog->Printf("Failure: %s\n", message);
    gLog->Flush();
  }
  return ok;
}

bool LogStep(bool ok, const char* message, bool quietOnSuccess) {
  if (!ok) return LogStep(ok, message);
  if (gLog && !quietOnSuccess) {
    gLog->Printf("Success: %s\n", message);
    gLog->Flush();
  }
  return ok;
}

bool LogKeyStep(bool ok, const Tern::CWinRegKey& key, const char* message) {
  if (!LogStep(ok, message)) LogText("%s\n", key.FailureDetail().Chars());
  return ok;
}

bool LogRemovalStep(bool ok, const Tern::CWinRegKey& key, const char* message) {
  const unsigned long cNotFound = 2;  // ERROR_FILE_NOT_FOUND
  if (ok || key.FailureCode() != cNotFound) return LogKeyStep(ok, key, message);
  LogText("%s: already gone.\n", message);
  return true;
}

bool LogStatus(CError status, const char* message) {
  if (Tern::Succeeded(status)) return true;
  CountError();
  if (gLog) {
    gLog->Printf("Failure (%s, 0x%08lX): %s\n", Tern::ErrorName(status),
                 static_cast<unsigned long>(status.Code()), message);
    gLog->Flush();
  }
  return false;
}

bool LogStatus(CError status, const char* message, bool quietOnSuccess) {
  if (Tern::Failed(status)) return LogStatus(status, message);
  if (gLog && !quietOnSuccess) {
    gLog->Printf("Success (%s, 0x%08lX): %s\n", Tern::ErrorName(status),
                 static_cast<unsigned long>(status.Code()), message);
    gLog->Flush();
  }
  return true;
}

void LogText(const char* format, ...) {
  if (!gLog) return;
  va_list args;
  va_start(args, format);
  gLog->VPrintf(format, args);
  va_end(args);
  gLog->Flush();
}

}  // namespace Zendra
