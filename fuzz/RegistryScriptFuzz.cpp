// The registry script reader: any text splits into lines and each line into
// its command, key and value, as RunRegistryScript then applies them.
#include "FuzzSupport.h"
#include "TRegistryScript.h"
#include "TStream.h"

using namespace Tern;

FUZZ_INITIALIZE

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  CMemStream script(data, static_cast<Int>(size), smReadOnly);
  Int lines = 0;
  for (bool more = true; more; ++lines) {
    CStr line;
    more = ReadRegistryScriptLine(script, line);
    FUZZ_CHECK(line.Find('\n') < 0);
    FUZZ_CHECK(lines <= static_cast<Int>(size));
    CRegScriptLine parsed;
    if (!ParseRegistryScriptLine(line, parsed)) continue;
    FUZZ_CHECK(parsed.command == line[0]);
    FUZZ_CHECK(parsed.key.Find('/') < 0);
    FUZZ_CHECK(parsed.hasValue == (line.Mid(1).Find('=') >= 0));
    FUZZ_CHECK(parsed.key.Length() + (parsed.hasValue ? 1 : 0) +
                   parsed.value.Length() ==
               line.Length() - 1);
  }
  return 0;
}
