#include <windows.h>

#include <climits>
#include <cstring>
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

REGSAM ViewFlag(Int view) {
  return view == rv32BitView ? KEY_WOW64_32KEY
                             : (view == rv64BitView ? KEY_WOW64_64KEY : 0);
}

HKEY FindRoot(const CStr& segment, bool whole) {
  for (const RootKey& root : cRootKeys) {
    // Without a backslash the segment's terminator is compared too.
    const Int n = segment.Length() + (whole ? 1 : 0);
    if (std::strncmp(root.name, segment.Chars(), n) == 0) return root.handle;
  }
  return nullptr;
}

}  // namespace

CWinRegKey::~CWinRegKey() { Close(); }

void CWinRegKey::Close() {
  if (mHKey && mClose) {
    LONG result = ::RegCloseKey(static_cast<HKEY>(mHKey));
    if (result != 0L) TERN_FAIL("RegCloseKey(mHKey) == 0L");
  }
  mHKey = nullptr;
  mClose = false;
}

UInt32 CWinRegKey::Access(Int mode) const {
  return (mode == rmRead ? cReadAccess : cReadWriteAccess) | ViewFlag(mRegView);
}

bool CWinRegKey::Open(const char* rootedPath, Int mode) {
  TERN_ASSERT(rootedPath);
  if (!rootedPath) return false;
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return false;
  }
  CStr path(rootedPath);
  const Int slash = path.Find('\\');
  const CStr segment = slash < 0 ? path : CStr(path.Mid(0, slash));
  HKEY root = FindRoot(segment, slash < 0);
  if (!root) {
    TERN_FAIL("unknown root key");
    return false;
  }
  if (slash < 0 || slash + 1 >= path.Length()) {
    mHKey = root;  // the predefined handle: never closed
    mClose = false;
    mMode = mode;
    return true;
  }
  CWinRegKey rootKey(mRegView);
  rootKey.mHKey = root;
  return Open(path.Chars() + slash + 1, rootKey, mode);
}

bool CWinRegKey::Open(const char* path, const CWinRegKey& parent, Int mode) {
  TERN_ASSERT(path);
  if (!path || !parent.IsValid()) return false;
  TERN_ASSERT(mHKey == 0);
  HKEY key = nullptr;
  LONG result;
  if (mode == rmCreate) {
    result = ::RegCreateKeyExA(static_cast<HKEY>(parent.mHKey), path, 0,
                               const_cast<char*>(""), 0, Access(mode), nullptr,
                               &key, nullptr);
  } else {
    result = ::RegOpenKeyExA(static_cast<HKEY>(parent.mHKey), path, 0,
                             Access(mode), &key);
  }
  if (result != ERROR_SUCCESS) return false;
  Close();
  mHKey = key;
  mClose = true;
  mMode = mode;
  return true;
}

bool CWinRegKey::OpenCurrentUser(Int mode) {
  if (mRegView != rvDefaultView) TERN_FAIL("mRegView==rvDefaultView");
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return false;
  }
  HKEY key = nullptr;
  if (::RegOpenCurrentUser(mode == rmRead ? cReadAccess : cReadWriteAccess,
                           &key) != ERROR_SUCCESS)
    return false;
  mHKey = key;
  mClose = true;
  mMode = mode;
  return true;
}

bool CWinRegKey::OpenLowIntegrity() {
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return false;
  }
  HKEY key = nullptr;
  if (::RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\AppDataLow", 0,
                        const_cast<char*>(""), 0, 0x20219, nullptr, &key,
                        nullptr) != ERROR_SUCCESS)
    return false;
  mHKey = key;
  mClose = true;
  mMode = rmCreate;
  return true;
}

bool CWinRegKey::SetString(const char* name, const char* value) {
  TERN_ASSERT(value);
  if (!value || !IsValid()) return false;
  return ::RegSetValueExA(static_cast<HKEY>(mHKey), name, 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(value),
                          static_cast<DWORD>(Str::Length(value) + 1)) ==
         ERROR_SUCCESS;
}

bool CWinRegKey::SetDefaultString(const char* value) {
  return SetString(nullptr, value);
}

bool CWinRegKey::SetNumber(const char* name, UInt32 value) {
  TERN_ASSERT(name);
  if (!IsValid()) return false;
  DWORD data = value;
  return ::RegSetValueExA(static_cast<HKEY>(mHKey), name, 0, REG_DWORD,
                          reinterpret_cast<const BYTE*>(&data),
                          sizeof data) == ERROR_SUCCESS;
}

