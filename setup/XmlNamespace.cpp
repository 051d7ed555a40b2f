#include "XmlNamespace.h"

#include <windows.h>

#include "InstallLog.h"
#include "Product.h"
#include "TImportLibrary_Win.h"
#include "TRegistry_Win.h"

namespace Zendra {

namespace {

const char cMshtmlPath[] = "c:\\windows\\system32\\mshtml.dll";
const char cMathMLNamespace[] = "http://www.w3.org/1998/Math/MathML";
const char cXmlNamespaceKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Internet Explorer\\XMLNamespace";
using RegisterXMLNS = HRESULT(WINAPI*)(LPCWSTR uri, GUID clsid, BOOL machine);

bool ProductClassGuid(GUID& guid) {
  wchar_t text[64] = L"";
  return ::MultiByteToWideChar(CP_ACP, 0, cProductClassId, -1, text, 64) > 0 &&
         SUCCEEDED(::CLSIDFromString(text, &guid));
}

}  // namespace

bool AddXmlNamespace(CInstallContext&) {
  CLogBlock block("Add registry entry for XML Namespace via IERegisterXMLNS");
  Tern::CImportLibrary mshtml;
  if (!LogStatus(mshtml.Load(CPath(cMshtmlPath)), "Load mshtml.dll"))
    return false;
  auto registerXMLNS =
      reinterpret_cast<RegisterXMLNS>(mshtml.Lookup("IERegisterXMLNS"));
  if (!LogStep(registerXMLNS != nullptr, "Find IERegisterXMLNS in mshtml.dll"))
    return false;
  GUID product = {};
  if (!ProductClassGuid(product)) TERN_FAIL("ProductClassGuid(product)");
  wchar_t uri[64] = L"";
  ::MultiByteToWideChar(CP_ACP, 0, cMathMLNamespace, -1, uri, 64);
  return LogStep(SUCCEEDED(registerXMLNS(uri, product, TRUE)),
                 "IERegisterXMLNS");
}

bool RemoveXmlNamespace(CInstallContext&) {
  Tern::CWinRegKey key;
  return LogRemovalStep(key.Open(cXmlNamespaceKey, Tern::rmWrite), key,
                        "Open IE 'XMLNamespace' registry key") &&
         (!key.IsValid() ||
          LogRemovalStep(key.DeleteValue(cMathMLNamespace), key,
                         "Delete XMLNamespace registry value."));
}

}  // namespace Zendra
