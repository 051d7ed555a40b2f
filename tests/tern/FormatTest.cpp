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

std::vector<std::string> gReports;
void CollectReport(const char* text) { gReports.push_back(text); }

}  // namespace

TEST(Format, IntegerConversionsAndPadding) {
  EXPECT_EQ("0x80000002",
            Int32Text("0x<N:08X>", static_cast<Int32>(0x80000002u)));
  EXPECT_EQ("0x00000005", Int32Text("0x<N:08X>", 5));
  EXPECT_EQ("03", Int32Text("<N:02d>", 3));
  EXPECT_EQ("123", Int32Text("<N:02d>", 123));  // width is a minimum
  EXPECT_EQ("00-5", Int32Text("<N:04d>", -5));  // fill before the sign
  EXPECT_EQ("  -5", Int32Text("<N:4d>", -5));
  EXPECT_EQ("-5", Int32Text("<N>", -5));
  EXPECT_EQ("0", Int32Text("<N>", 0));
  EXPECT_EQ("ffffffff", Int32Text("<N:x>", -1));
  EXPECT_EQ("17", Int32Text("<N:o>", 15));
  EXPECT_EQ("A", Int32Text("<N:c>", 'A'));
  EXPECT_EQ("a=7, b=7", Int32Text("a=<N>, b=<N:d>", 7));
}

TEST(Format, BadConversionsAssertAndPrintDecimal) {
  EXPECT_ASSERTION(Int32Text("<N:u>", 5), "bad format character");
  EXPECT_ASSERTION(Int32Text("<N:5>", 5), "bad format character");
  EXPECT_ASSERTION(Int32Text("<N:5q>", 5),
                   "DecodeFormatSpec(fmtSpecStr,fmtSpec)");
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ("42", Int32Text("<N:u>", 42));
  EXPECT_EQ("    5", Int32Text("<N:5>", 5));
  EXPECT_EQ("5",
            Int32Text("<N:5q>", 5));  // defaults after a bad format fmtSpec
}

TEST(Format, BadFormatIsReportedOnceAndIntegersGoDecimal) {
  EXPECT_ASSERTION(Int32Text("<N:q>", 42),
                   "DecodeFormatSpec(fmtSpecStr,fmtSpec)");
  TestSupport::ReportingAssertions reporting;
  gReports.clear();
  SetDebugOutputSink(CollectReport);
  const std::string text = Int32Text("<N:q>", 42);
  CWFormat wide(u"<N:7z>", nullptr, CWFormat::fmtNoGlobalExpansion);
  wide.Item(u"N", static_cast<Int32>(-3));
  SetDebugOutputSink(nullptr);
  EXPECT_EQ("42", text);  // the defaults: decimal, no width
  EXPECT_TRUE(wide.Result() == u"-3");
  ASSERT_EQ(2u, gReports.size());  // one for each bad format, nothing more
  for (const std::string& report : gReports)
    EXPECT_NE(std::string::npos,
              report.find("Assert( DecodeFormatSpec(fmtSpecStr,fmtSpec) );"))
        << report;
}

TEST(Format, SpecLimitAndUnknownNames) {
  // A format spec of 11 characters makes the placeholder not match at all.
  EXPECT_EQ("<N:12345678901d>", Int32Text("<N:12345678901d>", 1));
  // Ten characters is still a format spec.
  EXPECT_EQ("0000000001", Int32Text("<N:000000010d>", 1));
  EXPECT_EQ("a<b>c", Int32Text("a<b>c", 1));
  EXPECT_EQ("<Nx> <N", Int32Text("<Nx> <N", 1));
  EXPECT_EQ("<N:3d", Int32Text("<N:3d", 1));
  CFormat f("nothing here", nullptr, cPlain);
  EXPECT_FALSE(f.Item("N", static_cast<Int32>(1)));
}

TEST(Format, StringsAndOtherItems) {
  CFormat f("[<S:5>] [<S:d>] [<S>] <U:X> <D> <B:6>", nullptr, cPlain);
  EXPECT_TRUE(f.Item("S", "ab"));
  f.Item("U", static_cast<UInt32>(0xBEEF));
  f.Item("D", 2.5);
  f.Item("B", true);
  EXPECT_STREQ("[   ab] [ab] [ab] BEEF 2.5   True", f.Result().Chars());

  CFormat u("<U> <U:u>", nullptr, cPlain);
  u.Item("U", static_cast<UInt32>(4000000000u));
  EXPECT_STREQ("4000000000 4000000000", u.Result().Chars());

  // Items whose text holds the placeholder are not formatted again.
  CFormat loop("<S>", nullptr, cPlain);
  loop.Item("S", "<S><S>");
  EXPECT_STREQ("<S><S>", loop.Result().Chars());

  EXPECT_ASSERTION(CFormat("x", "<", cPlain), "Str::Length(delims) == 2");
  CFormat checks("x", nullptr, cPlain);
  EXPECT_ASSERTION(checks.Item("", "v"), "var && (Str::Length(var) > 0)");
  EXPECT_ASSERTION(checks.Item("N", nullptr, CFormat::FormatString), "item");
  EXPECT_ASSERTION(checks.Item("N", "v", nullptr), "fmtFunc");
}

