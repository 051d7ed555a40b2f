#include <string>
#include <vector>

#include "TFileSystem.h"
#include "TFormat.h"
#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

const UInt32 cPlain = CFormat::fmtNoGlobalExpansion;

std::string Int32Text(const char* templ, Int32 value) {
  CFormat f(templ, nullptr, cPlain);
  f.Item("N", value);
  return f.Result().Chars();
}

}  // namespace

TEST(Format, IntegerPlaceholders) {
  const struct {
    const char* templ;
    Int32 value;
    std::string text;
  } cases[] = {
      {"0x<N:08X>", static_cast<Int32>(0x80000002u), "0x80000002"},
      {"<N>|<N:1d>|<N:04d>|<N:4d>", -5, "-5|-5|00-5|  -5"},  // fill before "-"
      {"<N:x> <N:o> <N:c>", 65, "41 101 A"},
      // A format of 11 characters makes no placeholder; ten still do.
      {"<N:12345678901d><N:000000010d>", 1, "<N:12345678901d>0000000001"},
      {"a<b>c <Nx> <N:3d <N", 1, "a<b>c <Nx> <N:3d <N"},
      {"<N:01024d>", 7, std::string(1023, '0') + "7"}};
  for (const auto& c : cases)
    EXPECT_EQ(c.text, Int32Text(c.templ, c.value)) << c.templ;
}

// A bad format asserts once and the item prints with the defaults. Widths
// above 1024 are bad: ten digits overflowed the width, a huge one took
// minutes to pad.
TEST(Format, BadFormatsAssertOnceAndUseTheDefaults) {
  const char* const decode = "DecodeFormatSpec(fmtSpecStr,fmtSpec)";
  static std::vector<std::string> reports;
  const struct {
    const char *templ, *assertion, *text;
  } cases[] = {{"<N:u>", "bad format character", "42"},
               {"<N:5>", "bad format character", "   42"},
               {"<N:5q>", decode, "42"},
               {"<N:099999999d>", decode, "42"},
               {"<N:9999999999>", decode, "42"}};
  for (const auto& c : cases) {
    EXPECT_ASSERTION(Int32Text(c.templ, 42), c.assertion);
    TestSupport::ReportingAssertions reporting;
    reports.clear();
    SetDebugOutputSink([](const char* text) { reports.push_back(text); });
    EXPECT_EQ(c.text, Int32Text(c.templ, 42)) << c.templ;
    SetDebugOutputSink(nullptr);
    ASSERT_EQ(1u, reports.size()) << c.templ;
    EXPECT_NE(std::string::npos, reports[0].find(c.assertion)) << reports[0];
  }
}

TEST(Format, OtherItemsDelimitersAndGlobalExpansion) {
  // What an item puts in is not searched again.
  CFormat f("[<S:5>]<S> <U:X> <U:u> <D> <B:6> <P:6> <Bad>", nullptr, cPlain);
  EXPECT_TRUE(f.Item("S", "<S>"));
  f.Item("U", static_cast<UInt32>(4000000000u));
  f.Item("D", 2.5);
  f.Item("B", true);
  f.Item("P", CPath("C:/a"));
  f.Item("Bad", CPath());
  EXPECT_STREQ("[  <S>]<S> EE6B2800 4000000000 2.5   True   C:\\a (bad path)",
               f.Result().Chars());
  CVarList::Global().Set("FmtTestApp", "Zendra");
  CVarList::Global().Set("FmtTestSetup", "[FmtTestApp] Setup");
  CFormat square("<N> [N] [FmtTestSetup]", "[]");
  square.Item("N", static_cast<Int32>(9));
  EXPECT_STREQ("<N> 9 Zendra Setup", square.Result().Chars());
}
