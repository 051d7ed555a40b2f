#include <cstdarg>
#include <cstring>
#include <string>

#include "TStr.h"
#include "TString.h"
#include "TestSupport.h"

using namespace Tern;

TEST(String, EmptyStringsShareOneBuffer) {
  CStr a, b("");
  CStr c("x");
  c.Clear();
  EXPECT_EQ(a.Chars(), b.Chars());
  EXPECT_EQ(0, a.Capacity());
  EXPECT_EQ(0, b.Capacity());
  EXPECT_STREQ("", a.Chars());
  EXPECT_STREQ("", c.Chars());
  CWStr wa, wb(u"");
  EXPECT_EQ(wa.Chars(), wb.Chars());
}

TEST(String, GrowthDoublesSoAppendingIsCheap) {
  CStr s;
  int reallocations = 0;
  const char* buffer = s.Chars();
  for (int i = 0; i < 10000; ++i) {
    s.Append(static_cast<char>('a' + i % 26));
    if (s.Chars() != buffer) {
      ++reallocations;
      buffer = s.Chars();
    }
    ASSERT_GE(s.Capacity(), s.Length());
  }
  EXPECT_EQ(10000, s.Length());
  EXPECT_LE(reallocations, 12);  // 15, 30, 60 ... past 10000
  EXPECT_EQ('a', s[0]);
  EXPECT_EQ('a' + 9999 % 26, s[9999]);
  EXPECT_EQ(0, s[10000]);  // the terminator

  CStr r;
  r.Reserve(100);
  const char* reserved = r.Chars();
  r.Assign(std::string(100, 'z').c_str());
  EXPECT_EQ(reserved, r.Chars());
  EXPECT_EQ(100, r.Capacity());
}

TEST(String, EditingALockedStringAssertsAndChangesNothing) {
  CStr s("abc");
  char* buf = s.Lock(10);
  EXPECT_FALSE(s.IsUnlocked());
  std::strcpy(buf, "direct");
  EXPECT_ASSERTION(s.Append("x"), "IsUnlocked()");
  EXPECT_ASSERTION(s.Assign("y"), "IsUnlocked()");
  EXPECT_ASSERTION(s.Insert(0, "z"), "IsUnlocked()");
  EXPECT_ASSERTION(s.Remove(0, 1), "IsUnlocked()");
  EXPECT_ASSERTION(s.Clear(), "IsUnlocked()");
  s.Unlock();
  EXPECT_TRUE(s.IsUnlocked());
  EXPECT_STREQ("direct", s.Chars());
  EXPECT_EQ(6, s.Length());

  buf = s.Lock(4);
  std::memcpy(buf, "wxyz", 4);
  s.Unlock(2);
  EXPECT_STREQ("wx", s.Chars());
}

// The searches at their edges: starts before, at and past the end, an empty
// needle, a match at the very end, and text after an embedded match of the
// first character only; the same in UTF-16.
TEST(String, SearchesAtTheirEdges) {
  const CStr s("aab<ab>ab");
  EXPECT_EQ(1, s.Find("ab"));
  EXPECT_EQ(4, s.Find("ab", 2));
  EXPECT_EQ(7, s.Find("ab", 5));
  EXPECT_EQ(-1, s.Find("ab", 8));
  EXPECT_EQ(1, s.Find("ab", -5));
  EXPECT_EQ(-1, s.Find("abx"));
  EXPECT_EQ(-1, s.Find("ab>ab>"));
  EXPECT_EQ(3, s.Find("<"));
  EXPECT_EQ(9, s.Find("", 9));
  EXPECT_EQ(-1, s.Find("", 10));
  EXPECT_EQ(6, s.Find('>', 3));
  EXPECT_EQ(-1, s.Find('>', 7));
  EXPECT_EQ(-1, s.Find('a', 9));
  EXPECT_EQ(-1, s.Find('a', 99));
  EXPECT_EQ(0, s.Find('a', -1));
  EXPECT_EQ(-1, CStr().Find('a'));
  EXPECT_EQ(-1, CStr().Find("a"));

  const CWStr w(u"aab<ab>ab");
  EXPECT_EQ(4, w.Find(u"ab", 2));
  EXPECT_EQ(7, w.Find(u"ab", 5));
  EXPECT_EQ(-1, w.Find(u"ab", 8));
  EXPECT_EQ(6, w.Find(u'>', 3));
  EXPECT_EQ(-1, w.Find(u'<', 4));
  // A character whose low byte is '<' is not '<'.
  EXPECT_EQ(-1, CWStr(u"\u013C\u3C00").Find(u'<'));
  const CWStr mixed(u"\u3C00\u013C<\u3C3C<a");
  EXPECT_EQ(2, mixed.Find(u'<'));
  EXPECT_EQ(4, mixed.Find(u'<', 3));
  EXPECT_EQ(4, mixed.Find(u"<a"));
  EXPECT_EQ(3, mixed.Find(u"\u3C3C"));
  EXPECT_EQ(-1, mixed.Find(u"a<"));
}

