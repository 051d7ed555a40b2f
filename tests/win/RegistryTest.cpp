// The registry of the throwaway Wine prefix, written and read for real.
#include <windows.h>

#include <set>
#include <string>

#include "PlatformRegistry.h"
#include "TRegistry_Win.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

const char cTestRoot[] = "HKEY_CURRENT_USER\\Software\\ZendraTests";

// Removes a key and its subkeys through the plain platform call, so that
// clean-up does not depend on the code under test.
void RemoveTree(HKEY root, const char* path, REGSAM view = 0) {
  HKEY key = nullptr;
  if (::RegOpenKeyExA(root, path, 0, KEY_ALL_ACCESS | view, &key) !=
      ERROR_SUCCESS)
    return;
  char name[256];
  while (::RegEnumKeyA(key, 0, name, sizeof name) == ERROR_SUCCESS) {
    std::string sub = std::string(path) + "\\" + name;
    RemoveTree(root, sub.c_str(), view);
  }
  ::RegCloseKey(key);
  ::RegDeleteKeyExA(root, path, view, 0);
}

// What the platform itself reads at a path and value, or "<none>".
std::string PlatformString(HKEY root, const char* path, const char* name,
                           REGSAM view = 0) {
  return TestSupport::RegistryString(root, path, name, view);
}

class RegistryTest : public ::testing::Test {
 protected:
  void SetUp() override { TearDown(); }
  void TearDown() override {
    RemoveTree(HKEY_CURRENT_USER, "Software\\ZendraTests");
    for (REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY})
      RemoveTree(HKEY_LOCAL_MACHINE, "Software\\ZendraTests", view);
  }
};

std::string Script(const char* text, CStr* message = nullptr,
                   Int view = rvDefaultView) {
  CStringStream script(text);
  CError err = RunRegistryScript(script, view, message);
  return ErrorName(err);
}

}  // namespace

TEST_F(RegistryTest, ValuesWrittenReadEnumeratedDeleted) {
  CWinRegKey key;
  ASSERT_TRUE(
      key.Open("HKEY_CURRENT_USER\\Software\\ZendraTests\\Values", rmCreate));
  EXPECT_TRUE(key.SetDefaultString("default text"));
  EXPECT_TRUE(key.SetString("Name", "Zendra"));
  EXPECT_TRUE(key.SetNumber("Count", 42));
  EXPECT_EQ("Zendra", PlatformString(HKEY_CURRENT_USER,
                                     "Software\\ZendraTests\\Values", "Name"));
  EXPECT_EQ("default text",
            PlatformString(HKEY_CURRENT_USER, "Software\\ZendraTests\\Values",
                           nullptr));
  key.Close();

  CWinRegKey reader;
  ASSERT_TRUE(
      reader.Open("HKEY_CURRENT_USER\\Software\\ZendraTests\\Values", rmRead));
  CStr text;
  UInt32 number = 0;
  EXPECT_TRUE(reader.GetString(nullptr, text));
  EXPECT_STREQ("default text", text.Chars());
  EXPECT_TRUE(reader.GetNumber("Count", number));
  EXPECT_EQ(42u, number);
  EXPECT_FALSE(reader.GetString("Count", text));  // not a string
  EXPECT_FALSE(reader.GetString("Missing", text));
  EXPECT_FALSE(reader.SetString("Name", "read-only key"));

  Int subKeys = -1, values = -1;
  ASSERT_TRUE(reader.QueryInfo(&subKeys, &values));
  EXPECT_EQ(0, subKeys);
  EXPECT_EQ(3, values);
  std::set<std::string> names;
  CStr name;
  for (Int i = 0; reader.EnumValue(i, name); ++i) names.insert(name.Chars());
  EXPECT_EQ(std::set<std::string>({"", "Name", "Count"}), names);
  reader.Close();

  CWinRegKey writer;
  ASSERT_TRUE(
      writer.Open("HKEY_CURRENT_USER\\Software\\ZendraTests\\Values", rmWrite));
  EXPECT_TRUE(writer.DeleteValue("Name"));
  EXPECT_FALSE(writer.DeleteValue("Name"));
  EXPECT_EQ("<none>", PlatformString(HKEY_CURRENT_USER,
                                     "Software\\ZendraTests\\Values", "Name"));

  CWinRegKey parent;
  ASSERT_TRUE(parent.Open(cTestRoot, rmWrite));
  CWinRegKey child;
  ASSERT_TRUE(child.Open("Second", parent, rmCreate));
  ASSERT_TRUE(parent.QueryInfo(&subKeys));
  EXPECT_EQ(2, subKeys);
  names.clear();
  for (Int i = 0; parent.EnumSubKey(i, name); ++i) names.insert(name.Chars());
  EXPECT_EQ(std::set<std::string>({"Values", "Second"}), names);
  child.Close();
  writer.Close();
  EXPECT_TRUE(parent.DeleteSubKey("Second"));
  EXPECT_TRUE(parent.DeleteSubKey("Values"));
  EXPECT_FALSE(parent.DeleteSubKey("Values"));
  EXPECT_EQ("<none>", PlatformString(HKEY_CURRENT_USER,
                                     "Software\\ZendraTests\\Values", nullptr));
}

