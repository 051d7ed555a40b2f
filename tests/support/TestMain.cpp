// Main of every test program. Assertions throw CAssertionFailure, so an
// unexpected one fails the test that raised it, and a test that expects one
// can check its text.
#include <gtest/gtest.h>

#include "TError.h"
#include "TestSupport.h"

namespace TestSupport {

namespace {
std::vector<std::string> gArgs;
}

const std::vector<std::string>& Args() { return gArgs; }

std::string ArgValue(const std::string& name) {
  const std::string prefix = "--" + name + "=";
  for (const auto& arg : gArgs)
    if (arg.compare(0, prefix.size(), prefix) == 0)
      return arg.substr(prefix.size());
  return std::string();
}

}  // namespace TestSupport

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i) TestSupport::gArgs.push_back(argv[i]);
  Tern::SetAssertionsThrow(true);
  // Where a test switches throwing off, the report ends in the same outer
  // handler as in the program, which continues after it.
  Tern::InstallAssertionHandler([](const char*) {});
  return RUN_ALL_TESTS();
}