TEST(String, EditingOperations) {
  CStr s("hello world");
  s.Insert(5, ",");
  EXPECT_STREQ("hello, world", s.Chars());
  s.Remove(0, 7);
  EXPECT_STREQ("world", s.Chars());
  s.Insert(0, s.Chars() + 3);  // inserting a part of itself
  EXPECT_STREQ("ldworld", s.Chars());
  EXPECT_EQ(2, s.Find("wor"));
  {
    CStr r("a<name>b");
    r.Replace(1, 6, "value");
    EXPECT_STREQ("avalueb", r.Chars());
    r.Replace(1, 5, "V");
    EXPECT_STREQ("aVb", r.Chars());
    r.Replace(3, 9, r.Chars());  // at the end, a copy of itself
    EXPECT_STREQ("aVbaVb", r.Chars());
    r.Replace(0, 99, "");
    EXPECT_STREQ("", r.Chars());
    EXPECT_ASSERTION(r.Replace(1, 0, "x"), "(start >= 0) && (start <= mLen)");
    CWStr w(u"<A><A>");
    w.Replace(3, 3, u"long value");
    EXPECT_TRUE(w == u"<A>long value");
  }
  EXPECT_EQ(-1, s.Find("xyz"));
  EXPECT_EQ(6, s.Find('d', 2));
  EXPECT_STREQ("wor", s.Mid(2, 3).Chars());
  EXPECT_STREQ("rld", s.Mid(4).Chars());
  EXPECT_ASSERTION(s.Insert(99, "x"), "(pos >= 0) && (pos <= mLen)");
  EXPECT_ASSERTION(s.Mid(-1), "(start >= 0) && (start <= mLen)");
  s.Truncate(2);
  EXPECT_TRUE(s == "ld");
  EXPECT_TRUE(CStr("a") < CStr("ab"));
  CStr moved(std::move(s));
  EXPECT_STREQ("ld", moved.Chars());
  EXPECT_TRUE(s.IsEmpty());  // NOLINT: checking the moved-from state
}

TEST(String, FormattingFitsOrRetriesOnce) {
  CStr s;
  s.Format("%s-%d-%04X", "ab", -12, 0xBEEFu);
  EXPECT_STREQ("ab--12-BEEF", s.Chars());

  const std::string longText(5000, 'q');
  s.Format("<%s>", longText.c_str());
  EXPECT_EQ(5002, s.Length());
  EXPECT_EQ('<', s[0]);
  EXPECT_EQ('>', s[5001]);

  // 999 characters fit the first try; 1000 need the retry.
  s.Format("%s", std::string(999, 'a').c_str());
  EXPECT_EQ(999, s.Length());
  s.Format("%s", std::string(1000, 'b').c_str());
  EXPECT_EQ(1000, s.Length());
  EXPECT_EQ('b', s[999]);

  s.AppendFormat("%c%c", 'x', 'y');
  EXPECT_EQ(1002, s.Length());
  EXPECT_EQ('y', s[1001]);
}

