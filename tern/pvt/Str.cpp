#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include "TStr.h"

namespace Tern {

Int Str::Length(const char* text) {
  return text ? static_cast<Int>(std::strlen(text)) : 0;
}

Int Str::Compare(const char* a, const char* b) {
  return std::strcmp(a ? a : "", b ? b : "");
}

bool Str::Equal(const char* a, const char* b) { return Compare(a, b) == 0; }

bool Str::StartsWith(const char* text, const char* prefix) {
  if (!text || !prefix) return false;
  return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

const char* Str::Find(const char* text, char c) {
  return text ? std::strchr(text, c) : nullptr;
}

const char* Str::Find(const char* text, const char* needle) {
  return (text && needle) ? std::strstr(text, needle) : nullptr;
}

bool Str::IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' ||
         c == '\f';
}

bool Str::IsBlank(const char* text) {
  for (; text && *text; ++text)
    if (!IsSpace(*text)) return false;
  return true;
}

Int Str::VFormat(char* buf, std::size_t size, const char* format,
                 va_list args) {
  return std::vsnprintf(buf, size, format, args);
}

Int WStr::Length(const char16_t* text) {
  Int n = 0;
  if (text)
    while (text[n]) ++n;
  return n;
}

bool WStr::Equal(const char16_t* a, const char16_t* b) {
  if (!a) a = u"";
  if (!b) b = u"";
  while (*a && *a == *b) ++a, ++b;
  return *a == *b;
}

const char16_t* WStr::Find(const char16_t* text, char16_t c) {
  if (!text) return nullptr;
  for (; *text; ++text)
    if (*text == c) return text;
  return nullptr;
}

// wchar_t is UTF-16 on Windows and UTF-32 elsewhere: go through wchar_t text
// and convert at both ends, so that the same code serves both.
namespace {

std::wstring ToWChar(const char16_t* text) {
  std::wstring out;
  for (; text && *text; ++text) {
    char32_t c = *text;
    if (sizeof(wchar_t) == 4 && c >= 0xD800 && c < 0xDC00 &&
        text[1] >= 0xDC00 && text[1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[1] - 0xDC00);
      ++text;
    }
    out.push_back(static_cast<wchar_t>(c));
  }
  return out;
}

// Copies wide text into a UTF-16 buffer; -1 when it does not fit.
Int FromWChar(const wchar_t* text, char16_t* buf, std::size_t size) {
  std::size_t n = 0;
  for (; *text; ++text) {
    char32_t c = static_cast<char32_t>(*text);
    std::size_t units = c > 0xFFFF ? 2 : 1;
    if (n + units >= size) return -1;
    if (units == 2) {
      c -= 0x10000;
      buf[n++] = static_cast<char16_t>(0xD800 + (c >> 10));
      buf[n++] = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      buf[n++] = static_cast<char16_t>(c);
    }
  }
  buf[n] = 0;
  return static_cast<Int>(n);
}

}  // namespace

Int WStr::VFormat(char16_t* buf, std::size_t size, const char16_t* format,
                  va_list args) {
  if (size == 0) return -1;
  std::vector<wchar_t> wide(size);
  int written =
      std::vswprintf(wide.data(), size, ToWChar(format).c_str(), args);
  // Some C libraries truncate instead of failing: a full buffer may not have
  // held everything, so it counts as too small.
  if (written < 0 || static_cast<std::size_t>(written) >= size - 1) {
    buf[0] = 0;
    return -1;
  }
  return FromWChar(wide.data(), buf, size);
}

}  // namespace Tern
