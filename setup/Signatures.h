// Whether the product's programs come from the same hands as Setup: a
// signed Setup loads, registers or leaves for the browser to run with raised
// rights only programs that carry a signature, whose bytes match it and
// whose signer is Setup's own. Trust in the publisher's root certificate
// stays the business of Windows.
#pragma once

#include <vector>

#include "InstallContext.h"
#include "TString.h"

namespace Zendra {

enum SignatureState {
  ssSigned,    // the bytes match the signature; `signer` holds its signer
  ssUnsigned,  // no signature at all
  ssAltered,   // the file was changed after it was signed
  ssInvalid,   // a signature that doesn't hold for another reason
};

struct CSignature {
  SignatureState state = ssUnsigned;
  long status = 0;                    // what WinVerifyTrust answered
  std::vector<unsigned char> signer;  // the signer's certificate (DER)
  Tern::CStr signerName;
};

// The file's Authenticode signature, checked without user interface and
// without revocation look-ups.
CSignature ReadSignature(const Tern::CPath& file);

// Empty when each of the programs in the source folder is signed by the
// publisher that signed the running Setup.exe (logged), or when Setup itself
// is not signed (logged: nothing is checked then); otherwise why the first
// that is not can't be run.
Tern::CStr CheckProgramSignatures(const CInstallContext& context);

}  // namespace Zendra
