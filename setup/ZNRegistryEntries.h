// The registry entries of the browser, of Windows' uninstall list and of the
// product's OEM branding, and the check for a clashing MIME filter. Each
// step writes its own log block and reports each failed call; it returns
// false at the first failure, leaving what it wrote before.
#pragma once

#include <vector>

#include "TFileSystem.h"
#include "TRegistry_Win.h"
#include "TString.h"

namespace Zendra {

extern const char cProductCLSID[];     // the product's COM class
extern const char cMimeFilterCLSID[];  // the MIME filter's COM class

bool AddToPreApprovedList();
// The elevation policy of VersionCheck.exe in `installDir`.
bool AddVersionCheckElevation(const Tern::CPath& installDir);
bool AddEnterpriseMode();
// Keeps the compatibility assistant quiet about ZendraPanel.cpl.
bool AddCompatibilityWarningKey(const Tern::CPath& installDir);

// The Add/Remove Programs entry, with the version of the running program.
bool AddUninstallEntries(const Tern::CPath& installDir);
// The same with a given version text; an unreadable one fails the step.
bool AddUninstallEntries(const Tern::CPath& installDir,
                         const char* versionText);

// Deletes the "Accepted Documents" values that hold "application/xhtml+xml".
bool RemoveFromAcceptedDocuments();

// Registers the MathML namespace for the product's class through the
// browser's "IERegisterXMLNS".
bool AddXmlNamespace();

// The two "Post Platform" keys of the browser's user-agent string.
enum UserAgentKey { uakIE, uakIE9 };
// "Zendra " followed by the product version text.
Tern::CStr UserAgentToken(const char* productVersionText);
// Both remove every value whose name holds "Zendra" (older tokens too);
// adding then writes `token`.
bool AddUserAgentToken(UserAgentKey which, const char* token);
bool RemoveUserAgentToken(UserAgentKey which);

// "RO_VendorId" and the others, from the settings "VendorId", ... of the
// global variable list (the configuration file, else the registry).
bool AddOEMEntries();
bool RemoveOEMEntries();
extern const char cOEMKey[];  // where the "RO_" values live

// Names of every value of an open key, all read before any is deleted.
std::vector<Tern::CStr> ValueNamesOf(Tern::CWinRegKey& key);

// True when another filter claims one of the product's MIME types.
bool MimeFilterClashes();

}  // namespace Zendra
