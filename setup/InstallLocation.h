// Install location and installed-copy detection: the configuration file
// beside Setup, the install folders below Program Files, the copy already
// installed (found through the product's COM class) and, when its components
// are in use, a fresh numbered folder. The operations are members of
// CZendraSetupApp (Setup.h), defined in InstallLocation.cpp.
#pragma once

namespace Zendra {

// The configuration file, beside the running program.
extern const char cConfigFileName[];  // "zendra.ovc"
// The product's COM class, whose key tells an installed copy.
extern const char cProductClassKey[];

}  // namespace Zendra
