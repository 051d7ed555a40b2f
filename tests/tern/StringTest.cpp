#include <string>

#include "TStr.h"
#include "TString.h"
#include "TestSupport.h"

using namespace Tern;

// Starts before, at and past the end, an empty needle, a needle longer than
// the rest, a match at the very end; the same in UTF-16.
TEST(String, SearchesAtTheirEdges) {
  const CStr s("aab<ab>ab");
  const CWStr w(Str::ToWide(s.Chars()));
  const struct {
    const char* needle;
    Int start, found;
  } cases[] = {{"ab", 0, 1},  {"ab", 2, 4},   {"ab", 5, 7},      {"ab", 8, -1},
               {"ab", -5, 1}, {"abx", 0, -1}, {"ab>ab>", 0, -1}, {"", 9, 9},
               {"", 10, -1},  {">", 3, 6},    {">", 7, -1},      {"a", 9, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.needle) + " from " + std::to_string(c.start));
    EXPECT_EQ(c.found, s.Find(c.needle, c.start));
    EXPECT_EQ(c.found, w.Find(Str::ToWide(c.needle).Chars(), c.start));
    if (c.needle[0] && !c.needle[1]) {
      EXPECT_EQ(c.found, s.Find(c.needle[0], c.start));
    }
  }
  // UTF-16: a character with '<' as one of its bytes is not '<'.
  EXPECT_EQ(-1, CWStr(u"\u013C\u3C00").Find(u'<'));
  EXPECT_EQ(4, CWStr(u"\u3C00\u013C<\u3C3C<a").Find(u"<a", 3));
}

TEST(String, EditingWithPartsOfItself) {
  CStr s("world");
  s.Insert(0, s.Chars() + 3);
  EXPECT_STREQ("ldworld", s.Chars());
  s.Replace(1, 5, "V");
  s.Replace(3, 9, s.Chars());  // at the end, a copy of itself
  EXPECT_STREQ("lVdlVd", s.Chars());
  s.Replace(0, 99, "");
  EXPECT_STREQ("", s.Chars());
  EXPECT_ASSERTION(s.Replace(1, 0, "x"), "(start >= 0) && (start <= mLen)");
}

// A first try of 1000 characters, and one retry with the length it asked for.
TEST(String, FormattingFitsOrRetriesOnce) {
  CStr s;
  for (int length : {999, 1000, 5000}) {
    s.Format("%s", std::string(length, 'b').c_str());
    EXPECT_EQ(std::string(length, 'b'), s.Chars());
  }
  s.AppendFormat("%c%d", 'x', -12);
  EXPECT_EQ(std::string(5000, 'b') + "x-12", s.Chars());
  CWStr w;
  w.Format(u"%s", std::string(3000, 'w').c_str());
  EXPECT_TRUE(w == Str::ToWide(std::string(3000, 'w').c_str()));
}
