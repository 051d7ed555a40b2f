#include <windows.h>

#include "TStr.h"

namespace Tern {

CWStr Str::ToWide(const char* text) {
  CWStr out;
  Int len = Length(text);
  if (len == 0) return out;
  int n = ::MultiByteToWideChar(CP_ACP, 0, text, len, nullptr, 0);
  wchar_t* buf = reinterpret_cast<wchar_t*>(out.Lock(n));
  ::MultiByteToWideChar(CP_ACP, 0, text, len, buf, n);
  out.Unlock(n);
  return out;
}

CStr WStr::ToNarrow(const char16_t* text) {
  CStr out;
  Int len = Length(text);
  if (len == 0) return out;
  const wchar_t* wide = reinterpret_cast<const wchar_t*>(text);
  int n =
      ::WideCharToMultiByte(CP_ACP, 0, wide, len, nullptr, 0, nullptr, nullptr);
  char* buf = out.Lock(n);
  ::WideCharToMultiByte(CP_ACP, 0, wide, len, buf, n, nullptr, nullptr);
  out.Unlock(n);
  return out;
}

}  // namespace Tern
