// The browser's side of the product: the MathML namespace, the user-agent
// tokens and the check for another MIME filter on the product's types.
#include <windows.h>

#include "InstallLog.h"
#include "TImportLibrary_Win.h"
#include "TRegistry_Win.h"
#include "ZNRegistryEntries.h"

namespace Zendra {

using Tern::CWinRegKey;

namespace {

const char cMshtmlPath[] = "c:\\windows\\system32\\mshtml.dll";
const wchar_t cMathMLNamespace[] = L"http://www.w3.org/1998/Math/MathML";
const GUID cProductGUID = {0x5A1C7E30,
                           0x2B94,
                           0x4F6D,
                           {0x9E, 0x21, 0x7C, 0x3B, 0x0D, 0x84, 0xA6, 0xF1}};
using RegisterXMLNS = HRESULT(WINAPI*)(LPCWSTR uri, GUID clsid, BOOL machine);

const char cInternetExplorerKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Internet Explorer";

struct UserAgentPlace {
  const char* step;
  const char* key;
  const char* openFailure;
};
const UserAgentPlace cUserAgentPlaces[] = {
    {"Adding or deleting user agent token",
     "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
     "Internet Settings\\User Agent\\Post Platform\\",
     "Open IE 'User Agent\\Post Platform' registry key"},
    {"Adding or deleting IE9 user agent token",
     "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
     "Internet Settings\\5.0\\User Agent\\Post Platform\\",
     "Open IE '5.0\\User Agent\\Post Platform' registry key"},
};

const char cFilterKey[] = "HKEY_CLASSES_ROOT\\PROTOCOLS\\Filter";
const char* const cFilterTypes[] = {
    "text/xml",
    "text/xml; charset=utf-8",
    "text/xml; charset=iso-8859-1",
    "application/xhtml+xml",
    "application/xhtml+xml; charset=utf-8",
    "application/xhtml+xml; charset=iso-8859-1",
};

// What a filter type's key says about who handles the type.
enum FilterStatus {
  fsNoType = 0,       // no key for the type
  fsNoFilter = 1,     // the key names no class
  fsOurFilter = 2,    // the product's own filter
  fsOtherFilter = 3,  // another filter: a clash
};

// Logs every value and deletes those whose name holds "Zendra"; stops at
// the first that can't go.
bool DeleteZendraTokens(CWinRegKey& key) {
  for (const CStr& name : ValueNamesOf(key)) {
    LogText("valueName = %s\n", name.Chars());
    if (name.Find("Zendra") >= 0 &&
        !LogStep(key.DeleteValue(name.Chars()), "Delete Zendra token"))
      return false;
  }
  return true;
}

bool OpenUserAgentKey(const UserAgentPlace& place, CWinRegKey& key) {
  CStr version;
  if (CWinRegKey::ReadString(cInternetExplorerKey, "Version", version))
    LogText("Internet Explorer version = '%s'.\n", version.Chars());
  return LogStep(key.Open(place.key, Tern::rmCreate), place.openFailure);
}

FilterStatus TypeStatus(CWinRegKey& filters, const char* type) {
  CWinRegKey typeKey;
  if (!typeKey.Open(type, filters, Tern::rmRead)) return fsNoType;
  CStr clsid;
  if (!typeKey.GetString("CLSID", clsid) || clsid.IsEmpty()) return fsNoFilter;
  return ::lstrcmpiA(clsid.Chars(), cMimeFilterCLSID) == 0 ? fsOurFilter
                                                           : fsOtherFilter;
}

}  // namespace

bool AddXmlNamespace() {
  CLogBlock block("Add registry entry for XML Namespace via IERegisterXMLNS");
  Tern::CImportLibrary mshtml;
  if (!LogStatus(mshtml.Load(CPath(cMshtmlPath)), "Load mshtml.dll"))
    return false;
  auto registerXMLNS =
      reinterpret_cast<RegisterXMLNS>(mshtml.Lookup("IERegisterXMLNS"));
  if (!LogStep(registerXMLNS != nullptr, "Find IERegisterXMLNS in mshtml.dll"))
    return false;
  return LogStep(SUCCEEDED(registerXMLNS(cMathMLNamespace, cProductGUID, TRUE)),
                 "IERegisterXMLNS");
}

CStr UserAgentToken(const char* productVersionText) {
  CStr token("Zendra ");
  token += productVersionText;
  return token;
}

bool AddUserAgentToken(UserAgentKey which, const char* token) {
  const UserAgentPlace& place = cUserAgentPlaces[which];
  CLogBlock block(place.step);
  CWinRegKey key;
  if (!OpenUserAgentKey(place, key) || !DeleteZendraTokens(key)) return false;
  LogText("adding Zendra token '%s'\n", token);
  return LogStep(key.SetString(token, ""),
                 "Write Zendra token registry value.");
}

bool RemoveUserAgentToken(UserAgentKey which) {
  const UserAgentPlace& place = cUserAgentPlaces[which];
  CLogBlock block(place.step);
  CWinRegKey key;
  return OpenUserAgentKey(place, key) && DeleteZendraTokens(key);
}

bool MimeFilterClashes() {
  CLogBlock block("Check to see if a MIME filter is already installed");
  CWinRegKey filters;
  if (!filters.Open(cFilterKey, Tern::rmWrite)) {
    // Only reading is needed to tell who claims the types.
    if (!filters.Open(cFilterKey, Tern::rmRead)) {
      LogText("No MIME filters are registered.\n");
      return false;
    }
    LogText("The MIME filter key can't be opened for writing; reading it.\n");
  }
  bool clash = false;
  for (const char* type : cFilterTypes) {
    const FilterStatus status = TypeStatus(filters, type);
    LogText("For type = '%s', status = %d.\n", type, static_cast<int>(status));
    if (status == fsOtherFilter) {
      LogText("Filter clashes!!!\n");
      clash = true;
    }
  }
  return clash;
}

}  // namespace Zendra
