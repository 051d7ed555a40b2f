#include <string>

#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;

TEST(VarList, SetKeepsOrderAndReplacesWritableValues) {
  CVarList vars;
  vars.Set("B", "1");
  vars.Set("A", "2");
  vars.Set("B", "3");
  ASSERT_EQ(2, vars.Count());
  EXPECT_STREQ("B", vars.First()->name.Chars());
  EXPECT_STREQ("3", vars.First()->value.Chars());
  EXPECT_STREQ("A", vars.First()->next->name.Chars());

  CStr value("stale");
  bool readOnly = true;
  EXPECT_TRUE(vars.Get("A", value, &readOnly));
  EXPECT_STREQ("2", value.Chars());
  EXPECT_FALSE(readOnly);
  EXPECT_FALSE(vars.Get("a", value));  // names are case-sensitive
  EXPECT_TRUE(value.IsEmpty());
  vars.Set("Empty", "");
  EXPECT_TRUE(vars.Get("Empty", value));
}

TEST(VarList, PercentMarksReadOnly) {
  CVarList vars;
  vars.Set("%Mode", "fast");
  const CVarList::CVar* mode = vars.Find("Mode");
  ASSERT_NE(nullptr, mode);
  EXPECT_TRUE(mode->readOnly);
  EXPECT_EQ(nullptr, vars.Find("%Mode"));
  EXPECT_ASSERTION(vars.Set("Mode", "slow"),
                   "attempt to modify a read-only variable");
  EXPECT_STREQ("fast", vars.Find("Mode")->value.Chars());

  vars.Set("Later", "x");
  vars.Set("Later", "y", true);  // becomes read-only with the new value
  EXPECT_TRUE(vars.Find("Later")->readOnly);
  EXPECT_STREQ("y", vars.Find("Later")->value.Chars());
  EXPECT_ASSERTION(vars.Set(nullptr, "v"), "name");
  EXPECT_ASSERTION(vars.Set("n", nullptr), "value");
}

TEST(VarList, MergeAppliesFlagsInOrder) {
  CVarList target, source;
  target.Set("Keep", "old");
  source.Set("%Keep", "new");
  source.Set("Added", "1");
  target.Merge(source);
  EXPECT_STREQ("new", target.Find("Keep")->value.Chars());
  EXPECT_TRUE(target.Find("Keep")->readOnly);
  EXPECT_STREQ("Added", target.First()->next->name.Chars());
}

TEST(VarList, BooleanReads) {
  CVarList vars;
  vars.Set("T", "Yes");
  vars.Set("F", "0");
  vars.Set("Odd", "2");
  bool value = false;
  EXPECT_TRUE(vars.GetBool("T", value));
  EXPECT_TRUE(value);
  EXPECT_TRUE(vars.GetBool("F", value));
  EXPECT_FALSE(value);
  EXPECT_FALSE(vars.GetBool("Missing", value));
  {
    TestSupport::ReportingAssertions reporting;
    value = true;
    EXPECT_TRUE(vars.GetBool("Odd", value));
    EXPECT_TRUE(value);  // untouched
  }
  EXPECT_ASSERTION(vars.GetBool("Odd", value), "bad Bool value");

  vars.Set("On", "1");
  EXPECT_TRUE(vars.GetFlag("On"));
  EXPECT_FALSE(vars.GetFlag("F"));
  EXPECT_FALSE(vars.GetFlag("Missing"));
  EXPECT_ASSERTION(vars.GetFlag("T"), "value == \"0\" || value == \"1\"");
}

TEST(VarList, ExpansionFillsPlaceholdersToAnyDepth) {
  CVarList vars;
  vars.Set("AppName", "Zendra");
  vars.Set("SetupName", "<AppName> Setup");
  vars.Set("Greeting", "Welcome to <SetupName>");
  CStr text("<Greeting>! <AppName> <b> <Unknown> <AppName:d>");
  EXPECT_EQ(4, vars.Expand(text));
  EXPECT_STREQ("Welcome to Zendra Setup! Zendra <b> <Unknown> <AppName:d>",
               text.Chars());

  CStr square("[AppName] <AppName>");
  EXPECT_EQ(1, vars.Expand(square, "[]"));
  EXPECT_STREQ("Zendra <AppName>", square.Chars());

  CStr plain("no placeholders");
  EXPECT_EQ(0, vars.Expand(plain));
  EXPECT_ASSERTION(vars.Expand(plain, "<"),
                   "(delims == 0) || (Str::Length(delims) == 2)");
}

TEST(VarList, ExpansionFollowsTheChain) {
  CVarList first, second;
  first.Set("A", "<B>");
  second.Set("B", "from second");
  first.SetNext(&second);
  CStr text("<A>|<B>");
  EXPECT_EQ(3, first.Expand(text));
  EXPECT_STREQ("from second|from second", text.Chars());
}

TEST(VarList, SearchLocationsKeepTheirOrder) {
  CVarList vars;
  vars.AddSearchLocation("HKEY_LOCAL_MACHINE", "SOFTWARE\\Orvane");
  vars.AddSearchLocation("HKEY_CURRENT_USER", "SOFTWARE\\Orvane\\OVZN4");
  ASSERT_EQ(2u, vars.SearchLocations().size());
  EXPECT_STREQ("HKEY_CURRENT_USER", vars.SearchLocations()[1].rootKey.Chars());
  EXPECT_STREQ("SOFTWARE\\Orvane\\OVZN4",
               vars.SearchLocations()[1].subKey.Chars());
}

// A value that holds its own placeholder, directly or through another
// variable, would be expanded for ever: the expansion stops with an internal
// error and the text stays bounded.
TEST(VarList, SelfReferenceEndsTheExpansion) {
  CVarList vars;
  vars.Set("Loop", "<Loop>");
  CStr text("a <Loop> b");
  EXPECT_ASSERTION(vars.Expand(text), "variable expansion does not end");

  CVarList pair;
  pair.Set("A", "x<B>");
  pair.Set("B", "<A><A>");
  CStr grown("<A>");
  CWStr wide(u"<B>");
  {
    TestSupport::ReportingAssertions reporting;
    EXPECT_EQ(1000, vars.Expand(text));
    EXPECT_STREQ("a <Loop> b", text.Chars());
    pair.Expand(grown);
    pair.Expand(wide);
  }
  EXPECT_LE(grown.Length(), (1 << 16) + 16);
  EXPECT_LE(wide.Length(), (1 << 16) + 16);
  EXPECT_ASSERTION(pair.Expand(grown), "variable expansion does not end");
}

TEST(VarList, DeepButFiniteExpansionIsComplete) {
  CVarList vars;
  vars.Set("V0", "end");
  for (int i = 1; i <= 200; ++i) {
    const std::string name = "V" + std::to_string(i);
    const std::string value = "<V" + std::to_string(i - 1) + ">";
    vars.Set(name.c_str(), value.c_str());
  }
  CStr text("<V200>");
  EXPECT_EQ(201, vars.Expand(text));
  EXPECT_STREQ("end", text.Chars());
}
