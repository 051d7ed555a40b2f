// The registry script's text apart from the registry: lines and their parts.
#include "TRegistryScript.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

std::vector<std::string> Lines(const char* text) {
  CStringStream script(text);
  std::vector<std::string> lines;
  for (bool more = true; more;) {
    CStr line;
    more = ReadRegistryScriptLine(script, line);
    lines.emplace_back(line.Chars(), line.Length());
  }
  return lines;
}

}  // namespace

TEST(RegistryScript, LinesEndAtLineFeedsWithoutCarriageReturns) {
  EXPECT_EQ((std::vector<std::string>{"@HKEY_CURRENT_USER", "#A=1", "", "/S"}),
            Lines("@HKEY_CURRENT_USER\r\n#A=1\n\n/S"));
  EXPECT_EQ((std::vector<std::string>{"-Old", ""}), Lines("-Old\n"));
  EXPECT_EQ((std::vector<std::string>{""}), Lines(""));
}

TEST(RegistryScript, LinesSplitIntoCommandKeyAndValue) {
  CRegScriptLine parsed;
  ASSERT_TRUE(ParseRegistryScriptLine(
      "@HKEY_CURRENT_USER/Software/ZendraTests=root default", parsed));
  EXPECT_EQ('@', parsed.command);
  EXPECT_STREQ("HKEY_CURRENT_USER\\Software\\ZendraTests", parsed.key.Chars());
  EXPECT_TRUE(parsed.hasValue);
  EXPECT_STREQ("root default", parsed.value.Chars());

  // The value runs from the first "=" and keeps its "/".
  ASSERT_TRUE(ParseRegistryScriptLine("#Url=http://example/a=b", parsed));
  EXPECT_EQ('#', parsed.command);
  EXPECT_STREQ("Url", parsed.key.Chars());
  EXPECT_STREQ("http://example/a=b", parsed.value.Chars());

  ASSERT_TRUE(ParseRegistryScriptLine("-Old", parsed));
  EXPECT_EQ('-', parsed.command);
  EXPECT_STREQ("Old", parsed.key.Chars());
  EXPECT_FALSE(parsed.hasValue);
  EXPECT_TRUE(parsed.value.IsEmpty());

  ASSERT_TRUE(ParseRegistryScriptLine("=", parsed));
  EXPECT_EQ('=', parsed.command);
  EXPECT_FALSE(parsed.hasValue);

  EXPECT_FALSE(ParseRegistryScriptLine("", parsed));
  EXPECT_FALSE(ParseRegistryScriptLine(" \t ", parsed));
  EXPECT_EQ(0, parsed.command);
}
