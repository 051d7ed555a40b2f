#include <windows.h>

#include <climits>
#include <cstring>
#include <utility>
#include <vector>

#include "Platform.h"
#include "TErrorHandler.h"
#include "TRegistryScript.h"
#include "TRegistry_Win.h"
#include "TStr.h"
#include "TStream.h"

namespace Tern {

namespace {

struct RootKey {
  const char* name;
  HKEY handle;
};

// Searched in this order: the first whose name begins with the segment.
const RootKey cRootKeys[] = {
    {"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
    {"HKEY_DYN_DATA", HKEY_DYN_DATA},
    {"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {"HKEY_USERS", HKEY_USERS},
    {"HKEY_PERFORMANCE_DATA", HKEY_PERFORMANCE_DATA},
};

const REGSAM cReadAccess = 0x20019;
const REGSAM cReadWriteAccess = 0x2001F;
const char cLowIntegrityKey[] = "Software\\AppDataLow";

REGSAM ViewFlag(Int view) {
  return view == rv32BitView ? KEY_WOW64_32KEY
                             : (view == rv64BitView ? KEY_WOW64_64KEY : 0);
}

const RootKey* FindRoot(const CStr& segment, bool whole) {
  for (const RootKey& root : cRootKeys) {
    // Without a backslash the segment's terminator is compared too.
    const Int n = segment.Length() + (whole ? 1 : 0);
    if (std::strncmp(root.name, segment.Chars(), n) == 0) return &root;
  }
  return nullptr;
}

const RootKey* RootByHandle(HKEY handle) {
  for (const RootKey& root : cRootKeys)
    if (root.handle == handle) return &root;
  return nullptr;
}

CStr Below(const CStr& parent, const char* name) {
  CStr path(parent);
  path += "\\";
  path += name;
  return path;
}

// RegDeleteKeyEx exists only on systems that have the views, so it is
// looked up; without it the key goes from the program's only view.
LONG DeleteKeyIn(HKEY parent, const char* name, Int view) {
  using DeleteKeyEx = LONG(WINAPI*)(HKEY, LPCSTR, REGSAM, DWORD);
  // This file calls into Advapi32 itself, so the module is always loaded.
  auto deleteKeyEx = reinterpret_cast<DeleteKeyEx>(reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleA("Advapi32.dll"), "RegDeleteKeyExA")));
  return deleteKeyEx ? deleteKeyEx(parent, name, ViewFlag(view), 0)
                     : ::RegDeleteKeyA(parent, name);
}

}  // namespace

CWinRegKey::~CWinRegKey() { Close(); }

void CWinRegKey::Close() {
  mPath = CStr();
  if (!mKey.Close()) TERN_FAIL("RegCloseKey(mHKey) == 0L");
}

UInt32 CWinRegKey::Access(Int mode) const {
  return (mode == rmRead ? cReadAccess : cReadWriteAccess) | ViewFlag(mRegView);
}

void CWinRegKey::Take(CScopedRegKey key, const CStr& path, Int mode) {
  Close();
  mKey = std::move(key);
  mPath = path;
  mMode = mode;
}

bool CWinRegKey::Fail(long error, const char* subKey) const {
  return FailAt(error, subKey ? Below(mPath, subKey) : mPath);
}

bool CWinRegKey::FailAt(long error, const CStr& path) const {
  mFailure = static_cast<UInt32>(error);
  mFailurePath = path;
  return false;
}

CStr CWinRegKey::FailureDetail() const {
  CStr text;
  text.Format("%s: %s (%u)",
              mFailurePath.IsEmpty() ? "(no key)" : mFailurePath.Chars(),
              Platform::SystemErrorText(mFailure).Chars(),
              static_cast<unsigned>(mFailure));
  return text;
}

bool CWinRegKey::Open(const char* rootedPath, Int mode) {
  TERN_ASSERT(rootedPath);
  if (!rootedPath) return Fail(ERROR_INVALID_PARAMETER);
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return Fail(ERROR_INVALID_FUNCTION);
  }
  CStr path(rootedPath);
  const Int slash = path.Find('\\');
  const CStr segment = slash < 0 ? path : CStr(path.Mid(0, slash));
  const RootKey* root = FindRoot(segment, slash < 0);
  if (!root) {
    TERN_FAIL("unknown root key");
    return FailAt(ERROR_BAD_PATHNAME, path);
  }
  CWinRegKey rootKey(mRegView);
  // The current user's own hive where the system gives it (the predefined
  // key may stand for another user's in a service or an impersonation).
  if (root->handle != HKEY_CURRENT_USER || mRegView != rvDefaultView ||
      !rootKey.OpenCurrentUser(mode))
    rootKey.AttachRoot(root->handle);
  if (slash < 0 || slash + 1 >= path.Length()) {
    Take(std::move(rootKey.mKey), rootKey.mPath, mode);
    return true;
  }
  return Open(path.Chars() + slash + 1, rootKey, mode);
}

