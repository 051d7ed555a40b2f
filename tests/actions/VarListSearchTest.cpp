// The variable list's registry search locations, on a real registry.
#include <windows.h>

#include "ActionsTestSupport.h"
#include "TVarList.h"

using namespace ActionsTest;

TEST(VarListSearch, LocationsAreSearchedInTheirOrder) {
  Tern::CVarList vars;
  vars.AddSearchLocation("HKEY_LOCAL_MACHINE", "SOFTWARE\\Orvane");
  vars.AddSearchLocation("HKEY_LOCAL_MACHINE", "SOFTWARE\\Orvane\\OVZN4");
  vars.AddSearchLocation("HKEY_CURRENT_USER", "SOFTWARE\\Orvane");
  vars.AddSearchLocation("HKEY_CURRENT_USER", "SOFTWARE\\Orvane\\OVZN4");
  Tern::CStr value("old");
  EXPECT_FALSE(vars.Get("Probe", value));
  EXPECT_TRUE(value.IsEmpty());

  struct Place {
    HKEY root;
    const char* key;
    const char* data;
  };
  // From the last location to the first: each newly written one wins.
  const Place places[] = {
      {HKEY_CURRENT_USER, "SOFTWARE\\Orvane\\OVZN4", "user product"},
      {HKEY_CURRENT_USER, "SOFTWARE\\Orvane", "user maker"},
      {HKEY_LOCAL_MACHINE, "SOFTWARE\\Orvane\\OVZN4", "machine product"},
      {HKEY_LOCAL_MACHINE, "SOFTWARE\\Orvane", "machine maker"},
  };
  for (const Place& place : places) {
    ASSERT_TRUE(WriteString(place.root, place.key, "Probe", place.data));
    bool readOnly = true;
    EXPECT_TRUE(vars.Get("Probe", value, &readOnly));
    EXPECT_STREQ(place.data, value.Chars());
    EXPECT_FALSE(readOnly);
  }
  vars.Set("Probe", "from the list");
  EXPECT_TRUE(vars.Get("Probe", value));
  EXPECT_STREQ("from the list", value.Chars());
  EXPECT_EQ(1, vars.Count());  // nothing read from the registry was kept

  // Values of other types are not variables.
  ASSERT_TRUE(WriteNumber(HKEY_CURRENT_USER, "SOFTWARE\\Orvane", "Number", 1));
  EXPECT_FALSE(vars.Get("Number", value));
}

TEST(VarListSearch, FlagsAndBooleansComeFromTheRegistryToo) {
  Tern::CVarList vars;
  vars.AddSearchLocation("HKEY_CURRENT_USER", "SOFTWARE\\Orvane\\OVZN4");
  ASSERT_TRUE(
      WriteString(HKEY_CURRENT_USER, "SOFTWARE\\Orvane\\OVZN4", "Crash", "1"));
  ASSERT_TRUE(
      WriteString(HKEY_CURRENT_USER, "SOFTWARE\\Orvane\\OVZN4", "Quiet", "No"));
  bool flag = false;
  EXPECT_TRUE(vars.GetBool("Crash", flag));
  EXPECT_TRUE(flag);
  EXPECT_TRUE(vars.GetBool("Quiet", flag));
  EXPECT_FALSE(flag);
  EXPECT_TRUE(vars.GetFlag("Crash"));
  EXPECT_FALSE(vars.GetFlag("Missing"));
  EXPECT_EQ(nullptr, vars.Find("Crash"));

  // A list without search locations never looks there.
  Tern::CVarList plain;
  EXPECT_FALSE(plain.GetBool("Crash", flag));
}
