// An operating-system resource (a handle, a key, a module) owned by one
// object: closed however the code that opened it ends, or earlier by Close()
// where the close itself is a step to check. Ownership moves, never copies.
//
// Each kind of resource is described by its traits: the handle's type, the
// value that means "nothing held", and the call that closes it. The header
// needs no <windows.h>, so that the library's own headers can hold these
// types without handing the system's macros to every file that includes
// them; the handle types named below are the ones <windows.h> declares.
#pragma once

#include <cstdint>

// HKEY, HMODULE (HINSTANCE) and HDC as <windows.h> declares them.
struct HKEY__;
struct HINSTANCE__;
struct HDC__;

namespace Tern {

template <class Traits>
class CScopedResource {
 public:
  using Type = typename Traits::Type;

  CScopedResource() = default;
  explicit CScopedResource(Type value) : mValue(value) {}
  ~CScopedResource() { Close(); }

  CScopedResource(CScopedResource&& other) : mValue(other.Release()) {}
  CScopedResource& operator=(CScopedResource&& other) {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  CScopedResource(const CScopedResource&) = delete;
  CScopedResource& operator=(const CScopedResource&) = delete;

  bool IsValid() const { return mValue != Traits::Invalid(); }
  Type Get() const { return mValue; }

  // Closes what is held (its close status is lost: use Close() to see it)
  // and takes `value`. Taking the value already held changes nothing.
  void Reset(Type value = Traits::Invalid()) {
    if (value == mValue) return;
    Close();
    mValue = value;
  }
  // Hands the resource to the caller, who closes it from now on.
  Type Release() {
    const Type value = mValue;
    mValue = Traits::Invalid();
    return value;
  }
  // False when a resource was held and could not be closed; either way none
  // is held afterwards.
  bool Close() { return !IsValid() || Traits::Close(Release()); }
  // Where a system call that opens something writes its handle: whatever was
  // held is closed first.
  Type* Put() {
    Close();
    return &mValue;
  }

 private:
  Type mValue = Traits::Invalid();
};

// Files, pipes and devices from CreateFile: INVALID_HANDLE_VALUE when none.
struct CFileHandleTraits {
  using Type = void*;
  static Type Invalid() { return reinterpret_cast<Type>(std::intptr_t{-1}); }
  static bool Close(Type handle);  // CloseHandle
};

// Kernel objects that are null when there is none: mutexes, events,
// processes, threads.
struct CKernelHandleTraits {
  using Type = void*;
  static Type Invalid() { return nullptr; }
  static bool Close(Type handle);  // CloseHandle
};

// A search from FindFirstFile: INVALID_HANDLE_VALUE when none.
struct CFindHandleTraits {
  using Type = void*;
  static Type Invalid() { return reinterpret_cast<Type>(std::intptr_t{-1}); }
  static bool Close(Type handle);  // FindClose
};

// An open registry key (HKEY), null when none. A predefined root such as
// HKEY_LOCAL_MACHINE may be held too: it is a constant, not this process's
// handle, and is never closed.
struct CRegKeyTraits {
  using Type = ::HKEY__*;
  static Type Invalid() { return nullptr; }
  static bool Close(Type key);  // RegCloseKey
};

// A loaded library (HMODULE), null when none.
struct CModuleTraits {
  using Type = ::HINSTANCE__*;
  static Type Invalid() { return nullptr; }
  static bool Close(Type module);  // FreeLibrary
};

// A certificate store (HCERTSTORE), null when none.
struct CCertStoreTraits {
  using Type = void*;
  static Type Invalid() { return nullptr; }
  static bool Close(Type store);  // CertCloseStore(store, 0)
};

// A device context of CreateCompatibleDC (HDC), null when none.
struct CMemoryDCTraits {
  using Type = ::HDC__*;
  static Type Invalid() { return nullptr; }
  static bool Close(Type dc);  // DeleteDC
};

using CScopedFileHandle = CScopedResource<CFileHandleTraits>;
using CScopedKernelHandle = CScopedResource<CKernelHandleTraits>;
using CScopedFindHandle = CScopedResource<CFindHandleTraits>;
using CScopedRegKey = CScopedResource<CRegKeyTraits>;
using CScopedModule = CScopedResource<CModuleTraits>;
using CScopedCertStore = CScopedResource<CCertStoreTraits>;
using CScopedMemoryDC = CScopedResource<CMemoryDCTraits>;

}  // namespace Tern
