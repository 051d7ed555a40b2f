#include "StringTable.h"

#include <windows.h>

#include "TError.h"
#include "TFormat.h"

namespace Zendra {

Tern::CStr GetResStr(unsigned strID) {
  char buf[1024] = "";
  int n = ::LoadStringA(::GetModuleHandleA(nullptr), strID, buf, sizeof buf);
  if (n <= 0) {
    Tern::CFormat message(
        "Bad param to GetResStr: no string for strID = 0x<StrID,x>.", nullptr,
        Tern::CFormat::fmtNoGlobalExpansion);
    message.Item("StrID", static_cast<Tern::UInt32>(strID));
    Tern::AssertFailed("%s", message.Result().Chars());
    return Tern::CStr();
  }
  return Tern::CStr(buf, n);
}

Tern::CStr GetResBlock(unsigned baseID) {
  Tern::CStr text;
  for (unsigned id = baseID;; ++id) {
    Tern::CStr part = GetResStr(id);
    if (part == "!END!" || part.IsEmpty()) break;
    text += part;
  }
  return text;
}

}  // namespace Zendra
