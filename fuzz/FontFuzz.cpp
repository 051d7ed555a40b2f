// The TrueType reader of the font installer: any bytes give either the facts
// or E_BadFontFile, and nothing is read outside the file.
#include "FuzzSupport.h"
#include "TFontFile.h"
#include "TStream.h"

using namespace Tern;

FUZZ_INITIALIZE

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  CMemStream file(data, static_cast<Int>(size), smReadOnly);
  CFontFacts facts;
  const CError err = ReadFontFacts(file, facts);
  FUZZ_CHECK(err == Ok || err == E_BadFontFile);
  if (err == Ok) {
    FUZZ_CHECK(!facts.name.IsEmpty());
    FUZZ_CHECK(facts.style >= 0 && facts.style <= 3);
  } else {
    FUZZ_CHECK(facts.name.IsEmpty() && facts.version == 0);
  }
  return 0;
}
