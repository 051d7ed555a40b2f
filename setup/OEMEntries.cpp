#include "OEMEntries.h"

#include "InstallLog.h"
#include "Product.h"
#include "TRegistry_Win.h"
#include "TVarList.h"

namespace Zendra {

using Tern::CWinRegKey;

namespace {

const char* const cOEMSettings[] = {"VendorId", "LicenseeAboutText1",
                                    "LicenseeAboutText2", "BUILD_NUMBER"};

const char cOEMStep[] = "Add/Remove registry entries for OEMS";

CStr ROName(const char* setting) {
  CStr name("RO_");
  name += setting;
  return name;
}

bool AddOne(CWinRegKey& key, const char* setting) {
  CStr value, failure;
  failure.Format("Unable to read %s", setting);
  if (!LogStep(Tern::CVarList::Global().Get(setting, value), failure.Chars()))
    return false;
  const CStr name = ROName(setting);
  LogText("%s %s\n", name.Chars(), value.Chars());
  failure.Format("Set %s registry value.", name.Chars());
  return LogStep(key.SetString(name.Chars(), value.Chars()), failure.Chars());
}

bool RemoveOne(CWinRegKey& key, const char* setting) {
  const CStr name = ROName(setting);
  CStr value;
  if (!key.GetString(name.Chars(), value)) return true;  // nothing to delete
  CStr failure;
  failure.Format("Delete %s registry value.", name.Chars());
  return LogStep(key.DeleteValue(name.Chars()), failure.Chars());
}

}  // namespace

bool AddOEMEntries(CInstallContext&) {
  CLogBlock block(cOEMStep);
  CWinRegKey key;
  if (!LogKeyStep(key.Open(cProductKey, Tern::rmCreate), key,
                  "Open OEM registry key."))
    return false;
  for (const char* setting : cOEMSettings)
    if (!AddOne(key, setting)) return false;
  return true;
}

bool RemoveOEMEntries(CInstallContext&) {
  CLogBlock block(cOEMStep);
  CWinRegKey key;
  if (!key.Open(cProductKey, Tern::rmWrite)) return true;  // nothing written
  for (const char* setting : cOEMSettings)
    if (!RemoveOne(key, setting)) return false;
  return true;
}

}  // namespace Zendra
