// The configuration file reader: any bytes are read without harm, and what
// reads back as a good file writes out again to the same variables.
#include "FuzzSupport.h"
#include "TStream.h"
#include "TVarList.h"

using namespace Tern;

FUZZ_INITIALIZE

namespace {

const UInt32 cConfigMode = smScramble | smChecksum;

bool SameVariables(const CVarList& a, const CVarList& b) {
  const CVarList::CVar* x = a.First();
  const CVarList::CVar* y = b.First();
  for (; x && y; x = x->next, y = y->next)
    if (x->readOnly != y->readOnly || x->name != y->name ||
        x->value != y->value)
      return false;
  return !x && !y;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  CMemStream in(data, static_cast<Int>(size), smReadOnly | cConfigMode);
  CVarList vars;
  ConfigFileProblem problem = cfpBadHeader;
  const CError err = vars.ReadConfig(in, &problem);
  FUZZ_CHECK(Succeeded(err) == (problem == cfpNone));
  FUZZ_CHECK(Succeeded(err) || err == E_BadData);
  FUZZ_CHECK(size > 0 || problem == cfpEmpty);

  // What support staff see with "ovc dump", also of a damaged file.
  CStringStream dump;
  vars.Dump(dump);
  if (Failed(err)) return 0;

  CMemStream out(smWriteOnly | cConfigMode);
  FUZZ_CHECK(Succeeded(vars.WriteConfig(out)));
  CMemStream again(out.Data().data(), static_cast<Int>(out.Data().size()),
                   smReadOnly | cConfigMode);
  CVarList reread;
  FUZZ_CHECK(Succeeded(reread.ReadConfig(again)));
  FUZZ_CHECK(SameVariables(vars, reread));
  return 0;
}
