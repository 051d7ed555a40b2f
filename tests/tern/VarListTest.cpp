#include <random>
#include <string>

#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;

TEST(VarList, SetGetMergeAndReadOnlyValues) {
  CVarList vars, more;
  for (int i = 0; i < 5000; ++i)  // far beyond the index's first size
    vars.Set(("V" + std::to_string(i)).c_str(), i % 2 ? "Yes" : "0");
  vars.Set("V3", "changed");
  vars.Set("%Mode", "fast");
  EXPECT_ASSERTION(vars.Set("Mode", "slow"),
                   "attempt to modify a read-only variable");
  ASSERT_EQ(5001, vars.Count());
  int i = 0;
  for (const CVarList::CVar* v = vars.First(); i < 5000; v = v->next, ++i)
    ASSERT_EQ("V" + std::to_string(i), v->name.Chars());
  CStr value("stale");
  EXPECT_FALSE(vars.Get("v3", value));  // names are case-sensitive
  EXPECT_TRUE(value.IsEmpty());
  more.Set("V3", "old");
  more.Merge(vars);
  bool readOnly = false, flag = false;
  EXPECT_TRUE(more.Get("Mode", value, &readOnly) && readOnly);
  EXPECT_STREQ("fast", value.Chars());
  EXPECT_STREQ("changed", more.Find("V3")->value.Chars());
  EXPECT_TRUE(vars.GetBool("V4999", flag) && flag);
  EXPECT_TRUE(vars.GetBool("V4998", flag) && !flag);
  EXPECT_FALSE(vars.GetBool("Missing", flag));
  EXPECT_ASSERTION(vars.GetBool("V3", flag), "bad Bool value");
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
  for (int i = 0; i < 200; ++i)  // deep, but with an end
    vars.Set(("V" + std::to_string(i + 1)).c_str(),
             ("<V" + std::to_string(i) + ">").c_str());
  vars.Set("V0", "end");
  CStr deep("<V200>");
  EXPECT_EQ(201, vars.Expand(deep));
  EXPECT_STREQ("end", deep.Chars());
}

// A value holding its own placeholder, directly or through another, would
// expand for ever: expansion stops with an internal error, the text bounded.
TEST(VarList, SelfReferenceEndsTheExpansion) {
  CVarList vars;
  vars.Set("Loop", "<Loop>");
  vars.Set("A", "x<B>");
  vars.Set("B", "<A><A>");
  CStr loop("a <Loop> b"), grown("<A>");
  EXPECT_ASSERTION(vars.Expand(loop), "variable expansion does not end");
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ(1000, vars.Expand(loop));
  EXPECT_STREQ("a <Loop> b", loop.Chars());
  vars.Expand(grown);
  EXPECT_LE(grown.Length(), (1 << 16) + 16);
}

// Values build placeholders with the text around them, with each other and
// across passes: filling by lookup must give what the passes give (a name
// holding a delimiter makes a list take the passes).
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
  int limited = 0;
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
    const Int count = lookup.Expand(fast, delims);
    const Int slowCount = passes.Expand(slow, delims);
    if (count >= 1000 || fast.Length() >= 1 << 16) {
      // Cut short: the two stop in different places, both at the limits.
      EXPECT_TRUE(slowCount >= 1000 || slow.Length() >= 1 << 16) << text;
      ++limited;
    } else {
      ASSERT_STREQ(slow.Chars(), fast.Chars()) << text;
      ASSERT_EQ(slowCount, count) << text;
    }
  }
  EXPECT_GT(limited, 100);  // the limits were met, too
}
