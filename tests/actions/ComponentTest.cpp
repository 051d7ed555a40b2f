// Registering and unregistering the sample product's COM components in a
// fresh prefix (each case runs in its own), read back from the registry, by
// COM itself and from the install log.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "ActionsTestSupport.h"
#include "InstallLog.h"
#include "PlatformRegistry.h"
#include "TestSupport.h"
#include "WindowDriver.h"
#include "ZNComponents.h"

using namespace ActionsTest;
using namespace Zendra;

namespace {

struct Component {
  const char* file;
  const char* classId;
};

const Component cComponents[5] = {
    {"Zendra.dll", "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}"},
    {"ZendraMimer.dll", "{5A1C7E36-2B94-4F6D-9E21-7C3B0D84A6F1}"},
    {"ZendraBHO.dll", "{C35712C8-F326-4410-9093-0B461B0A77A0}"},
    {"ZendraPanel.cpl", "{7D241A8E-2B24-4DEC-AE24-090769270D92}"},
    {"ZendraBraille.dll", "{5F496A42-193E-4734-8FCA-1030514B457B}"},
};

// A folder with spaces in its name, as Program Files has.
const char cInstallDir[] = "C:\\Program Files (x86)\\Orvane\\Zendra 001";

std::string ClassValue(const Component& c, const char* subKey,
                       const char* name = nullptr) {
  std::string key = std::string("CLSID\\") + c.classId;
  if (subKey) key += std::string("\\") + subKey;
  return TestSupport::RegistryString(HKEY_CLASSES_ROOT, key, name,
                                     KEY_WOW64_32KEY);
}

class ComponentTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ::CreateDirectoryA("C:\\Program Files (x86)\\Orvane", nullptr);
    ::CreateDirectoryA(cInstallDir, nullptr);
    for (const Component& c : cComponents)
      ASSERT_TRUE(CopyInto(SampleFile(c.file),
                           std::string(cInstallDir) + "\\" + c.file));
    ResetErrorCount();
    ASSERT_TRUE(OpenLog("Zendra Install <Num>.log", true));
  }
  void TearDown() override { CloseLog(false, 0); }

  std::string Log() const {
    return ReadText(LogPath().OSToPathString().Chars());
  }

  Tern::CPath mDir{cInstallDir};
};

}  // namespace

TEST_F(ComponentTest, TheFiveComponentsRegisterAndUnregister) {
  for (const Component& c : cComponents)
    EXPECT_TRUE(RegisterComponent(true, mDir, c.file)) << c.file;
  for (const Component& c : cComponents) {
    EXPECT_EQ(std::string(cInstallDir) + "\\" + c.file,
              ClassValue(c, "InprocServer32"));
    EXPECT_EQ("Apartment", ClassValue(c, "InprocServer32", "ThreadingModel"));
  }
  EXPECT_EQ("4.2.0.0", ClassValue(cComponents[0], "InstalledVersion"));
  EXPECT_EQ("<none>", ClassValue(cComponents[1], "InstalledVersion"));
  // The MIME filter claims the browser's XML types for itself.
  EXPECT_EQ(cComponents[1].classId,
            TestSupport::RegistryString(HKEY_CLASSES_ROOT,
                                        "PROTOCOLS\\Filter\\application/"
                                        "xhtml+xml; charset=utf-8",
                                        "CLSID"));

  // COM finds each class through its key and creates it from our file.
  ASSERT_TRUE(SUCCEEDED(::CoInitialize(nullptr)));
  for (const Component& c : cComponents) {
    wchar_t wide[64];
    ::MultiByteToWideChar(CP_ACP, 0, c.classId, -1, wide, 64);
    CLSID id;
    ASSERT_EQ(S_OK, ::CLSIDFromString(wide, &id));
    IPersist* object = nullptr;
    ASSERT_EQ(S_OK, ::CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_IPersist,
                                       reinterpret_cast<void**>(&object)))
        << c.file;
    CLSID reported = {};
    EXPECT_EQ(S_OK, object->GetClassID(&reported));
    EXPECT_TRUE(IsEqualCLSID(id, reported)) << c.file;
    object->Release();
  }
  ::CoUninitialize();

  for (const Component& c : cComponents)
    EXPECT_TRUE(RegisterComponent(false, mDir, c.file)) << c.file;
  for (const Component& c : cComponents)
    EXPECT_EQ("<none>", ClassValue(c, nullptr)) << c.file;
  EXPECT_EQ("<none>",
            TestSupport::RegistryString(
                HKEY_CLASSES_ROOT, "PROTOCOLS\\Filter\\text/xml", "CLSID"));
  EXPECT_EQ(0u, ErrorCount());

  const std::string log = Log();
  EXPECT_TRUE(Contains(log,
                       "\r\nStart: Register DLL {\r\n"
                       "    DLL path = 'C:\\Program Files (x86)\\Orvane\\"
                       "Zendra 001\\Zendra.dll'\r\n"
                       "    Success (Ok, 0x00000200): Load DLL\r\n"
                       "    Success (Ok, 0x00000200): Register DLL\r\n"
                       "} End: Register DLL\r\n"));
  EXPECT_EQ(5, Count(log, "Success (Ok, 0x00000200): Unregister DLL\r\n"));
}

TEST_F(ComponentTest, BrokenComponentsAreLoggedCountedAndSurvived) {
  // Missing: the load fails and no entry point is looked for.
  EXPECT_FALSE(RegisterComponent(true, mDir, "ZendraMissing.dll"));
  EXPECT_EQ(1u, ErrorCount());
  std::string log = Log();
  EXPECT_TRUE(Contains(log,
                       "Failure (E_NotFound, 0x80000202): Load DLL\r\n"
                       "} End: Register DLL\r\n"))
      << log;
  EXPECT_FALSE(Contains(log, "Register DLL\r\n    "));

  // A library without the entry point: loaded, then the call fails.
  ASSERT_TRUE(
      CopyInto(TestSupport::WindowsPath(TestSupport::ArgValue("plain-dll")),
               std::string(cInstallDir) + "\\Plain.dll"));
  EXPECT_FALSE(RegisterComponent(true, mDir, "Plain.dll"));
  EXPECT_EQ(2u, ErrorCount());
  log = Log();
  EXPECT_TRUE(
      Contains(log,
               "Success (Ok, 0x00000200): Load DLL\r\n"
               "    Failure (E_NotFound, 0x80000202): Register DLL\r\n"));

  // A file that is no library at all: an internal error for the unexpected
  // system error, a failed load, and the caller goes on.
  ASSERT_TRUE(CopyInto(SampleFile("About.gif"),
                       std::string(cInstallDir) + "\\NotALibrary.dll"));
  {
    TestSupport::ReportingAssertions reporting;
    EXPECT_FALSE(RegisterComponent(false, mDir, "NotALibrary.dll"));
  }
  EXPECT_EQ(3u, ErrorCount());
  EXPECT_TRUE(Contains(Log(),
                       "Failure (Failure, 0x80000200): Load DLL\r\n"
                       "} End: Unregister DLL\r\n"))
      << Log();

  // The real components still register after all that.
  EXPECT_TRUE(RegisterComponent(true, mDir, "Zendra.dll"));
  EXPECT_EQ(std::string(cInstallDir) + "\\Zendra.dll",
            ClassValue(cComponents[0], "InprocServer32"));
}
