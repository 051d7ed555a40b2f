// Static helpers over terminated 8-bit (Str::) and UTF-16 (WStr::) text.
#pragma once

#include <cstdarg>
#include <cstddef>

#include "TString.h"
#include "TTypes.h"

namespace Tern {

namespace Str {

// Length of a terminated text; a null text has length 0.
Int Length(const char* text);
Int Compare(const char* a, const char* b);
bool Equal(const char* a, const char* b);
bool StartsWith(const char* text, const char* prefix);
// Pointer to the first `c` in `text`, or null (also for a null text).
const char* Find(const char* text, char c);
const char* Find(const char* text, const char* needle);
bool IsSpace(char c);
// True when the text holds nothing but white space (or nothing at all).
bool IsBlank(const char* text);

// vsnprintf with C99 semantics: the length the whole result needs.
Int VFormat(char* buf, std::size_t size, const char* format, va_list args);
template <std::size_t N>
Int VFormat(char (&buf)[N], const char* format, va_list args) {
  return VFormat(buf, N, format, args);
}

// Text from the system code page to UTF-16 and back.
CWStr ToWide(const char* text);

// The formatting function behind CStr::Format; replaceable so that the
// assertions of its retry can be exercised.
using VFormatFunction = int (*)(char* buf, std::size_t size, const char* format,
                                va_list args);
VFormatFunction SetVFormatFunction(VFormatFunction function);

}  // namespace Str

namespace WStr {

Int Length(const char16_t* text);
bool Equal(const char16_t* a, const char16_t* b);
const char16_t* Find(const char16_t* text, char16_t c);

// vswprintf over UTF-16: returns the length written, or -1 when `size` was
// too small or exactly filled (wide formatting cannot tell the needed length).
Int VFormat(char16_t* buf, std::size_t size, const char16_t* format,
            va_list args);
template <std::size_t N>
Int VFormat(char16_t (&buf)[N], const char16_t* format, va_list args) {
  return VFormat(buf, N, format, args);
}

CStr ToNarrow(const char16_t* text);

}  // namespace WStr

// The length of 8-bit and UTF-16 text alike, for code written for both.
inline Int TextLength(const char* text) { return Str::Length(text); }
inline Int TextLength(const char16_t* text) { return WStr::Length(text); }

}  // namespace Tern
