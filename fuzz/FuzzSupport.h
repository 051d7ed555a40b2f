// Shared pieces of the fuzz targets: assertions are reported and the code
// carries on after them, as in the program; a property that must hold and
// does not ends the run as a finding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "TError.h"

#define FUZZ_CHECK(condition)                                             \
  do {                                                                    \
    if (!(condition)) {                                                   \
      std::fprintf(stderr, "FUZZ_CHECK failed: %s (%s:%d)\n", #condition, \
                   __FILE__, __LINE__);                                   \
      std::abort();                                                       \
    }                                                                     \
  } while (0)

namespace FuzzSupport {

inline void ContinueAfterAssertions() {
  Tern::SetAssertionsThrow(false);
  Tern::InstallAssertionHandler([](const char*) {});
}

// The input cut at every `separator` byte, at most `maxPieces` pieces (the
// last one keeps the rest).
inline std::vector<std::string> Split(const std::uint8_t* data,
                                      std::size_t size, char separator,
                                      std::size_t maxPieces) {
  std::vector<std::string> pieces(1);
  for (std::size_t i = 0; i < size; ++i) {
    const char c = static_cast<char>(data[i]);
    if (c == separator && pieces.size() < maxPieces)
      pieces.emplace_back();
    else
      pieces.back() += c;
  }
  return pieces;
}

}  // namespace FuzzSupport

#define FUZZ_INITIALIZE                                \
  extern "C" int LLVMFuzzerInitialize(int*, char***) { \
    FuzzSupport::ContinueAfterAssertions();            \
    return 0;                                          \
  }
