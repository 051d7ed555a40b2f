#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "FileHandle.h"
#include "TStream.h"

namespace Tern {

namespace {

CError LastError() {
  switch (errno) {
    case ENOENT:
    case ENOTDIR:
      return E_NotFound;
    case EEXIST:
      return E_AlreadyExists;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
      return E_NoAccess;
    case ENOSPC:
      return E_DiskFull;
    case ENOMEM:
      return E_Alloc;
    case EINVAL:
    case ENAMETOOLONG:
      return E_BadArgument;
    default:
      return Failure;
  }
}

int OpenFlags(UInt32 disposition) {
  switch (disposition) {
    case fsmCreateNew:
      return O_CREAT | O_EXCL;
    case fsmCreateAlways:
      return O_CREAT | O_TRUNC;
    case fsmOpenOrCreate:
      return O_CREAT;
    case fsmTruncateExisting:
      return O_TRUNC;
    default:
      return 0;
  }
}

}  // namespace

CError CreateParentFolders(const char* osPath) {
  std::string path(osPath ? osPath : "");
  for (std::size_t i = 1; i < path.size(); ++i) {
    if (path[i] != '/') continue;
    if (::mkdir(path.substr(0, i).c_str(), 0755) != 0 && errno != EEXIST)
      return LastError();
  }
  return Ok;
}

bool CFileHandle::IsOpen() const { return mFd >= 0; }

CError CFileHandle::Open(const char* osPath, bool read, bool write,
                         UInt32 disposition) {
  Close();
  int access = read && write ? O_RDWR : (write ? O_WRONLY : O_RDONLY);
  mFd = ::open(osPath, access | OpenFlags(disposition), 0644);
  return IsOpen() ? Ok : LastError();
}

CError CFileHandle::Read(Byte* buf, std::size_t size, std::size_t& got) {
  ssize_t n = ::read(mFd, buf, size);
  got = n > 0 ? static_cast<std::size_t>(n) : 0;
  return n < 0 ? LastError() : Ok;
}

CError CFileHandle::Write(const Byte* buf, std::size_t size) {
  ssize_t n = ::write(mFd, buf, size);
  if (n < 0) return LastError();
  return static_cast<std::size_t>(n) == size ? Ok : E_Write;
}

CError CFileHandle::Seek(Int pos) {
  return ::lseek(mFd, pos, SEEK_SET) < 0 ? LastError() : Ok;
}

CError CFileHandle::Tell(Int& pos) {
  off_t p = ::lseek(mFd, 0, SEEK_CUR);
  if (p < 0) return LastError();
  pos = static_cast<Int>(p);
  return Ok;
}

CError CFileHandle::Size(Int& size) {
  struct stat info;
  if (::fstat(mFd, &info) != 0) return LastError();
  size = static_cast<Int>(info.st_size);
  return Ok;
}

CError CFileHandle::Resize(Int size) {
  return ::ftruncate(mFd, size) != 0 ? LastError() : Ok;
}

void CFileHandle::Close() {
  if (IsOpen()) ::close(mFd);
  mFd = -1;
}

}  // namespace Tern
