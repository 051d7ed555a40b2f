// The registry script's text apart from the registry: lines and their parts.
#include <string>

#include "TRegistryScript.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;

TEST(RegistryScript, LinesAndTheirParts) {
  CStringStream script(
      "@HKEY_CURRENT_USER/Software/Zendra=root default\r\n"
      "#Url=http://example/a=b\n\n-Old\n \t \n=\n/=");
  // Command|key ("\" for "/")|value (after the first "="); blank: skipped.
  const char* const lines[] = {
      "@|HKEY_CURRENT_USER\\Software\\Zendra|root default",
      "#|Url|http://example/a=b",
      "",
      "-|Old",
      "",
      "=|",
      "/||"};
  for (Int i = 0; i < CountOf(lines); ++i) {
    CStr line;
    EXPECT_EQ(i + 1 < CountOf(lines), ReadRegistryScriptLine(script, line));
    CRegScriptLine p;
    std::string parts;
    if (ParseRegistryScriptLine(line, p))
      parts = std::string(1, p.command) + "|" + p.key.Chars() +
              (p.hasValue ? std::string("|") + p.value.Chars() : "");
    EXPECT_EQ(lines[i], parts);
  }
}
