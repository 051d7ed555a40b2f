#include <cstdio>
#include <string>
#include <vector>

#include "Ovc.h"
#include "TError.h"

int main(int argc, char** argv) {
  // A failed assertion is reported and the tool carries on, as the library
  // is written to.
  Tern::InstallAssertionHandler([](const char*) {});
  std::vector<std::string> args(argv + 1, argv + argc);
  std::string out, err;
  int status = Ovc::Run(args, out, err);
  std::fwrite(out.data(), 1, out.size(), stdout);
  std::fwrite(err.data(), 1, err.size(), stderr);
  return status;
}
