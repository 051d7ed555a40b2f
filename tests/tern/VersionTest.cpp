#include <string>

#include "TVersion.h"
#include "TestSupport.h"

using namespace Tern;

static CVersion Parsed(const char* text) {
  CVersion v;
  EXPECT_EQ(Ok, v.Parse(text)) << text;
  return v;
}

// Every form parses back to the same version and the same text.
TEST(Version, TextsParseBack) {
  EXPECT_STREQ("4.02b beta 0", CVersion(4, 2, 'b', 100).Text().Chars());
  EXPECT_STREQ("4.02 beta 5",
               Parsed(" 4.2beta5; built Tuesday").Text().Chars());
  for (const CVersion& v :
       {CVersion(4, 2), CVersion(4, 2, 'b'), CVersion(4, 2, 0, 99),
        CVersion(0, 0, 'z', 155), CVersion(255, 99, 'a', 1)}) {
    for (Int form :
         {CVersion::vfDisplay, CVersion::vfDotted, CVersion::vfResource}) {
      const CStr text = v.Text(form);
      const CVersion back = Parsed(text.Chars());
      EXPECT_FALSE(back.IsGreater(v) || v.IsGreater(back)) << text.Chars();
      EXPECT_STREQ(text.Chars(), back.Text(form).Chars());
    }
  }
}

TEST(Version, ParseRejectsWhatIsNotAVersion) {
  for (const char* bad : {"", "4", "four.two", "4.", "4.02 gamma 1", "4.02bc",
                          "4.2.0", "4.2.0.0.0", "4.2,0,0", "4.02 alpha 0",
                          "4.02 alpha", "4.02 beta 200"}) {
    CVersion v(1, 1);
    EXPECT_NE(Ok, v.Parse(bad)) << bad;
    EXPECT_FALSE(v.IsValid()) << bad;
  }
  CVersion v;
  EXPECT_EQ(E_BadSyntax, v.Parse(std::string(100, '1').c_str()));
  EXPECT_ASSERTION(v.Parse("256.1"), "(tmp>=0) && (tmp<= 0xFF)");
}

TEST(Version, Ordering) {
  // Each greater than the next; a release beats its betas, any beta any alpha,
  // a revision letter its prereleases.
  const char* const ordered[] = {
      "5.00", "4.10",        "4.09 beta 1", "4.02b",        "4.02a alpha 1",
      "4.02", "4.02 beta 9", "4.02 beta 1", "4.02 alpha 50"};
  for (Int i = 0; i + 1 < CountOf(ordered); ++i) {
    EXPECT_TRUE(Parsed(ordered[i]).IsGreater(Parsed(ordered[i + 1])))
        << ordered[i] << " > " << ordered[i + 1];
    EXPECT_FALSE(Parsed(ordered[i + 1]).IsGreater(Parsed(ordered[i])));
  }
  EXPECT_FALSE(Parsed("4.2.0.0").IsGreater(Parsed("4.02")));
}