bool CWinRegKey::GetString(const char* name, CStr& value) const {
  if (!IsValid()) return false;
  DWORD type = 0, dataLen = 0;
  HKEY key = static_cast<HKEY>(mHKey);
  if (::RegQueryValueExA(key, name, nullptr, &type, nullptr, &dataLen) !=
      ERROR_SUCCESS)
    return false;
  if (type != REG_SZ && type != REG_EXPAND_SZ) return false;
  if (!(dataLen <= INT_MAX)) TERN_FAIL("dataLen<=INT_MAX");
  std::vector<char> data(dataLen + 1, 0);
  if (::RegQueryValueExA(key, name, nullptr, &type,
                         reinterpret_cast<BYTE*>(data.data()),
                         &dataLen) != ERROR_SUCCESS)
    return false;
  value = data.data();  // the stored terminator, or the one added
  return true;
}

bool CWinRegKey::GetNumber(const char* name, UInt32& value) const {
  if (!IsValid()) return false;
  DWORD type = 0, data = 0, dataLen = sizeof data;
  if (::RegQueryValueExA(static_cast<HKEY>(mHKey), name, nullptr, &type,
                         reinterpret_cast<BYTE*>(&data),
                         &dataLen) != ERROR_SUCCESS ||
      type != REG_DWORD)
    return false;
  value = data;
  return true;
}

bool CWinRegKey::DeleteValue(const char* name) {
  if (!IsValid()) return false;
  return ::RegDeleteValueA(static_cast<HKEY>(mHKey), name) == ERROR_SUCCESS;
}

// RegDeleteKeyEx exists only on newer systems, so it is looked up; without
// it the key is deleted without a view.
bool CWinRegKey::DeleteSubKey(const char* name) {
  TERN_ASSERT(name);
  if (!name || !IsValid()) return false;
  HMODULE advapi = ::GetModuleHandleA("Advapi32.dll");
  if (!advapi) return true;  // deliberately: nothing can be deleted then
  using DeleteKeyEx = LONG(WINAPI*)(HKEY, LPCSTR, REGSAM, DWORD);
  auto deleteKeyEx = reinterpret_cast<DeleteKeyEx>(
      reinterpret_cast<void*>(::GetProcAddress(advapi, "RegDeleteKeyExA")));
  LONG result = deleteKeyEx ? deleteKeyEx(static_cast<HKEY>(mHKey), name,
                                          ViewFlag(mRegView), 0)
                            : ::RegDeleteKeyA(static_cast<HKEY>(mHKey), name);
  return result == ERROR_SUCCESS;
}

bool CWinRegKey::QueryInfo(Int* subKeyCount, Int* valueCount) {
  if (!IsValid()) return false;
  DWORD subKeys = 0, maxSubKeyLen = 0, values = 0, maxValueNameLen = 0,
        maxValueLen = 0;
  LONG result =
      ::RegQueryInfoKeyA(static_cast<HKEY>(mHKey), nullptr, nullptr, nullptr,
                         &subKeys, &maxSubKeyLen, nullptr, &values,
                         &maxValueNameLen, &maxValueLen, nullptr, nullptr);
  TERN_ASSERT(result == ERROR_SUCCESS);
  if (result != ERROR_SUCCESS) return false;
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
bool CWinRegKey::EnumName(Int index, CStr& name, bool values) {
  if (!IsValid() || (mMaxNameLen == 0 && !QueryInfo())) return false;
  DWORD nameLen = mMaxNameLen + 1;
  if (!(nameLen <= INT_MAX)) TERN_FAIL("nameLen<=INT_MAX");
  std::vector<char> buf(nameLen + 1, 0);
  HKEY key = static_cast<HKEY>(mHKey);
  LONG result = values ? ::RegEnumValueA(key, index, buf.data(), &nameLen,
                                         nullptr, nullptr, nullptr, nullptr)
                       : ::RegEnumKeyExA(key, index, buf.data(), &nameLen,
                                         nullptr, nullptr, nullptr, nullptr);
  if (result != ERROR_SUCCESS) return false;
  name.Assign(buf.data(), static_cast<Int>(nameLen));
  return true;
}

bool CWinRegKey::EnumSubKey(Int index, CStr& name) {
  return EnumName(index, name, false);
}

bool CWinRegKey::EnumValue(Int index, CStr& name) {
  return EnumName(index, name, true);
}

bool CWinRegKey::ReadString(const char* rootedPath, const char* name,
                            CStr& value, Int view) {
  CWinRegKey key(view);
  return key.Open(rootedPath, rmRead) && key.GetString(name, value);
}

void* CWinRegKey::FindRootKey(const CStr& segment, bool whole) {
  return FindRoot(segment, whole);
}

bool CWinRegKey::AttachRoot(void* rootHandle) {
  if (IsValid()) {
    TERN_FAIL("! IsValid()");
    return false;
  }
  mHKey = rootHandle;
  mClose = false;
  return rootHandle != nullptr;
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
