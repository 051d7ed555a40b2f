// Error codes, their module tables, the operating-system error mapping and
// assertions.
//
// An error code is a signed 32-bit value: bit 31 set means failure, bits 7-15
// hold the module id plus 4 and bits 0-6 the number within the module. Success
// is any non-negative value; Ok is 0x200, not zero.
#pragma once

#include <stdexcept>
#include <string>

#include "TTypes.h"

namespace Tern {

class CError {
 public:
  constexpr CError(Int32 code = 0x200) : mCode(code) {}

  static constexpr CError Make(bool failure, Int moduleId, Int number) {
    return CError(static_cast<Int32>((failure ? 0x80000000u : 0u) |
                                     (static_cast<UInt32>(moduleId + 4) << 7) |
                                     static_cast<UInt32>(number)));
  }

  constexpr Int32 Code() const { return mCode; }
  constexpr Int Module() const { return ((mCode >> 7) & 0x1FF) - 4; }
  constexpr Int Number() const { return mCode & 0x7F; }
  constexpr bool IsSuccess() const { return mCode >= 0; }
  constexpr bool IsFailure() const { return mCode < 0; }

  constexpr bool operator==(CError other) const { return mCode == other.mCode; }
  constexpr bool operator!=(CError other) const { return mCode != other.mCode; }

 private:
  Int32 mCode;
};

constexpr bool Succeeded(CError e) { return e.IsSuccess(); }
constexpr bool Failed(CError e) { return e.IsFailure(); }

// Module ids.
enum : Int {
  modGen = 0,
  modFileSystem = 4,
  modReg = 6,
  modFontInstaller = 11,
  modInternet = 13,
};

// Generic codes. Number 14 of the failures is intentionally unassigned.
inline constexpr CError Ok{0x00000200};
inline constexpr CError S_End{0x00000201};
inline constexpr CError S_Busy{0x00000202};
inline constexpr CError Failure{static_cast<Int32>(0x80000200u)};
inline constexpr CError E_AlreadyExists{static_cast<Int32>(0x80000201u)};
inline constexpr CError E_NotFound{static_cast<Int32>(0x80000202u)};
inline constexpr CError E_NoAccess{static_cast<Int32>(0x80000203u)};
inline constexpr CError E_BadArgument{static_cast<Int32>(0x80000204u)};
inline constexpr CError E_BadName{static_cast<Int32>(0x80000205u)};
inline constexpr CError E_AlreadyOpen{static_cast<Int32>(0x80000206u)};
inline constexpr CError E_NotOpen{static_cast<Int32>(0x80000207u)};
inline constexpr CError E_BadSyntax{static_cast<Int32>(0x80000208u)};
inline constexpr CError E_Read{static_cast<Int32>(0x80000209u)};
inline constexpr CError E_Write{static_cast<Int32>(0x8000020Au)};
inline constexpr CError E_Alloc{static_cast<Int32>(0x8000020Bu)};
inline constexpr CError E_Version{static_cast<Int32>(0x8000020Cu)};
inline constexpr CError E_BadData{static_cast<Int32>(0x8000020Du)};
inline constexpr CError E_UnexpectedEOF{static_cast<Int32>(0x8000020Fu)};
inline constexpr CError E_Timeout{static_cast<Int32>(0x80000210u)};
inline constexpr CError E_BadLogonName{static_cast<Int32>(0x80000211u)};
inline constexpr CError E_BadLogonPassword{static_cast<Int32>(0x80000212u)};
inline constexpr CError E_UserCancel{static_cast<Int32>(0x80000213u)};
inline constexpr CError E_Memory{static_cast<Int32>(0x80000214u)};
inline constexpr CError E_TooMuchData{static_cast<Int32>(0x80000215u)};

// File-system codes.
inline constexpr CError S_FSIsDirectory{0x00000401};
inline constexpr CError S_FSIsFile{0x00000402};
inline constexpr CError E_DirNotEmpty{static_cast<Int32>(0x80000401u)};
inline constexpr CError E_DiskFull{static_cast<Int32>(0x80000402u)};
inline constexpr CError E_FSNotDirectory{static_cast<Int32>(0x80000403u)};
inline constexpr CError E_FSNotFile{static_cast<Int32>(0x80000404u)};
inline constexpr CError E_BadUserId{static_cast<Int32>(0x80000405u)};
inline constexpr CError E_BadPassword{static_cast<Int32>(0x80000406u)};
inline constexpr CError E_BadHostName{static_cast<Int32>(0x80000407u)};
inline constexpr CError E_NotConnected{static_cast<Int32>(0x80000408u)};

// Registry codes.
inline constexpr CError S_RegIsDirectory{0x00000501};
inline constexpr CError S_RegIsValue{0x00000502};

// Font-installer codes.
inline constexpr CError S_NewerFont{0x00000781};
// The font is known to the system but has no file to replace (a substitute
// name, say): it is left as it is.
inline constexpr CError S_FontSkipped{0x00000782};
inline constexpr CError E_BadFontFile{static_cast<Int32>(0x80000781u)};
inline constexpr CError E_CantAddFontToOS{static_cast<Int32>(0x80000782u)};
inline constexpr CError E_CantRemoveFontFromOS{static_cast<Int32>(0x80000783u)};
inline constexpr CError E_FontNotInstalled{static_cast<Int32>(0x80000784u)};
inline constexpr CError E_CantRemoveFontFromRegistry{
    static_cast<Int32>(0x80000785u)};

// Internet codes; this module alone numbers its codes from 0.
inline constexpr CError E_InternetBadHTTPStatus{
    static_cast<Int32>(0x80000880u)};
inline constexpr CError E_InternetResourceNotText{
    static_cast<Int32>(0x80000881u)};

struct CErrorEntry {
  Int32 code;
  const char* name;
};

// One static table per module names its codes. Tables register themselves on
// a process-wide list during static initialisation.
class CErrorModuleTable {
 public:
  CErrorModuleTable(const char* moduleName, Int moduleId, Int entryCount,
                    const CErrorEntry* entries);

