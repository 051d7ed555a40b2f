#include <random>
#include <string>

#include "TStr.h"
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

TEST(VarList, ManyVariablesKeepOrderAndLookups) {
  CVarList vars;
  const int n = 5000;
  for (int i = 0; i < n; ++i) {
    CStr name, value;
    name.Format("Var%d", i);
    value.Format("value %d", i);
    vars.Set(name.Chars(), value.Chars(), i % 7 == 0);
  }
  vars.Set("Var3", "changed");
  ASSERT_EQ(n, vars.Count());
  int i = 0;
  for (const CVarList::CVar* v = vars.First(); v; v = v->next, ++i) {
    CStr name;
    name.Format("Var%d", i);
    ASSERT_STREQ(name.Chars(), v->name.Chars());
    EXPECT_EQ(i % 7 == 0, v->readOnly);
  }
  CStr value;
  EXPECT_TRUE(vars.Get("Var4999", value));
  EXPECT_STREQ("value 4999", value.Chars());
  EXPECT_STREQ("changed", vars.Find("Var3")->value.Chars());
  EXPECT_EQ(nullptr, vars.Find("Var5000"));
  vars.Clear();
  EXPECT_EQ(0, vars.Count());
  EXPECT_EQ(nullptr, vars.Find("Var1"));
  vars.Set("Var1", "again");
  EXPECT_STREQ("again", vars.First()->value.Chars());
}

namespace {

// A name with a delimiter in it makes Expand go variable by variable, pass
// after pass; the texts below never hold it, so it changes nothing else.
void AddPassMarker(CVarList& vars) { vars.Set("\x01<[\x02]>\x03", "never"); }

struct Expanded {
  CStr text;
  Int count;
};

Expanded ExpandWith(const CVarList& vars, const char* text,
                    const char* delims = nullptr) {
  Expanded result{CStr(text), 0};
  result.count = vars.Expand(result.text, delims);
  return result;
}

}  // namespace

TEST(VarList, ExpansionByLookupMatchesThePasses) {
  const char* const values[][2] = {
      {"A", "<B>"},          {"B", "x"},       {"C", "<A><A>"}, {"Open", "<"},
      {"Close", ">"},        {"AB", "joined"}, {"D", "<A"},     {"E", "B>"},
      {"Empty", ""},         {"F", "[A]"},     {"aVb", "made"}, {"V", "V"},
      {"Long", "<C><C><C>"},
  };
  const char* const texts[] = {
      "<A>",
      "<C> and <Long>",
      "<Open>A<Close>",
      "<D><E>",
      "<<A>B>",
      "<a<V>b>",
      "<<>>",
      "<A><B><Unknown><A:d>",
      "<Open>Open<Close>>",
      "[A] [F] [[A]]",
      "<Empty><<Empty>A>",
      "no placeholders",
      "<",
      ">",
      "<>",
      "<<A",
      "A>>",
      "<A",
  };
  CVarList lookup, passes;
  for (const auto& v : values) {
    lookup.Set(v[0], v[1]);
    passes.Set(v[0], v[1]);
  }
  AddPassMarker(passes);
  for (const char* text : texts) {
    for (const char* delims : {static_cast<const char*>(nullptr), "[]"}) {
      Expanded fast = ExpandWith(lookup, text, delims);
      Expanded slow = ExpandWith(passes, text, delims);
      EXPECT_STREQ(slow.text.Chars(), fast.text.Chars()) << text;
      EXPECT_EQ(slow.count, fast.count) << text;
    }
  }
  EXPECT_STREQ("joined", ExpandWith(lookup, "<D><E>").text.Chars());
  EXPECT_STREQ("made", ExpandWith(lookup, "<a<V>b>").text.Chars());
}

