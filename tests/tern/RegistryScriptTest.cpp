// The registry script's text apart from the registry: lines and their parts.
#include "TRegistryScript.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;

TEST(RegistryScript, LinesAndTheirParts) {
  CStringStream script(
      "@HKEY_CURRENT_USER/Software/Zendra=root default\r\n"
      "#Url=http://example/a=b\n\n-Old\n \t \n=\n/=");
  const struct {
    char command;  // 0: a blank line, skipped
    const char* key;
    bool hasValue;
    const char* value;  // runs from the first "=" and keeps its "/"
  } lines[] = {
      {'@', "HKEY_CURRENT_USER\\Software\\Zendra", true, "root default"},
      {'#', "Url", true, "http://example/a=b"},
      {0, "", false, ""},
      {'-', "Old", false, ""},
      {0, "", false, ""},
      {'=', "", false, ""},
      {'/', "", true, ""}};
  for (Int i = 0; i < CountOf(lines); ++i) {
    CStr line;
    EXPECT_EQ(i + 1 < CountOf(lines), ReadRegistryScriptLine(script, line));
    CRegScriptLine parsed;
    EXPECT_EQ(lines[i].command != 0, ParseRegistryScriptLine(line, parsed));
    EXPECT_EQ(lines[i].command, parsed.command) << i;
    EXPECT_STREQ(lines[i].key, parsed.key.Chars()) << i;
    EXPECT_EQ(lines[i].hasValue, parsed.hasValue) << i;
    EXPECT_STREQ(lines[i].value, parsed.value.Chars()) << i;
  }
  CStringStream empty("");
  CStr line("stale");
  EXPECT_FALSE(ReadRegistryScriptLine(empty, line));
  EXPECT_TRUE(line.IsEmpty());
}