  const char* Name() const { return mModuleName; }
  Int ModuleId() const { return mModuleId; }
  Int EntryCount() const { return mEntryCount; }
  const CErrorEntry* Entries() const { return mEntries; }
  const CErrorModuleTable* Next() const { return mNext; }

  // The entry whose code equals `error` exactly, or null.
  const CErrorEntry* FindEntry(CError error) const;

  static const CErrorModuleTable* First();

 private:
  const char* mModuleName;
  Int mModuleId;
  Int mEntryCount;
  const CErrorEntry* mEntries;
  const CErrorModuleTable* mNext;
};

const CErrorModuleTable* FindModuleTable(Int modId);

// The symbolic name of a code, or "(unknown error)". Never null.
const char* ErrorName(CError error);

// Maps a Windows error number (GetLastError) onto an error code. A number
// outside the fixed table yields Failure after an assertion report that
// quotes the system's own message for it.
CError ErrorFromWindows(UInt32 windowsError);

// The fixed table behind ErrorFromWindows: true and the code when the number
// is listed (0 maps to Ok).
bool MapWindowsError(UInt32 windowsError, CError* mapped);

// ---- Source position and assertions --------------------------------------

void SetSourcePosition(const char* file, Int line);
const char* SourceFile();
Int SourceLine();

// Thrown instead of the assertion report while assertions are switched to
// throwing (automated checks of the library use this).
class CAssertionFailure : public std::runtime_error {
 public:
  explicit CAssertionFailure(const std::string& message)
      : std::runtime_error(message) {}
};

void SetAssertionsThrow(bool enabled);
bool AssertionsThrow();

// Sets the source position to file/line and reports the failed expression.
void Assert(const char* expression, const char* file, Int line);
void AssertFailed(const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

// The text of the most recent assertion report ("File: ..., Line#: ...").
const char* LastAssertionReport();

// Optional observer of the debugger output (tests read reports through it).
using DebugOutputSink = void (*)(const char* text);
void SetDebugOutputSink(DebugOutputSink sink);

// The outer handler for a failed assertion when no debugger is attached: it
// is given the report and the program then continues after the assertion.
using AssertionHandler = void (*)(const char* report);
void InstallAssertionHandler(AssertionHandler handler);

}  // namespace Tern

#define TERN_ASSERT(expr) \
  ((expr) ? (void)0 : ::Tern::Assert(#expr, __FILE__, __LINE__))

// An assertion whose report text is a fixed message rather than an expression.
#define TERN_FAIL(message) ::Tern::Assert((message), __FILE__, __LINE__)
