// The registry script's text: lines and their parts, apart from the registry
// that RunRegistryScript (TRegistry_Win.h) applies them to.
//   @HKEY_...\path[=default]  open or create a root key
//   /sub/path[=default]       open or create a subkey below the root
//   -name                     delete a value of the root key
//   #name=value               set a string on the subkey, else on the root
#pragma once

#include "TString.h"
#include "TTypes.h"

namespace Tern {

class CStream;

struct CRegScriptLine {
  char command = 0;  // '@', '/', '-', '#', or another character (bad syntax)
  CStr key;          // "/" already turned into "\"
  bool hasValue = false;
  CStr value;  // after the first "="
};

// The next line of the script, without its LF or CR LF. False when this was
// the last line (the script ended without a line break after it).
bool ReadRegistryScriptLine(CStream& script, CStr& line);

// Splits a line into its command, key and value. False for a blank line,
// which the script skips.
bool ParseRegistryScriptLine(const CStr& line, CRegScriptLine& parsed);

}  // namespace Tern
