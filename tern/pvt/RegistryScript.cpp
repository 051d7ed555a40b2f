#include "TRegistryScript.h"
#include "TStr.h"
#include "TStream.h"

namespace Tern {

bool ReadRegistryScriptLine(CStream& script, CStr& line) {
  line.Clear();
  const bool more = script.ReadUntil(line, '\n');
  if (line.Length() > 0 && line[line.Length() - 1] == '\r')
    line.Truncate(line.Length() - 1);
  return more;
}

bool ParseRegistryScriptLine(const CStr& line, CRegScriptLine& parsed) {
  parsed = CRegScriptLine();
  if (Str::IsBlank(line.Chars())) return false;
  parsed.command = line[0];
  const CStr rest = line.Mid(1);
  const Int equals = rest.Find('=');
  parsed.hasValue = equals >= 0;
  parsed.key = parsed.hasValue ? CStr(rest.Mid(0, equals)) : rest;
  if (parsed.hasValue) parsed.value = rest.Mid(equals + 1);
  for (Int i = 0; i < parsed.key.Length(); ++i) {
    if (parsed.key[i] == '/') {
      parsed.key.Remove(i, 1);
      parsed.key.Insert(i, "\\", 1);
    }
  }
  return true;
}

}  // namespace Tern
