// Registry access: one open key, named by a textual rooted path such as
// "HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion", in the
// default, 32-bit or 64-bit view. And the line-oriented registry script.
#pragma once

#include "TError.h"
#include "TString.h"

namespace Tern {

class CStream;

enum RegMode : Int { rmRead = 0, rmCreate = 1, rmWrite = 2 };
enum RegView : Int { rvDefaultView = 0, rv32BitView = 1, rv64BitView = 2 };

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

  bool IsValid() const { return mHKey != nullptr; }
  Int GetMode() const { return mMode; }
  Int GetView() const { return mRegView; }
  void* Handle() const { return mHKey; }

  // A REG_SZ or REG_EXPAND_SZ value; null name: the default value.
  bool GetString(const char* name, CStr& value) const;
  bool GetNumber(const char* name, UInt32& value) const;
  bool DeleteValue(const char* name);
  // The subkey must have no subkeys of its own.
  bool DeleteSubKey(const char* name);

  bool QueryInfo(Int* subKeyCount = nullptr, Int* valueCount = nullptr);
  bool EnumSubKey(Int index, CStr& name);
  bool EnumValue(Int index, CStr& name);

  // Opens the rooted path read-only, reads one string value, closes.
  static bool ReadString(const char* rootedPath, const char* name, CStr& value,
                         Int view = rvDefaultView);

  // The predefined root handle whose name begins with `segment` (or equals
  // it, when `whole`), in the order Open searches them; null for none.
  static void* FindRootKey(const CStr& segment, bool whole);
  // Takes a predefined root handle, as Open does for a root alone; it is
  // never closed. Keys below it then open with Open(path, *this, mode).
  bool AttachRoot(void* rootHandle);

 private:
  UInt32 Access(Int mode) const;
  bool EnumName(Int index, CStr& name, bool values);

  void* mHKey = nullptr;
  bool mClose = false;
  Int mMode = rmRead;
  Int mRegView;
  UInt32 mMaxNameLen = 0;
  UInt32 mMaxDataLen = 0;
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
