// The command-line splitter and the option test: any command line splits
// into tokens that join back to the same tokens, and the setup's options
// are tested in its order without harm.
#include "FuzzSupport.h"
#include "TApplication.h"

using namespace Tern;

FUZZ_INITIALIZE

namespace {

class CFuzzApplication : public CApplication {
 public:
  CFuzzApplication() : CApplication("Fuzz") {}

 protected:
  void Run() override {}
};

CFuzzApplication& App() {
  static CFuzzApplication app;
  return app;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string line(reinterpret_cast<const char*>(data), size);
  CFuzzApplication& app = App();
  app.SetCommandLine(line.c_str());
  FUZZ_CHECK(app.GetCommandLine() == line.c_str());

  std::vector<CStr> args;
  bool quoteInside = false;
  for (Int i = 0; i < app.GetArgCount(); ++i) {
    args.push_back(app.GetArg(i));
    quoteInside = quoteInside || args.back().Find('"') >= 0;
  }
  // Joined in quotes, tokens without a quote of their own split back alike.
  const CStr joined = app.GetCommandLineFromArgs();
  app.SetCommandLine(joined.Chars());
  if (!quoteInside) {
    FUZZ_CHECK(app.GetArgCount() == static_cast<Int>(args.size()));
    for (Int i = 0; i < app.GetArgCount(); ++i)
      FUZZ_CHECK(app.GetArg(i) == args[static_cast<std::size_t>(i)]);
  }

  app.SetCommandLine(line.c_str());
  for (const char* option : {"crash", "s", "verbose", "i", "u", "uph",
                             "nofonts", "noversioncheck"}) {
    const Int before = app.GetArgCount();
    const bool found = app.HasOption(option, 0);
    FUZZ_CHECK(app.GetArgCount() == before - (found ? 1 : 0));
  }
  if (app.GetArgCount() > 0) app.RemoveArg(app.GetArgCount() - 1);
  return 0;
}