bool CWinRegKey::Open(const char* path, const CWinRegKey& parent, Int mode) {
  TERN_ASSERT(path);
  if (!path) return Fail(ERROR_INVALID_PARAMETER);
  const CStr fullPath = Below(parent.mPath, path);
  if (!parent.IsValid()) return FailAt(ERROR_INVALID_HANDLE, fullPath);
  TERN_ASSERT(!IsValid());
  CScopedRegKey key;
  const LONG result =
      mode == rmCreate
          ? ::RegCreateKeyExA(parent.mKey.Get(), path, 0, const_cast<char*>(""),
                              0, Access(mode), nullptr, key.Put(), nullptr)
          : ::RegOpenKeyExA(parent.mKey.Get(), path, 0, Access(mode),
                            key.Put());
  if (result != ERROR_SUCCESS) return FailAt(result, fullPath);
  Take(std::move(key), fullPath, mode);
  return true;
}

bool CWinRegKey::OpenCurrentUser(Int mode) {
  if (mRegView != rvDefaultView) TERN_FAIL("mRegView==rvDefaultView");
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return Fail(ERROR_INVALID_FUNCTION);
  }
  const CStr path(RootByHandle(HKEY_CURRENT_USER)->name);
  CScopedRegKey key;
  const LONG result = ::RegOpenCurrentUser(
      mode == rmRead ? cReadAccess : cReadWriteAccess, key.Put());
  if (result != ERROR_SUCCESS) return FailAt(result, path);
  Take(std::move(key), path, mode);
  return true;
}

bool CWinRegKey::OpenLowIntegrity() {
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return Fail(ERROR_INVALID_FUNCTION);
  }
  const CStr path =
      Below(CStr(RootByHandle(HKEY_CURRENT_USER)->name), cLowIntegrityKey);
  CScopedRegKey key;
  const LONG result = ::RegCreateKeyExA(HKEY_CURRENT_USER, cLowIntegrityKey, 0,
                                        const_cast<char*>(""), 0, 0x20219,
                                        nullptr, key.Put(), nullptr);
  if (result != ERROR_SUCCESS) return FailAt(result, path);
  Take(std::move(key), path, rmCreate);
  return true;
}

bool CWinRegKey::SetString(const char* name, const char* value) {
  TERN_ASSERT(value);
  if (!value) return Fail(ERROR_INVALID_PARAMETER);
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE);
  const LONG result = ::RegSetValueExA(
      mKey.Get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
      static_cast<DWORD>(Str::Length(value) + 1));
  return result == ERROR_SUCCESS || Fail(result);
}

bool CWinRegKey::SetDefaultString(const char* value) {
  return SetString(nullptr, value);
}

bool CWinRegKey::SetNumber(const char* name, UInt32 value) {
  TERN_ASSERT(name);
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE);
  DWORD data = value;
  const LONG result =
      ::RegSetValueExA(mKey.Get(), name, 0, REG_DWORD,
                       reinterpret_cast<const BYTE*>(&data), sizeof data);
  return result == ERROR_SUCCESS || Fail(result);
}

bool CWinRegKey::GetString(const char* name, CStr& value) const {
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE);
  DWORD type = 0, dataLen = 0;
  LONG result =
      ::RegQueryValueExA(mKey.Get(), name, nullptr, &type, nullptr, &dataLen);
  if (result != ERROR_SUCCESS) return Fail(result);
  if (type != REG_SZ && type != REG_EXPAND_SZ)
    return Fail(ERROR_UNSUPPORTED_TYPE);
  if (!(dataLen <= INT_MAX)) TERN_FAIL("dataLen<=INT_MAX");
  std::vector<char> data(dataLen + 1, 0);
  result = ::RegQueryValueExA(mKey.Get(), name, nullptr, &type,
                              reinterpret_cast<BYTE*>(data.data()), &dataLen);
  if (result != ERROR_SUCCESS) return Fail(result);
  value = data.data();  // the stored terminator, or the one added
  return true;
}

bool CWinRegKey::GetNumber(const char* name, UInt32& value) const {
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE);
  DWORD type = 0, data = 0, dataLen = sizeof data;
  const LONG result =
      ::RegQueryValueExA(mKey.Get(), name, nullptr, &type,
                         reinterpret_cast<BYTE*>(&data), &dataLen);
  if (result != ERROR_SUCCESS) return Fail(result);
  if (type != REG_DWORD) return Fail(ERROR_UNSUPPORTED_TYPE);
  value = data;
  return true;
}

