#include <string>

#include "TApplication.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

// Asks for the options as the setup driver does, in its fixed order; what it
// recognised, then what is left, separated by "|".
class TestApp : public CApplication {
 public:
  TestApp() : CApplication("Test App") {}
  std::string seen;

 protected:
  void Run() override {
    for (const char* option : {"crash", "s", "verbose", "i", "u", "uph"})
      if (HasOption(option, 0)) seen += std::string(option) + ";";
    for (Int i = 0; i < GetArgCount(); ++i)
      seen += std::string("|") + GetArg(i).Chars();
    SetExitCode(GetPhase() == execNormal ? 7 : 0);
  }
};

}  // namespace

TEST(CommandLine, SplitsAtBlanksAndQuotesAndTakesOptionsInOrder) {
  const struct {
    const char* line;
    const char* seen;
  } cases[] = {
      {" \t-s  -verbose\t-i", "s;verbose;i;"},
      {"\"-s\" \"C:\\Program Files\\x\" t", "s;|C:\\Program Files\\x|t"},
      {"a\"b c\"", "|a\"b|c\""},  // a quote inside a token does not split
      {"-i \"rest  of line", "i;|rest  of line"},  // no closing quote
      {"\"\" x", "||x"},
      {"-verbose -s -i", "verbose;|-s|-i"},  // -s stands where -i should
      {"/u -I -verb --verbose verbose", "u;|-I|-verb|--verbose|verbose"},
      {"-uph -u", "uph;|-u"},  // -u is asked for first, and is not -uph
      {"", ""}};
  for (const auto& c : cases) {
    TestApp app;
    EXPECT_EQ(7, app.Main(c.line));  // Run ran in the normal phase
    EXPECT_EQ(c.seen, app.seen) << c.line;
    EXPECT_EQ(execShuttingDown, app.GetPhase());
  }
  TestApp app;
  EXPECT_ASSERTION(TestApp second, "cInstance == 0");
}
