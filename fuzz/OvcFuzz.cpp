// The ovc tool on a configuration file of any content: "check" and "dump"
// agree on whether the file is good, and neither fails in another way.
#include <unistd.h>

#include "FuzzSupport.h"
#include "Ovc.h"

FUZZ_INITIALIZE

namespace {

// The input's file: in memory where the machine has a RAM disk, as it is
// written afresh for every input; removed when the run ends.
const std::string& InputPath() {
  static const std::string path =
      std::string(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
      "/zendra-fuzz-ovc-" + std::to_string(::getpid()) + ".ovc";
  static const int removed =
      std::atexit([] { std::remove(InputPath().c_str()); });
  (void)removed;
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string& path = InputPath();
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return 0;
  const bool written = std::fwrite(data, 1, size, file) == size;
  if (std::fclose(file) != 0 || !written) return 0;

  std::string out, err;
  const int checked = Ovc::Run({"check", path}, out, err);
  const int dumped = Ovc::Run({"dump", path}, out, err);
  FUZZ_CHECK(checked == Ovc::ovcOk || checked == Ovc::ovcBadFile);
  FUZZ_CHECK(checked == dumped);
  FUZZ_CHECK((checked == Ovc::ovcOk) == err.empty());
  return 0;
}
