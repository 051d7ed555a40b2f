// The product's signing certificate, held in Setup.exe as a resource, and
// its place in the machine's "TrustedPublisher" store.
#pragma once

#include "InstallContext.h"

namespace Zendra {

// Adds the certificate (replacing an equal one) and logs "Adding certificate
// succeeded" or "... failed". The install goes on either way.
bool AddTrustedPublisherCertificate(CInstallContext& context);

}  // namespace Zendra
