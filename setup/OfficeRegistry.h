// Registry helpers of the Office code: "REG*" key paths, values written in a
// chosen registry view, key deletion in a view, and the system's bitness.
#pragma once

#include "TString.h"

namespace Zendra {

// "REG*HKEY_LOCAL_MACHINE\Software\Microsoft\Office\<version>\<app>", as
// the Office tables name an Office key.
#define ZENDRA_OFFICE_KEY(version, app) \
  "REG*HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Office\\" version "\\" app

// A key as the Office tables name it: one of the predefined roots (an HKEY)
// and the path below it.
struct COfficeKey {
  void* root = nullptr;
  Tern::CStr subKey;
};

// Splits "REG*HKEY_LOCAL_MACHINE\Software\..." into the predefined root and
// the rest. False (and nothing set) for any other form.
bool IniParsePath(const char* path, COfficeKey& key);

// Creates the key (in the 64-bit view when asked) and sets a string or a
// DWORD value; an empty value name sets the default value. Each failure is
// logged with its own text.
bool RegCreateKeyValue(const COfficeKey& key, const char* valueName,
                       const char* data, bool use64BitVersion);
bool RegCreateKeyValue(const COfficeKey& key, const char* valueName,
                       Tern::UInt32 data, bool use64BitVersion);

// Deletes a key that has no subkeys, with its values, in the 64-bit view
// when asked ("RegDeleteKeyExA", looked up at run time; without it the key
// is deleted in the program's own view).
bool RegDeleteKeyInView(const COfficeKey& key, bool use64BitVersion);

// The view 32-bit Office keeps its keys in: the 32-bit one on a 64-bit
// system, the only one otherwise.
Tern::Int OfficeView();
// Whether the key exists in the view (a Tern::RegView).
bool RegKeyExists(const COfficeKey& key, Tern::Int view);
// On a 64-bit system, an Office application whose key ("REG*..." form) is
// only in the 64-bit view is a 64-bit one, which has no use for the
// product's 32-bit `what`: logged as found there, with the reason nothing is
// placed for it. False when the key is not there either.
bool FoundInOtherView(const char* regPath, const Tern::CStr& name,
                      const char* what);
// A string value of the key in Office's view; false when missing or empty.
bool ReadOfficeString(const COfficeKey& key, const char* name,
                      Tern::CStr& value);

// The global variable "OSIs64Bit"; when no one set it, it is set here from
// the system itself.
bool OSIs64Bit();
// "The OS is a 32 bit OS" or "... 64 ...", once per run.
void LogOSBitness();

}  // namespace Zendra
