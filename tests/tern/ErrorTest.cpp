#include <string>

#include "TError.h"
#include "TestSupport.h"

using namespace Tern;

TEST(Error, NamesAndWindowsNumbers) {
  EXPECT_STREQ("Ok", ErrorName(Ok));  // entered during static initialisation
  EXPECT_STREQ("E_CantAddFontToOS", ErrorName(E_CantAddFontToOS));
  EXPECT_STREQ("S_FontSkipped", ErrorName(S_FontSkipped));
  EXPECT_STREQ("(unknown error)", ErrorName(CError::Make(true, modGen, 14)));
  EXPECT_EQ(E_NoAccess, ErrorFromWindows(5));
  // Ordinary failures, not internal errors: a full disk, a path too long,
  // a file another program has locked.
  for (UInt32 ordinary : {112u, 206u, 33u})
    EXPECT_NE(Failure, ErrorFromWindows(ordinary)) << ordinary;
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ(Failure, ErrorFromWindows(1234));  // after an internal error
  const std::string report = LastAssertionReport();
  EXPECT_NE(std::string::npos, report.find("Assert( unknown Windows error: '"));
  EXPECT_NE(std::string::npos, report.find("' (0x000004D2) );\n")) << report;
  Assert("mLen > 0", "pvt\\String", 7);
  EXPECT_STREQ("File: pvt\\String, Line#: 7\nAssert( mLen > 0 );\n",
               LastAssertionReport());
}
