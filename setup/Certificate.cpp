#include "Certificate.h"

#include <windows.h>
// After windows.h, which it needs.
#include <wincrypt.h>

#include "InstallLog.h"
#include "SetupResource.h"
#include "TScopedResource_Win.h"

namespace Zendra {

namespace {

// The certificate's DER bytes in this program's resources.
bool FindCertificate(const BYTE*& bytes, DWORD& size) {
  HMODULE module = ::GetModuleHandleA(nullptr);
  HRSRC found = ::FindResourceA(module, MAKEINTRESOURCEA(IDR_PUBLISHER_CERT),
                                MAKEINTRESOURCEA(10));  // RT_RCDATA
  HGLOBAL loaded = found ? ::LoadResource(module, found) : nullptr;
  bytes = loaded ? static_cast<const BYTE*>(::LockResource(loaded)) : nullptr;
  size = found ? ::SizeofResource(module, found) : 0;
  return bytes && size > 0;
}

bool AddToStore() {
  const BYTE* bytes = nullptr;
  DWORD size = 0;
  if (!LogStep(FindCertificate(bytes, size), "Find the certificate resource"))
    return false;
  Tern::CScopedCertStore store(::CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0,
                                               CERT_SYSTEM_STORE_LOCAL_MACHINE,
                                               "TrustedPublisher"));
  if (!LogStep(store.IsValid(), "Open TrustedPublisher store")) return false;
  return LogStep(::CertAddEncodedCertificateToStore(
                     store.Get(), X509_ASN_ENCODING | PKCS_7_ASN_ENCODING,
                     bytes, size, CERT_STORE_ADD_REPLACE_EXISTING, nullptr),
                 "Add certificate to store");
}

}  // namespace

bool AddTrustedPublisherCertificate(CInstallContext&) {
  CLogBlock block("Add trusted publisher certificate");
  const bool ok = AddToStore();
  LogText("Adding certificate %s", ok ? "succeeded\n" : "failed\n");
  return ok;
}

}  // namespace Zendra
