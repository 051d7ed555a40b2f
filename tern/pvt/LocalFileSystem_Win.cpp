#include <shlobj.h>
#include <windows.h>

#include <string>

#include "FileHandle.h"
#include "TApplication.h"
#include "TFileSystem.h"
#include "TRegistry_Win.h"
#include "TScopedResource_Win.h"
#include "TStr.h"

namespace Tern {

namespace {

CError LastError() { return ErrorFromWindows(::GetLastError()); }

bool IsDotEntry(const char* name) {
  return Str::Equal(name, ".") || Str::Equal(name, "..");
}

CError SetFromBuffer(CPath& dir, const char* buf, DWORD n, DWORD size) {
  if (n == 0 || n >= size) return n == 0 ? LastError() : E_BadArgument;
  return dir.Set(buf);
}

CError ShellFolder(int csidl, CPath& dir) {
  char buf[MAX_PATH] = "";
  if (FAILED(::SHGetFolderPathA(nullptr, csidl, nullptr, 0, buf)) || !buf[0])
    return Failure;
  return dir.Set(buf);
}

// The path in the ANSI code page, when every character of it is there.
bool ToAnsi(const wchar_t* path, CStr& ansi) {
  char buf[2 * MAX_PATH] = "";
  BOOL lossy = FALSE;
  const int n = ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path, -1,
                                      buf, sizeof buf, nullptr, &lossy);
  if (n == 0 || lossy) return false;
  ansi = buf;
  return true;
}

// A path as the ANSI calls take it. One with characters the ANSI code page
// lacks (the ANSI call would put '?' in their place: a user name in another
// script, a folder named in it) is given in its short form, which the volume
// makes of plain characters; without one the path can't be used.
CError AnsiPath(const wchar_t* path, CPath& result) {
  CStr ansi;
  if (!ToAnsi(path, ansi)) {
    wchar_t shortPath[MAX_PATH] = L"";
    const DWORD m = ::GetShortPathNameW(path, shortPath, MAX_PATH);
    if (m == 0 || m >= MAX_PATH) return m == 0 ? LastError() : E_BadArgument;
    if (!ToAnsi(shortPath, ansi)) return E_BadName;
  }
  return result.Set(ansi.Chars());
}

CError ModuleFile(HMODULE module, CPath& file) {
  wchar_t path[MAX_PATH] = L"";
  const DWORD n = ::GetModuleFileNameW(module, path, MAX_PATH);
  if (n == 0 || n >= MAX_PATH) return n == 0 ? LastError() : E_BadArgument;
  return AnsiPath(path, file);
}

CError TempFolder(CPath& dir) {
  wchar_t path[MAX_PATH] = L"";
  const DWORD n = ::GetTempPathW(MAX_PATH, path);
  if (n == 0 || n >= MAX_PATH) return n == 0 ? LastError() : E_BadArgument;
  return AnsiPath(path, dir);
}

// The path in UTF-16 with every component in its long form, as far as the
// path exists (the rest as given); false when it can't be had.
bool LongForm(const CPath& path, std::wstring& result) {
  const CStr ansi = path.OSToPathString();
  wchar_t wide[MAX_PATH] = L"", full[MAX_PATH] = L"";
  if (!::MultiByteToWideChar(CP_ACP, 0, ansi.Chars(), -1, wide, MAX_PATH))
    return false;
  const DWORD n = ::GetLongPathNameW(wide, full, MAX_PATH);
  result = n > 0 && n < MAX_PATH ? full : wide;
  while (result.size() > 3 && result.back() == L'\\') result.pop_back();
  return true;
}

CError ModuleFolder(HMODULE module, CPath& dir) {
  CPath file;
  CError err = ModuleFile(module, file);
  return Failed(err) ? err : file.GetComponent(CPath::ctDir, dir);
}

bool IsCommandLineApp() {
  CExecModule* module = CExecModule::Instance();
  return module && module->IsCommandLineApp();
}

// Takes the read-only attribute off a file that has it; false (and the
// reason in the last error) when the file can't be made writable.
bool ClearReadOnly(const char* path) {
  const DWORD attributes = ::GetFileAttributesA(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  return !(attributes & FILE_ATTRIBUTE_READONLY) ||
         ::SetFileAttributesA(path, attributes & ~FILE_ATTRIBUTE_READONLY);
}

// A copy or create that would not replace failed because the name is taken.
bool LastCallFoundNameTaken() {
  const DWORD error = ::GetLastError();
  return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
}

UInt32 AttributeBit(Int kind) {
  switch (kind) {
    case CLocalFileSystem::akReadOnly:
      return FILE_ATTRIBUTE_READONLY;
    case CLocalFileSystem::akHidden:
      return FILE_ATTRIBUTE_HIDDEN;
    case CLocalFileSystem::akSystem:
      return FILE_ATTRIBUTE_SYSTEM;
    default:
      return 0;
  }
}

}  // namespace

// ---- Special directories ---------------------------------------------------

// The shell's folder, else the folder of that name below Windows, if it is
// there.
CError CLocalFileSystem::ShellFolderOrBelowWindows(int csidl, const char* name,
                                                   CPath& dir) {
  CError err = ShellFolder(csidl, dir);
  if (Succeeded(err)) return err;
  CPath fallback;
  if (Succeeded(ResolveDirectory(dtWinOSDir, fallback)) &&
      Succeeded(fallback.AppendComponent(name)) &&
      GetItemType(fallback) == S_FSIsDirectory) {
    dir = fallback;
    return Ok;
  }
  return err;
}

CError CLocalFileSystem::GetDirectory(Int dirType, CPath& dir) {
  if (dirType == dtDebugLogDir) {
    static bool noticed = false;
    if (!noticed) {
      noticed = true;
      TERN_FAIL("Debug log directory being used.");
    }
  }
  return ResolveDirectory(dirType, dir);
}

CError CLocalFileSystem::ResolveDirectory(Int dirType, CPath& dir) {
  char buf[MAX_PATH] = "";
  switch (dirType) {
    case dtTempDir:
      return TempFolder(dir);
    case dtDebugLogDir:
    case dtAppDir:
    case dtAppPrivateDir:
      return ModuleFolder(nullptr, dir);
    case dtModuleDir: {
      auto* app = dynamic_cast<CGUIApplication*>(CApplication::Current());
      return ModuleFolder(
          app ? static_cast<HMODULE>(app->ModuleHandle()) : nullptr, dir);
    }
    case dtFontsDir: {
      // The system's Fonts folder does not move while Windows runs; asking
      // the shell once is enough for a batch of fonts.
      static CPath fontsDir;
      if (fontsDir.IsValid()) {
        dir = fontsDir;
        return Ok;
      }
      CError err = ShellFolderOrBelowWindows(CSIDL_FONTS, "Fonts", dir);
      if (Succeeded(err)) fontsDir = dir;
      return err;
    }
    case dtUserAppDataDir:
    case dtLogDir:
      return ShellFolderOrBelowWindows(CSIDL_APPDATA, "Application Data", dir);
    case dtUserDocDir:
      return ShellFolder(CSIDL_PERSONAL, dir);
    case dtCurrentDir:
      if (!IsCommandLineApp()) {
        TERN_FAIL("only command-line apps support current directory access");
        return Failure;
      }
      return SetFromBuffer(dir, buf, ::GetCurrentDirectoryA(260, buf), 260);
    case dtWinOSDir:
      return SetFromBuffer(dir, buf, ::GetWindowsDirectoryA(buf, 260), 260);
    case dtWinProgramFilesDir:
    case dtWinCommonFilesDir: {
      const char* regPath =
          "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion";
      CStr value;
      if (!CWinRegKey::ReadString(regPath,
                                  dirType == dtWinProgramFilesDir
                                      ? "ProgramFilesDir"
                                      : "CommonFilesDir",
                                  value))
        return Failure;
      return dir.Set(value.Chars());
    }
    default:  // dtMachineAppDataDir has no place on this platform
      TERN_FAIL("bad dir type");
      return E_BadArgument;
  }
}

CError CLocalFileSystem::GetProgramFile(CPath& file) {
  return ModuleFile(nullptr, file);
}

CError CLocalFileSystem::GetLongForm(const CPath& path, CPath& longPath) {
  std::wstring wide;
  CStr ansi;
  if (!LongForm(path, wide) || !ToAnsi(wide.c_str(), ansi)) {
    longPath = path;
    return Ok;
  }
  return longPath.Set(ansi.Chars());
}

bool CLocalFileSystem::IsSameItem(const CPath& a, const CPath& b) {
  std::wstring longA, longB;
  return LongForm(a, longA) && LongForm(b, longB) &&
         ::CompareStringOrdinal(longA.c_str(), -1, longB.c_str(), -1, TRUE) ==
             CSTR_EQUAL;
}

CError CLocalFileSystem::GetCurrentDir(CPath& dir) {
  if (!IsCommandLineApp()) {
    TERN_FAIL("no current dir support");
    return Failure;
  }
  return ResolveDirectory(dtCurrentDir, dir);
}

CError CLocalFileSystem::MakeFullPath(const CPath& path, CPath& full) {
  if (!path.IsValid()) return E_BadArgument;
  if (path.IsFullPath()) {
    full = path;
    return Ok;
  }
  if (!IsCommandLineApp()) {
    TERN_FAIL("no current dir support");
    return Failure;
  }
  char buf[MAX_PATH] = "";
  DWORD n = ::GetFullPathNameA(path.OSToPathString().Chars(), sizeof buf, buf,
                               nullptr);
  return SetFromBuffer(full, buf, n, sizeof buf);
}

CError CLocalFileSystem::GetVolumeFreeSpace(const CPath& path,
                                            unsigned long long& bytes) {
  if (!path.IsValid()) return E_BadArgument;
  DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, total = 0;
  CStr root = path.VolumePart();
  if (!::GetDiskFreeSpaceA(root.IsEmpty() ? nullptr : root.Chars(),
                           &sectorsPerCluster, &bytesPerSector, &freeClusters,
                           &total))
    return LastError();
  bytes = static_cast<unsigned long long>(sectorsPerCluster) * bytesPerSector *
          freeClusters;
  return Ok;
}

CError CLocalFileSystem::GetVolumeType(const CPath& path, Int& type) {
  if (!path.IsValid()) return E_BadArgument;
  CStr root = path.VolumePart();
  switch (::GetDriveTypeA(root.IsEmpty() ? nullptr : root.Chars())) {
    case DRIVE_UNKNOWN:
      type = vtUnknown;
      return Ok;
    case DRIVE_FIXED:
      type = vtFixed;
      return Ok;
    case DRIVE_REMOVABLE:
      type = vtRemovable;
      return Ok;
    case DRIVE_CDROM:
      type = vtCDROM;
      return Ok;
    case DRIVE_RAMDISK:
      type = vtRAMDisk;
      return Ok;
    case DRIVE_REMOTE:
      type = vtNetwork;
      return Ok;
    case DRIVE_NO_ROOT_DIR:
      return Failure;
    default:
      TERN_FAIL("Unknown volume type.");
      return E_BadArgument;
  }
}

// ---- Files and directories -------------------------------------------------

CError CLocalFileSystem::RemoveFile(const CPath& file, bool force) {
  if (!file.IsValid()) return E_BadArgument;
  CStr os = file.OSToPathString();
  // Deleted first and asked about only when that is denied: most files a
  // removal deletes are not read-only.
  if (::DeleteFileA(os.Chars())) return Ok;
  if (!force || ::GetLastError() != ERROR_ACCESS_DENIED) return LastError();
  ClearReadOnly(os.Chars());  // DeleteFileA says why it fails
  return ::DeleteFileA(os.Chars()) ? Ok : LastError();
}

CError CLocalFileSystem::RemoveAtRestart(const CPath& path) {
  if (!path.IsValid()) return E_BadArgument;
  return ::MoveFileExA(path.OSToPathString().Chars(), nullptr,
                       MOVEFILE_DELAY_UNTIL_REBOOT)
             ? Ok
             : LastError();
}

CError CLocalFileSystem::GetFileSize(const CPath& file, UInt32& size) {
  if (!file.IsValid()) return E_BadArgument;
  CFileHandle handle;
  CError err = handle.Open(file.OSToPathString().Chars(), true, false,
                           0 /* open existing */);
  Int length = 0;
  if (Succeeded(err)) err = handle.Size(length);
  if (Succeeded(err)) size = static_cast<UInt32>(length);
  return err;
}

CError CLocalFileSystem::GetFileTime(const CPath& file, Int kind,
                                     unsigned long long& time) {
  if (!file.IsValid()) return E_BadArgument;
  if (kind != tkCreation && kind != tkLastWrite) {
    TERN_FAIL("bad time type");
    return E_BadArgument;
  }
  CScopedFileHandle handle(
      ::CreateFileA(file.OSToPathString().Chars(), GENERIC_READ, 0, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!handle.IsValid()) return LastError();
  FILETIME created, written;
  if (!::GetFileTime(handle.Get(), &created, nullptr, &written))
    return LastError();
  const FILETIME& t = kind == tkCreation ? created : written;
  time = (static_cast<unsigned long long>(t.dwHighDateTime) << 32) |
         t.dwLowDateTime;
  return Ok;
}

CError CLocalFileSystem::GetAttribute(const CPath& path, Int kind, bool& set) {
  if (!path.IsValid()) return E_BadArgument;
  const UInt32 bit = AttributeBit(kind);
  if (!bit) {
    TERN_FAIL("bad attribute");
    return E_BadArgument;
  }
  DWORD attributes = ::GetFileAttributesA(path.OSToPathString().Chars());
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastError();
  set = (attributes & bit) != 0;
  return Ok;
}

CError CLocalFileSystem::SetAttribute(const CPath& path, Int kind, bool set) {
  if (!path.IsValid()) return E_BadArgument;
  const UInt32 bit = AttributeBit(kind);
  if (!bit) {
    TERN_FAIL("bad attribute");
    return E_BadArgument;
  }
  CStr os = path.OSToPathString();
  DWORD attributes = ::GetFileAttributesA(os.Chars());
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastError();
  attributes = set ? (attributes | bit) : (attributes & ~bit);
  return ::SetFileAttributesA(os.Chars(), attributes) ? Ok : LastError();
}

CError CLocalFileSystem::GetItemType(const CPath& path) {
  if (!path.IsValid()) return E_BadArgument;
  DWORD attributes = ::GetFileAttributesA(path.OSToPathString().Chars());
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastError();
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? S_FSIsDirectory : S_FSIsFile;
}

// Empty when a walk finds no entry but "." and "..".
CError CLocalFileSystem::IsDirectoryEmpty(const CPath& dir,
                                          const char* patternStr) {
  struct CFirstEntry : CVisitor {
    CError Visit(CFileSystem&, const CPath&, CError) override {
      return E_DirNotEmpty;
    }
  } firstEntry;
  return EnumerateDirectory(dir, patternStr, firstEntry);
}

CError CLocalFileSystem::EnumerateDirectory(const CPath& dir,
                                            const char* patternStr,
                                            CVisitor& visitor) {
  TERN_ASSERT(patternStr);
  if (!dir.IsValid() || !patternStr) return E_BadArgument;
  CPath pattern = dir;
  CError err = pattern.AppendComponent(patternStr);
  if (Failed(err)) return err;
  WIN32_FIND_DATAA entry;
  CScopedFindHandle find(
      ::FindFirstFileA(pattern.OSToPathString().Chars(), &entry));
  if (!find.IsValid()) return LastError();
  do {
    if (IsDotEntry(entry.cFileName)) continue;
    CPath item = dir;
    err = item.AppendComponent(entry.cFileName);
    const CError type = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                            ? S_FSIsDirectory
                            : S_FSIsFile;
    if (Succeeded(err)) err = visitor.Visit(*this, item, type);
    if (Failed(err)) return err;
  } while (::FindNextFileA(find.Get(), &entry));
  DWORD last = ::GetLastError();
  return last == ERROR_NO_MORE_FILES ? Ok : ErrorFromWindows(last);
}

CError CLocalFileSystem::MakeDirectory(const CPath& dir) {
  if (!dir.IsValid()) return E_BadArgument;
  return ::CreateDirectoryA(dir.OSToPathString().Chars(), nullptr)
             ? Ok
             : LastError();
}

CError CLocalFileSystem::RemoveEmptyDirectory(const CPath& dir) {
  if (!dir.IsValid()) return E_BadArgument;
  return ::RemoveDirectoryA(dir.OSToPathString().Chars()) ? Ok : LastError();
}

CError CLocalFileSystem::Rename(const CPath& from, const CPath& to) {
  return MoveOneFile(from, to);
}

CError CLocalFileSystem::CopyOneFile(const CPath& src, const CPath& destPath,
                                     bool overwrite) {
  if (!src.IsValid()) return E_BadArgument;
  if (!destPath.IsValid()) {
    TERN_FAIL("destPath.IsValid()");
    return E_BadArgument;
  }
  const CStr from = src.OSToPathString(), dest = destPath.OSToPathString();
  // Copied as onto a free name first: a copy that may replace a file looks
  // up the destination before it starts, a failed lookup for most files an
  // install copies into folders just made or emptied.
  BOOL copied = ::CopyFileA(from.Chars(), dest.Chars(), TRUE);
  if (!copied && overwrite && LastCallFoundNameTaken())
    copied = ::CopyFileA(from.Chars(), dest.Chars(), FALSE);
  if (!copied) return LastError();
  return ClearReadOnly(dest.Chars()) ? Ok : LastError();
}

// Copied under a temporary name beside the destination and renamed into
// place, so that a run killed halfway never leaves a half-written file under
// the real name. Where the temporary name would not fit the path limit, the
// file is copied straight.
CError CLocalFileSystem::CopyIntoPlace(const CPath& src, const CPath& dest) {
  CPath dir, tempPath;
  if (Failed(dest.GetComponent(CPath::ctDir, dir)))
    return CopyOneFile(src, dest, false);
  const CStr from = src.OSToPathString();
  CStr temp;
  // The copy itself tells whether a temporary name is free: it fails on a
  // taken one, and the next name is tried.
  BOOL copied = FALSE;
  do {
    if (Failed(NextTempName(dir, "~", tempPath)))
      return CopyOneFile(src, dest, false);
    temp = tempPath.OSToPathString();
    copied = ::CopyFileA(from.Chars(), temp.Chars(), TRUE);
  } while (!copied && LastCallFoundNameTaken());
  if (copied && ClearReadOnly(temp.Chars()) &&
      ::MoveFileA(temp.Chars(), dest.OSToPathString().Chars()))
    return Ok;
  const CError failed = LastError();
  ::DeleteFileA(temp.Chars());
  return failed;
}

CError CLocalFileSystem::MoveOneFile(const CPath& src, const CPath& dest) {
  if (!src.IsValid() || !dest.IsValid()) return E_BadArgument;
  return ::MoveFileA(src.OSToPathString().Chars(),
                     dest.OSToPathString().Chars())
             ? Ok
             : LastError();
}

}  // namespace Tern
