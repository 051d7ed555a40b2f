// The native build has no system code page: it reads 8-bit text as Latin-1,
// whose bytes are the first 256 code points.
#include "TStr.h"

namespace Tern {

CWStr Str::ToWide(const char* text) {
  CWStr out;
  for (; text && *text; ++text)
    out.Append(static_cast<char16_t>(static_cast<unsigned char>(*text)));
  return out;
}

CStr WStr::ToNarrow(const char16_t* text) {
  CStr out;
  for (; text && *text; ++text)
    out.Append(*text < 0x100 ? static_cast<char>(*text) : '?');
  return out;
}

}  // namespace Tern
