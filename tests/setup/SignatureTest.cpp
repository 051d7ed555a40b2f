// Signatures as Setup reads them (WinVerifyTrust) on the shipped programs,
// the test publisher's root trusted in this test prefix only.
#include <windows.h>
// After windows.h, which it needs.
#include <wincrypt.h>

#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "Signatures.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace TestSupport;

TEST(Signatures, ShippedProgramsAreTheBuildPublishers) {
  const std::vector<Tern::Byte> publisher =
      ReadFileBytes(WindowsPath(ArgValue("publisher-cer")));
  ASSERT_FALSE(publisher.empty());
  HCERTSTORE root = ::CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0,
                                    CERT_SYSTEM_STORE_LOCAL_MACHINE, "Root");
  ASSERT_NE(nullptr, root);
  EXPECT_TRUE(::CertAddEncodedCertificateToStore(
      root, X509_ASN_ENCODING, publisher.data(),
      static_cast<DWORD>(publisher.size()), CERT_STORE_ADD_REPLACE_EXISTING,
      nullptr));
  ::CertCloseStore(root, 0);

  const std::string sample = WindowsPath(ArgValue("sample-dir")) + "\\";
  for (const char* program :
       {"Setup.exe", "Zendra.dll", "ZendraMimer.dll", "ZendraBHO.dll",
        "ZendraPanel.cpl", "ZendraBraille.dll", "VersionCheck.exe"}) {
    const Zendra::CSignature signature =
        Zendra::ReadSignature(Tern::CPath((sample + program).c_str()));
    EXPECT_EQ(0, signature.status) << program;
    EXPECT_EQ(Zendra::ssSigned, signature.state) << program;
    EXPECT_TRUE(signature.signer == publisher) << program;
  }
}