TEST_F(RegistryTest, SixtyFourBitViewFromAThirtyTwoBitProgram) {
  const char* path = "HKEY_LOCAL_MACHINE\\Software\\ZendraTests\\View";
  CWinRegKey wide(rv64BitView);
  ASSERT_TRUE(wide.Open(path, rmCreate));
  EXPECT_TRUE(wide.SetString("Where", "64-bit"));
  wide.Close();

  // Found in the 64-bit place, not in the 32-bit (redirected) one.
  EXPECT_EQ("64-bit",
            PlatformString(HKEY_LOCAL_MACHINE, "Software\\ZendraTests\\View",
                           "Where", KEY_WOW64_64KEY));
  EXPECT_EQ("<none>",
            PlatformString(HKEY_LOCAL_MACHINE, "Software\\ZendraTests\\View",
                           "Where", KEY_WOW64_32KEY));
  CStr value;
  EXPECT_TRUE(CWinRegKey::ReadString(path, "Where", value, rv64BitView));
  EXPECT_FALSE(CWinRegKey::ReadString(path, "Where", value, rv32BitView));
  EXPECT_FALSE(CWinRegKey::ReadString(path, "Where", value, rvDefaultView));

  CWinRegKey narrow(rv32BitView);
  ASSERT_TRUE(narrow.Open(path, rmCreate));
  EXPECT_TRUE(narrow.SetString("Where", "32-bit"));
  narrow.Close();
  EXPECT_TRUE(CWinRegKey::ReadString(path, "Where", value, rvDefaultView));
  EXPECT_STREQ("32-bit", value.Chars());
  EXPECT_EQ("32-bit", PlatformString(HKEY_LOCAL_MACHINE,
                                     "Software\\Wow6432Node\\ZendraTests\\View",
                                     "Where", KEY_WOW64_64KEY));

  // Deleting in the 64-bit view removes that key only.
  CWinRegKey parent(rv64BitView);
  ASSERT_TRUE(
      parent.Open("HKEY_LOCAL_MACHINE\\Software\\ZendraTests", rmWrite));
  EXPECT_TRUE(parent.DeleteSubKey("View"));
  EXPECT_FALSE(CWinRegKey::ReadString(path, "Where", value, rv64BitView));
  EXPECT_TRUE(CWinRegKey::ReadString(path, "Where", value, rv32BitView));
}

TEST_F(RegistryTest, RootNames) {
  CWinRegKey users;
  ASSERT_TRUE(users.Open("HKEY_USERS", rmRead));
  EXPECT_EQ(static_cast<void*>(HKEY_USERS), users.Handle());
  users.Close();  // a predefined root stays open
  DWORD subKeys = 0;
  EXPECT_EQ(ERROR_SUCCESS,
            ::RegQueryInfoKeyA(HKEY_USERS, nullptr, nullptr, nullptr, &subKeys,
                               nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr));

  // "HKEY_CURRENT" is the first root whose name begins with it.
  CWinRegKey config;
  ASSERT_TRUE(config.Open("HKEY_CURRENT\\ZendraTests", rmCreate));
  config.Close();
  CWinRegKey check;
  EXPECT_TRUE(check.Open("HKEY_CURRENT_CONFIG\\ZendraTests", rmRead));
  check.Close();
  RemoveTree(HKEY_CURRENT_CONFIG, "ZendraTests");

  CWinRegKey unknown;
  EXPECT_ASSERTION(unknown.Open("HKEY_NOWHERE\\x", rmRead), "unknown root key");
  EXPECT_ASSERTION(unknown.Open("HKEY_CURRENT", rmRead), "unknown root key");
  ASSERT_TRUE(unknown.Open("HKEY_LOCAL_MACHINE", rmRead));
  EXPECT_ASSERTION(unknown.Open("HKEY_USERS", rmRead), "! IsValid()");

  CStr dir;
  EXPECT_TRUE(CWinRegKey::ReadString(
      "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion",
      "ProgramFilesDir", dir));
  EXPECT_NE(-1, dir.Find(":\\"));

  CWinRegKey user;
  EXPECT_TRUE(user.OpenCurrentUser(rmRead));
  CWinRegKey userIn32BitView(rv32BitView);
  EXPECT_ASSERTION(userIn32BitView.OpenCurrentUser(rmRead),
                   "mRegView==rvDefaultView");
  CWinRegKey low;
  EXPECT_TRUE(low.OpenLowIntegrity());
}

