#include <windows.h>

#include "FileHandle.h"
#include "TFileSystem.h"
#include "TStream.h"

namespace Tern {

namespace {

CError LastError() { return ErrorFromWindows(::GetLastError()); }

DWORD CreationDisposition(UInt32 disposition) {
  switch (disposition) {
    case fsmCreateNew:
      return CREATE_NEW;
    case fsmCreateAlways:
      return CREATE_ALWAYS;
    case fsmOpenOrCreate:
      return OPEN_ALWAYS;
    case fsmTruncateExisting:
      return TRUNCATE_EXISTING;
    default:
      return OPEN_EXISTING;
  }
}

}  // namespace

// Through the local file system, which makes every missing level.
CError CreateParentFolders(const char* osPath) {
  CPath dir;
  CError err = CPath(osPath).GetComponent(CPath::ctDir, dir);
  return Failed(err) ? err
                     : CLocalFileSystem::Instance().CreateDirectoryPath(dir);
}

bool CFileHandle::IsOpen() const { return mHandle.IsValid(); }

CError CFileHandle::Open(const char* osPath, bool read, bool write,
                         UInt32 disposition) {
  Close();  // before the new open, which may want the file to itself
  DWORD access = (read ? GENERIC_READ : 0) | (write ? GENERIC_WRITE : 0);
  // Readers let others write (a log being written can be read meanwhile).
  DWORD share = write ? FILE_SHARE_READ : FILE_SHARE_READ | FILE_SHARE_WRITE;
  mHandle.Reset(::CreateFileA(osPath, access, share, nullptr,
                              CreationDisposition(disposition),
                              FILE_ATTRIBUTE_NORMAL, nullptr));
  return IsOpen() ? Ok : LastError();
}

CError CFileHandle::Read(Byte* buf, std::size_t size, std::size_t& got) {
  DWORD n = 0;
  got = 0;
  if (!::ReadFile(mHandle.Get(), buf, static_cast<DWORD>(size), &n, nullptr))
    return LastError();
  got = n;
  return Ok;
}

CError CFileHandle::Write(const Byte* buf, std::size_t size) {
  DWORD n = 0;
  if (!::WriteFile(mHandle.Get(), buf, static_cast<DWORD>(size), &n, nullptr))
    return LastError();
  return n == size ? Ok : E_Write;
}

CError CFileHandle::Seek(Int pos) {
  return ::SetFilePointer(mHandle.Get(), pos, nullptr, FILE_BEGIN) ==
                 INVALID_SET_FILE_POINTER
             ? LastError()
             : Ok;
}

CError CFileHandle::Tell(Int& pos) {
  DWORD p = ::SetFilePointer(mHandle.Get(), 0, nullptr, FILE_CURRENT);
  if (p == INVALID_SET_FILE_POINTER) return LastError();
  pos = static_cast<Int>(p);
  return Ok;
}

CError CFileHandle::Size(Int& size) {
  DWORD s = ::GetFileSize(mHandle.Get(), nullptr);
  if (s == INVALID_FILE_SIZE) return LastError();
  size = static_cast<Int>(s);
  return Ok;
}

CError CFileHandle::Resize(Int size) {
  Int pos = 0;
  CError err = Tell(pos);
  if (Succeeded(err)) err = Seek(size);
  if (Succeeded(err) && !::SetEndOfFile(mHandle.Get())) err = LastError();
  CError back = Seek(pos < size ? pos : size);
  return Failed(err) ? err : back;
}

void CFileHandle::Close() { mHandle.Close(); }

}  // namespace Tern