bool CWinRegKey::DeleteValue(const char* name) {
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE);
  const LONG result = ::RegDeleteValueA(mKey.Get(), name);
  return result == ERROR_SUCCESS || Fail(result);
}

bool CWinRegKey::DeleteSubKey(const char* name) {
  return DeleteSubKeyInView(name, mRegView);
}

bool CWinRegKey::DeleteSubKeyInView(const char* name, Int view) {
  TERN_ASSERT(name);
  if (!name) return Fail(ERROR_INVALID_PARAMETER);
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE, name);
  const LONG result = DeleteKeyIn(mKey.Get(), name, view);
  return result == ERROR_SUCCESS || Fail(result, name);
}

bool CWinRegKey::DeleteSubKeyTree(const char* name) {
  TERN_ASSERT(name);
  if (!name) return Fail(ERROR_INVALID_PARAMETER);
  {
    CWinRegKey key(mRegView);
    std::vector<CStr> subKeys;
    bool emptied =
        key.Open(name, *this, rmWrite) && key.GetSubKeyNames(subKeys);
    for (const CStr& sub : subKeys)
      emptied = emptied && key.DeleteSubKeyTree(sub.Chars());
    if (!emptied) return FailAt(key.mFailure, key.mFailurePath);
  }
  return DeleteSubKey(name);
}

bool CWinRegKey::QueryInfo(Int* subKeyCount, Int* valueCount) {
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE);
  DWORD subKeys = 0, maxSubKeyLen = 0, values = 0, maxValueNameLen = 0,
        maxValueLen = 0;
  LONG result = ::RegQueryInfoKeyA(
      mKey.Get(), nullptr, nullptr, nullptr, &subKeys, &maxSubKeyLen, nullptr,
      &values, &maxValueNameLen, &maxValueLen, nullptr, nullptr);
  TERN_ASSERT(result == ERROR_SUCCESS);
  if (result != ERROR_SUCCESS) return Fail(result);
  // Names of subkeys and of values share the one buffer length.
  mMaxNameLen = maxSubKeyLen > maxValueNameLen ? maxSubKeyLen : maxValueNameLen;
  mMaxDataLen = maxValueLen;
  if (!(mMaxNameLen <= INT_MAX)) TERN_FAIL("mKey.mMaxNameLen<=INT_MAX");
  if (!(mMaxDataLen <= INT_MAX)) TERN_FAIL("mKey.mMaxDataLen<=INT_MAX");
  if (subKeyCount) *subKeyCount = static_cast<Int>(subKeys);
  if (valueCount) *valueCount = static_cast<Int>(values);
  return true;
}

// Subkeys and values are enumerated alike, into a buffer of the longest name.
long CWinRegKey::NameAt(Int index, bool values, CStr& name) const {
  DWORD nameLen = mMaxNameLen + 1;
  if (!(nameLen <= INT_MAX)) TERN_FAIL("nameLen<=INT_MAX");
  std::vector<char> buf(nameLen + 1, 0);
  const LONG result =
      values ? ::RegEnumValueA(mKey.Get(), index, buf.data(), &nameLen, nullptr,
                               nullptr, nullptr, nullptr)
             : ::RegEnumKeyExA(mKey.Get(), index, buf.data(), &nameLen, nullptr,
                               nullptr, nullptr, nullptr);
  if (result == ERROR_SUCCESS)
    name.Assign(buf.data(), static_cast<Int>(nameLen));
  return result;
}

bool CWinRegKey::EnumName(Int index, CStr& name, bool values) {
  if (!IsValid()) return Fail(ERROR_INVALID_HANDLE);
  if (mMaxNameLen == 0 && !QueryInfo()) return false;
  const LONG result = NameAt(index, values, name);
  return result == ERROR_SUCCESS || Fail(result);
}

bool CWinRegKey::EnumSubKey(Int index, CStr& name) {
  return EnumName(index, name, false);
}

bool CWinRegKey::EnumValue(Int index, CStr& name) {
  return EnumName(index, name, true);
}

// The lengths are asked afresh, as names may have grown since the last ask.
bool CWinRegKey::ListNames(bool values, std::vector<CStr>& names) {
  names.clear();
  if (!QueryInfo()) return false;
  for (Int index = 0;; ++index) {
    CStr name;
    const LONG result = NameAt(index, values, name);
    if (result == ERROR_NO_MORE_ITEMS) return true;
    if (result != ERROR_SUCCESS) {
      names.clear();
      return Fail(result);
    }
    names.push_back(name);
  }
}

bool CWinRegKey::GetSubKeyNames(std::vector<CStr>& names) {
  return ListNames(false, names);
}

bool CWinRegKey::GetValueNames(std::vector<CStr>& names) {
  return ListNames(true, names);
}

