#include <string>
#include <vector>

#include "TApplication.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

// Records what the setup driver would see: the options in its fixed order.
class TestApp : public CApplication {
 public:
  TestApp() : CApplication("Test App") {}
  std::vector<std::string> Args() const {
    std::vector<std::string> args;
    for (Int i = 0; i < GetArgCount(); ++i) args.push_back(GetArg(i).Chars());
    return args;
  }
  ExecPhase phaseDuringRun = execInStartup;
  int runs = 0;
  std::string recognised;

 protected:
  void Run() override {
    phaseDuringRun = GetPhase();
    ++runs;
    for (const char* option : {"crash", "s", "verbose"})
      if (HasOption(option, 0)) recognised += std::string(option) + ";";
    bool mode = false;
    for (const char* option : {"i", "u", "uph"}) {
      if (!mode && HasOption(option, 0)) {
        recognised += std::string(option) + ";";
        mode = true;
      }
    }
    SetExitCode(mode ? 0 : 2);
  }
};

using Args = std::vector<std::string>;

}  // namespace

TEST(CommandLine, SplitsAtBlanksAndQuotes) {
  TestApp app;
  app.SetCommandLine("-s  -i");
  EXPECT_EQ(Args({"-s", "-i"}), app.Args());
  app.SetCommandLine("  \t-u\t ");
  EXPECT_EQ(Args({"-u"}), app.Args());
  app.SetCommandLine("\"-s\" \"C:\\Program Files\\x\" tail");
  EXPECT_EQ(Args({"-s", "C:\\Program Files\\x", "tail"}), app.Args());
  app.SetCommandLine("a\"b c\"");  // a quote inside a token does not split it
  EXPECT_EQ(Args({"a\"b", "c\""}), app.Args());
  app.SetCommandLine("-i \"unterminated rest  of line");
  EXPECT_EQ(Args({"-i", "unterminated rest  of line"}), app.Args());
  app.SetCommandLine("\"\" x");
  EXPECT_EQ(Args({"", "x"}), app.Args());
  app.SetCommandLine("");
  EXPECT_EQ(0, app.GetArgCount());
  EXPECT_STREQ("", app.GetCommandLine().Chars());
  EXPECT_ASSERTION(app.SetCommandLine(nullptr), "cmdLine");
}

TEST(CommandLine, ArgumentAccessChecksTheIndex) {
  TestApp app;
  app.SetCommandLine("one two");
  EXPECT_STREQ("two", app.GetArg(1).Chars());
  EXPECT_ASSERTION(app.GetArg(2), "index < GetArgCount()");
  EXPECT_ASSERTION(app.RemoveArg(2), "index < GetArgCount()");
  app.RemoveArg(0);
  EXPECT_EQ(Args({"two"}), app.Args());
  EXPECT_STREQ("\"two\"", app.GetCommandLineFromArgs().Chars());
  app.SetCommandLine("a \"b c\"");
  EXPECT_STREQ("\"a\" \"b c\"", app.GetCommandLineFromArgs().Chars());
  EXPECT_STREQ("(no usage information available)", app.GetUsage().Chars());
}

TEST(CommandLine, OptionTestMatchesExactlyAndConsumes) {
  TestApp app;
  app.SetCommandLine("/verbose -verbose -Verbose -verb verbose --verbose");
  EXPECT_TRUE(app.HasOption("verbose", 0));
  EXPECT_TRUE(app.HasOption("verbose", 0));
  EXPECT_FALSE(app.HasOption("verbose", 0));  // capitalised
  EXPECT_EQ(Args({"-Verbose", "-verb", "verbose", "--verbose"}), app.Args());
  EXPECT_FALSE(app.HasOption("verbose", 1));  // a prefix of the name is not it
  EXPECT_FALSE(app.HasOption("verbose", 2));  // no "-" or "/"
  EXPECT_FALSE(app.HasOption("verbose", 3));
  EXPECT_FALSE(app.HasOption("verbose", 9));  // beyond the list: just false
  EXPECT_EQ(4, app.GetArgCount());
  EXPECT_ASSERTION(app.HasOption("verbose", -1), "index>=0");
  EXPECT_ASSERTION(app.HasOption(nullptr, 0), "option");

  app.SetCommandLine("\"-s\"");
  EXPECT_TRUE(app.HasOption("s", 0));
  EXPECT_FALSE(app.HasOption("s", 0));  // empty list
}

TEST(CommandLine, OptionsAreRecognisedOnlyInTheAskingOrder) {
  struct {
    const char* line;
    const char* recognised;
    int exitCode;
  } cases[] = {
      {"-s -verbose -i", "s;verbose;i;", 0},
      {"-verbose -s -i", "verbose;", 2},  // -s stands where the mode should
      {"-i -s", "i;", 0},                 // -s after the mode stays unused
      {"/u", "u;", 0},
      {"-I", "", 2},
      {"-crash -s -uph", "crash;s;uph;", 0},
      {"", "", 2},
  };
  for (const auto& c : cases) {
    TestApp app;
    EXPECT_EQ(c.exitCode, app.Main(c.line)) << c.line;
    EXPECT_EQ(c.recognised, app.recognised) << c.line;
  }
}

TEST(Application, MainRunsOnceInTheNormalPhase) {
  TestApp app;
  EXPECT_EQ(&app, CApplication::Current());
  EXPECT_EQ(execInStartup, app.GetPhase());
  app.Main("-i");
  EXPECT_EQ(1, app.runs);
  EXPECT_EQ(execNormal, app.phaseDuringRun);
  EXPECT_EQ(execShuttingDown, app.GetPhase());
  EXPECT_STREQ("Test App", app.GetName().Chars());
}

TEST(Application, OneModulePerProcess) {
  TestApp first;
  EXPECT_ASSERTION(TestApp second, "cInstance == 0");
}
