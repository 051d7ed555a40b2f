#include "Signatures.h"

#include <windows.h>
// After windows.h, which they need.
#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

#include "InstallLog.h"
#include "Product.h"

namespace Zendra {

using Tern::CLocalFileSystem;
using Tern::CPath;
using Tern::CStr;

namespace {

const char cVersionCheck[] = "VersionCheck.exe";

// Answers of WinVerifyTrust for a file whose bytes match its signature,
// though Windows does not trust its chain (a test publisher's root, an
// expired certificate): that is for Windows to judge, not Setup.
bool DigestMatches(LONG status) {
  return status == ERROR_SUCCESS || status == CERT_E_UNTRUSTEDROOT ||
         status == CERT_E_CHAINING || status == CERT_E_UNTRUSTEDTESTROOT ||
         status == CERT_E_EXPIRED;
}

SignatureState StateOf(LONG status) {
  if (DigestMatches(status)) return ssSigned;
  switch (status) {
    case TRUST_E_NOSIGNATURE:
    case TRUST_E_SUBJECT_FORM_UNKNOWN:
      return ssUnsigned;
    case TRUST_E_BAD_DIGEST:
      return ssAltered;
    default:
      return ssInvalid;
  }
}

// The signer's certificate, as the verification found it.
void TakeSigner(HANDLE state, CSignature& signature) {
  CRYPT_PROVIDER_DATA* data = ::WTHelperProvDataFromStateData(state);
  CRYPT_PROVIDER_SGNR* signer =
      data ? ::WTHelperGetProvSignerFromChain(data, 0, FALSE, 0) : nullptr;
  CRYPT_PROVIDER_CERT* cert =
      signer ? ::WTHelperGetProvCertFromChain(signer, 0) : nullptr;
  if (!cert || !cert->pCert) return;
  const CERT_CONTEXT* context = cert->pCert;
  signature.signer.assign(context->pbCertEncoded,
                          context->pbCertEncoded + context->cbCertEncoded);
  char name[256] = "";
  ::CertGetNameStringA(context, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name,
                       sizeof name);
  signature.signerName = name;
}

// "'<file>' <why>", for the log and the message.
CStr Refusal(const CPath& file, const CSignature& signature) {
  CStr why;
  switch (signature.state) {
    case ssUnsigned:
      why = "is not signed";
      break;
    case ssAltered:
      why = "was altered after it was signed";
      break;
    case ssInvalid:
      why.Format("has a signature that is not valid (0x%08lX)",
                 static_cast<unsigned long>(signature.status));
      break;
    case ssSigned:
      why.Format("is signed by someone else ('%s')",
                 signature.signerName.Chars());
      break;
  }
  CStr reason;
  reason.Format(
      "Zendra can't be installed from here: '%s' %s.\n\nSetup runs only "
      "programs signed by the publisher who signed Setup itself. Copy the "
      "product again from its publisher. Nothing has been changed.",
      file.OSToPathString().Chars(), why.Chars());
  return reason;
}

// The first program of the source folder that is not signed by `own`.
CStr FirstForeignProgram(const CInstallContext& context,
                         const CSignature& own) {
  const char* programs[] = {cComponents[0].file, cComponents[1].file,
                            cComponents[2].file, cComponents[3].file,
                            cComponents[4].file, cVersionCheck};
  for (const char* name : programs) {
    CPath file = context.setupDir;
    if (Tern::Failed(file.AppendComponent(name))) continue;  // too long: said
    const CSignature signature = ReadSignature(file);
    if (signature.state != ssSigned || signature.signer != own.signer)
      return Refusal(file, signature);
  }
  return CStr();
}

}  // namespace

CSignature ReadSignature(const CPath& file) {
  wchar_t path[MAX_PATH] = L"";
  ::MultiByteToWideChar(CP_ACP, 0, file.OSToPathString().Chars(), -1, path,
                        MAX_PATH);
  WINTRUST_FILE_INFO fileInfo = {};
  fileInfo.cbStruct = sizeof fileInfo;
  fileInfo.pcwszFilePath = path;
  WINTRUST_DATA data = {};
  data.cbStruct = sizeof data;
  data.dwUIChoice = WTD_UI_NONE;
  data.fdwRevocationChecks = WTD_REVOKE_NONE;
  data.dwUnionChoice = WTD_CHOICE_FILE;
  data.pFile = &fileInfo;
  data.dwStateAction = WTD_STATEACTION_VERIFY;
  data.dwProvFlags = WTD_REVOCATION_CHECK_NONE | WTD_CACHE_ONLY_URL_RETRIEVAL;
  GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
  CSignature signature;
  signature.status =
      ::WinVerifyTrust(static_cast<HWND>(INVALID_HANDLE_VALUE), &action, &data);
  signature.state = StateOf(signature.status);
  if (signature.state == ssSigned) {
    TakeSigner(data.hWVTStateData, signature);
    if (signature.signer.empty()) signature.state = ssInvalid;
  }
  data.dwStateAction = WTD_STATEACTION_CLOSE;
  ::WinVerifyTrust(static_cast<HWND>(INVALID_HANDLE_VALUE), &action, &data);
  return signature;
}

CStr CheckProgramSignatures(const CInstallContext& context) {
  CPath setup;
  CSignature own;
  if (Tern::Succeeded(CLocalFileSystem::Instance().GetProgramFile(setup)))
    own = ReadSignature(setup);
  if (own.state == ssUnsigned) {
    LogText(
        "Setup.exe is not signed: the product's programs are not checked for "
        "their publisher's signature.\n");
    return CStr();
  }
  if (own.state != ssSigned) return Refusal(setup, own);
  const CStr refusal = FirstForeignProgram(context, own);
  if (refusal.IsEmpty())
    LogText("The product's programs are signed by '%s', as Setup.exe is.\n",
            own.signerName.Chars());
  return refusal;
}

}  // namespace Zendra
