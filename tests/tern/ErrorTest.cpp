#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "TError.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

struct NamedCode {
  UInt32 code;
  const char* name;
};

// Every defined code with its name, written out from the tables' values.
const NamedCode cAllCodes[] = {
    {0x00000200, "Ok"},
    {0x00000201, "S_End"},
    {0x00000202, "S_Busy"},
    {0x80000200, "Failure"},
    {0x80000201, "E_AlreadyExists"},
    {0x80000202, "E_NotFound"},
    {0x80000203, "E_NoAccess"},
    {0x80000204, "E_BadArgument"},
    {0x80000205, "E_BadName"},
    {0x80000206, "E_AlreadyOpen"},
    {0x80000207, "E_NotOpen"},
    {0x80000208, "E_BadSyntax"},
    {0x80000209, "E_Read"},
    {0x8000020A, "E_Write"},
    {0x8000020B, "E_Alloc"},
    {0x8000020C, "E_Version"},
    {0x8000020D, "E_BadData"},
    {0x8000020F, "E_UnexpectedEOF"},
    {0x80000210, "E_Timeout"},
    {0x80000211, "E_BadLogonName"},
    {0x80000212, "E_BadLogonPassword"},
    {0x80000213, "E_UserCancel"},
    {0x80000214, "E_Memory"},
    {0x80000215, "E_TooMuchData"},
    {0x00000401, "S_FSIsDirectory"},
    {0x00000402, "S_FSIsFile"},
    {0x80000401, "E_DirNotEmpty"},
    {0x80000402, "E_DiskFull"},
    {0x80000403, "E_FSNotDirectory"},
    {0x80000404, "E_FSNotFile"},
    {0x80000405, "E_BadUserId"},
    {0x80000406, "E_BadPassword"},
    {0x80000407, "E_BadHostName"},
    {0x80000408, "E_NotConnected"},
    {0x00000501, "S_RegIsDirectory"},
    {0x00000502, "S_RegIsValue"},
    {0x00000781, "S_NewerFont"},
    {0x80000781, "E_BadFontFile"},
    {0x80000782, "E_CantAddFontToOS"},
    {0x80000783, "E_CantRemoveFontFromOS"},
    {0x80000784, "E_FontNotInstalled"},
    {0x80000785, "E_CantRemoveFontFromRegistry"},
    {0x80000880, "E_InternetBadHTTPStatus"},
    {0x80000881, "E_InternetResourceNotText"},
};

CError Code(UInt32 bits) { return CError(static_cast<Int32>(bits)); }

std::vector<std::string> gDebugOutput;
void CollectDebugOutput(const char* text) { gDebugOutput.push_back(text); }

}  // namespace

TEST(ErrorCode, BitLayoutAndSuccessTest) {
  EXPECT_EQ(0x200, Ok.Code());
  EXPECT_EQ(static_cast<Int32>(0x80000200u), Failure.Code());
  EXPECT_TRUE(Succeeded(Ok));
  EXPECT_TRUE(Succeeded(CError(0)));  // success is "not negative", not "== Ok"
  EXPECT_TRUE(Succeeded(S_FSIsFile));
  EXPECT_TRUE(Failed(E_NotFound));

  EXPECT_EQ(E_DirNotEmpty, CError::Make(true, modFileSystem, 1));
  EXPECT_EQ(S_NewerFont, CError::Make(false, modFontInstaller, 1));
  EXPECT_EQ(E_InternetBadHTTPStatus, CError::Make(true, modInternet, 0));
  EXPECT_EQ(modFontInstaller, E_CantAddFontToOS.Module());
  EXPECT_EQ(2, E_CantAddFontToOS.Number());
  EXPECT_EQ(-4, CError(0).Module());
}

TEST(ErrorCode, EveryDefinedCodeHasItsName) {
  for (const auto& c : cAllCodes)
    EXPECT_STREQ(c.name, ErrorName(Code(c.code))) << std::hex << c.code;
}

TEST(ErrorCode, UndefinedCodesAreUnknown) {
  // The gap in the generic failures: number 14 has no name.
  EXPECT_STREQ("(unknown error)", ErrorName(Code(0x8000020E)));
  // Module field 0 is module id -4, which no table has.
  EXPECT_STREQ("(unknown error)", ErrorName(CError(0)));
  EXPECT_STREQ("(unknown error)", ErrorName(Code(0x80000216)));
  EXPECT_STREQ("(unknown error)", ErrorName(Code(0x00000400)));
  // Module 5 (field 9) has no table.
  EXPECT_STREQ("(unknown error)", ErrorName(CError::Make(true, 5, 0)));
}

TEST(ErrorModuleTable, FiveTablesWithTheirIdsAndCounts) {
  struct {
    Int id;
    const char* name;
    Int count;
  } expected[] = {{0, "Gen", 24},
                  {4, "FileSystem", 10},
                  {6, "Reg", 2},
                  {11, "FontInstaller", 6},
                  {13, "Internet", 2}};
  for (const auto& e : expected) {
    const CErrorModuleTable* table = FindModuleTable(e.id);
    ASSERT_NE(nullptr, table) << e.name;
    EXPECT_STREQ(e.name, table->Name());
    EXPECT_EQ(e.count, table->EntryCount());
  }
  EXPECT_EQ(nullptr, FindModuleTable(1));
  EXPECT_EQ(nullptr, FindModuleTable(-4));

  int listed = 0;
  for (const CErrorModuleTable* t = CErrorModuleTable::First(); t;
       t = t->Next())
    ++listed;
  EXPECT_EQ(5, listed);

  // The generic table's Ok and Failure come from the exported constants.
  const CErrorModuleTable* gen = FindModuleTable(modGen);
  EXPECT_EQ(Ok.Code(), gen->Entries()[0].code);
  EXPECT_EQ(Failure.Code(), gen->Entries()[3].code);
}

