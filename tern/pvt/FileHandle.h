// An open operating-system file, closed when the object goes.
#pragma once

#include <cstddef>

#include "TError.h"
#if defined(_WIN32)
#include "TScopedResource_Win.h"
#endif

namespace Tern {

// Creates the missing folders above `osPath` (not the last component).
CError CreateParentFolders(const char* osPath);

class CFileHandle {
 public:
  CFileHandle() = default;
  ~CFileHandle() { Close(); }
  CFileHandle(const CFileHandle&) = delete;
  CFileHandle& operator=(const CFileHandle&) = delete;

  // `disposition` is one of the fsm... disposition values of TStream.h.
  CError Open(const char* osPath, bool read, bool write, UInt32 disposition);
  CError Read(Byte* buf, std::size_t size, std::size_t& got);
  CError Write(const Byte* buf, std::size_t size);
  CError Seek(Int pos);
  CError Tell(Int& pos);
  CError Size(Int& size);
  // Cuts or extends the file to `size` bytes; the position stays.
  CError Resize(Int size);
  void Close();
  bool IsOpen() const;

 private:
#if defined(_WIN32)
  CScopedFileHandle mHandle;
#else
  int mFd = -1;
#endif
};

}  // namespace Tern