bool CWinRegKey::ReadString(const char* rootedPath, const char* name,
                            CStr& value, Int view) {
  CWinRegKey key(view);
  return key.Open(rootedPath, rmRead) && key.GetString(name, value);
}

void* CWinRegKey::FindRootKey(const CStr& segment, bool whole) {
  const RootKey* root = FindRoot(segment, whole);
  return root ? root->handle : nullptr;
}

bool CWinRegKey::AttachRoot(void* rootHandle) {
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return Fail(ERROR_INVALID_FUNCTION);
  }
  if (!rootHandle) return Fail(ERROR_INVALID_HANDLE);
  const RootKey* root = RootByHandle(static_cast<HKEY>(rootHandle));
  if (!root) {
    TERN_FAIL("not a predefined root key");
    return Fail(ERROR_INVALID_HANDLE);
  }
  Take(CScopedRegKey(root->handle), CStr(root->name), mMode);
  return true;
}

bool Platform::ReadRegistryString(const char* rootKey, const char* subKey,
                                  const char* name, CStr& value) {
  CStr path(rootKey);
  path += "\\";
  path += subKey;
  CWinRegKey key;
  // Missing keys are the usual case here: no assertion for a bad root.
  return FindRoot(CStr(rootKey), true) && key.Open(path.Chars(), rmRead) &&
         key.GetString(name, value);
}

// ---- Registry script -------------------------------------------------------

namespace {

class CScriptRunner {
 public:
  CScriptRunner(Int view, CStr* message)
      : mRoot(view), mSub(view), mMessage(message) {}

  // False stops the script.
  bool RunLine(const CRegScriptLine& line) {
    const CStr& key = line.key;
    const bool hasValue = line.hasValue;
    const CStr& value = line.value;
    switch (line.command) {
      case '@':
        return OpenRoot(key, hasValue, value);
      case '/':
        return OpenSub(key, hasValue, value);
      case '-':
        return DeleteRootValue(key, hasValue);
      case '#':
        return SetValue(key, hasValue, value);
      default:
        TERN_FAIL("bad syntax");
        return true;
    }
  }

 private:
  bool OpenRoot(const CStr& path, bool hasValue, const CStr& value) {
    mSub.Close();
    mRoot.Close();
    if (!mRoot.Open(path.Chars(), rmCreate))
      return Stop(__LINE__, "can't open or create key (%s)", path.Chars());
    return !hasValue || SetDefault(mRoot, path, value);
  }

  bool OpenSub(const CStr& path, bool hasValue, const CStr& value) {
    mSub.Close();
    if (!mSub.Open(path.Chars(), mRoot, rmCreate))
      return Stop(__LINE__, "can't open or create key (%s)", path.Chars());
    return !hasValue || SetDefault(mSub, path, value);
  }

  bool DeleteRootValue(const CStr& name, bool hasValue) {
    if (hasValue) TERN_FAIL("! hasValue");
    mSub.Close();
    if (!mRoot.IsValid())
      return Stop(__LINE__, "no root key (%s)", name.Chars());
    mRoot.DeleteValue(name.Chars());
    return true;
  }

  bool SetValue(const CStr& name, bool hasValue, const CStr& value) {
    if (!hasValue)
      return Stop(__LINE__, "# command must have a value for key (%s)",
                  name.Chars());
    CWinRegKey& target = mSub.IsValid() ? mSub : mRoot;
    if (!target.SetString(name.Chars(), value.Chars()))
      return Stop(__LINE__, "can't set value (%s) for key (%s)", value.Chars(),
                  name.Chars());
    return true;
  }

  bool SetDefault(CWinRegKey& key, const CStr& path, const CStr& value) {
    if (key.SetDefaultString(value.Chars())) return true;
    return Stop(__LINE__, "can't set value (%s) for key (%s)", value.Chars(),
                path.Chars());
  }

  // Words the failure through the error handler and ends the script.
  bool Stop(Int line, const char* format, const char* a, const char* b = "") {
    CStr text;
    text.Format(format, a, b);
    CStr out;
    CErrorHandler::Current().ReportAt(text.Chars(), "pvt\\Registry_Win", line,
                                      out);
    if (mMessage) *mMessage = out;
    mSub.Close();
    mRoot.Close();
    return false;
  }

  CWinRegKey mRoot;
  CWinRegKey mSub;
  CStr* mMessage;
};

}  // namespace

CError RunRegistryScript(CStream& script, Int view, CStr* message) {
  CScriptRunner runner(view, message);
  for (;;) {
    CStr line;
    const bool more = ReadRegistryScriptLine(script, line);
    CRegScriptLine parsed;
    if (ParseRegistryScriptLine(line, parsed) && !runner.RunLine(parsed))
      return Failure;
    if (!more) return Ok;
  }
}

}  // namespace Tern