TEST(ErrorModuleTable, LookupInTheWrongTableAsserts) {
  const CErrorModuleTable* gen = FindModuleTable(modGen);
  EXPECT_ASSERTION(gen->FindEntry(E_DirNotEmpty),
                   "error.Module() == mModuleId");
  EXPECT_EQ(nullptr, gen->FindEntry(Code(0x8000020E)));
}

TEST(ErrorModuleTable, RegistrationChecksNameAndDuplicateId) {
  static const CErrorEntry entries[] = {{0x200, "Ok"}};
  EXPECT_ASSERTION(CErrorModuleTable("Again", modReg, 1, entries),
                   "! FindModuleTable(modId)");
  EXPECT_ASSERTION(CErrorModuleTable(nullptr, 99, 1, entries), "modName");
  EXPECT_EQ(nullptr, FindModuleTable(99));
}

TEST(WindowsErrors, FixedTableInItsOrder) {
  struct {
    UInt32 number;
    CError code;
  } rows[] = {
      {2, E_NotFound},      {3, E_NotFound},       {53, E_NotFound},
      {20, E_NotFound},     {126, E_NotFound},     {64, E_NotFound},
      {14, E_Alloc},        {80, E_AlreadyExists}, {183, E_AlreadyExists},
      {160, E_BadArgument}, {111, E_BadArgument},  {87, E_BadArgument},
      {6, E_BadArgument},   {123, E_BadArgument},  {67, E_BadArgument},
      {5, E_NoAccess},      {32, E_NoAccess},      {65, E_NoAccess},
      {86, E_BadName},      {110, E_NotOpen},      {145, E_DirNotEmpty},
      {16, Failure},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.code, ErrorFromWindows(row.number)) << row.number;
    CError mapped;
    EXPECT_TRUE(MapWindowsError(row.number, &mapped));
    EXPECT_EQ(row.code, mapped);
  }
  EXPECT_EQ(Ok, ErrorFromWindows(0));
  CError mapped;
  EXPECT_FALSE(MapWindowsError(1234, &mapped));
}

TEST(WindowsErrors, UnlistedNumberIsFailureAfterAnAssertion) {
  std::string caught;
  try {
    ErrorFromWindows(1234);
  } catch (const CAssertionFailure& failure) {
    caught = failure.what();
  }
  EXPECT_EQ(0u, caught.find("unknown Windows error: '")) << caught;
  EXPECT_NE(std::string::npos, caught.find("' (0x000004D2)")) << caught;
  EXPECT_NE(std::string::npos, std::string(SourceFile()).find("Error_"));

  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ(Failure, ErrorFromWindows(1234));
}

TEST(Assertions, ThrowingSwitchCarriesTheExpressionText) {
  int index = 5;
  EXPECT_ASSERTION(TERN_ASSERT(index < 3), "index < 3");
  EXPECT_ASSERTION(AssertFailed("value %d of %s", 7, "x"), "value 7 of x");
  EXPECT_NE(std::string::npos, std::string(SourceFile()).find("ErrorTest.cpp"));
}

TEST(Assertions, ReportNamesFileLineAndExpression) {
  TestSupport::ReportingAssertions reporting;
  gDebugOutput.clear();
  SetDebugOutputSink(CollectDebugOutput);
  Assert("IsReadable()", "pvt\\Stream", 42);
  Assert("mLen > 0", "pvt\\String", 7);
  SetDebugOutputSink(nullptr);

  ASSERT_EQ(2u, gDebugOutput.size());
  EXPECT_EQ("File: pvt\\Stream, Line#: 42\nAssert( IsReadable() );\n",
            gDebugOutput[0]);
  EXPECT_EQ("File: pvt\\String, Line#: 7\nAssert( mLen > 0 );\n",
            gDebugOutput[1]);
  EXPECT_STREQ(gDebugOutput[1].c_str(), LastAssertionReport());
  EXPECT_STREQ("pvt\\String", SourceFile());
  EXPECT_EQ(7, SourceLine());
}

TEST(Assertions, NullFormatReportsMsg) {
  const char* noFormat = nullptr;
  EXPECT_ASSERTION(AssertFailed(noFormat), "msg");
}

namespace {
// A debugger-output observer that fails an assertion itself, from inside the
// report: the nesting guard must catch it rather than recurse.
void AssertAgain(const char* text) {
  std::fputs(text, stderr);
  std::fflush(stderr);
  if (std::strstr(text, "nested") == nullptr) AssertFailed("inner");
}
}  // namespace

TEST(AssertionsDeathTest, NestedReportBreaksHard) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        SetAssertionsThrow(false);
        SetDebugOutputSink(AssertAgain);
        AssertFailed("outer");
      },
      "nested calls to AssertFailed");
}