TEST(Format, OtherDelimitersAndGlobalExpansion) {
  CVarList::Global().Set("FmtTestApp", "Zendra");
  CVarList::Global().Set("FmtTestSetup", "<FmtTestApp> Setup");

  CFormat square("<N> [N] [FmtTestApp]", "[]");
  square.Item("N", static_cast<Int32>(9));
  EXPECT_STREQ("<N> 9 Zendra", square.Result().Chars());

  CFormat nested("<FmtTestSetup> needs <KB:d>K", nullptr);
  nested.Item("KB", static_cast<Int32>(512));
  EXPECT_STREQ("Zendra Setup needs 512K", nested.Result().Chars());

  CFormat plain("<FmtTestApp>", nullptr, cPlain);
  EXPECT_STREQ("<FmtTestApp>", plain.Result().Chars());

  CWFormat wide(u"<FmtTestSetup>: <N:03d> <S:4>");
  wide.Item(u"N", static_cast<Int32>(7));
  wide.Item(u"S", u"\u00e9t\u00e9");
  EXPECT_TRUE(wide.Result() == u"Zendra Setup: 007  \u00e9t\u00e9");
}

TEST(Format, DecodeFormatSpec) {
  CFormatSpec fmtSpec;
  EXPECT_TRUE(DecodeFormatSpec("08X", fmtSpec));
  EXPECT_EQ('0', fmtSpec.fill);
  EXPECT_EQ(8, fmtSpec.width);
  EXPECT_EQ('X', fmtSpec.conversion);
  EXPECT_TRUE(DecodeFormatSpec("", fmtSpec));
  EXPECT_EQ(' ', fmtSpec.fill);
  EXPECT_EQ(0, fmtSpec.width);
  EXPECT_EQ(0, fmtSpec.conversion);
  EXPECT_TRUE(DecodeFormatSpec("12", fmtSpec));
  EXPECT_EQ(12, fmtSpec.width);
  EXPECT_FALSE(DecodeFormatSpec("x5", fmtSpec));
  EXPECT_FALSE(DecodeFormatSpec("5dd", fmtSpec));
  EXPECT_FALSE(DecodeFormatSpec("12345678901", fmtSpec));
  EXPECT_TRUE(DecodeFormatSpec(u"02d", fmtSpec));
}

TEST(Format, PathsPrintTheirSystemTextOrBadPath) {
  CPath fonts("C:\\Windows\\Fonts\\lattice.ttf");
  CFormat line("Could not copy font file <src> to <dest>, error <error>",
               nullptr, CFormat::fmtNoGlobalExpansion);
  EXPECT_TRUE(line.Item("src", fonts));
  EXPECT_TRUE(line.Item("dest", CPath()));
  EXPECT_TRUE(line.Item("error", "E_DiskFull"));
  EXPECT_STREQ(
      "Could not copy font file C:\\Windows\\Fonts\\lattice.ttf to (bad path), "
      "error E_DiskFull",
      line.Result().Chars());
  // A width pads the path text like any other text.
  CFormat padded("[<P:12>]", nullptr, CFormat::fmtNoGlobalExpansion);
  padded.Item("P", CPath("C:\\a"));
  EXPECT_STREQ("[        C:\\a]", padded.Result().Chars());
  CWFormat wide(u"<P>", nullptr, CWFormat::fmtNoGlobalExpansion);
  wide.Item(u"P", CPath());
  EXPECT_TRUE(wide.Result() == CWStr(u"(bad path)"));
}

// Ten digits of width would not fit the width's type, and a field that wide
// would take the memory of the whole program: widths above 1024 make the
// format spec invalid, so the item prints with the defaults.
TEST(Format, WidthsAbove1024AreInvalid) {
  CFormatSpec fmtSpec;
  EXPECT_TRUE(DecodeFormatSpec("01024d", fmtSpec));
  EXPECT_EQ(1024, fmtSpec.width);
  EXPECT_FALSE(DecodeFormatSpec("1025", fmtSpec));
  EXPECT_FALSE(DecodeFormatSpec("9999999999", fmtSpec));
  EXPECT_FALSE(DecodeFormatSpec(u"04294967296", fmtSpec));
  EXPECT_EQ(0, fmtSpec.width);
  EXPECT_EQ(' ', fmtSpec.fill);

  EXPECT_EQ(std::string(1023, '0') + "7", Int32Text("<N:01024d>", 7));
  EXPECT_ASSERTION(Int32Text("<N:099999999d>", 7),
                   "DecodeFormatSpec(fmtSpecStr,fmtSpec)");
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ("7", Int32Text("<N:099999999d>", 7));
  CFormat text("[<S:2147483648>]", nullptr, cPlain);
  text.Item("S", "ab");
  EXPECT_STREQ("[ab]", text.Result().Chars());
}

TEST(Format, ManyPlaceholdersInOneText) {
  CStr templ, expected;
  for (int i = 0; i < 3000; ++i) {
    templ += "<N> <N:4> <Other> <N:12345678901d> <N";
    expected += "ab   ab <Other> <N:12345678901d> <N";
  }
  CFormat fmt(templ.Chars(), nullptr, CFormat::fmtNoGlobalExpansion);
  EXPECT_TRUE(fmt.Item("N", "ab"));
  EXPECT_STREQ(expected.Chars(), fmt.Result().Chars());
}

namespace {
bool Refuse(const char*, const void*, CStr&) { return false; }
bool Echo(const char*, const void*, CStr& out) {
  out = "<N>";  // what was put in is not searched again
  return true;
}
}  // namespace

TEST(Format, InsertedTextIsNotSearchedAgain) {
  CFormat echo("a<N>b<N:5>c", nullptr, CFormat::fmtNoGlobalExpansion);
  int item = 0;
  EXPECT_TRUE(echo.Item("N", &item, Echo));
  EXPECT_STREQ("a<N>b<N>c", echo.Result().Chars());
  // A refused item still takes its placeholder away.
  CFormat refused("a<N>b<N:0123456789>c<N:01234567890>", nullptr,
                  CFormat::fmtNoGlobalExpansion);
  EXPECT_TRUE(refused.Item("N", &item, Refuse));
  EXPECT_STREQ("abc<N:01234567890>", refused.Result().Chars());
}
