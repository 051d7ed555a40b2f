// The install log: one current log file in the temporary folder, written as
// a tree of named blocks with one line per success or failure. Every
// operation does nothing but count when no log is open.
#pragma once

#include "TError.h"
#include "TFileSystem.h"
#include "TStream.h"

namespace Tern {
class CWinRegKey;
}

namespace Zendra {

using Tern::CError;
using Tern::CPath;
using Tern::CStr;
using Tern::Int;
using Tern::UInt32;

class CLogStream : public Tern::CFileStream {
 public:
  explicit CLogStream(const CPath& path)
      : mPath(path), mSerial(++cLastSerial) {}
  const CPath& Path() const { return mPath; }
  // Tells this log from every other log of the run, also from one that
  // later takes over its memory.
  UInt32 Serial() const { return mSerial; }

 private:
  static UInt32 cLastSerial;
  CPath mPath;
  UInt32 mSerial;
};

// "Zendra Install <Num>.log" (numbered: the first free number from 1) or
// "Zendra Uninstall.log" (replaced), in the temporary folder. Closes the
// current log first. False when the file could not be opened; the intended
// path is then still in LogPath().
bool OpenLog(const char* fileNamePattern, bool numbered);
bool IsLogOpen();
CLogStream* CurrentLog();
const CPath& LogPath();

// Writes the verbose dump (when asked), the exit-code line and the footer,
// closes the file and, with a destination folder, copies it there.
void CloseLog(bool verbose, Int exitCode, const CPath* destDir = nullptr);

// Failures logged since the program started, with or without a log.
UInt32 ErrorCount();
void ResetErrorCount();

// A named block: "Start: <name> {" now, "} End: <name>" when it goes. A block
// whose log has been closed meanwhile writes nothing more.
class CLogBlock {
 public:
  explicit CLogBlock(const char* name);
  ~CLogBlock() { End(); }
  CLogBlock(const CLogBlock&) = delete;
  CLogBlock& operator=(const CLogBlock&) = delete;

  // Ends the block before it goes; once ended, it does nothing more.
  void End();

 private:
  CStr mName;
  UInt32 mLogSerial;  // the log the block began in; 0: none, or ended
};

// "Failure: <message>" (and one more error) when !ok; nothing on success.
bool LogStep(bool ok, const char* message);
// The same, writing "Success: <message>" too unless quietOnSuccess.
bool LogStep(bool ok, const char* message, bool quietOnSuccess);
// The same for a registry call: a failure line is followed by the key's own
// account of it, its path and the system's reason.
bool LogKeyStep(bool ok, const Tern::CWinRegKey& key, const char* message);
// The same for a removal step: a key or value that is not there (any more)
// counts as removed, logged as "<message>: already gone".
bool LogRemovalStep(bool ok, const Tern::CWinRegKey& key, const char* message);
// "Failure (<name>, 0x<code>): <message>" for a failed status.
bool LogStatus(CError status, const char* message);
bool LogStatus(CError status, const char* message, bool quietOnSuccess);

void LogText(const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

}  // namespace Zendra
