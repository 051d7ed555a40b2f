#include "XmlNamespace.h"

#include <windows.h>

#include <cstdio>

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

// The product's class as the GUID its text "{8-4-4-4-12 hex digits}" names.
// Read here rather than by ole32, which the program would load at start for
// nothing else.
bool ProductClassGuid(GUID& guid) {
  unsigned long data1 = 0;
  unsigned int data2 = 0, data3 = 0, b[8] = {};
  int end = 0;
  const int fields =
      std::sscanf(cProductClassId, "{%8lx-%4x-%4x-%2x%2x-%2x%2x%2x%2x%2x%2x}%n",
                  &data1, &data2, &data3, &b[0], &b[1], &b[2], &b[3], &b[4],
                  &b[5], &b[6], &b[7], &end);
  if (fields != 11 || end != 38 || cProductClassId[end] != '\0') return false;
  guid.Data1 = data1;
  guid.Data2 = static_cast<unsigned short>(data2);
  guid.Data3 = static_cast<unsigned short>(data3);
  for (int i = 0; i < 8; ++i) guid.Data4[i] = static_cast<unsigned char>(b[i]);
  return true;
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
