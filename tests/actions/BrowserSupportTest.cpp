// The MathML namespace through the browser's mshtml.dll (a stand-in built
// for the tests), and the publisher certificate in the machine's store.
#include <windows.h>
// After windows.h, which it needs.
#include <wincrypt.h>

#include <string>
#include <vector>

#include "ActionsTestSupport.h"
#include "SetupResource.h"
#include "WindowDriver.h"
#include "ZNCertificate.h"
#include "ZNRegistryEntries.h"

using namespace ActionsTest;

namespace {

const char cMshtml[] = "c:\\windows\\system32\\mshtml.dll";
const char cNamespaceKey[] =
    "SOFTWARE\\Microsoft\\Internet Explorer\\XMLNamespace";
const char cMathML[] = "http://www.w3.org/1998/Math/MathML";

void InstallStandIn(bool override) {
  ASSERT_TRUE(InstallBrowserStandIn(override));
}

bool LoadsStandIn() {
  HMODULE lib = ::LoadLibraryA(cMshtml);
  bool standIn = lib && ::GetProcAddress(lib, "ZendraTestStandIn") != nullptr;
  if (lib) ::FreeLibrary(lib);
  return standIn;
}

}  // namespace

TEST(XmlNamespace, TheStandInAtThatPathRegistersIt) {
  InstallStandIn(true);
  EXPECT_TRUE(LoadsStandIn());
  CaseLog log;
  EXPECT_TRUE(Zendra::AddXmlNamespace());
  std::string text = log.Finish();
  RegValue value =
      ReadValue(HKEY_LOCAL_MACHINE, cNamespaceKey, cMathML, KEY_WOW64_32KEY);
  EXPECT_EQ(static_cast<DWORD>(REG_SZ), value.type);
  EXPECT_EQ("{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}", value.text);
  EXPECT_TRUE(Contains(
      text,
      "Start: Add registry entry for XML Namespace via IERegisterXMLNS {"));
  EXPECT_FALSE(Contains(text, "Failure")) << text;
}

TEST(XmlNamespace, WithoutTheBrowsersSupportTheStepFails) {
  InstallStandIn(false);  // the file alone: Wine keeps its own library
  EXPECT_FALSE(LoadsStandIn());
  CaseLog log;
  EXPECT_FALSE(Zendra::AddXmlNamespace());
  std::string text = log.Finish();
  EXPECT_TRUE(Contains(text, "Failure: Find IERegisterXMLNS in mshtml.dll") ||
              Contains(text, "Load mshtml.dll"))
      << text;
  EXPECT_FALSE(
      ReadValue(HKEY_LOCAL_MACHINE, cNamespaceKey, cMathML, KEY_WOW64_32KEY)
          .found);
}

namespace {

struct StoredCertificate {
  std::vector<BYTE> bytes;
  std::string subject;
};

// Every certificate of the machine's "TrustedPublisher" store.
std::vector<StoredCertificate> TrustedPublishers() {
  std::vector<StoredCertificate> found;
  HCERTSTORE store = ::CertOpenStore(
      CERT_STORE_PROV_SYSTEM_A, 0, 0,
      CERT_SYSTEM_STORE_LOCAL_MACHINE | CERT_STORE_READONLY_FLAG,
      "TrustedPublisher");
  if (!store) return found;
  PCCERT_CONTEXT cert = nullptr;
  while ((cert = ::CertEnumCertificatesInStore(store, cert)) != nullptr) {
    StoredCertificate entry;
    entry.bytes.assign(cert->pbCertEncoded,
                       cert->pbCertEncoded + cert->cbCertEncoded);
    char name[256] = "";
    ::CertGetNameStringA(cert, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name,
                         sizeof name);
    entry.subject = name;
    found.push_back(entry);
  }
  ::CertCloseStore(store, 0);
  return found;
}

}  // namespace

TEST(Certificate, ThePublisherIsTrustedOnTheMachine) {
  const std::string der = ReadText(
      TestSupport::WindowsPath(TestSupport::ArgValue("publisher-cer")));
  ASSERT_GT(der.size(), 100u);
  EXPECT_TRUE(TrustedPublishers().empty());
  CaseLog log;
  EXPECT_TRUE(Zendra::AddTrustedPublisherCertificate());
  EXPECT_TRUE(Zendra::AddTrustedPublisherCertificate());  // replaced, not added
  std::string text = log.Finish();
  std::vector<StoredCertificate> certs = TrustedPublishers();
  ASSERT_EQ(1u, certs.size());
  EXPECT_EQ(std::vector<BYTE>(der.begin(), der.end()), certs[0].bytes);
  EXPECT_EQ("Orvane, Inc.", certs[0].subject);
  EXPECT_EQ(2, Count(text, "Adding certificate succeeded\r\n")) << text;
  // The store is the machine's, which 32-bit programs share.
  EXPECT_TRUE(KeyExists(
      HKEY_LOCAL_MACHINE,
      "Software\\Microsoft\\SystemCertificates\\TrustedPublisher\\Certificates",
      KEY_WOW64_64KEY));
}

TEST(Certificate, SetupExeCarriesIt) {
  const std::string der = ReadText(
      TestSupport::WindowsPath(TestSupport::ArgValue("publisher-cer")));
  HMODULE setup = ::LoadLibraryExA(
      TestSupport::WindowsPath(TestSupport::ArgValue("setup-exe")).c_str(),
      nullptr, LOAD_LIBRARY_AS_DATAFILE);
  ASSERT_NE(nullptr, setup);
  HRSRC found = ::FindResourceA(setup, MAKEINTRESOURCEA(IDR_PUBLISHER_CERT),
                                MAKEINTRESOURCEA(10));  // RT_RCDATA
  ASSERT_NE(nullptr, found);
  const char* bytes =
      static_cast<const char*>(::LockResource(::LoadResource(setup, found)));
  EXPECT_EQ(der, std::string(bytes, ::SizeofResource(setup, found)));
  ::FreeLibrary(setup);
}
