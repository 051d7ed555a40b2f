#include "TErrorHandler.h"
#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;

TEST(ErrorHandler, ReportWrapsAndFillsVariables) {
  CVarList::Global().Set("ProductName", "Zendra");
  CIgnoreErrorHandler handler;
  const struct {
    const char *message, *report;
    UInt32 flags;
  } cases[] = {
      {"disk full", "Error: disk full", 0x010000},
      {"check <ProductName>", "Warning: check Zendra", 0x020000},
      {"as is", "as is", 0x040000},  // other wrappings leave the text alone
      {"x", "Internal error in <ErrFile> at line <ErrLine>:\nx", 0x030000}};
  CStr out;
  for (const auto& c : cases) {
    handler.ReportMessage(c.message, c.flags, out);
    EXPECT_STREQ(c.report, out.Chars()) << c.message;
  }
  // Inside an operation its position fills the internal error's text.
  handler.PushOperation("Registry script", "pvt\\Registry_Win", 88);
  handler.ReportMessage("no root key (a<msg>b)", 0x030000, out);
  EXPECT_STREQ(
      "Internal error in pvt\\Registry_Win at line 88:\nno root key (a<msg>b)",
      out.Chars());
  CVarList::Global().Set("ProductName", "");
}
