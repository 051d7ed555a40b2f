// A dynamic library loaded by path, its functions looked up by name, and the
// self-registration entry points of a COM library.
#pragma once

#include "TError.h"
#include "TFileSystem.h"
#include "TScopedResource_Win.h"

namespace Tern {

class CImportLibrary {
 public:
  CImportLibrary() = default;
  // Loads at once; the load status goes to `status` when asked for.
  explicit CImportLibrary(const CPath& libPath, CError* status = nullptr);
  virtual ~CImportLibrary();
  CImportLibrary(const CImportLibrary&) = delete;
  CImportLibrary& operator=(const CImportLibrary&) = delete;

  // Only in the application's normal phase (when there is an application).
  CError Load(const CPath& libPath);
  bool IsLoaded() const { return mLib.IsValid(); }
  void* Lookup(const char* funcName) const;

  // Calls "DllRegisterServer" / "DllUnregisterServer": E_NotFound when the
  // library has none, Failure when it returns a negative result.
  CError Register();
  CError Unregister();

  // Frees the library, except while the application starts or ends: then
  // the handle is forgotten and the module stays loaded.
  void Unload();

 private:
  CError CallEntry(const char* entryName);

  CScopedModule mLib;
};

}  // namespace Tern
