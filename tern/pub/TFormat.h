// Template formatting: items bound by placeholder name ("<Name>" or
// "<Name:format>") and formatted by a function with the format spec written in
// the placeholder. CFormat works on 8-bit text, CWFormat on UTF-16.
#pragma once

#include "TString.h"
#include "TTypes.h"

namespace Tern {

class CPath;

// A decoded format spec: optional "0" (fill), optional width, optional
// conversion letter, at most 10 characters in all; a width above 1024 makes
// the format spec invalid.
struct CFormatSpec {
  char fill = ' ';
  Int width = 0;
  char conversion = 0;  // 0: none given
};

template <typename Ch>
bool DecodeFormatSpec(const Ch* fmtSpecStr, CFormatSpec& fmtSpec);

template <typename Ch>
struct CFormatTraits;
template <>
struct CFormatTraits<char> {
  using StrT = CStr;
};
template <>
struct CFormatTraits<char16_t> {
  using StrT = CWStr;
};

template <typename Ch>
class CBasicFormat {
 public:
  using StrT = typename CFormatTraits<Ch>::StrT;
  // Formats `item` as the format spec says into `out`; false inserts nothing.
  using FormatFunction = bool (*)(const Ch* fmtSpec, const void* item,
                                  StrT& out);

  enum Flags : UInt32 { fmtNoGlobalExpansion = 0x1 };

  // Unless fmtNoGlobalExpansion is given, the template is first expanded
  // against the global variable list.
  explicit CBasicFormat(const Ch* templ, const char* delims = nullptr,
                        UInt32 flags = 0);

  // Replaces every placeholder named `var`, with or without a format spec, by
  // what `fmtFunc` makes of `item`. True when at least one was replaced.
  bool Item(const Ch* var, const void* item, FormatFunction fmtFunc);

  bool Item(const Ch* var, const Ch* text);
  bool Item(const Ch* var, Int32 value);
  bool Item(const Ch* var, UInt32 value);
  bool Item(const Ch* var, double value);
  bool Item(const Ch* var, bool value);
  bool Item(const Ch* var, const CPath& path);

  const StrT& Result() const { return mText; }

  // The library's formatting functions.
  static bool FormatString(const Ch* fmtSpec, const void* item, StrT& out);
  static bool FormatInt32(const Ch* fmtSpec, const void* item, StrT& out);
  static bool FormatUInt32(const Ch* fmtSpec, const void* item, StrT& out);
  static bool FormatDouble(const Ch* fmtSpec, const void* item, StrT& out);
  static bool FormatBool(const Ch* fmtSpec, const void* item, StrT& out);
  // The path's operating-system text; "(bad path)" for an invalid path.
  static bool FormatPath(const Ch* fmtSpec, const void* item, StrT& out);

 private:
  // Finds the next placeholder named `var` (`nameLen` characters) at or
  // after `pos`: its start in `pos`, the position after it in `end`, and the
  // text after its colon in `fmtSpec`.
  bool FindPlaceholder(const Ch* var, Int nameLen, Int& pos, Int& end,
                       StrT& fmtSpec) const;

  StrT mText;
  Ch mOpen = '<';
  Ch mClose = '>';
};

using CFormat = CBasicFormat<char>;
using CWFormat = CBasicFormat<char16_t>;

extern template class CBasicFormat<char>;
extern template class CBasicFormat<char16_t>;

}  // namespace Tern
