// Shared bits of the benchmarks: scratch files in the temporary folder.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace Bench {

// A file name in the temporary folder, unique to this process.
inline std::string ScratchPath(const std::string& name) {
  const char* dir = std::getenv("TMPDIR");
  return std::string(dir && *dir ? dir : "/tmp") + "/tern_bench_" +
         std::to_string(::getpid()) + "_" + name;
}

}  // namespace Bench
