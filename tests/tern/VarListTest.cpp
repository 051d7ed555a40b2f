#include <random>
#include <string>

#include "TStr.h"
#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;

TEST(VarList, SetGetAndReadOnlyValues) {
  CVarList vars, more;
  for (int i = 0; i < 5000; ++i)  // far beyond the index's first size
    vars.Set(("Var" + std::to_string(i)).c_str(), std::to_string(i).c_str());
  vars.Set("Var3", "changed");
  vars.Set("%Mode", "fast");
  EXPECT_ASSERTION(vars.Set("Mode", "slow"),
                   "attempt to modify a read-only variable");
  ASSERT_EQ(5001, vars.Count());
  int i = 0;
  for (const CVarList::CVar* v = vars.First(); i < 5000; v = v->next, ++i)
    ASSERT_EQ("Var" + std::to_string(i), v->name.Chars());
  CStr value("stale");
  EXPECT_FALSE(vars.Get("var3", value));  // names are case-sensitive
  EXPECT_TRUE(value.IsEmpty());
  bool readOnly = false;
  EXPECT_TRUE(vars.Get("Mode", value, &readOnly));
  EXPECT_STREQ("fast", value.Chars());
  EXPECT_TRUE(readOnly);
  EXPECT_STREQ("changed", vars.Find("Var3")->value.Chars());
  EXPECT_EQ(nullptr, vars.Find("%Mode"));
  more.Set("Var3", "old");
  more.Merge(vars);
  EXPECT_STREQ("changed", more.Find("Var3")->value.Chars());
  EXPECT_TRUE(more.Find("Mode")->readOnly);
}

TEST(VarList, BooleansAndFlags) {
  CVarList vars;
  vars.Set("T", "Yes");
  vars.Set("F", "0");
  vars.Set("Odd", "2");
  bool value = false;
  EXPECT_TRUE(vars.GetBool("T", value) && value);
  EXPECT_TRUE(vars.GetBool("F", value) && !value);
  EXPECT_FALSE(vars.GetBool("Missing", value));
  EXPECT_ASSERTION(vars.GetBool("Odd", value), "bad Bool value");
  EXPECT_FALSE(vars.GetFlag("F") || vars.GetFlag("Missing"));
  EXPECT_ASSERTION(vars.GetFlag("T"), "value == \"0\" || value == \"1\"");
}

TEST(VarList, ExpansionToAnyDepthAlongTheChain) {
  CVarList vars, second;
  vars.Set("AppName", "Zendra");
  vars.Set("Greeting", "Welcome to <SetupName>");
  second.Set("SetupName", "<AppName> Setup");
  vars.SetNext(&second);
  CStr text("<Greeting>! <b> <Unknown> <AppName:d> [AppName]");
  EXPECT_EQ(3, vars.Expand(text));
  EXPECT_STREQ("Welcome to Zendra Setup! <b> <Unknown> <AppName:d> [AppName]",
               text.Chars());
  EXPECT_EQ(1, vars.Expand(text, "[]"));
  // A name in two lists: the second list's fills what the first list's "A"
  // makes in the same pass.
  CVarList first, last;
  first.Set("B", "first");
  first.Set("A", "<B>");
  last.Set("B", "last");
  first.SetNext(&last);
  CStr twice("<B> <A>");
  EXPECT_EQ(3, first.Expand(twice));
  EXPECT_STREQ("first last", twice.Chars());

  for (int i = 1; i <= 200; ++i)
    vars.Set(("V" + std::to_string(i)).c_str(),
             ("<V" + std::to_string(i - 1) + ">").c_str());
  vars.Set("V0", "end");
  CStr deep("<V200>");
  EXPECT_EQ(201, vars.Expand(deep));
  EXPECT_STREQ("end", deep.Chars());
}

// A value holding its own placeholder, directly or through another variable,
// would be expanded for ever: expansion stops with an internal error and the
// text stays bounded.
TEST(VarList, SelfReferenceEndsTheExpansion) {
  CVarList vars;
  vars.Set("Loop", "<Loop>");
  vars.Set("A", "x<B>");
  vars.Set("B", "<A><A>");
  CStr loop("a <Loop> b");
  EXPECT_ASSERTION(vars.Expand(loop), "variable expansion does not end");
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ(1000, vars.Expand(loop));
  EXPECT_STREQ("a <Loop> b", loop.Chars());
  CStr grown("<A>");
  CWStr wide(u"<B>");
  vars.Expand(grown);
  vars.Expand(wide);
  EXPECT_LE(grown.Length(), (1 << 16) + 16);
  EXPECT_LE(wide.Length(), (1 << 16) + 16);
}

// Texts and values made of a few names and delimiters, so that values build
// placeholders with the text around them, with each other and across passes.
// Filling by lookup, which looks only around what the last pass put in, must
// give what the full passes give; a name holding a delimiter makes the list
// take the passes.
TEST(VarList, ExpansionByLookupMatchesThePassesOnRandomTexts) {
  std::mt19937 random(20261122);
  const char* const pieces[] = {"<",    ">", "[", "]",   "A",   "B",
                                "Long", "x", " ", "<A>", "[B]", "<Long>"};
  auto randomText = [&](int maxPieces) {
    std::string text;
    for (int n = random() % (maxPieces + 1); n > 0; --n)
      text += pieces[random() % CountOf(pieces)];
    return text;
  };
  int limited = 0, severalPasses = 0;
  TestSupport::ReportingAssertions reporting;
  for (int round = 0; round < 3000; ++round) {
    CVarList lookup, passes;
    passes.Set("\x01<[\x02]>\x03", "never");
    for (const char* name : {"A", "B", "Long", "ALong", "x"}) {
      if (random() % 4 == 0) continue;
      const std::string value = randomText(6);
      lookup.Set(name, value.c_str());
      passes.Set(name, value.c_str());
    }
    const std::string text = randomText(12);
    const char* delims = random() % 2 ? nullptr : "[]";
    CStr fast(text.c_str()), slow(text.c_str());
    CWStr wide = Str::ToWide(text.c_str());
    const Int count = lookup.Expand(fast, delims);
    const Int slowCount = passes.Expand(slow, delims);
    ASSERT_EQ(count, lookup.Expand(wide, delims)) << text;
    ASSERT_TRUE(wide == Str::ToWide(fast.Chars())) << text;
    if (count >= 1000 || fast.Length() >= 1 << 16) {
      // Cut short: the two stop in different places, both at the limits.
      EXPECT_TRUE(slowCount >= 1000 || slow.Length() >= 1 << 16) << text;
      ++limited;
      continue;
    }
    ASSERT_STREQ(slow.Chars(), fast.Chars()) << text;
    ASSERT_EQ(slowCount, count) << text;
    if (count > 1) ++severalPasses;
  }
  EXPECT_GT(limited, 100);
  EXPECT_GT(severalPasses, 200);
}
