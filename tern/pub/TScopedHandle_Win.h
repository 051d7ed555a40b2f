// An operating-system handle that is closed however the code that opened it
// ends, or earlier by Close() where the close itself is a step to check.
#pragma once

#include <windows.h>

namespace Tern {

template <BOOL(WINAPI* CloseFunction)(HANDLE)>
class CScopedHandle {
 public:
  explicit CScopedHandle(HANDLE handle = INVALID_HANDLE_VALUE)
      : mHandle(handle ? handle : INVALID_HANDLE_VALUE) {}
  ~CScopedHandle() { Close(); }
  CScopedHandle(const CScopedHandle&) = delete;
  CScopedHandle& operator=(const CScopedHandle&) = delete;

  bool IsValid() const { return mHandle != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return mHandle; }
  void Reset(HANDLE handle) {
    Close();
    mHandle = handle ? handle : INVALID_HANDLE_VALUE;
  }
  // False when the handle was open and could not be closed.
  bool Close() {
    if (!IsValid()) return true;
    const BOOL closed = CloseFunction(mHandle);
    mHandle = INVALID_HANDLE_VALUE;
    return closed != FALSE;
  }

 private:
  HANDLE mHandle;
};

using CFindHandle = CScopedHandle<::FindClose>;
using CKernelHandle = CScopedHandle<::CloseHandle>;

}  // namespace Tern
