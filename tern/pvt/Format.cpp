#include <cstdio>
#include <cstring>
#include <utility>

#include "TError.h"
#include "TFileSystem.h"
#include "TFormat.h"
#include "TStr.h"
#include "TVarList.h"

namespace Tern {

namespace {

const Int cMaxSpecLength = 10;
// The widest field a format spec may ask for; a wider one makes the spec
// invalid (ten digits would not even fit the width's type).
const Int cMaxWidth = 1024;

// Digits and letters are ASCII: format narrow, then widen by code unit.
void Assign(CStr& out, const char* text) { out = text; }
void Assign(CWStr& out, const char* text) {
  out.Clear();
  for (; *text; ++text) out.Append(static_cast<char16_t>(*text));
}

template <typename StrT>
void Pad(StrT& text, const CFormatSpec& fmtSpec) {
  using Ch = typename StrT::CharType;
  if (text.Length() >= fmtSpec.width) return;
  StrT padded;
  padded.Reserve(fmtSpec.width);
  const Ch fill = static_cast<Ch>(fmtSpec.fill);
  for (Int i = text.Length(); i < fmtSpec.width; ++i) padded.Append(fill);
  padded.Append(text);
  text = std::move(padded);
}

// The format spec decoded, or the defaults after the assertion the callers
// raise; `valid` tells which.
template <typename Ch>
CFormatSpec DecodeOrDefault(const Ch* fmtSpec, bool* valid = nullptr) {
  CFormatSpec decoded;
  const bool ok = DecodeFormatSpec(fmtSpec, decoded);
  if (!ok) {
    TERN_FAIL("DecodeFormatSpec(fmtSpecStr,fmtSpec)");
    decoded = CFormatSpec();
  }
  if (valid) *valid = ok;
  return decoded;
}

// Integer text for a conversion letter; false for a letter it does not know.
bool IntegerText(UInt32 bits, bool isSigned, char conversion, CStr& out) {
  char buf[40];
  switch (conversion) {
    case 'd':
      if (isSigned)
        std::snprintf(buf, sizeof buf, "%ld",
                      static_cast<long>(static_cast<Int32>(bits)));
      else
        std::snprintf(buf, sizeof buf, "%lu", static_cast<unsigned long>(bits));
      break;
    case 'o':
      std::snprintf(buf, sizeof buf, "%lo", static_cast<unsigned long>(bits));
      break;
    case 'x':
      std::snprintf(buf, sizeof buf, "%lx", static_cast<unsigned long>(bits));
      break;
    case 'X':
      std::snprintf(buf, sizeof buf, "%lX", static_cast<unsigned long>(bits));
      break;
    case 'c':
      buf[0] = static_cast<char>(bits);
      buf[1] = 0;
      break;
    default:
      return false;
  }
  out = buf;
  return true;
}

template <typename StrT>
bool FormatInteger(const typename StrT::CharType* specText, UInt32 bits,
                   bool isSigned, StrT& out) {
  bool valid = true;
  CFormatSpec fmtSpec = DecodeOrDefault(specText, &valid);
  char conversion = fmtSpec.conversion;
  // Decimal when the placeholder gives no format, and as the default after an
  // invalid one.
  if (!valid || (conversion == 0 && TextLength(specText) == 0))
    conversion = 'd';
  if (!isSigned && conversion == 'u') conversion = 'd';
  CStr text;
  if (!IntegerText(bits, isSigned, conversion, text)) {
    TERN_FAIL("bad format character");
    IntegerText(bits, isSigned, 'd', text);
  }
  Assign(out, text.Chars());
  Pad(out, fmtSpec);  // the fill goes in front of a sign too
  return true;
}

}  // namespace

template <typename Ch>
bool DecodeFormatSpec(const Ch* fmtSpecStr, CFormatSpec& fmtSpec) {
  fmtSpec = CFormatSpec();
  const Ch* p = fmtSpecStr ? fmtSpecStr : nullptr;
  if (!p) return true;
  if (TextLength(p) > cMaxSpecLength) return false;
  if (*p == '0') {
    fmtSpec.fill = '0';
    ++p;
  }
  while (*p >= '0' && *p <= '9') {
    fmtSpec.width = fmtSpec.width * 10 + (*p++ - '0');
    if (fmtSpec.width > cMaxWidth) {
      fmtSpec = CFormatSpec();
      return false;
    }
  }
  if (*p == 0) return true;
  switch (*p) {
    case 'd':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
    case 'c':
      fmtSpec.conversion = static_cast<char>(*p++);
      return *p == 0;
    default:
      return false;
  }
}

template bool DecodeFormatSpec(const char*, CFormatSpec&);
template bool DecodeFormatSpec(const char16_t*, CFormatSpec&);

template <typename Ch>
CBasicFormat<Ch>::CBasicFormat(const Ch* templ, const char* delims,
                               UInt32 flags)
    : mText(templ) {
  if (delims) {
    TERN_ASSERT(Str::Length(delims) == 2);
    if (Str::Length(delims) == 2) {
      mOpen = static_cast<unsigned char>(delims[0]);
      mClose = static_cast<unsigned char>(delims[1]);
    }
  }
  if (!(flags & fmtNoGlobalExpansion))
    CVarList::Global().Expand(
        mText, delims && Str::Length(delims) == 2 ? delims : nullptr);
}

// The text before `pos` is never looked at, so the search runs over the text
// as it was before any replacement.
template <typename Ch>
bool CBasicFormat<Ch>::FindPlaceholder(const Ch* var, Int nameLen, Int& pos,
                                       Int& end, StrT& fmtSpec) const {
  const Ch* text = mText.Chars();
  const Int len = mText.Length();
  for (Int open = mText.Find(mOpen, pos); open >= 0;
       open = mText.Find(mOpen, open + 1)) {
    const Int after = open + 1;
    if (len - after < nameLen ||
        std::memcmp(text + after, var, sizeof(Ch) * nameLen) != 0)
      continue;
    Int close = after + nameLen;
    fmtSpec.Clear();
    if (close < len && text[close] == ':') {
      // The format after the colon is at most cMaxSpecLength characters: a
      // close delimiter further away makes no placeholder, so the search
      // stops there.
      const Int specStart = close + 1;
      const Int limit = len - specStart > cMaxSpecLength
                            ? specStart + cMaxSpecLength + 1
                            : len;
      Int specEnd = specStart;
      while (specEnd < limit && text[specEnd] != mClose) ++specEnd;
      if (specEnd >= limit) continue;
      fmtSpec.Assign(text + specStart, specEnd - specStart);
      close = specEnd;
    }
    if (close >= len || text[close] != mClose) continue;
    pos = open;
    end = close + 1;
    return true;
  }
  return false;
}

// Each placeholder is cut out and the formatted item put in its place; the
// search goes on after what was put in. The result is built in one sweep,
// so a text with many placeholders costs no more per character than one
// with few.
template <typename Ch>
bool CBasicFormat<Ch>::Item(const Ch* var, const void* item,
                            FormatFunction fmtFunc) {
  if (!(var && (TextLength(var) > 0)))
    TERN_FAIL("var && (Str::Length(var) > 0)");
  TERN_ASSERT(item);
  TERN_ASSERT(fmtFunc);
  if (!var || TextLength(var) == 0 || !item || !fmtFunc) return false;
  const Int nameLen = TextLength(var);
  bool replaced = false;
  Int pos = 0, end = 0, copied = 0;
  StrT fmtSpec, out, result;
  while (FindPlaceholder(var, nameLen, pos, end, fmtSpec)) {
    if (!replaced) result.Reserve(mText.Length());
    result.Append(mText.Chars() + copied, pos - copied);
    out.Clear();
    if (fmtFunc(fmtSpec.Chars(), item, out)) result.Append(out);
    replaced = true;
    copied = pos = end;
  }
  if (replaced) {
    result.Append(mText.Chars() + copied, mText.Length() - copied);
    mText = std::move(result);
  }
  return replaced;
}

template <typename Ch>
bool CBasicFormat<Ch>::Item(const Ch* var, const Ch* text) {
  return Item(var, text, FormatString);
}

template <typename Ch>
bool CBasicFormat<Ch>::Item(const Ch* var, Int32 value) {
  return Item(var, &value, FormatInt32);
}

template <typename Ch>
bool CBasicFormat<Ch>::Item(const Ch* var, UInt32 value) {
  return Item(var, &value, FormatUInt32);
}

template <typename Ch>
bool CBasicFormat<Ch>::Item(const Ch* var, double value) {
  return Item(var, &value, FormatDouble);
}

template <typename Ch>
bool CBasicFormat<Ch>::Item(const Ch* var, bool value) {
  return Item(var, &value, FormatBool);
}

template <typename Ch>
bool CBasicFormat<Ch>::FormatString(const Ch* fmtSpec, const void* item,
                                    StrT& out) {
  CFormatSpec decoded = DecodeOrDefault(fmtSpec);
  out = static_cast<const Ch*>(item);
  Pad(out, decoded);  // the conversion letter means nothing for text
  return true;
}

template <typename Ch>
bool CBasicFormat<Ch>::FormatInt32(const Ch* fmtSpec, const void* item,
                                   StrT& out) {
  return FormatInteger(fmtSpec,
                       static_cast<UInt32>(*static_cast<const Int32*>(item)),
                       true, out);
}

template <typename Ch>
bool CBasicFormat<Ch>::FormatUInt32(const Ch* fmtSpec, const void* item,
                                    StrT& out) {
  return FormatInteger(fmtSpec, *static_cast<const UInt32*>(item), false, out);
}

template <typename Ch>
bool CBasicFormat<Ch>::FormatDouble(const Ch* fmtSpec, const void* item,
                                    StrT& out) {
  CFormatSpec decoded = DecodeOrDefault(fmtSpec);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%g", *static_cast<const double*>(item));
  Assign(out, buf);
  Pad(out, decoded);
  return true;
}

template <typename Ch>
bool CBasicFormat<Ch>::FormatBool(const Ch* fmtSpec, const void* item,
                                  StrT& out) {
  CFormatSpec decoded = DecodeOrDefault(fmtSpec);
  Assign(out, *static_cast<const bool*>(item) ? "True" : "False");
  Pad(out, decoded);
  return true;
}

template <typename Ch>
bool CBasicFormat<Ch>::Item(const Ch* var, const CPath& path) {
  return Item(var, &path, FormatPath);
}

template <typename Ch>
bool CBasicFormat<Ch>::FormatPath(const Ch* fmtSpec, const void* item,
                                  StrT& out) {
  CFormatSpec decoded = DecodeOrDefault(fmtSpec);
  const CPath& path = *static_cast<const CPath*>(item);
  CStr text;
  if (!path.IsValid() || Failed(path.OSToPathString(text))) text = "(bad path)";
  Assign(out, text.Chars());
  Pad(out, decoded);
  return true;
}

template class CBasicFormat<char>;
template class CBasicFormat<char16_t>;

}  // namespace Tern