TEST_F(RegistryTest, ScriptAppliesKeysAndValues) {
  CStr message;
  EXPECT_STREQ(
      "Ok",
      Script("@HKEY_CURRENT_USER/Software/ZendraTests/Script=root default\n"
             "#Version=4.02\n"
             "#Old=to be deleted\n"
             "\n"
             "   \n"
             "/Sub/Deeper=sub default\r\n"
             "#Url=http://example/a=b\n"
             "-Old\n"
             "#AfterDelete=on the root\n",
             &message)
          .c_str());
  EXPECT_TRUE(message.IsEmpty());
  const char* root = "Software\\ZendraTests\\Script";
  const char* sub = "Software\\ZendraTests\\Script\\Sub\\Deeper";
  EXPECT_EQ("root default", PlatformString(HKEY_CURRENT_USER, root, nullptr));
  EXPECT_EQ("4.02", PlatformString(HKEY_CURRENT_USER, root, "Version"));
  EXPECT_EQ("<none>", PlatformString(HKEY_CURRENT_USER, root, "Old"));
  EXPECT_EQ("on the root",
            PlatformString(HKEY_CURRENT_USER, root, "AfterDelete"));
  EXPECT_EQ("sub default", PlatformString(HKEY_CURRENT_USER, sub, nullptr));
  // "/" in a value stays; the value runs from the first "=".
  EXPECT_EQ("http://example/a=b",
            PlatformString(HKEY_CURRENT_USER, sub, "Url"));
}

TEST_F(RegistryTest, ScriptFailuresStopWithTheirMessages) {
  CStr message;
  EXPECT_STREQ("Failure",
               Script("#Name=value\n#Never=set\n", &message).c_str());
  EXPECT_STREQ("can't set value (value) for key (Name)", message.Chars());

  EXPECT_STREQ("Failure", Script("-Name\n", &message).c_str());
  EXPECT_STREQ("no root key (Name)", message.Chars());

  EXPECT_STREQ("Failure", Script("@HKEY_CURRENT_USER\\Software\\ZendraTests\n"
                                 "#Name\n#Later=x\n",
                                 &message)
                              .c_str());
  EXPECT_STREQ("# command must have a value for key (Name)", message.Chars());
  EXPECT_EQ("<none>", PlatformString(HKEY_CURRENT_USER, "Software\\ZendraTests",
                                     "Later"));

  EXPECT_STREQ("Failure", Script("/Sub\n", &message).c_str());
  EXPECT_STREQ("can't open or create key (Sub)", message.Chars());

  EXPECT_ASSERTION(
      Script("@HKEY_CURRENT_USER\\Software\\ZendraTests\n-Name=x\n"),
      "! hasValue");
  EXPECT_ASSERTION(Script("x line\n"), "bad syntax");
  {
    TestSupport::ReportingAssertions reporting;
    EXPECT_STREQ("Failure",
                 Script("@HKEY_NOWHERE\\Software\n", &message).c_str());
    EXPECT_STREQ("can't open or create key (HKEY_NOWHERE\\Software)",
                 message.Chars());
    // A bad line is skipped and the script goes on.
    EXPECT_STREQ("Ok", Script("?\n@HKEY_CURRENT_USER\\Software\\ZendraTests\n"
                              "#After=bad line\n")
                           .c_str());
  }
  EXPECT_EQ("bad line", PlatformString(HKEY_CURRENT_USER,
                                       "Software\\ZendraTests", "After"));
}
