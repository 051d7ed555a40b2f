#include "UserAgent.h"

#include <vector>

#include "InstallLog.h"
#include "Product.h"
#include "TRegistry_Win.h"

namespace Zendra {

using Tern::CWinRegKey;

namespace {

struct UserAgentPlace {
  const char* step;
  const char* key;
  const char* openFailure;
};
const UserAgentPlace cBeforeIE9 = {
    "Adding or deleting user agent token",
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
    "Internet Settings\\User Agent\\Post Platform\\",
    "Open IE 'User Agent\\Post Platform' registry key"};
const UserAgentPlace cIE9 = {
    "Adding or deleting IE9 user agent token",
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
    "Internet Settings\\5.0\\User Agent\\Post Platform\\",
    "Open IE '5.0\\User Agent\\Post Platform' registry key"};

// Logs every value and deletes those whose name holds "Zendra"; stops at
// the first that can't go.
bool DeleteZendraTokens(CWinRegKey& key) {
  std::vector<CStr> names;  // all read before any is deleted
  key.GetValueNames(names);
  for (const CStr& name : names) {
    LogText("valueName = %s\n", name.Chars());
    if (name.Find("Zendra") >= 0 &&
        !LogKeyStep(key.DeleteValue(name.Chars()), key, "Delete Zendra token"))
      return false;
  }
  return true;
}

bool OpenUserAgentKey(const UserAgentPlace& place, CWinRegKey& key) {
  CStr version;
  if (CWinRegKey::ReadString(cBrowserKey, "Version", version))
    LogText("Internet Explorer version = '%s'.\n", version.Chars());
  return LogKeyStep(key.Open(place.key, Tern::rmCreate), key,
                    place.openFailure);
}

bool AddToken(const UserAgentPlace& place, const CInstallContext& context) {
  CStr token("Zendra ");
  token += context.versionText;
  CLogBlock block(place.step);
  CWinRegKey key;
  if (!OpenUserAgentKey(place, key) || !DeleteZendraTokens(key)) return false;
  LogText("adding Zendra token '%s'\n", token.Chars());
  return LogStep(key.SetString(token.Chars(), ""),
                 "Write Zendra token registry value.");
}

bool RemoveTokens(const UserAgentPlace& place) {
  CLogBlock block(place.step);
  CWinRegKey key;
  return OpenUserAgentKey(place, key) && DeleteZendraTokens(key);
}

}  // namespace

bool AddIEUserAgentToken(CInstallContext& context) {
  return AddToken(cBeforeIE9, context);
}

bool AddIE9UserAgentToken(CInstallContext& context) {
  return AddToken(cIE9, context);
}

bool RemoveIEUserAgentToken(CInstallContext&) {
  return RemoveTokens(cBeforeIE9);
}

bool RemoveIE9UserAgentToken(CInstallContext&) { return RemoveTokens(cIE9); }

}  // namespace Zendra