namespace {

int gCalls = 0;

int FailingFormat(char*, std::size_t, const char*, va_list) { return -3; }

// Asks for more room every time, as a broken vsnprintf would.
int InsatiableFormat(char* buf, std::size_t size, const char*, va_list) {
  ++gCalls;
  if (size > 0) buf[0] = 0;
  return static_cast<int>(size) + 500;
}

struct FormatFunctionScope {
  explicit FormatFunctionScope(Str::VFormatFunction f)
      : old(Str::SetVFormatFunction(f)) {}
  ~FormatFunctionScope() { Str::SetVFormatFunction(old); }
  Str::VFormatFunction old;
};

}  // namespace

TEST(String, FormattingFailuresAreAssertions) {
  CStr s("before");
  {
    FormatFunctionScope scope(FailingFormat);
    EXPECT_ASSERTION(s.Format("%d", 1), "vsnprintf returns error: -3");
  }
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_TRUE(s.IsUnlocked());
  {
    gCalls = 0;
    FormatFunctionScope scope(InsatiableFormat);
    EXPECT_ASSERTION(s.Format("%d", 1),
                     "vsnprintf didn't honor its desired buffer size: bufLen = "
                     "1501, bufNeeded = 2001");
    EXPECT_EQ(2, gCalls);  // exactly one retry
  }
  EXPECT_TRUE(s.IsUnlocked());
  s.Format("%d", 5);
  EXPECT_STREQ("5", s.Chars());
}

TEST(WideString, FormattingAndConversion) {
  CWStr w;
  w.Format(u"%d:%s", 42, "ab");
  EXPECT_TRUE(w == u"42:ab");
  w.Format(u"%s", std::string(3000, 'w').c_str());
  EXPECT_EQ(3000, w.Length());

  CWStr wide = Str::ToWide("Zendra");
  EXPECT_TRUE(wide == u"Zendra");
  EXPECT_STREQ("Zendra", WStr::ToNarrow(wide.Chars()).Chars());
  EXPECT_EQ(3, WStr::Length(u"abc"));
  EXPECT_EQ(nullptr, WStr::Find(u"abc", u'z'));
}

TEST(StrHelpers, NullSafeBasics) {
  EXPECT_EQ(0, Str::Length(nullptr));
  EXPECT_EQ(3, Str::Length("abc"));
  EXPECT_EQ(nullptr, Str::Find(nullptr, 'a'));
  EXPECT_STREQ("c", Str::Find("abc", 'c'));
  EXPECT_TRUE(Str::StartsWith("verbose", "verb"));
  EXPECT_FALSE(Str::StartsWith("ver", "verb"));
  EXPECT_TRUE(Str::Equal(nullptr, ""));
  char buf[8];
  EXPECT_EQ(11, [&](const char* f, ...) {
    va_list a;
    va_start(a, f);
    Int n = Str::VFormat(buf, f, a);
    va_end(a);
    return n;
  }("%s", "hello world"));
  EXPECT_STREQ("hello w", buf);
}

TEST(StrHelpers, OneBlankTestOneLengthOneTableCount) {
  EXPECT_TRUE(Str::IsBlank(nullptr));
  EXPECT_TRUE(Str::IsBlank(""));
  EXPECT_TRUE(Str::IsBlank(" \t\r\n\v\f"));
  EXPECT_FALSE(Str::IsBlank("  x "));

  EXPECT_EQ(0, TextLength(static_cast<const char*>(nullptr)));
  EXPECT_EQ(0, TextLength(static_cast<const char16_t*>(nullptr)));
  EXPECT_EQ(3, TextLength("abc"));
  EXPECT_EQ(4, TextLength(u"abcd"));

  const char* const names[] = {"a", "b", "c"};
  static_assert(CountOf(names) == 3, "a table's entries");
  EXPECT_EQ(3, CountOf(names));
}
