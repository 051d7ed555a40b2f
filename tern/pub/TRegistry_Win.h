// Registry access: one open key, named by a textual rooted path such as
// "HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion", in the
// default, 32-bit or 64-bit view. And the line-oriented registry script.
#pragma once

#include <vector>

#include "TError.h"
#include "TScopedResource_Win.h"
#include "TString.h"

namespace Tern {

class CStream;

enum RegMode : Int { rmRead = 0, rmCreate = 1, rmWrite = 2 };
enum RegView : Int { rvDefaultView = 0, rv32BitView = 1, rv64BitView = 2 };

// Every call that fails keeps the Windows error code behind its failure and
// the path of the key it concerns, until the next failure; FailureDetail()
// words it for a log.
class CWinRegKey {
 public:
  explicit CWinRegKey(Int view = rvDefaultView) : mRegView(view) {}
  virtual ~CWinRegKey();
  CWinRegKey(const CWinRegKey&) = delete;
  CWinRegKey& operator=(const CWinRegKey&) = delete;

  virtual bool SetDefaultString(const char* value);
  virtual bool SetNumber(const char* name, UInt32 value);
  virtual bool SetString(const char* name, const char* value);

  // The first segment names the root: the first root whose name begins with
  // it (so "HKEY_CURRENT" is HKEY_CURRENT_CONFIG). A root alone is the
  // predefined handle, which is never closed.
  bool Open(const char* rootedPath, Int mode);
  bool Open(const char* path, const CWinRegKey& parent, Int mode);
  bool OpenCurrentUser(Int mode);
  // "Software\AppDataLow" of the current user.
  bool OpenLowIntegrity();
  void Close();

  bool IsValid() const { return mKey.IsValid(); }
  Int GetMode() const { return mMode; }
  Int GetView() const { return mRegView; }
  void* Handle() const { return mKey.Get(); }
  // The open key's rooted path, its root named in full
  // ("HKEY_CURRENT_USER\Software\X"); empty while no key is open.
  const CStr& Path() const { return mPath; }

  // A REG_SZ or REG_EXPAND_SZ value; null name: the default value.
  bool GetString(const char* name, CStr& value) const;
  bool GetNumber(const char* name, UInt32& value) const;
  bool DeleteValue(const char* name);
  // The subkey must have no subkeys of its own.
  bool DeleteSubKey(const char* name);
  // The same in the given view (a RegView), whatever this key's own view.
  // Systems older than the views delete in the program's only view.
  bool DeleteSubKeyInView(const char* name, Int view);
  // The subkey and everything below it, depth first, in this key's view.
  // A failure stops the deletion where it happened.
  bool DeleteSubKeyTree(const char* name);

  bool QueryInfo(Int* subKeyCount = nullptr, Int* valueCount = nullptr);
  bool EnumSubKey(Int index, CStr& name);
  bool EnumValue(Int index, CStr& name);
  // Every subkey's or value's name (the default value's is empty), in the
  // system's order; false, and `names` empty, when the list can't be read.
  bool GetSubKeyNames(std::vector<CStr>& names);
  bool GetValueNames(std::vector<CStr>& names);

  // The Windows error code of the last failure (0 while none failed): the
  // system's own, or for failures found here ERROR_INVALID_HANDLE (no key
  // open), ERROR_INVALID_PARAMETER (a missing name or path),
  // ERROR_BAD_PATHNAME (no such root), ERROR_UNSUPPORTED_TYPE (a value of
  // another type) or ERROR_INVALID_FUNCTION (opening an open key).
  // Enumerating past the last name fails too, with ERROR_NO_MORE_ITEMS.
  UInt32 FailureCode() const { return mFailure; }
  // One line for a log: the path the last failure concerns, the system's
  // text for its code and the code, as in
  // "HKEY_LOCAL_MACHINE\SOFTWARE\X: Access denied. (5)".
  CStr FailureDetail() const;

  // Opens the rooted path read-only, reads one string value, closes.
  static bool ReadString(const char* rootedPath, const char* name, CStr& value,
                         Int view = rvDefaultView);

  // The predefined root handle whose name begins with `segment` (or equals
  // it, when `whole`), in the order Open searches them; null for none.
  static void* FindRootKey(const CStr& segment, bool whole);
  // Takes a predefined root handle, as Open does for a root alone; it is
  // never closed. Keys below it then open with Open(path, *this, mode).
  // Any other handle is refused.
  bool AttachRoot(void* rootHandle);

 private:
  UInt32 Access(Int mode) const;
  // Adopts a key just opened at `path`.
  void Take(CScopedRegKey key, const CStr& path, Int mode);
  bool EnumName(Int index, CStr& name, bool values);
  bool ListNames(bool values, std::vector<CStr>& names);
  // The system's answer for one name (ERROR_NO_MORE_ITEMS past the last).
  long NameAt(Int index, bool values, CStr& name) const;
  // Keeps the failure (about the subkey `subKey`, when given) and returns
  // false, for `return Fail(...)`.
  bool Fail(long error, const char* subKey = nullptr) const;
  bool FailAt(long error, const CStr& path) const;

  CScopedRegKey mKey;
  CStr mPath;
  Int mMode = rmRead;
  Int mRegView;
  UInt32 mMaxNameLen = 0;
  UInt32 mMaxDataLen = 0;
  mutable UInt32 mFailure = 0;
  mutable CStr mFailurePath;
};

// Applies a registry script line by line:
//   @HKEY_...\path[=default]  open or create a root key
//   /sub/path[=default]       open or create a subkey below the root
//   -name                     delete a value of the root key
//   #name=value               set a string on the subkey, else on the root
// "/" in key paths stands for "\". The first failure stops the script; its
// message is given back in `message` when asked for.
CError RunRegistryScript(CStream& script, Int view = rvDefaultView,
                         CStr* message = nullptr);

}  // namespace Tern
