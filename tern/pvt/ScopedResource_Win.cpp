#include <windows.h>
// After windows.h, which it needs.
#include <wincrypt.h>

#include <type_traits>

#include "TScopedResource_Win.h"

namespace Tern {

static_assert(std::is_same<CRegKeyTraits::Type, HKEY>::value,
              "HKEY is the type the header forward-declares");
static_assert(std::is_same<CModuleTraits::Type, HMODULE>::value,
              "HMODULE is the type the header forward-declares");
static_assert(std::is_same<CMemoryDCTraits::Type, HDC>::value,
              "HDC is the type the header forward-declares");
static_assert(std::is_same<CCertStoreTraits::Type, HCERTSTORE>::value,
              "HCERTSTORE is a plain pointer");

namespace {

// HKEY_CLASSES_ROOT and its kin are fixed values from 0x80000000 up, far
// above any handle the system gives a process.
bool IsPredefinedRoot(HKEY key) {
  const auto value = reinterpret_cast<ULONG_PTR>(key);
  return value >= reinterpret_cast<ULONG_PTR>(HKEY_CLASSES_ROOT) &&
         value <= reinterpret_cast<ULONG_PTR>(HKEY_PERFORMANCE_NLSTEXT);
}

}  // namespace

bool CFileHandleTraits::Close(Type handle) {
  return ::CloseHandle(handle) != FALSE;
}

bool CKernelHandleTraits::Close(Type handle) {
  return ::CloseHandle(handle) != FALSE;
}

bool CFindHandleTraits::Close(Type handle) {
  return ::FindClose(handle) != FALSE;
}

bool CRegKeyTraits::Close(Type key) {
  return IsPredefinedRoot(key) || ::RegCloseKey(key) == ERROR_SUCCESS;
}

bool CModuleTraits::Close(Type module) {
  return ::FreeLibrary(module) != FALSE;
}

bool CMemoryDCTraits::Close(Type dc) { return ::DeleteDC(dc) != FALSE; }

bool CCertStoreTraits::Close(Type store) {
  return ::CertCloseStore(store, 0) != FALSE;
}

}  // namespace Tern
