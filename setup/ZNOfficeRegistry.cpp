#include "ZNOfficeRegistry.h"

#include "InstallLog.h"
#include "TFormat.h"
#include "TRegistry_Win.h"
#include "TVarList.h"

namespace Zendra {

using Tern::CFormat;
using Tern::CWinRegKey;

namespace {

const char cRegPrefix[] = "REG*";

// "0x80000002\Software\..." as the failure texts name a key.
CStr KeyText(HKEY root, const char* subKey) {
  CFormat text("0x<RootKey:08X>\\<SubKey>", nullptr,
               CFormat::fmtNoGlobalExpansion);
  text.Item("RootKey", static_cast<UInt32>(reinterpret_cast<UINT_PTR>(root)));
  text.Item("SubKey", subKey);
  return text.Result();
}

bool CreateKey(CWinRegKey& key, HKEY root, const char* subKey) {
  CWinRegKey rootKey(key.GetView());
  if (rootKey.AttachRoot(root) && key.Open(subKey, rootKey, Tern::rmCreate))
    return true;
  CFormat text("RegCreateKeyValue couldn't create key, \"<Key>\".", nullptr,
               CFormat::fmtNoGlobalExpansion);
  text.Item("Key", KeyText(root, subKey).Chars());
  return LogStep(false, text.Result().Chars());
}

bool ValueSet(bool ok, HKEY root, const char* subKey, const char* valueName,
              const CStr& data) {
  if (ok) return true;
  CFormat text(
      "RegCreateKeyValue couldn't set the value, \"<ValueName> = "
      "<ValueData>\" for key, \"<Key>\".",
      nullptr, CFormat::fmtNoGlobalExpansion);
  text.Item("ValueName", *valueName ? valueName : "(Default)");
  text.Item("ValueData", data.Chars());
  text.Item("Key", KeyText(root, subKey).Chars());
  return LogStep(false, text.Result().Chars());
}

Int ViewFor(bool use64BitVersion) {
  return use64BitVersion ? Tern::rv64BitView : Tern::rvDefaultView;
}

}  // namespace

bool IniParsePath(const char* path, HKEY& root, CStr& subKey) {
  const CStr text(path ? path : "");
  const Int prefixLen = sizeof cRegPrefix - 1;
  if (text.Mid(0, prefixLen) != cRegPrefix) return false;
  const CStr rest = text.Mid(prefixLen);
  const Int slash = rest.Find('\\');
  if (slash <= 0) return false;
  void* found = CWinRegKey::FindRootKey(rest.Mid(0, slash), false);
  if (!found) return false;
  root = static_cast<HKEY>(found);
  subKey = rest.Mid(slash + 1);
  return true;
}

bool RegCreateKeyValue(HKEY root, const char* subKey, const char* valueName,
                       const char* data, bool use64BitVersion) {
  CWinRegKey key(ViewFor(use64BitVersion));
  if (!CreateKey(key, root, subKey)) return false;
  return ValueSet(key.SetString(*valueName ? valueName : nullptr, data), root,
                  subKey, valueName, CStr(data));
}

bool RegCreateKeyValue(HKEY root, const char* subKey, const char* valueName,
                       DWORD data, bool use64BitVersion) {
  CWinRegKey key(ViewFor(use64BitVersion));
  if (!CreateKey(key, root, subKey)) return false;
  CStr text;
  text.Format("%lu", static_cast<unsigned long>(data));
  return ValueSet(key.SetNumber(valueName, data), root, subKey, valueName,
                  text);
}

bool RegDeleteKeyInView(HKEY root, const char* subKey, bool use64BitVersion) {
  using DeleteKeyEx = LONG(WINAPI*)(HKEY, LPCSTR, REGSAM, DWORD);
  HMODULE advapi = ::GetModuleHandleA("AdvAPI32.dll");
  auto deleteKeyEx =
      advapi ? reinterpret_cast<DeleteKeyEx>(reinterpret_cast<void*>(
                   ::GetProcAddress(advapi, "RegDeleteKeyExA")))
             : nullptr;
  const REGSAM view = use64BitVersion ? KEY_WOW64_64KEY : 0;
  LONG result = deleteKeyEx ? deleteKeyEx(root, subKey, view, 0)
                            : ::RegDeleteKeyA(root, subKey);
  return result == ERROR_SUCCESS;
}

Int OfficeView() {
  return OSIs64Bit() ? Tern::rv32BitView : Tern::rvDefaultView;
}

bool RegKeyExists(HKEY root, const char* subKey, Int view) {
  CWinRegKey rootKey(view), key(view);
  return rootKey.AttachRoot(root) && key.Open(subKey, rootKey, Tern::rmRead);
}

bool ReadOfficeString(HKEY root, const char* subKey, const char* name,
                      CStr& value) {
  CWinRegKey rootKey(OfficeView()), key(OfficeView());
  return rootKey.AttachRoot(root) && key.Open(subKey, rootKey, Tern::rmRead) &&
         key.GetString(name, value) && !value.IsEmpty();
}

bool OSIs64Bit() {
  bool is64 = false;
  if (Tern::CVarList::Global().GetBool("OSIs64Bit", is64)) return is64;
  BOOL wow64 = FALSE;
  is64 = ::IsWow64Process(::GetCurrentProcess(), &wow64) && wow64;
  Tern::CVarList::Global().Set("OSIs64Bit", is64 ? "1" : "0");
  return is64;
}

void LogOSBitness() {
  static bool logged = false;
  if (logged || !IsLogOpen()) return;
  logged = true;
  LogText("The OS is a %s bit OS\n", OSIs64Bit() ? "64" : "32");
}

}  // namespace Zendra
