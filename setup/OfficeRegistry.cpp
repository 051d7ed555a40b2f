#include "OfficeRegistry.h"

#include <windows.h>

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
CStr KeyText(const COfficeKey& key) {
  CFormat text("0x<RootKey:08X>\\<SubKey>", nullptr,
               CFormat::fmtNoGlobalExpansion);
  text.Item("RootKey",
            static_cast<UInt32>(reinterpret_cast<UINT_PTR>(key.root)));
  text.Item("SubKey", key.subKey.Chars());
  return text.Result();
}

bool OpenInView(CWinRegKey& key, const COfficeKey& where, Tern::Int mode) {
  CWinRegKey rootKey(key.GetView());
  return rootKey.AttachRoot(where.root) &&
         key.Open(where.subKey.Chars(), rootKey, mode);
}

bool CreateKey(CWinRegKey& key, const COfficeKey& where) {
  if (OpenInView(key, where, Tern::rmCreate)) return true;
  CFormat text("RegCreateKeyValue couldn't create key, \"<Key>\".", nullptr,
               CFormat::fmtNoGlobalExpansion);
  text.Item("Key", KeyText(where).Chars());
  return LogStep(false, text.Result().Chars());
}

bool ValueSet(bool ok, const COfficeKey& where, const char* valueName,
              const CStr& data) {
  if (ok) return true;
  CFormat text(
      "RegCreateKeyValue couldn't set the value, \"<ValueName> = "
      "<ValueData>\" for key, \"<Key>\".",
      nullptr, CFormat::fmtNoGlobalExpansion);
  text.Item("ValueName", *valueName ? valueName : "(Default)");
  text.Item("ValueData", data.Chars());
  text.Item("Key", KeyText(where).Chars());
  return LogStep(false, text.Result().Chars());
}

Int ViewFor(bool use64BitVersion) {
  return use64BitVersion ? Tern::rv64BitView : Tern::rvDefaultView;
}

}  // namespace

bool IniParsePath(const char* path, COfficeKey& key) {
  const CStr text(path ? path : "");
  const Int prefixLen = sizeof cRegPrefix - 1;
  if (text.Mid(0, prefixLen) != cRegPrefix) return false;
  const CStr rest = text.Mid(prefixLen);
  const Int slash = rest.Find('\\');
  if (slash <= 0) return false;
  void* found = CWinRegKey::FindRootKey(rest.Mid(0, slash), false);
  if (!found) return false;
  key.root = found;
  key.subKey = rest.Mid(slash + 1);
  return true;
}

bool RegCreateKeyValue(const COfficeKey& where, const char* valueName,
                       const char* data, bool use64BitVersion) {
  CWinRegKey key(ViewFor(use64BitVersion));
  if (!CreateKey(key, where)) return false;
  return ValueSet(key.SetString(*valueName ? valueName : nullptr, data), where,
                  valueName, CStr(data));
}

bool RegCreateKeyValue(const COfficeKey& where, const char* valueName,
                       UInt32 data, bool use64BitVersion) {
  CWinRegKey key(ViewFor(use64BitVersion));
  if (!CreateKey(key, where)) return false;
  CStr text;
  text.Format("%lu", static_cast<unsigned long>(data));
  return ValueSet(key.SetNumber(valueName, data), where, valueName, text);
}

bool RegDeleteKeyInView(const COfficeKey& where, bool use64BitVersion) {
  CWinRegKey root;
  return root.AttachRoot(where.root) &&
         root.DeleteSubKeyInView(where.subKey.Chars(),
                                 ViewFor(use64BitVersion));
}

Int OfficeView() {
  return OSIs64Bit() ? Tern::rv32BitView : Tern::rvDefaultView;
}

bool RegKeyExists(const COfficeKey& where, Int view) {
  CWinRegKey key(view);
  return OpenInView(key, where, Tern::rmRead);
}

bool FoundInOtherView(const char* regPath, const CStr& name, const char* what) {
  COfficeKey where;
  if (OfficeView() != Tern::rv32BitView || !IniParsePath(regPath, where) ||
      !RegKeyExists(where, Tern::rv64BitView))
    return false;
  LogText(
      "%s found in the 64-bit registry view only (%s): Bitness mismatch, the "
      "32-bit %s is of no use to a 64-bit Office, so none is placed for it.\n",
      name.Chars(), regPath, what);
  return true;
}

bool ReadOfficeString(const COfficeKey& where, const char* name, CStr& value) {
  CWinRegKey key(OfficeView());
  return OpenInView(key, where, Tern::rmRead) && key.GetString(name, value) &&
         !value.IsEmpty();
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
