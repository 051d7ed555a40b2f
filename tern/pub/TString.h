// Owned strings: CStr holds 8-bit text in the system code page, CWStr UTF-16.
//
// Both keep length and capacity, share one static empty buffer while empty,
// and carry a lock flag that is set while a caller writes into the buffer
// directly (Lock ... Unlock); editing a locked string is the assertion
// "IsUnlocked()".
#pragma once

#include <cstdarg>
#include <cstddef>
#include <utility>

#include "TTypes.h"

namespace Tern {

template <typename Ch>
class CBasicStr {
 public:
  using CharType = Ch;

  CBasicStr();
  CBasicStr(const Ch* text);  // NOLINT: implicit from literals is intended
  CBasicStr(const Ch* text, Int len);
  CBasicStr(const CBasicStr& other);
  CBasicStr(CBasicStr&& other) noexcept;
  CBasicStr& operator=(const CBasicStr& other);
  CBasicStr& operator=(CBasicStr&& other) noexcept;
  CBasicStr& operator=(const Ch* text);
  ~CBasicStr();

  Int Length() const { return mLen; }
  Int Capacity() const { return mCap; }
  bool IsEmpty() const { return mLen == 0; }
  const Ch* Chars() const { return mBuf; }
  Ch operator[](Int index) const;

  bool IsUnlocked() const { return !mLocked; }
  // Makes room for `capacity` characters (plus the terminator) and hands out
  // the buffer for direct writing. The string stays locked until Unlock.
  Ch* Lock(Int capacity);
  // Ends direct writing; the length is `length`, or the terminated length.
  void Unlock(Int length = -1);

  void Reserve(Int capacity);
  void Clear();
  void Assign(const Ch* text, Int len = -1);
  void Append(const Ch* text, Int len = -1);
  void Append(const CBasicStr& text) { Append(text.mBuf, text.mLen); }
  void Append(Ch c) { Append(&c, 1); }
  void Insert(Int pos, const Ch* text, Int len = -1);
  void Remove(Int start, Int count);
  // The `count` characters at `start` give way to `text`, with one move of
  // what follows them.
  void Replace(Int start, Int count, const Ch* text, Int len = -1);
  void Truncate(Int length);

  // Index of the first occurrence at or after `start`, or -1.
  Int Find(const Ch* needle, Int start = 0) const;
  Int Find(Ch c, Int start = 0) const;
  CBasicStr Mid(Int start, Int count = -1) const;

  bool operator==(const CBasicStr& other) const;
  bool operator!=(const CBasicStr& other) const { return !(*this == other); }
  bool operator==(const Ch* other) const;
  bool operator!=(const Ch* other) const { return !(*this == other); }
  bool operator<(const CBasicStr& other) const;
  CBasicStr& operator+=(const CBasicStr& text) {
    Append(text);
    return *this;
  }
  CBasicStr& operator+=(const Ch* text) {
    Append(text);
    return *this;
  }
  CBasicStr& operator+=(Ch c) {
    Append(c);
    return *this;
  }

 protected:
  // Asserts "IsUnlocked()"; editing operations do nothing on a locked string.
  bool CheckUnlocked() const;

 private:
  void Grow(Int needed);
  void Release();

  Ch* mBuf;
  Int mLen;
  Int mCap;
  bool mLocked;

  static Ch cEmpty[1];
};

class CStr : public CBasicStr<char> {
 public:
  using CBasicStr<char>::CBasicStr;
  using CBasicStr<char>::operator=;
  CStr() = default;
  CStr(const CBasicStr<char>& text) : CBasicStr<char>(text) {}  // NOLINT
  CStr(CBasicStr<char>&& text) noexcept
      : CBasicStr<char>(std::move(text)) {}  // NOLINT

  // printf-style formatting, replacing the content.
  void Format(const char* format, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;
  void VFormat(const char* format, va_list args);
  void AppendFormat(const char* format, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;
};

class CWStr : public CBasicStr<char16_t> {
 public:
  using CBasicStr<char16_t>::CBasicStr;
  using CBasicStr<char16_t>::operator=;
  CWStr() = default;
  CWStr(const CBasicStr<char16_t>& text)
      : CBasicStr<char16_t>(text) {}          // NOLINT
  CWStr(CBasicStr<char16_t>&& text) noexcept  // NOLINT
      : CBasicStr<char16_t>(std::move(text)) {}

  // wprintf-style formatting: %s takes 8-bit text, %ls is not portable.
  void Format(const char16_t* format, ...);
  void VFormat(const char16_t* format, va_list args);
};

extern template class CBasicStr<char>;
extern template class CBasicStr<char16_t>;

}  // namespace Tern
