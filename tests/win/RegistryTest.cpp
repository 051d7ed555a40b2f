// The registry of the throwaway Wine prefix, written and read for real; the
// platform's own calls check what the code under test did.
#include <windows.h>
// After windows.h, which it needs.
#include <sddl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "PlatformRegistry.h"
#include "TRegistry_Win.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

const std::string cTests = "HKEY_CURRENT_USER\\Software\\ZendraTests";

std::string UserString(const std::string& below, const char* name,
                       HKEY root = HKEY_CURRENT_USER, REGSAM view = 0) {
  return TestSupport::RegistryString(root, "Software\\ZendraTests" + below,
                                     name, view);
}

// Sorted: the system's order is its own.
std::vector<std::string> Sorted(const std::vector<CStr>& names) {
  std::vector<std::string> sorted(names.size());
  std::transform(names.begin(), names.end(), sorted.begin(),
                 [](const CStr& name) { return name.Chars(); });
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

class RegistryTest : public ::testing::Test {
 protected:
  void SetUp() override { TearDown(); }
  void TearDown() override {
    ::RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\ZendraTests");
  }
};

}  // namespace

TEST_F(RegistryTest, ValuesWrittenReadListedAndFailuresKept) {
  CWinRegKey key;
  ASSERT_TRUE(key.Open((cTests + "\\V").c_str(), rmCreate));
  EXPECT_TRUE(key.SetDefaultString("default") && key.SetNumber("Count", 42) &&
              key.SetString("Name", "Zendra"));
  EXPECT_EQ("Zendra", UserString("\\V", "Name"));
  key.Close();
  ASSERT_TRUE(key.Open((cTests + "\\V").c_str(), rmRead));
  CStr text;
  UInt32 number = 0;
  EXPECT_TRUE(key.GetString(nullptr, text) && text == "default");
  EXPECT_TRUE(key.GetNumber("Count", number) && number == 42);
  std::vector<CStr> names;
  EXPECT_TRUE(key.GetValueNames(names));
  EXPECT_EQ(std::vector<std::string>({"", "Count", "Name"}), Sorted(names));
  // Each failure keeps its own reason.
  auto failure = [&key](bool ok) { return ok ? 0L : long(key.FailureCode()); };
  EXPECT_EQ(ERROR_UNSUPPORTED_TYPE, failure(key.GetString("Count", text)));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, failure(key.GetNumber("Missing", number)));
  EXPECT_EQ(ERROR_ACCESS_DENIED, failure(key.DeleteValue("Name")));
  // A key of this process's own is no root: taking it would close it.
  EXPECT_ASSERTION(CWinRegKey().AttachRoot(key.Handle()),
                   "not a predefined root key");
}

TEST_F(RegistryTest, TreesGoWholeAndSubKeysAreListed) {
  for (const char* path : {"\\T\\A\\B", "\\T\\A\\C\\D", "\\T\\E"})
    EXPECT_TRUE(CWinRegKey().Open((cTests + path).c_str(), rmCreate));
  CWinRegKey tree;
  ASSERT_TRUE(tree.Open((cTests + "\\T").c_str(), rmWrite));
  std::vector<CStr> names;
  EXPECT_TRUE(tree.GetSubKeyNames(names));
  EXPECT_EQ(std::vector<std::string>({"A", "E"}), Sorted(names));
  EXPECT_TRUE(tree.DeleteSubKeyTree("A"));
  EXPECT_TRUE(tree.GetSubKeyNames(names));
  EXPECT_EQ(std::vector<std::string>({"E"}), Sorted(names));
  EXPECT_FALSE(tree.DeleteSubKeyTree("A"));
  EXPECT_EQ(static_cast<UInt32>(ERROR_FILE_NOT_FOUND), tree.FailureCode());
}

TEST_F(RegistryTest, ViewsAreWrittenAndDeletedApart) {
  const char* path = "HKEY_LOCAL_MACHINE\\Software\\ZendraTests\\View";
  for (Int view : {rv64BitView, rv32BitView}) {
    CWinRegKey key(view);
    EXPECT_TRUE(key.Open(path, rmCreate) &&
                key.SetString("Where", view == rv64BitView ? "64" : "32"));
  }
  auto where = [](REGSAM view) {
    return UserString("\\View", "Where", HKEY_LOCAL_MACHINE, view);
  };
  EXPECT_EQ("64", where(KEY_WOW64_64KEY));
  CWinRegKey machine, user;  // the predefined root; the user's own hive
  ASSERT_TRUE(machine.Open("HKEY_LOCAL_MACHINE", rmRead));
  EXPECT_EQ(static_cast<void*>(HKEY_LOCAL_MACHINE), machine.Handle());
  ASSERT_TRUE(user.Open("HKEY_CURRENT_USER", rmRead));
  EXPECT_NE(static_cast<void*>(HKEY_CURRENT_USER), user.Handle());
  EXPECT_TRUE(
      machine.DeleteSubKeyInView("Software\\ZendraTests\\View", rv64BitView));
  EXPECT_EQ("<none>", where(KEY_WOW64_64KEY));
  EXPECT_EQ("32", where(KEY_WOW64_32KEY));
  for (Int view : {rv32BitView, rv64BitView}) {
    CWinRegKey root(view);
    EXPECT_TRUE(root.Open("HKEY_LOCAL_MACHINE", rmRead) &&
                root.DeleteSubKeyTree("Software\\ZendraTests"));
  }
  EXPECT_EQ("<none>", where(KEY_WOW64_32KEY));
}

TEST_F(RegistryTest, AFailedOpenIsDescribedWithPathAndSystemText) {
  // Everyone may read the key and no one write it; the handle held here
  // keeps the right to lift that again.
  CScopedRegKey owner;
  ASSERT_EQ(ERROR_SUCCESS,
            ::RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\ZendraTests\\Lock",
                              0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              owner.Put(), nullptr));
  auto secure = [&](const char* sddl) {
    PSECURITY_DESCRIPTOR sd = nullptr;
    ASSERT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorA(
        sddl, SDDL_REVISION_1, &sd, nullptr));
    EXPECT_EQ(ERROR_SUCCESS,
              ::RegSetKeySecurity(owner.Get(), DACL_SECURITY_INFORMATION, sd));
    ::LocalFree(sd);
  };
  secure("D:(A;;KR;;;WD)");
  CWinRegKey key;
  EXPECT_FALSE(
      key.Open("HKEY_CURRENT_US\\Software\\ZendraTests\\Lock", rmWrite));
  EXPECT_EQ(5u, key.FailureCode());
  const std::string detail = key.FailureDetail().Chars();
  const std::string where = cTests + "\\Lock: ";  // the root named in full
  EXPECT_EQ(where, detail.substr(0, where.size())) << detail;
  EXPECT_GT(detail.size(), where.size() + 4) << "no system text: " << detail;
  EXPECT_EQ(" (5)", detail.substr(detail.size() - 4));
  secure("D:(A;;KA;;;WD)");
}
