#include "TErrorHandler.h"
#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

// Global variables set for one test and removed again by value reset.
struct GlobalVariable {
  GlobalVariable(const char* name, const char* value) : mName(name) {
    CVarList::Global().Set(name, value);
  }
  ~GlobalVariable() { CVarList::Global().Set(mName, ""); }
  const char* mName;
};

}  // namespace

TEST(ErrorHandler, OperationStack) {
  CIgnoreErrorHandler handler;
  EXPECT_EQ(0, handler.OperationDepth());
  EXPECT_ASSERTION(handler.PopOperation(), "IsValidIndex(i)");
  EXPECT_ASSERTION(handler.OperationFile(), "IsValidIndex(i)");

  handler.PushOperation("Copy files", "pvt\\FileSystem", 120);
  handler.PushOperation(CStr("inner"));
  EXPECT_EQ(2, handler.OperationDepth());
  EXPECT_STREQ("", handler.OperationFile());
  EXPECT_EQ(0, handler.OperationLine());
  handler.CountError();
  handler.CountError();
  EXPECT_EQ(2, handler.OperationErrorCount());
  handler.PopOperation();
  EXPECT_STREQ("pvt\\FileSystem", handler.OperationFile());
  EXPECT_EQ(120, handler.OperationLine());
  EXPECT_EQ(0, handler.OperationErrorCount());
}

TEST(ErrorHandler, PrefixStack) {
  CIgnoreErrorHandler handler;
  CStr prefix("stale");
  handler.GetPrefix(prefix);
  EXPECT_TRUE(prefix.IsEmpty());
  EXPECT_ASSERTION(handler.PrefixCount(), "IsValidIndex(i)");

  handler.PushPrefix(E_NotFound);
  handler.GetPrefix(prefix);
  EXPECT_STREQ("E_NotFound", prefix.Chars());
  handler.PushPrefix("Copying");
  handler.CountPrefix();
  EXPECT_EQ(1, handler.PrefixCount());
  handler.PopPrefix();
  handler.GetPrefix(prefix);
  EXPECT_STREQ("E_NotFound", prefix.Chars());
  EXPECT_EQ(0, handler.PrefixCount());
  // The destructor pops what is still pushed.
}

TEST(ErrorHandler, IgnoreHandlerAnswersWithTheDefault) {
  CIgnoreErrorHandler handler;
  EXPECT_EQ(7, handler.Decide(E_NoAccess, "question", 7));
  EXPECT_EQ(0, handler.Decide(Ok, "question", 0));
  EXPECT_FALSE(handler.Query());
}

TEST(ErrorHandler, ReportWrapsAndFillsVariables) {
  GlobalVariable product("ProductName", "Zendra");
  CIgnoreErrorHandler handler;
  CStr out("stale");

  handler.ReportMessage("<ProductName> failed", 0, out);
  EXPECT_STREQ("Zendra failed", out.Chars());

  handler.ReportMessage("disk full", 0x010000, out);
  EXPECT_STREQ("Error: disk full", out.Chars());
  handler.ReportMessage("check <ProductName>", 0x020000, out);
  EXPECT_STREQ("Warning: check Zendra", out.Chars());

  // Other values of bits 16-23 leave the text unwrapped.
  handler.ReportMessage("as is", 0x040000, out);
  EXPECT_STREQ("as is", out.Chars());

  // Without an operation the position variables stay unfilled.
  handler.ReportMessage("x", 0x030000, out);
  EXPECT_STREQ("Internal error in <ErrFile> at line <ErrLine>:\nx",
               out.Chars());

  handler.PushOperation("Registry script", "pvt\\Registry_Win", 88);
  handler.ReportMessage("no root key (a<msg>b)", 0x030000, out);
  EXPECT_STREQ(
      "Internal error in pvt\\Registry_Win at line 88:\nno root key (a<msg>b)",
      out.Chars());
  EXPECT_ASSERTION(handler.ReportMessage(nullptr, 0, out), "msg");
}

TEST(ErrorHandler, MessageIndexRanges) {
  CIgnoreErrorHandler handler;
  CStr text;
  handler.LoadMessage(3, text);
  EXPECT_STREQ("Error: <msg>", text.Chars());
  handler.LoadMessage(800, text);
  EXPECT_STREQ("(no message)", text.Chars());
  handler.LoadMessage(799, text);
  EXPECT_STREQ("", text.Chars());
  text = "stale";
  EXPECT_ASSERTION(handler.LoadMessage(1000, text), "Invalid message index");
  EXPECT_ASSERTION(handler.LoadMessage(-1, text), "Invalid message index");
  {
    TestSupport::ReportingAssertions reporting;
    text = "stale";
    handler.LoadMessage(1000, text);
    EXPECT_TRUE(text.IsEmpty());
  }
}
