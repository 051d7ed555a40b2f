// The product's token ("Zendra <version>") in the browser's user-agent
// string, under the two "Post Platform" keys: that of the browser before
// version 9 and that of version 9 on. Adding first removes every value
// whose name holds "Zendra", older versions' tokens too.
#pragma once

#include "InstallContext.h"

namespace Zendra {

bool AddIEUserAgentToken(CInstallContext& context);
bool AddIE9UserAgentToken(CInstallContext& context);
bool RemoveIEUserAgentToken(CInstallContext& context);
bool RemoveIE9UserAgentToken(CInstallContext& context);

}  // namespace Zendra
