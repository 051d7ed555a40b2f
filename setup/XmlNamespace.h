// The MathML namespace, registered with the browser for the product's class
// through the browser's own "IERegisterXMLNS".
#pragma once

#include "InstallContext.h"

namespace Zendra {

bool AddXmlNamespace(CInstallContext& context);
// Deletes the namespace's value from the browser's XMLNamespace key.
bool RemoveXmlNamespace(CInstallContext& context);

}  // namespace Zendra
