#include <string>

#include "TVersion.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

CVersion Parsed(const char* text) {
  CVersion v;
  EXPECT_EQ(Ok, v.Parse(text)) << text;
  return v;
}

std::string Display(const char* text) { return Parsed(text).Text().Chars(); }

}  // namespace

TEST(Version, ThreeForms) {
  CVersion v(4, 2);
  EXPECT_STREQ("4.02", v.Text(CVersion::vfDisplay).Chars());
  EXPECT_STREQ("4,2,0,0", v.Text(CVersion::vfResource).Chars());
  EXPECT_STREQ("4.2.0.0", v.Text(CVersion::vfDotted).Chars());
  EXPECT_STREQ("4.02 alpha 3", CVersion(4, 2, 0, 3).Text().Chars());
  EXPECT_STREQ("4.02 beta 5", CVersion(4, 2, 0, 105).Text().Chars());
  EXPECT_STREQ("4.02b beta 0", CVersion(4, 2, 'b', 100).Text().Chars());
  EXPECT_STREQ("4.2.98.105",
               CVersion(4, 2, 'b', 105).Text(CVersion::vfDotted).Chars());
  EXPECT_STREQ("12.34", CVersion(12, 34).Text().Chars());
}

TEST(Version, ParseReadsBackEveryForm) {
  const CVersion samples[] = {
      CVersion(4, 2),           CVersion(4, 2, 'b'),
      CVersion(4, 2, 0, 3),     CVersion(4, 2, 0, 99),
      CVersion(4, 2, 'a', 100), CVersion(0, 0, 'z', 155),
      CVersion(255, 99, 0, 1)};
  for (const CVersion& v : samples) {
    for (Int form :
         {CVersion::vfDisplay, CVersion::vfDotted, CVersion::vfResource}) {
      CStr text = v.Text(form);
      CVersion back;
      ASSERT_EQ(Ok, back.Parse(text.Chars())) << text.Chars();
      EXPECT_FALSE(back.IsGreater(v)) << text.Chars();
      EXPECT_FALSE(v.IsGreater(back)) << text.Chars();
      EXPECT_STREQ(text.Chars(), back.Text(form).Chars());
    }
  }
  EXPECT_EQ("4.02", Display("  4.2  "));
  EXPECT_EQ("4.02 beta 5", Display("4.02beta5; built on Tuesday"));
  EXPECT_EQ("4.02b alpha 7", Display("4.02b alpha 7"));
}

TEST(Version, ParseRejectsWhatIsNotAVersion) {
  for (const char* bad :
       {"", "4", "four.two", "4.", "4.02 gamma 1", "4.02bc", "4.2.0",
        "4.2.0.0.0", "4.02 alpha 0", "4.02 alpha", "4.02 beta 200"}) {
    CVersion v(1, 1);
    EXPECT_NE(Ok, v.Parse(bad)) << bad;
    EXPECT_FALSE(v.IsValid()) << bad;
  }
  CVersion v;
  EXPECT_EQ(E_BadSyntax, v.Parse(std::string(100, '1').c_str()));
  EXPECT_ASSERTION(v.Parse("256.1"), "(tmp>=0) && (tmp<= 0xFF)");
  EXPECT_ASSERTION(v.Text(), "IsValid()");
  EXPECT_ASSERTION(CVersion copy(v), "version.IsValid()");
}

TEST(Version, Ordering) {
  const CVersion release = Parsed("4.02");
  const CVersion beta9 = Parsed("4.02 beta 9");
  const CVersion beta1 = Parsed("4.02 beta 1");
  const CVersion alpha50 = Parsed("4.02 alpha 50");
  EXPECT_TRUE(release.IsGreater(beta9));
  EXPECT_TRUE(beta9.IsGreater(beta1));
  EXPECT_TRUE(beta1.IsGreater(alpha50));  // any beta beats any alpha
  EXPECT_TRUE(release.IsGreater(alpha50));
  EXPECT_FALSE(release.IsGreater(release));
  EXPECT_FALSE(beta9.IsGreater(release));
  EXPECT_FALSE(alpha50.IsGreater(beta1));

  EXPECT_TRUE(Parsed("4.02b").IsGreater(Parsed("4.02a")));
  EXPECT_TRUE(Parsed("4.02b").IsGreater(release));
  EXPECT_TRUE(Parsed("4.02a alpha 1").IsGreater(release));  // letter first
  EXPECT_TRUE(Parsed("4.10").IsGreater(Parsed("4.09")));
  EXPECT_TRUE(Parsed("5.00").IsGreater(Parsed("4.99")));
  EXPECT_FALSE(Parsed("4.2.0.0").IsGreater(release));
}
