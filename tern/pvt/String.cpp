#include <cstdlib>
#include <cstring>
#include <utility>

#include "TError.h"
#include "TStr.h"
#include "TString.h"

namespace Tern {

template <typename Ch>
Ch CBasicStr<Ch>::cEmpty[1] = {0};

template <typename Ch>
CBasicStr<Ch>::CBasicStr() : mBuf(cEmpty), mLen(0), mCap(0), mLocked(false) {}

template <typename Ch>
CBasicStr<Ch>::CBasicStr(const Ch* text) : CBasicStr() {
  Assign(text);
}

template <typename Ch>
CBasicStr<Ch>::CBasicStr(const Ch* text, Int len) : CBasicStr() {
  Assign(text, len);
}

template <typename Ch>
CBasicStr<Ch>::CBasicStr(const CBasicStr& other) : CBasicStr() {
  Assign(other.mBuf, other.mLen);
}

template <typename Ch>
CBasicStr<Ch>::CBasicStr(CBasicStr&& other) noexcept
    : mBuf(other.mBuf), mLen(other.mLen), mCap(other.mCap), mLocked(false) {
  other.mBuf = cEmpty;
  other.mLen = 0;
  other.mCap = 0;
}

template <typename Ch>
CBasicStr<Ch>& CBasicStr<Ch>::operator=(const CBasicStr& other) {
  if (this != &other) Assign(other.mBuf, other.mLen);
  return *this;
}

template <typename Ch>
CBasicStr<Ch>& CBasicStr<Ch>::operator=(CBasicStr&& other) noexcept {
  if (this != &other && CheckUnlocked()) {
    Release();
    std::swap(mBuf, other.mBuf);
    std::swap(mLen, other.mLen);
    std::swap(mCap, other.mCap);
  }
  return *this;
}

template <typename Ch>
CBasicStr<Ch>& CBasicStr<Ch>::operator=(const Ch* text) {
  Assign(text);
  return *this;
}

template <typename Ch>
CBasicStr<Ch>::~CBasicStr() {
  Release();
}

template <typename Ch>
void CBasicStr<Ch>::Release() {
  if (mBuf != cEmpty) std::free(mBuf);
  mBuf = cEmpty;
  mLen = 0;
  mCap = 0;
}

template <typename Ch>
bool CBasicStr<Ch>::CheckUnlocked() const {
  TERN_ASSERT(IsUnlocked());
  return IsUnlocked();
}

template <typename Ch>
Ch CBasicStr<Ch>::operator[](Int index) const {
  TERN_ASSERT((index >= 0) && (index <= mLen));
  if (index < 0 || index > mLen) return 0;
  return mBuf[index];
}

// Capacity at least doubles, so that appending one character at a time costs
// amortised constant time.
template <typename Ch>
void CBasicStr<Ch>::Grow(Int needed) {
  if (needed <= mCap) return;
  Int newCap = mCap * 2;
  if (newCap < 15) newCap = 15;
  if (newCap < needed) newCap = needed;
  void* fresh = (mBuf == cEmpty)
                    ? std::malloc(sizeof(Ch) * (newCap + 1))
                    : std::realloc(mBuf, sizeof(Ch) * (newCap + 1));
  if (!fresh) {
    TERN_FAIL("out of memory");
    std::abort();
  }
  if (mBuf == cEmpty) static_cast<Ch*>(fresh)[0] = 0;
  mBuf = static_cast<Ch*>(fresh);
  mCap = newCap;
}

template <typename Ch>
Ch* CBasicStr<Ch>::Lock(Int capacity) {
  CheckUnlocked();
  Grow(capacity < 1 ? 1 : capacity);
  mLocked = true;
  return mBuf;
}

template <typename Ch>
void CBasicStr<Ch>::Unlock(Int length) {
  TERN_ASSERT(!IsUnlocked());
  mLocked = false;
  if (mBuf == cEmpty) return;
  if (length < 0) {
    mBuf[mCap] = 0;  // a buffer filled to the brim still ends
    length = TextLength(mBuf);
  }
  if (length > mCap) length = mCap;
  mLen = length;
  mBuf[mLen] = 0;
}

template <typename Ch>
void CBasicStr<Ch>::Reserve(Int capacity) {
  if (CheckUnlocked()) Grow(capacity);
}

template <typename Ch>
void CBasicStr<Ch>::Clear() {
  if (!CheckUnlocked()) return;
  mLen = 0;
  if (mBuf != cEmpty) mBuf[0] = 0;
}

template <typename Ch>
void CBasicStr<Ch>::Assign(const Ch* text, Int len) {
  if (!CheckUnlocked()) return;
  if (len < 0) len = TextLength(text);
  if (text >= mBuf && text < mBuf + mLen + 1 && mBuf != cEmpty) {
    // Assigning a part of ourselves: move within the buffer.
    std::memmove(mBuf, text, sizeof(Ch) * len);
  } else {
    mLen = 0;
    if (len == 0) {
      if (mBuf != cEmpty) mBuf[0] = 0;
      return;
    }
    Grow(len);
    std::memcpy(mBuf, text, sizeof(Ch) * len);
  }
  mLen = len;
  mBuf[mLen] = 0;
}

template <typename Ch>
void CBasicStr<Ch>::Append(const Ch* text, Int len) {
  Insert(mLen, text, len);
}

template <typename Ch>
void CBasicStr<Ch>::Insert(Int pos, const Ch* text, Int len) {
  if (!CheckUnlocked()) return;
  TERN_ASSERT((pos >= 0) && (pos <= mLen));
  if (pos < 0 || pos > mLen) return;
  if (len < 0) len = TextLength(text);
  if (len == 0) return;
  // `text` may point into our own buffer, which Grow can move: copy it first.
  CBasicStr copy;
  if (text >= mBuf && text <= mBuf + mLen && mBuf != cEmpty) {
    copy.Assign(text, len);
    text = copy.mBuf;
  }
  Grow(mLen + len);
  std::memmove(mBuf + pos + len, mBuf + pos, sizeof(Ch) * (mLen - pos));
  std::memcpy(mBuf + pos, text, sizeof(Ch) * len);
  mLen += len;
  mBuf[mLen] = 0;
}

template <typename Ch>
void CBasicStr<Ch>::Replace(Int start, Int count, const Ch* text, Int len) {
  if (!CheckUnlocked()) return;
  TERN_ASSERT((start >= 0) && (start <= mLen));
  if (start < 0 || start > mLen) return;
  if (count < 0) count = 0;
  if (count > mLen - start) count = mLen - start;
  if (len < 0) len = TextLength(text);
  // `text` may point into our own buffer, which the move changes: copy it.
  CBasicStr copy;
  if (len > 0 && text >= mBuf && text <= mBuf + mLen && mBuf != cEmpty) {
    copy.Assign(text, len);
    text = copy.mBuf;
  }
  Grow(mLen - count + len);
  std::memmove(mBuf + start + len, mBuf + start + count,
               sizeof(Ch) * (mLen - start - count));
  if (len > 0) std::memcpy(mBuf + start, text, sizeof(Ch) * len);
  mLen += len - count;
  if (mBuf != cEmpty) mBuf[mLen] = 0;
}

template <typename Ch>
void CBasicStr<Ch>::Remove(Int start, Int count) {
  Replace(start, count, nullptr, 0);
}

template <typename Ch>
void CBasicStr<Ch>::Truncate(Int length) {
  if (length >= 0 && length < mLen) Remove(length, mLen - length);
}

namespace {

// The first `c` in [from, end), or null. memchr finds the candidates by the
// character's first byte in memory; for UTF-16 text a candidate that is not
// at the start of a unit, or whose other byte differs, is passed over.
const char* FindChar(const char* from, const char* end, char c) {
  return static_cast<const char*>(
      std::memchr(from, c, static_cast<std::size_t>(end - from)));
}

const char16_t* FindChar(const char16_t* from, const char16_t* end,
                         char16_t c) {
  unsigned char firstByte;
  std::memcpy(&firstByte, &c, 1);
  const auto* base = reinterpret_cast<const unsigned char*>(from);
  const auto* stop = reinterpret_cast<const unsigned char*>(end);
  for (const unsigned char* p = base; p < stop; ++p) {
    p = static_cast<const unsigned char*>(
        std::memchr(p, firstByte, static_cast<std::size_t>(stop - p)));
    if (!p) return nullptr;
    const std::size_t offset = static_cast<std::size_t>(p - base);
    if (offset % sizeof(char16_t) == 0 && from[offset / sizeof(char16_t)] == c)
      return from + offset / sizeof(char16_t);
  }
  return nullptr;
}

}  // namespace

// Whole texts are compared only where the first character matches.
template <typename Ch>
Int CBasicStr<Ch>::Find(const Ch* needle, Int start) const {
  if (start < 0) start = 0;
  if (start > mLen) return -1;
  const Int needleLen = TextLength(needle);
  if (needleLen == 0) return start;
  if (needleLen > mLen - start) return -1;
  const Ch* const last = mBuf + mLen - needleLen;  // the last place it fits
  for (const Ch* p = mBuf + start; p <= last; ++p) {
    p = FindChar(p, last + 1, needle[0]);
    if (!p) return -1;
    if (std::memcmp(p, needle, sizeof(Ch) * needleLen) == 0)
      return static_cast<Int>(p - mBuf);
  }
  return -1;
}

template <typename Ch>
Int CBasicStr<Ch>::Find(Ch c, Int start) const {
  if (start < 0) start = 0;
  if (start >= mLen) return -1;
  const Ch* found = FindChar(mBuf + start, mBuf + mLen, c);
  return found ? static_cast<Int>(found - mBuf) : -1;
}

template <typename Ch>
CBasicStr<Ch> CBasicStr<Ch>::Mid(Int start, Int count) const {
  TERN_ASSERT((start >= 0) && (start <= mLen));
  if (start < 0 || start > mLen) return CBasicStr();
  if (count < 0 || count > mLen - start) count = mLen - start;
  return CBasicStr(mBuf + start, count);
}

template <typename Ch>
bool CBasicStr<Ch>::operator==(const CBasicStr& other) const {
  return mLen == other.mLen &&
         std::memcmp(mBuf, other.mBuf, sizeof(Ch) * mLen) == 0;
}

template <typename Ch>
bool CBasicStr<Ch>::operator==(const Ch* other) const {
  return mLen == TextLength(other) &&
         std::memcmp(mBuf, other ? other : cEmpty, sizeof(Ch) * mLen) == 0;
}

template <typename Ch>
bool CBasicStr<Ch>::operator<(const CBasicStr& other) const {
  Int n = mLen < other.mLen ? mLen : other.mLen;
  for (Int i = 0; i < n; ++i)
    if (mBuf[i] != other.mBuf[i]) return mBuf[i] < other.mBuf[i];
  return mLen < other.mLen;
}

template class CBasicStr<char>;
template class CBasicStr<char16_t>;

// ---- Formatting ------------------------------------------------------------

namespace {
int PlainVFormat(char* buf, std::size_t size, const char* format,
                 va_list args) {
  return static_cast<int>(Str::VFormat(buf, size, format, args));
}
Str::VFormatFunction gVFormat = PlainVFormat;
constexpr Int kFirstTry = 1000;
}  // namespace

Str::VFormatFunction Str::SetVFormatFunction(VFormatFunction function) {
  VFormatFunction old = gVFormat;
  gVFormat = function ? function : PlainVFormat;
  return old;
}

// A first try into 1000 characters and, when that was too small, exactly one
// more with the length the first try asked for.
void CStr::VFormat(const char* format, va_list args) {
  if (!CheckUnlocked()) return;
  va_list retryArgs;
  va_copy(retryArgs, args);
  Str::VFormatFunction vformat = gVFormat;

  char* buf = Lock(kFirstTry);
  int needed = vformat(buf, kFirstTry, format, args);
  if (needed < 0) {
    Unlock(0);
    AssertFailed("vsnprintf returns error: %d", needed);
  } else if (needed < kFirstTry) {
    Unlock(needed);
  } else {
    Int bufLen = needed + 1;
    Unlock(0);
    buf = Lock(bufLen);
    int got = vformat(buf, bufLen, format, retryArgs);
    Unlock(got < 0 ? 0 : (got < bufLen ? got : bufLen - 1));
    if (got < 0 || got >= bufLen)
      AssertFailed(
          "vsnprintf didn't honor its desired buffer size: bufLen = %d, "
          "bufNeeded = %d",
          bufLen, got);
  }
  va_end(retryArgs);
}

void CStr::Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  VFormat(format, args);
  va_end(args);
}

void CStr::AppendFormat(const char* format, ...) {
  CStr tail;
  va_list args;
  va_start(args, format);
  tail.VFormat(format, args);
  va_end(args);
  Append(tail);
}

// Wide formatting cannot report the length it needs, so the buffer doubles
// from the same 1000-character first try until the text fits.
void CWStr::VFormat(const char16_t* format, va_list args) {
  if (!CheckUnlocked()) return;
  for (Int size = kFirstTry; size <= (1 << 24); size *= 2) {
    va_list tryArgs;
    va_copy(tryArgs, args);
    char16_t* buf = Lock(size);
    Int written = WStr::VFormat(buf, size, format, tryArgs);
    va_end(tryArgs);
    if (written >= 0) {
      Unlock(written);
      return;
    }
    Unlock(0);
  }
  AssertFailed("vswprintf returns error");
}

void CWStr::Format(const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  VFormat(format, args);
  va_end(args);
}

}  // namespace Tern
