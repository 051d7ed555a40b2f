// The product's COM components: registering and unregistering them, and
// whether their files are in use.
#pragma once

#include "TFileSystem.h"

namespace Zendra {

// The product's COM components, in the order they are registered.
extern const char* const cComponentFiles[5];

// Loads `fileName` from `dir` and calls its DllRegisterServer (or, with
// `doRegister` false, DllUnregisterServer). Every failure is logged and
// counted; true when the load and the entry point both succeeded.
bool RegisterComponent(bool doRegister, const Tern::CPath& dir,
                       const char* fileName);

// True when the file exists and cannot be opened for exclusive writing.
bool FileIsInUse(const Tern::CPath& path);
// True when any component file in `installDir` is in use.
bool ComponentsInUse(const Tern::CPath& installDir);

}  // namespace Zendra