TEST(VarList, ExpansionWithManyVariablesAndPlaceholders) {
  CVarList lookup, passes;
  for (int i = 0; i < 300; ++i) {
    CStr name, value;
    name.Format("N%d", i);
    value.Format(i % 3 == 0 ? "<N%d>-%d" : "v%d", i + 1, i);
    lookup.Set(name.Chars(), value.Chars());
    passes.Set(name.Chars(), value.Chars());
  }
  AddPassMarker(passes);
  CStr text;
  for (int i = 0; i < 2000; ++i) text.AppendFormat("<N%d> <M%d> ", i % 320, i);
  Expanded fast = ExpandWith(lookup, text.Chars());
  Expanded slow = ExpandWith(passes, text.Chars());
  EXPECT_STREQ(slow.text.Chars(), fast.text.Chars());
  EXPECT_EQ(slow.count, fast.count);
  EXPECT_GT(fast.count, 1800);

  CWStr wide = Str::ToWide(text.Chars()), wideSlow = wide;
  EXPECT_EQ(fast.count, lookup.Expand(wide));
  EXPECT_EQ(fast.count, passes.Expand(wideSlow));
  EXPECT_TRUE(wide == wideSlow);
  EXPECT_TRUE(wide == Str::ToWide(fast.text.Chars()));
}

// Texts and values made of a few names and delimiters, so that values build
// placeholders with the text around them, with each other and across passes,
// and some expansions run into their limits. Filling by lookup looks only
// around what the last pass put in; it must still find what the full passes
// find.
TEST(VarList, ExpansionByLookupMatchesThePassesOnRandomTexts) {
  std::mt19937 random(20261122);
  const char* const pieces[] = {"<",    ">", "[", "]",   "A",   "B",
                                "Long", "x", " ", "<A>", "[B]", "<Long>"};
  auto randomText = [&](int maxPieces) {
    std::string text;
    const int n = static_cast<int>(random() % (maxPieces + 1));
    for (int i = 0; i < n; ++i) text += pieces[random() % 12];
    return text;
  };
  int limited = 0, severalPasses = 0;
  for (int round = 0; round < 3000; ++round) {
    CVarList lookup, passes;
    for (const char* name : {"A", "B", "Long", "ALong", "x"}) {
      if (random() % 4 == 0) continue;
      const std::string value = randomText(6);
      lookup.Set(name, value.c_str());
      passes.Set(name, value.c_str());
    }
    AddPassMarker(passes);
    const std::string text = randomText(12);
    const char* delims = random() % 2 ? nullptr : "[]";
    TestSupport::ReportingAssertions reporting;
    Expanded fast = ExpandWith(lookup, text.c_str(), delims);
    Expanded slow = ExpandWith(passes, text.c_str(), delims);
    CWStr wide = Str::ToWide(text.c_str());
    ASSERT_EQ(fast.count, lookup.Expand(wide, delims)) << text;
    ASSERT_TRUE(wide == Str::ToWide(fast.text.Chars())) << text;
    if (fast.count >= 1000 || fast.text.Length() >= 1 << 16) {
      // Cut short: the two stop in different places, both at the limits.
      EXPECT_TRUE(slow.count >= 1000 || slow.text.Length() >= 1 << 16);
      ++limited;
      continue;
    }
    ASSERT_STREQ(slow.text.Chars(), fast.text.Chars()) << text;
    ASSERT_EQ(slow.count, fast.count) << text;
    if (fast.count > 1) ++severalPasses;
  }
  // Many ran into the limits, and many more took several replacements.
  EXPECT_GT(limited, 100);
  EXPECT_GT(severalPasses, 200);
}

TEST(VarList, ExpansionOfAChainWithANameTwice) {
  // The second list's "B" fills what the first list's "A" makes in the same
  // pass; that needs the passes, and Expand takes them.
  CVarList first, second;
  first.Set("B", "first");
  first.Set("A", "<B>");
  second.Set("B", "second");
  first.SetNext(&second);
  CStr text("<B> <A>");
  EXPECT_EQ(3, first.Expand(text));
  EXPECT_STREQ("first second", text.Chars());
}
