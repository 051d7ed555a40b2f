#include <zlib.h>

#include <type_traits>

#include "TStr.h"
#include "TStream.h"

namespace Tern {

namespace {

Byte RotateLeft4(Byte b) { return static_cast<Byte>((b << 4) | (b >> 4)); }
Byte Scramble(Byte b) { return RotateLeft4(static_cast<Byte>(b + 0x3F)); }
Byte Unscramble(Byte s) { return static_cast<Byte>(RotateLeft4(s) - 0x3F); }

const char cFormatBufferAssertion[] =
    "Str::VFormat(buf,format,args) < "
    "((static_cast<Int>(sizeof(buf)/sizeof(buf[0]))) - 1)";
const char cWideFormatBufferAssertion[] =
    "WStr::VFormat(buf,format,args) < "
    "((static_cast<Int>(sizeof(buf)/sizeof(buf[0]))) - 1)";

}  // namespace

// ---- State ------------------------------------------------------------------

bool CStream::IsReadable() const {
  return (mMode & smWriteOnly) == 0 && mState != ssFailed;
}

bool CStream::IsWritable() const {
  return (mMode & smReadOnly) == 0 && mState != ssFailed;
}

void CStream::SetEOLType(Int eolType) {
  if (eolType < eolCRLF || eolType > eolLF) {
    TERN_FAIL("bad EOL type");
    return;
  }
  mEOLType = eolType;
}

void CStream::SetEncoding(Int encoding) {
  if (encoding < encSystem || encoding > encUTF32) {
    TERN_FAIL("bad encoding");
    return;
  }
  mEncoding = encoding;
}

UInt32 CStream::GetChecksum() const {
  TERN_ASSERT(IsChecksumming());
  return mChecksum;
}

void CStream::DecIndent() {
  TERN_ASSERT(mIndentLevel > 0);
  if (mIndentLevel > 0) --mIndentLevel;
}

void CStream::Opened(UInt32 mode) {
  mMode = mode;
  mState = ssOpen;
  mUnGetChar = -1;
  mLineCount = 0;
  mChecksum = 0;
  mAtLineStart = true;
  mLastWasCR = false;
}

CError CStream::Fail(CError error) {
  mState = ssFailed;
  return error;
}

CError CStream::Close() {
  if (mState != ssOpen && mState != ssFailed) return Ok;
  CError flushed = mState == ssOpen ? DoFlush() : Ok;
  CError closed = DoClose();
  mState = ssClosed;
  return Failed(flushed) ? flushed : closed;
}

CError CStream::GetPos(Int&) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

CError CStream::SetPos(Int) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

CError CStream::GetLength(Int&) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

CError CStream::SetLength(Int) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

// ---- Raw byte path: checksum and scrambling --------------------------------

void CStream::Checksum(Byte b) {
  if (!(mMode & smChecksum)) return;
  if (mMode & smCRC32)
    mChecksum = static_cast<UInt32>(crc32(mChecksum, &b, 1));
  else
    mChecksum += b;
}

CError CStream::ReadPlainByte(Int& c, bool& eof) {
  Byte b = 0;
  CError err = RawRead(b, eof);
  if (Failed(err)) return Fail(err);
  if (eof) {
    c = -1;
    return Ok;
  }
  if (mMode & smScramble) b = Unscramble(b);
  Checksum(b);
  c = b;
  return Ok;
}

CError CStream::WritePlainByte(Byte b) {
  Checksum(b);
  if (mMode & smScramble) b = Scramble(b);
  CError err = RawWrite(b);
  return Failed(err) ? Fail(err) : Ok;
}

// ---- Reading ---------------------------------------------------------------

CError CStream::DecodeChar(Int& c, bool& eof) {
  Int b0 = 0, b1 = 0, b2 = 0;
  CError err = ReadPlainByte(b0, eof);
  if (Failed(err) || eof) return err;
  switch (mEncoding) {
    case encSystem: {
      char text[2] = {static_cast<char>(b0), 0};
      CWStr wide = Str::ToWide(text);
      c = wide.IsEmpty() ? b0 : wide[0];
      return Ok;
    }
    case encUTF8:
      if (b0 < 0x80) {
        c = b0;
      } else if ((b0 & 0xE0) == 0xC0) {
        err = ReadPlainByte(b1, eof);
        c = ((b0 & 0x1F) << 6) | (b1 & 0x3F);
      } else {  // continuation bytes are taken as they come
        err = ReadPlainByte(b1, eof);
        if (Succeeded(err) && !eof) err = ReadPlainByte(b2, eof);
        c = ((b0 & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F);
      }
      return err;
    case encUTF16:
      err = ReadPlainByte(b1, eof);
      c = (mMode & smBigEndian) ? (b0 << 8) | b1 : (b1 << 8) | b0;
      return err;
    default:
      TERN_FAIL("unexpected encUTF32");
      return Fail(Failure);
  }
}

// Text mode turns CR LF, CR and LF into one LF; the read filter and the line
// count see the translated character.
CError CStream::TranslateRead(Int& c, bool& eof,
                              CError (CStream::*next)(Int&, bool&)) {
  for (;;) {
    CError err = (this->*next)(c, eof);
    if (Failed(err) || eof) return err;
    if (!(mMode & smText)) break;
    if (c == '\n' && mLastWasCR) {
      mLastWasCR = false;
      continue;
    }
    mLastWasCR = c == '\r';
    if (c == '\r') c = '\n';
    break;
  }
  if (mReadFilter && !mReadFilter->Filter(c)) return Fail(Failure);
  if (c == '\n' && (mMode & smCountLines)) ++mLineCount;
  return Ok;
}

CError CStream::ReadByte(Int& c, bool& eof) {
  c = -1;
  eof = false;
  if (!IsReadable()) {
    TERN_FAIL("IsReadable()");
    return Failure;
  }
  TERN_ASSERT(!IsUnicodeEncoding());
  if (mUnGetChar >= 0) {
    TERN_ASSERT(mUnGetChar <= 0xFF);
    c = mUnGetChar;
    mUnGetChar = -1;
    return Ok;
  }
  return TranslateRead(c, eof, &CStream::ReadPlainByte);
}

CError CStream::ReadChar(Int& c, bool& eof) {
  c = -1;
  eof = false;
  if (!IsReadable()) {
    TERN_FAIL("IsReadable()");
    return Failure;
  }
  if (mUnGetChar >= 0) {
    TERN_ASSERT(mUnGetChar <= 0xFFFF);
    c = mUnGetChar;
    mUnGetChar = -1;
    return Ok;
  }
  return TranslateRead(c, eof, &CStream::DecodeChar);
}

namespace {

template <typename StrT>
bool ReadUntilInto(CStream& stream, StrT& out, Int delim, Int maxLen,
                   Int* count, bool wide) {
  TERN_ASSERT(maxLen == -1 || maxLen > 0);
  Int n = 0;
  bool found = false;
  while (maxLen == -1 || n < maxLen) {
    Int c = -1;
    bool eof = false;
    CError err = wide ? stream.ReadChar(c, eof) : stream.ReadByte(c, eof);
    if (Failed(err) || eof) break;
    if (c == delim) {
      found = true;
      break;
    }
    out.Append(
        static_cast<typename std::remove_reference<decltype(out[0])>::type>(c));
    ++n;
  }
  if (count) *count = n;
  return found || (maxLen != -1 && n >= maxLen);
}

}  // namespace

bool CStream::ReadUntil(CStr& out, Int delim, Int maxLen, Int* count) {
  TERN_ASSERT(delim <= 0xFF);
  return ReadUntilInto(*this, out, delim, maxLen, count, false);
}

bool CStream::ReadUntil(CWStr& out, Int delim, Int maxLen, Int* count) {
  return ReadUntilInto(*this, out, delim, maxLen, count, true);
}

// ---- Writing ---------------------------------------------------------------

CError CStream::EncodeChar(Int c) {
  CError err = Ok;
  switch (mEncoding) {
    case encSystem: {
      char16_t wide[2] = {static_cast<char16_t>(c), 0};
      CStr narrow = WStr::ToNarrow(wide);
      return WritePlainByte(
          static_cast<Byte>(narrow.IsEmpty() ? c : narrow[0]));
    }
    case encUTF8:
      if (c <= 0x7F) return WritePlainByte(static_cast<Byte>(c));
      if (c <= 0x7FF) {
        err = WritePlainByte(static_cast<Byte>(0xC0 | (c >> 6)));
        return Failed(err)
                   ? err
                   : WritePlainByte(static_cast<Byte>(0x80 | (c & 0x3F)));
      }
      err = WritePlainByte(static_cast<Byte>(0xE0 | ((c >> 12) & 0x0F)));
      if (Succeeded(err))
        err = WritePlainByte(static_cast<Byte>(0x80 | ((c >> 6) & 0x3F)));
      if (Succeeded(err))
        err = WritePlainByte(static_cast<Byte>(0x80 | (c & 0x3F)));
      return err;
    case encUTF16: {
      Byte hi = static_cast<Byte>((c >> 8) & 0xFF),
           lo = static_cast<Byte>(c & 0xFF);
      bool big = (mMode & smBigEndian) != 0;
      err = WritePlainByte(big ? hi : lo);
      return Failed(err) ? err : WritePlainByte(big ? lo : hi);
    }
    default:
      TERN_FAIL("unexpected encUTF32");
      return Fail(Failure);
  }
}

CError CStream::PutEncoded(Int c, bool unicode) {
  return unicode ? EncodeChar(c) : WritePlainByte(static_cast<Byte>(c));
}

CError CStream::PutCharacter(Int c, bool unicode) {
  if (mWriteFilter && !mWriteFilter->Filter(c)) return Fail(Failure);
  CError err = Ok;
  if (mAtLineStart && mIndentLevel >= 1) {
    for (Int level = 0; level < mIndentLevel && Succeeded(err); ++level) {
      if (mIndentWidth <= 0)
        err = PutEncoded('\t', unicode);
      else
        for (Int i = 0; i < mIndentWidth && Succeeded(err); ++i)
          err = PutEncoded(' ', unicode);
    }
    if (Failed(err)) return err;
  }
  if (c != '\n') {
    mAtLineStart = false;
    return PutEncoded(c, unicode);
  }
  mAtLineStart = true;
  if (mMode & smCountLines) ++mLineCount;
  if (!(mMode & smText)) return PutEncoded('\n', unicode);
  if (mEOLType != eolLF) err = PutEncoded('\r', unicode);
  if (Succeeded(err) && mEOLType != eolCR) err = PutEncoded('\n', unicode);
  return err;
}

CError CStream::WriteByte(Int c) {
  if (!IsWritable()) {
    TERN_FAIL("IsWritable()");
    return Failure;
  }
  TERN_ASSERT(!IsUnicodeEncoding());
  return PutCharacter(c & 0xFF, false);
}

CError CStream::WriteChar(Int c) {
  if (!IsWritable()) {
    TERN_FAIL("IsWritable()");
    return Failure;
  }
  return PutCharacter(c, true);
}

CError CStream::WriteString(const char* text, Int len) {
  if (len < 0) len = Str::Length(text);
  if (IsUnicodeEncoding()) {
    CWStr wide = Str::ToWide(CStr(text, len).Chars());
    return WriteString(wide.Chars(), wide.Length());
  }
  CError err = Ok;
  for (Int i = 0; i < len && Succeeded(err); ++i)
    err = WriteByte(static_cast<unsigned char>(text[i]));
  return err;
}

CError CStream::WriteString(const char16_t* text, Int len) {
  if (len < 0) len = WStr::Length(text);
  if (!IsUnicodeEncoding()) {
    CStr narrow = WStr::ToNarrow(CWStr(text, len).Chars());
    return WriteString(narrow.Chars(), narrow.Length());
  }
  CError err = Ok;
  for (Int i = 0; i < len && Succeeded(err); ++i) err = WriteChar(text[i]);
  return err;
}

CError CStream::VPrintf(const char* format, va_list args) {
  char buf[2000];
  Int n = Str::VFormat(buf, format, args);
  if (n < 0) return Failure;
  if (n >= static_cast<Int>(sizeof(buf) / sizeof(buf[0])) - 1) {
    TERN_FAIL(cFormatBufferAssertion);
    n = static_cast<Int>(sizeof(buf)) - 1;
  }
  return WriteString(buf, n);
}

CError CStream::Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  CError err = VPrintf(format, args);
  va_end(args);
  return err;
}

CError CStream::WPrintf(const char16_t* format, ...) {
  char16_t buf[2000];
  va_list args, retryArgs;
  va_start(args, format);
  va_copy(retryArgs, args);
  Int n = WStr::VFormat(buf, format, args);
  va_end(args);
  // Wide formatting leaves nothing in a buffer that is too small, so the
  // whole text is formatted apart and what fits the buffer is written.
  CWStr whole;
  if (n < 0) whole.VFormat(format, retryArgs);
  va_end(retryArgs);
  if (n >= 0) return WriteString(buf, n);
  TERN_FAIL(cWideFormatBufferAssertion);
  const Int fits = CountOf(buf) - 1;
  return WriteString(whole.Chars(),
                     whole.Length() < fits ? whole.Length() : fits);
}

// ---- Memory streams --------------------------------------------------------

CMemStream::CMemStream(UInt32 mode) { Opened(mode & ~fsmDispositionMask); }

CMemStream::CMemStream(const Byte* data, Int size, UInt32 mode)
    : mData(data, data + size) {
  Opened(mode & ~fsmDispositionMask);
}

CError CMemStream::RawRead(Byte& b, bool& eof) {
  eof = mPos >= mData.size();
  if (!eof) b = mData[mPos++];
  return Ok;
}

CError CMemStream::RawWrite(Byte b) {
  if (mPos < mData.size())
    mData[mPos] = b;
  else
    mData.push_back(b);
  ++mPos;
  return Ok;
}

CError CMemStream::GetPos(Int& pos) {
  pos = static_cast<Int>(mPos);
  return Ok;
}

CError CMemStream::SetPos(Int pos) {
  if (pos < 0 || static_cast<std::size_t>(pos) > mData.size())
    return E_BadArgument;
  mPos = static_cast<std::size_t>(pos);
  return Ok;
}

CError CMemStream::GetLength(Int& length) {
  length = static_cast<Int>(mData.size());
  return Ok;
}

CError CMemStream::SetLength(Int length) {
  if (length < 0) return E_BadArgument;
  mData.resize(static_cast<std::size_t>(length));
  if (mPos > mData.size()) mPos = mData.size();
  return Ok;
}

CStringStream::CStringStream(const char* text, UInt32 mode)
    : CMemStream(reinterpret_cast<const Byte*>(text ? text : ""),
                 Str::Length(text), mode) {}

CStr CStringStream::GetText() const {
  return CStr(reinterpret_cast<const char*>(Data().data()),
              static_cast<Int>(Data().size()));
}

}  // namespace Tern
